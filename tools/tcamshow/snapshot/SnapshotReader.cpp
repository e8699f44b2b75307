#include "snapshot/SnapshotReader.h"

// The parser's checks of its caller write to memory that it may not have got.
#define SIMDJSON_DEVELOPMENT_CHECKS 0
#include <simdjson.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>

#include "io/Complain.h"
#include "io/InputError.h"
#include "snapshot/JsonSyntax.h"
#include "snapshot/NameTable.h"

namespace tcamshow {
namespace {

namespace ondemand = simdjson::ondemand;
static_assert(LineReader::padding >= simdjson::SIMDJSON_PADDING);

// The members of every kind of line, and of the records in them.
enum Member : std::uint8_t {
  memberType,
  memberVersion,
  memberNumPipes,
  memberStage,
  memberPipe,
  memberGroupPriority,
  memberGroupId,
  memberCopyId,
  memberName,
  memberAvailableEntries,
  memberFreeEntries,
  memberTable,
  memberShadowId,
  memberSequence,
  memberPriority,
  memberDescription,
  memberAction,
  memberHits,
  memberCounterStatus,
  memberFeaturePriority,
  memberFeature,
  memberQualifiers,
  memberRangeCheckers,
};

constexpr NameTable memberNames({
    "type",          "version",    "numPipes",      "stage",         "pipe",
    "groupPriority", "groupId",    "copyId",        "name",          "availableEntries",
    "freeEntries",   "table",      "shadowId",      "sequence",      "priority",
    "description",   "action",     "hits",          "counterStatus", "featurePriority",
    "feature",       "qualifiers", "rangeCheckers",
});
static_assert(memberNames[memberRangeCheckers] == "rangeCheckers");

constexpr std::uint32_t bit(std::size_t index) { return std::uint32_t{1} << index; }
constexpr std::uint32_t placeMembers = bit(memberStage) | bit(memberPipe) |
                                       bit(memberGroupPriority) | bit(memberGroupId) |
                                       bit(memberCopyId);
constexpr std::uint32_t headerMembers = bit(memberType) | bit(memberVersion) | bit(memberNumPipes);
constexpr std::uint32_t groupMembers = bit(memberType) | placeMembers | bit(memberName) |
                                       bit(memberAvailableEntries) | bit(memberFreeEntries);
constexpr std::uint32_t entryMembers =
    bit(memberType) | placeMembers | bit(memberTable) | bit(memberShadowId) | bit(memberSequence) |
    bit(memberPriority) | bit(memberDescription) | bit(memberAction) | bit(memberHits) |
    bit(memberCounterStatus) | bit(memberFeaturePriority) | bit(memberFeature) |
    bit(memberQualifiers) | bit(memberRangeCheckers);

enum Field : std::uint8_t { fieldValue, fieldMask, fieldLow, fieldHigh, fieldStatus };
constexpr NameTable fieldNames({"value", "mask", "low", "high", "status"});

enum LineType : std::uint8_t { lineHeader, lineGroup, lineEntry };
constexpr NameTable lineTypes({"snapshot", "group", "entry"});

struct PlaceHash {
  std::size_t operator()(const Place& place) const noexcept {
    std::uint64_t const parts[] = {
        static_cast<std::uint64_t>(place.stage) << 16 | static_cast<std::uint16_t>(place.pipe),
        std::uint64_t{place.groupPriority} << 32 | place.groupId, place.copyId};
    std::uint64_t hash = 0;
    for (std::uint64_t const part : parts) {
      hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
  }
};

/// Up to where a string is plain: the first byte that is a quote, a backslash or a control
/// character. One of them, or the padding, follows every string.
const char* plainEnd(const char* at) noexcept {
  constexpr std::uint64_t ones = 0x0101010101010101U;
  constexpr std::uint64_t highs = ones * 0x80;
  if constexpr (std::endian::native == std::endian::little) {
    for (;; at += sizeof(std::uint64_t)) {
      std::uint64_t word;
      std::memcpy(&word, at, sizeof word);
      // A byte that is 0 borrows from the one above it, so only the lowest mark is sure; it is the
      // one that is asked for.
      std::uint64_t const quotes = word ^ ones * '"';
      std::uint64_t const backslashes = word ^ ones * '\\';
      std::uint64_t const deletes = word ^ ones * 0x7F;
      std::uint64_t const marks = ((quotes - ones) & ~quotes) |
                                  ((backslashes - ones) & ~backslashes) |
                                  ((deletes - ones) & ~deletes) | ((word - ones * 0x20) & ~word);
      if ((marks & highs) != 0) return at + std::countr_zero(marks & highs) / 8;
    }
  } else {
    while (*at != '"' && *at != '\\' && *at != 0x7F && static_cast<unsigned char>(*at) >= 0x20) {
      ++at;
    }
    return at;
  }
}

std::string hexadecimal(unsigned char c) {
  static constexpr char digits[] = "0123456789ABCDEF";
  return {digits[c >> 4], digits[c & 15]};
}

// On its first use simdjson chooses its code, with memory that may not be there, in functions that
// cannot throw: they end in std::terminate. That is told as any other want of memory is.
void parserSetUp() {
  auto const before = std::set_terminate([] {
    complain("out of memory");
    std::exit(exitFailure);
  });
  static_cast<void>(simdjson::get_active_implementation()->name());
  std::set_terminate(before);
}

}  // namespace

class SnapshotReader::Impl {
 public:
  explicit Impl(InputFile& file) : lines_(file) {
    parserSetUp();
    headerRead();
  }

  const Header& header() const noexcept { return header_; }
  const GroupLine& group() const noexcept { return group_; }
  const EntryLine& entry() const noexcept { return entry_; }
  std::uint64_t lineNumber() const noexcept { return lines_.lineNumber(); }

  Line next() {
    ondemand::document document;
    ondemand::object members;
    if (!lineStarted(document, members)) return Line::end;
    switch (lineType_) {
      case lineGroup:
        groupRead(members);
        lineEnded(document);
        if (!places_.insert(group_.place).second) failPlace(group_.place);
        return Line::group;
      case lineEntry:
        entryRead(members);
        lineEnded(document);
        return Line::entry;
      default:
        fail("only the first line is the header");
    }
  }

 private:
  // --- messages

  [[noreturn]] void fail(std::string_view message) const {
    std::string text(kind_);
    if (!text.empty()) text += ": ";
    text += message;
    lines_.fail(std::move(text));
  }

  /// Names the member: the one of the line, and where it is a record in a collection, the record
  /// and its field.
  [[noreturn]] void failMember(std::string_view message) const {
    std::string text = "member \"";
    text += shown(member_);
    if (record_.data() != nullptr) (text += '.') += shown(record_);
    if (field_.data() != nullptr) (text += '.') += shown(field_);
    text += "\"";
    text += message;
    fail(text);
  }

  /// Names the members that make a place, those that the line leaves out too.
  [[noreturn]] void failPlace(const Place& place) const {
    fail("the place of members \"stage\": " + inQuotes(stageName(place.stage).view()) +
         ", \"pipe\": " + std::to_string(place.pipe) + ", \"groupPriority\": " +
         std::to_string(place.groupPriority) + ", \"groupId\": " + std::to_string(place.groupId) +
         ", \"copyId\": " + std::to_string(place.copyId) + " stands in an earlier line too");
  }

  /// The value as a message shows it.
  static std::string described(ondemand::value& value) {
    std::string_view token = value.raw_json_token();
    while (!token.empty() &&
           (token.back() == ' ' || token.back() == '\t' || token.back() == '\r')) {
      token.remove_suffix(1);
    }
    if (token.starts_with('{')) return "an object";
    if (token.starts_with('[')) return "an array";
    return shown(token);
  }

  template <class Number>
  [[noreturn]] void failNumber(ondemand::value& value) const {
    failMember(": " + described(value) + " is not a whole number from " +
               std::to_string(std::numeric_limits<Number>::min()) + " to " +
               std::to_string(std::numeric_limits<Number>::max()));
  }

  /// Names the byte of the line, and the member that was read last. What is wrong there counts: the
  /// parser may have met another fault first. Its own message is for what is no fault of JSON.
  [[noreturn]] void failSyntax(std::string message) const {
    JsonFault const found = findJsonFault(line_);
    if (found.byte != 0)
      message = std::string(found.what) + ", at byte " + std::to_string(found.byte);
    if (found.hasMember) message += ", member \"" + shown(found.member) + '"';
    fail(message);
  }
  [[noreturn]] void failJson(simdjson::error_code error) const {
    if (error == simdjson::MEMALLOC) throw std::bad_alloc();
    failSyntax(std::string("not valid JSON: ") + simdjson::error_message(error));
  }

  void check(simdjson::error_code error) const {
    if (error != simdjson::SUCCESS) [[unlikely]]
      failJson(error);
  }

  // --- values

  template <class Number>
  Number number(ondemand::value& value) const {
    using Wide = std::conditional_t<std::is_signed_v<Number>, std::int64_t, std::uint64_t>;
    Wide wide = 0;
    simdjson::error_code error;
    if constexpr (std::is_signed_v<Number>) {
      error = value.get_int64().get(wide);
    } else {
      error = value.get_uint64().get(wide);
    }
    if (error != simdjson::SUCCESS || wide < std::numeric_limits<Number>::min() ||
        wide > std::numeric_limits<Number>::max()) [[unlikely]] {
      failNumber<Number>(value);
    }
    return static_cast<Number>(wide);
  }

  /// A string's text. Where nothing in it is escaped, which is the rule, that is the line's own.
  /// With `isPlain`, says whether the text is known to hold no control character.
  std::string_view text(ondemand::value& value, std::string_view expected = "a string",
                        bool* isPlain = nullptr) const {
    std::string_view const token = value.raw_json_token();
    if (!token.starts_with('"')) [[unlikely]] {
      failMember(": " + described(value) + " is not " + std::string(expected));
    }
    const char* const from = token.data() + 1;
    const char* const end = plainEnd(from);
    if (*end == '"') [[likely]] {
      check(value.get_raw_json_string().error());
      if (isPlain != nullptr) *isPlain = true;
      return {from, static_cast<std::size_t>(end - from)};
    }
    ondemand::raw_json_string raw;
    check(value.get_raw_json_string().get(raw));
    std::string_view text;
    if (!unescape(raw, text)) failMember(": the string has a bad escape");
    return text;
  }

  /// In place of the parser's own buffer, which it uses also where there was no memory for it.
  bool unescape(ondemand::raw_json_string raw, std::string_view& text) const {
    return parser_.unescape(raw, textsEnd_).get(text) == simdjson::SUCCESS;
  }

  std::string_view printable(ondemand::value& value) const {
    bool isPlain = false;
    std::string_view const result = text(value, "a string", &isPlain);
    if (isPlain) [[likely]]
      return result;
    for (char const c : result) {
      auto const byte = static_cast<unsigned char>(c);
      if (byte < 0x20 || byte == 0x7F) {
        failMember(": holds the control character U+00" + hexadecimal(byte));
      }
    }
    return result;
  }

  /// A member's name, as text() gives a value.
  std::string_view name(ondemand::field& field) const {
    const char* const from = field.key().raw();
    const char* const end = plainEnd(from);
    if (*end == '"') [[likely]]
      return {from, static_cast<std::size_t>(end - from)};
    std::string_view name;
    if (!unescape(field.key(), name)) {
      failSyntax("the name of a member has a bad escape");
    }
    return name;
  }

  ondemand::object object(ondemand::value& value) const {
    ondemand::object result;
    simdjson::error_code const error = value.get_object().get(result);
    if (error == simdjson::INCORRECT_TYPE) [[unlikely]] {
      failMember(": " + described(value) + " is not an object");
    }
    check(error);
    return result;
  }

  void qualifierWord(ondemand::value& value, const Qualifier& qualifier,
                     std::uint32_t& word) const {
    if (qualifier.kind == QualifierKind::word) {
      word = number<std::uint32_t>(value);
      return;
    }
    if (!value.raw_json_token().starts_with('"')) {
      word = number<std::uint32_t>(value);
      return;
    }
    std::string_view const address = text(value);
    if (!ipFromText(address, word))
      failMember(": " + inQuotes(address) + " is not an IPv4 address");
  }

  void qualifierValue(ondemand::value& value, Qualifier& qualifier, bool isMask) const {
    switch (qualifier.kind) {
      case QualifierKind::word:
      case QualifierKind::ip:
        qualifierWord(value, qualifier, isMask ? qualifier.mask : qualifier.value);
        return;
      case QualifierKind::ip6: {
        std::string_view const address = text(value, "an IPv6 address");
        if (!ip6FromText(address, isMask ? qualifier.ip6.mask : qualifier.ip6.value)) {
          failMember(": " + inQuotes(address) + " is not an IPv6 address");
        }
        return;
      }
      case QualifierKind::mac: {
        std::string_view const address = text(value, "a MAC address");
        if (!macFromText(address, isMask ? qualifier.mac.mask : qualifier.mac.value)) {
          failMember(": " + inQuotes(address) + " is not a MAC address");
        }
        return;
      }
    }
  }

  // --- lines

  void headerRead() {
    ondemand::document document;
    ondemand::object members;
    bool const any = lineStarted(document, members);
    if (!any || lineType_ != lineHeader) {
      std::string message = any ? "" : "the snapshot is empty: ";
      kind_ = {};
      message += R"(the first line must be {"type":"snapshot","version":1})";
      if (!any) throw InputError(lines_.fileName(), lines_.lineNumber() + 1, message);
      fail(message);
    }
    std::uint32_t const seen =
        eachMember(members, headerMembers, [this](Member member, auto& value) {
          if (member == memberVersion) {
            auto const version = number<std::uint32_t>(value);
            if (version != 1) {
              failMember(": version " + std::to_string(version) + " is not known, only 1 is");
            }
          } else {
            header_.numPipes = number<std::uint8_t>(value);
          }
        });
    require(seen, memberVersion);
    lineEnded(document);
  }

  void groupRead(ondemand::object& members) {
    group_ = GroupLine();
    eachMember(members, groupMembers, [this](Member member, auto& value) {
      switch (member) {
        case memberName:
          group_.name = printable(value);
          break;
        case memberAvailableEntries:
          group_.availableEntries = number<std::uint32_t>(value);
          break;
        case memberFreeEntries:
          group_.freeEntries = number<std::uint32_t>(value);
          break;
        default:
          placeMemberRead(member, value, group_.place);
      }
    });
  }

  void entryRead(ondemand::object& members) {
    entry_.clear();
    std::uint32_t const seen =
        eachMember(members, entryMembers,
                   [this](Member member, auto& value) { entryMemberRead(member, value); });
    require(seen, memberTable);
    require(seen, memberShadowId);
  }

  void entryMemberRead(Member member, ondemand::value& value) {
    switch (member) {
      case memberTable: {
        std::string_view const name = text(value);
        if (!tableByName(name, entry_.table)) {
          failMember(": " + inQuotes(name) + R"( is not "ip", "ip6", "mac" or "tcam")");
        }
        break;
      }
      case memberShadowId:
        entry_.shadowId = number<std::uint64_t>(value);
        break;
      case memberSequence:
        entry_.sequence = number<std::uint32_t>(value);
        break;
      case memberPriority:
        entry_.priority = number<std::uint32_t>(value);
        break;
      case memberDescription:
        entry_.description = printable(value);
        break;
      case memberAction:
        entry_.action = printable(value);
        break;
      case memberHits:
        entry_.hits = number<std::uint64_t>(value);
        break;
      case memberCounterStatus:
        entry_.counterStatus = number<std::uint8_t>(value);
        break;
      case memberFeaturePriority:
        entry_.featurePriority = number<std::uint32_t>(value);
        break;
      case memberFeature:
        entry_.feature = printable(value);
        break;
      case memberQualifiers:
        qualifiersRead(value);
        break;
      case memberRangeCheckers:
        rangeCheckersRead(value);
        break;
      default:
        placeMemberRead(member, value, entry_.place);
    }
  }

  void placeMemberRead(Member member, ondemand::value& value, Place& place) const {
    switch (member) {
      case memberStage: {
        std::string_view const name = text(value);
        if (!stageByName(name, place.stage)) {
          failMember(": " + inQuotes(name) + R"( is not "lookup", "ingress" or "egress")");
        }
        break;
      }
      case memberPipe:
        place.pipe = number<std::int16_t>(value);
        break;
      case memberGroupPriority:
        place.groupPriority = number<std::uint32_t>(value);
        break;
      case memberGroupId:
        place.groupId = number<std::uint32_t>(value);
        break;
      default:
        place.copyId = number<std::uint32_t>(value);
    }
  }

  void qualifiersRead(ondemand::value& value) {
    std::uint32_t seen = 0;
    eachField(object(value), record_, [&](std::string_view name, ondemand::value& record) {
      const QualifierName* const known = qualifierByName(name);
      if (known == nullptr) failMember(" is not a qualifier");
      once(seen, known->index);
      Qualifier& qualifier = entry_.qualifiers.emplace_back();
      qualifier.type = known->type;
      qualifier.kind = known->kind;
      recordRead(record, bit(fieldValue) | bit(fieldMask),
                 [&](std::size_t field, ondemand::value& part) {
                   if (field == fieldStatus) {
                     qualifier.status = number<std::uint8_t>(part);
                   } else {
                     qualifierValue(part, qualifier, field == fieldMask);
                   }
                 });
    });
  }

  void rangeCheckersRead(ondemand::value& value) {
    std::uint32_t seen = 0;
    eachField(object(value), record_, [&](std::string_view name, ondemand::value& record) {
      const RangeCheckerName* const known = rangeCheckerByName(name);
      if (known == nullptr) failMember(" is not a range checker");
      once(seen, known->type);
      RangeChecker& range = entry_.rangeCheckers.emplace_back();
      range.type = known->type;
      recordRead(record, bit(fieldLow) | bit(fieldHigh),
                 [&](std::size_t field, ondemand::value& part) {
                   if (field == fieldStatus) {
                     range.status = number<std::uint8_t>(part);
                   } else {
                     (field == fieldLow ? range.low : range.high) = number<std::int32_t>(part);
                   }
                 });
    });
  }

  /// Calls `use(field, value)` for each field of a record, which has all of `required` and may have
  /// a status.
  template <class Use>
  void recordRead(ondemand::value& record, std::uint32_t required, const Use& use) {
    std::uint32_t seen = 0;
    eachField(object(record), field_, [&](std::string_view name, ondemand::value& value) {
      std::size_t const field = fieldNames.find(name);
      if (field == fieldNames.none || ((required | bit(fieldStatus)) & bit(field)) == 0) {
        failMember(" is not known");
      }
      once(seen, field);
      use(field, value);
    });
    std::uint32_t const missing = required & ~seen;
    if (missing != 0) [[unlikely]] {
      field_ = fieldNames[static_cast<std::size_t>(std::countr_zero(missing))];
      failMember(" is missing");
    }
  }

  // --- the objects of a line

  /// Reads the next line that is not blank as far as its type; false at the end.
  bool lineStarted(ondemand::document& document, ondemand::object& members) {
    std::string_view line;
    kind_ = member_ = record_ = field_ = {};
    do {
      if (!lines_.next(line)) return false;
    } while (line.find_first_not_of(" \t\r") == line.npos);
    line_ = line;
    if (textsRoom_ < line.size() + LineReader::padding) {
      std::size_t const room = std::max(2 * textsRoom_, line.size() + LineReader::padding);
      textsRoom_ = 0;
      texts_.reset(new std::uint8_t[room]);
      textsRoom_ = room;
    }
    check(
        parser_.iterate(line.data(), line.size(), line.size() + LineReader::padding).get(document));
    start(document, members);
    lineType_ = lineTypeRead(members);
    kind_ = lineTypes[lineType_];
    start(document, members);
    return true;
  }

  void start(ondemand::document& document, ondemand::object& members) const {
    textsEnd_ = texts_.get();
    document.rewind();
    simdjson::error_code const error = document.get_object().get(members);
    if (error == simdjson::INCORRECT_TYPE) fail("the line is not a JSON object");
    check(error);
  }

  /// The type may stand anywhere in the line; where it comes first, nothing else is looked at.
  LineType lineTypeRead(ondemand::object& members) {
    for (auto result : members) {
      check(result.error());
      ondemand::field&& field = std::move(result).value_unsafe();
      if (name(field) != "type") continue;
      ondemand::value& value = field.value();
      member_ = memberNames[memberType];
      std::string_view const type = text(value);
      std::size_t const found = lineTypes.find(type);
      if (found == lineTypes.none) {
        failMember(": " + inQuotes(type) + R"( is not "snapshot", "group" or "entry")");
      }
      return static_cast<LineType>(found);
    }
    member_ = memberNames[memberType];
    failMember(" is missing");
  }

  void lineEnded(ondemand::document& document) const {
    // There is a location only where something is left.
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
      failSyntax("not valid JSON: something follows the object");
    }
  }

  /// Calls `use(member, value)` for each member but the type; returns those that were there.
  template <class Use>
  std::uint32_t eachMember(ondemand::object& members, std::uint32_t known, const Use& use) {
    std::uint32_t seen = 0;
    eachField(members, member_, [&](std::string_view name, ondemand::value& value) {
      std::size_t const member = memberNames.find(name);
      if (member == memberNames.none || (known & bit(member)) == 0) failMember(" is not known");
      once(seen, member);
      if (member != memberType) use(static_cast<Member>(member), value);
    });
    return seen;
  }

  /// Calls `use(name, value)` for each field, with `place`, which messages name, set to its name.
  template <class Use>
  void eachField(ondemand::object fields, std::string_view& place, const Use& use) {
    for (auto result : fields) {
      check(result.error());
      // The field is used where it stands: it is too costly to hand over.
      ondemand::field&& field = std::move(result).value_unsafe();
      place = name(field);
      use(place, field.value());
    }
    place = {};
  }

  void once(std::uint32_t& seen, std::size_t index) const {
    if ((seen & bit(index)) != 0) [[unlikely]]
      failMember(" stands twice");
    seen |= bit(index);
  }

  void require(std::uint32_t seen, Member member) {
    if ((seen & bit(member)) != 0) return;
    member_ = memberNames[member];
    failMember(" is missing");
  }

  LineReader lines_;
  ondemand::parser parser_;
  std::unordered_set<Place, PlaceHash> places_;
  Header header_;
  GroupLine group_;
  EntryLine entry_;
  LineType lineType_ = lineHeader;
  std::string_view line_;
  // The line's texts that had escapes, one behind the other: no longer than the line.
  std::unique_ptr<std::uint8_t[]> texts_;
  std::size_t textsRoom_ = 0;
  mutable std::uint8_t* textsEnd_ = nullptr;
  // What messages name: the kind of line, and where in it the reader is.
  std::string_view kind_;
  std::string_view member_;
  std::string_view record_;
  std::string_view field_;
};

SnapshotReader::SnapshotReader(InputFile& file) : impl_(std::make_unique<Impl>(file)) {}
SnapshotReader::~SnapshotReader() = default;
const Header& SnapshotReader::header() const noexcept { return impl_->header(); }
SnapshotReader::Line SnapshotReader::next() { return impl_->next(); }
const GroupLine& SnapshotReader::group() const noexcept { return impl_->group(); }
const EntryLine& SnapshotReader::entry() const noexcept { return impl_->entry(); }
std::uint64_t SnapshotReader::lineNumber() const noexcept { return impl_->lineNumber(); }

}  // namespace tcamshow
