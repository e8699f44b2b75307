#include "snapshot/SnapshotReader.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "io/InputError.h"
#include "io/KeyedHash.h"
#include "io/KeyedTable.h"
#include "io/Nearest.h"
#include "io/SafeText.h"
#include "snapshot/JsonLines.h"
#include "snapshot/Members.h"
#include "snapshot/NameTable.h"

namespace tcamshow {
namespace {

constexpr WarningKind pipeBeyondNumPipes;
constexpr WarningKind lowOverHigh;

constexpr MemberBits bit(std::size_t index) { return MemberBits{1} << index; }

// The members of both kinds of records.
enum Field : std::uint8_t { fieldValue, fieldMask, fieldStatus, fieldLow, fieldHigh };
constexpr NameTable fieldNames({"value", "mask", "status", "low", "high"});
constexpr MemberBits qualifierFields = bit(fieldValue) | bit(fieldMask) | bit(fieldStatus);
constexpr MemberBits rangeCheckerFields = bit(fieldLow) | bit(fieldHigh) | bit(fieldStatus);

/// A place of a group, in two words.
struct GroupPlace {
  explicit GroupPlace(const Place& place = {Stage{}, 0, 0, 0, 0}) noexcept
      : first(std::uint64_t{static_cast<std::uint8_t>(place.stage)} << 48 |
              std::uint64_t{static_cast<std::uint16_t>(place.pipe)} << 32 | place.groupPriority),
        second(std::uint64_t{place.groupId} << 32 | place.copyId) {}

  // No stage has the number 0.
  bool isEmpty() const noexcept { return first == 0; }
  std::uint64_t hash() const noexcept { return keyedHash(first, second); }
  bool hasKeyOf(const GroupPlace& other) const noexcept {
    return first == other.first && second == other.second;
  }

  std::uint64_t first;
  std::uint64_t second;
};
constexpr std::size_t mostGroups = std::size_t{1} << 20;

/// The names of a list whose bits are set, for a suggestion.
template <class Names>
std::vector<std::string_view> picked(const Names& names, MemberBits bits) {
  std::vector<std::string_view> result;
  for (std::size_t i = 0; i != Names::size(); ++i) {
    if ((bits & bit(i)) != 0) result.push_back(names[i]);
  }
  return result;
}

template <class Row>
std::vector<std::string_view> namesOf(std::span<const Row> rows) {
  std::vector<std::string_view> names;
  for (const Row& row : rows) names.push_back(row.name);
  return names;
}

class SnapshotReader final : public Source {
 public:
  SnapshotReader(InputFile file, Complaints& complaints)
      : Source(complaints), json_(std::move(file)) {
    headerRead();
  }

  const std::string& fileName() const noexcept override { return json_.lines().fileName(); }
  std::uint64_t lineNumber() const noexcept override { return json_.lines().lineNumber(); }

  Item next() override {
    if (!json_.next()) {
      if (hasEnd() && !isEnded_) {
        throw InputError(fileName(), lineNumber() + 1,
                         "the snapshot was cut: its \"end\" line is missing");
      }
      return Item::end;
    }
    if (isEnded_) json_.fail("nothing may follow the \"end\" line");
    switch (kindRead()) {
      case LineKind::group:
        group_ = Group();
        membersRead(group_);
        pipeChecked(group_.place);
        placeChecked();
        ++met_.groups;
        return Item::group;
      case LineKind::entry:
        entry_.clear();
        membersRead(entry_);
        pipeChecked(entry_.place);
        ++met_.entries;
        return Item::entry;
      case LineKind::end:
        endRead();
        return next();
      case LineKind::header:
        break;
    }
    json_.fail("only the first line is the header");
  }

 private:
  // --- lines

  void headerRead() {
    bool const any = json_.next();
    if (!any || kindRead() != LineKind::header) {
      json_.kindIs({});
      std::string const message = R"(the first line must be {"type":"snapshot","version":2})";
      if (any) json_.fail(message);
      throw InputError(fileName(), lineNumber() + 1, "the snapshot is empty: " + message);
    }
    MemberBits const seen = membersRead(header_);
    header_.hasNumPipes = (seen & bit(memberNames.find("numPipes"))) != 0;
    // The version may stand behind members that it decides about.
    MemberBits const early = seen & ~membersOf<Header>(header_.version.number);
    if (early != 0) {
      auto const index = static_cast<std::size_t>(std::countr_zero(early));
      json_.memberIs(memberNames[index], 0);
      failUnknown<Header>(memberNames[index], index);
    }
    // The line's texts are gone when the next one is read.
    std::string_view* const texts[] = {&header_.takenAt.text, &header_.source, &header_.device};
    for (std::size_t i = 0; i != std::size(texts); ++i) {
      headerTexts_[i] = *texts[i];
      *texts[i] = headerTexts_[i];
    }
  }

  bool hasEnd() const noexcept { return header_.version.number >= 2; }

  void endRead() {
    SnapshotEnd said;
    membersRead(said);
    auto const compare = [&](std::uint64_t met, std::uint64_t told, std::string_view what) {
      if (met == told) return;
      json_.fail("the snapshot was cut or changed: it has " + std::to_string(met) + ' ' +
                 std::string(what) + ", but this line says " + std::to_string(told));
    };
    compare(met_.groups, said.groups, "groups");
    compare(met_.entries, said.entries, "entries");
    isEnded_ = true;
  }

  /// The type may stand anywhere in the line; where it comes first, nothing else is looked at.
  LineKind kindRead() {
    // As nearly every line begins.
    if (json_.line().starts_with(R"({"type":"entry",)")) [[likely]] {
      json_.kindIs(lineKindNames[static_cast<std::size_t>(LineKind::entry)]);
      return LineKind::entry;
    }
    std::string_view const type = json_.textOf("type");
    std::size_t const kind = lineKindNames.find(type);
    bool const isEnd = kind == static_cast<std::size_t>(LineKind::end);
    if (kind == lineKindNames.none || (isEnd && !hasEnd())) {
      json_.failMember(": " + inQuotes(type) +
                       (hasEnd() ? R"( is not "snapshot", "group", "entry" or "end")"
                                 : R"( is not "snapshot", "group" or "entry")"));
    }
    json_.kindIs(lineKindNames[kind]);
    return static_cast<LineKind>(kind);
  }

  /// Reads the members of the line; returns those that were there.
  template <class Line>
  MemberBits membersRead(Line& line) {
    // The header's version is known when the line has been read.
    static constexpr bool isHeader = std::is_same_v<Line, Header>;
    static constexpr auto first = memberReaders<Line>(isHeader ? SnapshotVersion::newest : 1);
    static constexpr auto newest = memberReaders<Line>(SnapshotVersion::newest);
    const auto& readers = header_.version.number == 1 ? first : newest;
    MemberBits seen = 0;
    json_.eachField(json_.members(), 0, [&](std::string_view name, ondemand::value& value) {
      std::size_t const index = memberNames.find(name);
      if (index == memberNames.none || readers[index] == nullptr) failUnknown<Line>(name, index);
      json_.once(seen, index);
      readers[index](*this, value, line);
    });
    MemberBits const missing = requiredMembersOf<Line>() & ~seen;
    if (missing != 0) [[unlikely]] {
      json_.memberIs(memberNames[static_cast<std::size_t>(std::countr_zero(missing))], 0);
      json_.failMember(" is missing");
    }
    json_.ended();
    return seen;
  }

  template <class Line>
  using MemberReader = void (*)(SnapshotReader&, ondemand::value&, Line&);

  /// The reader of each name's member in a Line; null where the version has no such member there.
  template <class Line>
  static constexpr auto memberReaders(std::uint32_t version) {
    std::array<MemberReader<Line>, memberNames.size()> readers{};
    readers[memberType] = [](SnapshotReader&, ondemand::value&, Line&) {};
    forEachMember<Line>([&](auto const& member, auto index) {
      if (member.since > version) return;
      readers[index()] = [](SnapshotReader& reader, ondemand::value& value, Line& line) {
        reader.read(value, memberOf(line, std::get<decltype(index)::value>(members)));
      };
    });
    return readers;
  }

  template <class Line>
  [[noreturn]] void failUnknown(std::string_view name, std::size_t index) const {
    std::uint32_t const version = header_.version.number;
    std::string message = " is not known";
    if (index == memberNames.none) {
      message += suggestion(name, picked(memberNames, membersOf<Line>(version)));
    } else if ((membersOf<Line>(SnapshotVersion::newest) & bit(index)) != 0) {
      message += " in version " + std::to_string(version) + " of the snapshot, only in version " +
                 std::to_string(SnapshotVersion::newest);
    } else {
      std::string_view separator = "; it belongs to ";
      auto const belongs = [&](MemberBits bits, std::string_view kind) {
        if ((bits & bit(index)) == 0) return;
        (message += separator) += kind;
        separator = " or ";
      };
      belongs(membersOf<Header>(version), "the header");
      belongs(membersOf<Group>(version), "a group");
      belongs(membersOf<Entry>(version), "an entry");
      belongs(membersOf<SnapshotEnd>(version), "the \"end\" line");
    }
    json_.failMember(message);
  }

  // --- values, each by its type in the model

  void read(ondemand::value& value, SnapshotVersion& version) const {
    auto const number = json_.number<std::uint32_t>(value);
    if (number < 1 || number > SnapshotVersion::newest) {
      json_.failMember(": version " + std::to_string(number) + " is not known, only 1 and 2 are");
    }
    version.number = number;
  }
  void read(ondemand::value& value, Time& time) const {
    std::string_view const text = json_.printable(value);
    if (timeFromText(text, time)) return;
    json_.failMember(": " + inQuotes(text) +
                     " is not a time in UTC such as \"2026-01-31T12:30:00Z\"");
  }
  void read(ondemand::value& value, EntryState& state) const {
    std::string_view const name = json_.text(value);
    if (stateByName(name, state)) return;
    json_.failMember(": " + inQuotes(name) +
                     R"( is not "programmed", "pending", "failed" or "unknown")");
  }
  template <class Value>
  void read(ondemand::value& value, std::optional<Value>& optional) const {
    read(value, optional.emplace());
  }
  template <std::integral Number>
  void read(ondemand::value& value, Number& number) const {
    number = json_.number<Number>(value);
  }
  void read(ondemand::value& value, std::string_view& text) const { text = json_.printable(value); }
  void read(ondemand::value& value, Stage& stage) const {
    std::string_view const name = json_.text(value);
    if (stageByName(name, stage)) return;
    json_.failMember(": " + inQuotes(name) + R"( is not "lookup", "ingress" or "egress")");
  }
  void read(ondemand::value& value, Table& table) const {
    std::string_view const name = json_.text(value);
    if (tableByName(name, table)) return;
    json_.failMember(": " + inQuotes(name) + R"( is not "ip", "ip6", "mac" or "tcam")");
  }

  void read(ondemand::value& value, std::vector<Qualifier>& qualifiers) {
    bool const mayOmitMask = header_.version.number >= 2;
    MemberBits const required = bit(fieldValue) | (mayOmitMask ? 0 : bit(fieldMask));
    std::uint32_t seen = 0;
    json_.eachField(json_.object(value), 1, [&](std::string_view name, ondemand::value& record) {
      const QualifierName* const known = qualifierByName(name);
      if (known == nullptr) {
        json_.failMember(" is not a qualifier" + suggestion(name, namesOf(qualifierList())));
      }
      json_.once(seen, known->index);
      Qualifier& qualifier = qualifiers.emplace_back();
      qualifier.type = known->type;
      qualifier.kind = known->kind;
      std::optional<unsigned> prefix;
      auto const readPart = [&](std::size_t field, ondemand::value& part) {
        if (field == fieldStatus) {
          read(part, qualifier.status);
        } else if (field == fieldMask) {
          read(part, qualifier, true);
        } else {
          prefix = valueRead(part, qualifier);
        }
      };
      bool const hasMask =
          (recordRead(record, qualifierFields, required, readPart) & bit(fieldMask)) != 0;
      if (prefix && hasMask) {
        json_.memberIs(maskName, 2);
        json_.failMember(" stands beside the length of a prefix");
      }
      if (!hasMask) maskFill(qualifier, prefix.value_or(known->bits));
    });
  }

  /// The value of a qualifier; returns the length of its prefix if it has one.
  std::optional<unsigned> valueRead(ondemand::value& value, Qualifier& qualifier) const {
    bool const isIp = qualifier.kind == QualifierKind::ip;
    bool const mayBePrefix = header_.version.number >= 2 &&
                             (isIp || qualifier.kind == QualifierKind::ip6) &&
                             value.raw_json_token().starts_with('"');
    if (!mayBePrefix) {
      read(value, qualifier, false);
      return std::nullopt;
    }
    std::string_view const text = json_.text(value);
    std::size_t const slash = text.find('/');
    std::string_view const address = text.substr(0, slash);
    std::optional<unsigned> length;
    bool isRight =
        isIp ? ipFromText(address, qualifier.value) : ip6FromText(address, qualifier.ip6.value);
    if (slash != text.npos) {
      length = prefixLength(text.substr(slash + 1), isIp ? 32 : 128);
      isRight = isRight && length;
    }
    if (!isRight) {
      json_.failMember(
          ": " + inQuotes(text) +
          (isIp ? " is not an IPv4 address or prefix" : " is not an IPv6 address or prefix"));
    }
    return length;
  }

  static std::optional<unsigned> prefixLength(std::string_view digits, unsigned longest) {
    unsigned length = 0;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
    bool const isNumber = error == std::errc() && end == digits.data() + digits.size() &&
                          (digits.size() == 1 || digits.front() != '0');
    return isNumber && length <= longest ? std::optional(length) : std::nullopt;
  }

  /// Sets the mask to the first `bits` of an address, or the last `bits` of a number.
  static void maskFill(Qualifier& qualifier, unsigned bits) {
    switch (qualifier.kind) {
      case QualifierKind::word:
        qualifier.mask = (std::uint32_t{1} << bits) - 1;
        return;
      case QualifierKind::ip:
        qualifier.mask = ipMask(bits);
        return;
      case QualifierKind::ip6:
        qualifier.ip6.mask = ip6Mask(bits);
        return;
      case QualifierKind::mac:
        qualifier.mac.mask.fill(0xFF);
        return;
    }
  }

  void read(ondemand::value& value, std::vector<RangeChecker>& rangeCheckers) {
    std::uint32_t seen = 0;
    json_.eachField(json_.object(value), 1, [&](std::string_view name, ondemand::value& record) {
      const RangeCheckerName* const known = rangeCheckerByName(name);
      if (known == nullptr) {
        json_.failMember(" is not a range checker" + suggestion(name, namesOf(rangeCheckerList())));
      }
      json_.once(seen, known->type);
      RangeChecker& range = rangeCheckers.emplace_back();
      range.type = known->type;
      auto const readPart = [&](std::size_t field, ondemand::value& part) {
        if (field == fieldStatus) {
          read(part, range.status);
        } else {
          read(part, field == fieldLow ? range.low : range.high);
        }
      };
      recordRead(record, rangeCheckerFields, bit(fieldLow) | bit(fieldHigh), readPart);
      if (range.low <= range.high) [[likely]]
        return;
      warn(lowOverHigh, [&] {
        return "entry: member \"rangeCheckers." + std::string(known->name) +
               "\": " + std::to_string(range.low) + " is over " + std::to_string(range.high) +
               ", so that it matches nothing";
      });
    });
  }

  /// The value or the mask.
  void read(ondemand::value& value, Qualifier& qualifier, bool isMask) const {
    switch (qualifier.kind) {
      case QualifierKind::ip:
        // From version 2 on a number is refused: a mask of 8 is nearly always a mistake.
        if (header_.version.number >= 2 || value.raw_json_token().starts_with('"')) {
          std::string_view const address = json_.text(value, "an IPv4 address");
          if (ipFromText(address, isMask ? qualifier.mask : qualifier.value)) return;
          json_.failMember(": " + inQuotes(address) + " is not an IPv4 address");
        }
        [[fallthrough]];
      case QualifierKind::word:
        read(value, isMask ? qualifier.mask : qualifier.value);
        return;
      case QualifierKind::ip6: {
        std::string_view const address = json_.text(value, "an IPv6 address");
        if (ip6FromText(address, isMask ? qualifier.ip6.mask : qualifier.ip6.value)) return;
        json_.failMember(": " + inQuotes(address) + " is not an IPv6 address");
      }
      case QualifierKind::mac: {
        std::string_view const address = json_.text(value, "a MAC address");
        if (macFromText(address, isMask ? qualifier.mac.mask : qualifier.mac.value)) return;
        json_.failMember(": " + inQuotes(address) + " is not a MAC address");
      }
    }
  }

  /// Calls `use(field, value)` for each field of a record, which may have `fields` and must have
  /// those that are `required`; returns those that it has.
  template <class Use>
  MemberBits recordRead(ondemand::value& record, MemberBits fields, MemberBits required,
                        const Use& use) {
    MemberBits seen = 0;
    json_.eachField(json_.object(record), 2, [&](std::string_view name, ondemand::value& value) {
      std::size_t const field = fieldNames.find(name);
      if (field == fieldNames.none || (fields & bit(field)) == 0) {
        json_.failMember(" is not known" + suggestion(name, picked(fieldNames, fields)));
      }
      json_.once(seen, field);
      use(field, value);
    });
    MemberBits const missing = required & ~seen;
    if (missing != 0) [[unlikely]] {
      json_.memberIs(fieldNames[static_cast<std::size_t>(std::countr_zero(missing))], 2);
      json_.failMember(" is missing");
    }
    return seen;
  }

  // --- what a line alone does not show

  /// Names the members that make a place, those that the line leaves out too.
  void placeChecked() {
    const Place& place = group_.place;
    if (places_.size() == mostGroups) {
      json_.fail("a snapshot has at most " + std::to_string(mostGroups) + " groups");
    }
    if (places_.insert(GroupPlace(place)).second) return;
    json_.fail("the place of members \"stage\": " + inQuotes(stageName(place.stage).view()) +
               ", \"pipe\": " + std::to_string(place.pipe) +
               ", \"groupPriority\": " + std::to_string(place.groupPriority) +
               ", \"groupId\": " + std::to_string(place.groupId) +
               ", \"copyId\": " + std::to_string(place.copyId) + " stands in an earlier line too");
  }

  void pipeChecked(const Place& place) {
    if (!header_.hasNumPipes || place.pipe < header_.numPipes) [[likely]]
      return;
    warn(pipeBeyondNumPipes, [&] {
      return "member \"pipe\": " + std::to_string(place.pipe) +
             ", but the header's \"numPipes\" is " + std::to_string(header_.numPipes);
    });
  }

  JsonLines json_;
  KeyedTable<GroupPlace> places_;
  std::array<std::string, 3> headerTexts_;
  SnapshotEnd met_;
  bool isEnded_ = false;
};

}  // namespace

std::string_view snapshotRuledOut(std::string_view start) noexcept {
  std::size_t const first = start.find_first_not_of(" \t\r\n");
  if (first == start.npos || start[first] != '{') return "its first line is no JSON object";
  std::string_view const line = start.substr(first, start.find('\n', first) - first);
  bool const isHeader =
      line.find("\"type\"") != line.npos && line.find("\"snapshot\"") != line.npos;
  return isHeader ? "" : R"(its first line is not {"type":"snapshot","version":2})";
}

std::unique_ptr<Source> openSnapshot(InputFile file, Complaints& complaints) {
  return std::make_unique<SnapshotReader>(std::move(file), complaints);
}

}  // namespace tcamshow
