#include "sources/Ovs.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "io/LineReader.h"
#include "io/SafeText.h"
#include "snapshot/JsonParser.h"
#include "snapshot/Snapshot.h"
#include "sources/NumberText.h"
#include "sources/OvsMatch.h"

namespace tcamshow {
namespace {

constexpr std::string_view actionsSign = "actions=";
/// Tables have numbers below this one. A table that is named gets a group id from here on.
constexpr std::uint32_t firstNamedTable = 256;
constexpr std::uint32_t usualPriority = 32768;

constexpr bool isSeparator(char c) noexcept { return c == ' ' || c == ','; }

std::string_view trimmed(std::string_view text) noexcept {
  std::size_t const first = text.find_first_not_of(' ');
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// The characters at which partAtFront() stops. All others belong to the part.
constexpr std::array<bool, 256> stops = [] {
  std::array<bool, 256> result{};
  for (char const c : {' ', ',', '=', '"', '(', ')'}) result[static_cast<unsigned char>(c)] = true;
  return result;
}();

/// A part of a flow: its size, and the size of its name.
struct PartSizes {
  std::size_t name;
  std::size_t all;
};

/// The part at the front of `text`. Separators in quotes and in parentheses belong to the part.
PartSizes sizesAtFront(std::string_view text) noexcept {
  std::size_t name = text.npos;
  std::size_t depth = 0;
  std::size_t at = 0;
  for (; at != text.size(); ++at) {
    char const c = text[at];
    if (!stops[static_cast<unsigned char>(c)]) continue;
    if (c == '=') {
      if (name == text.npos) name = at;
    } else if (c == '"') {
      // A backslash protects the character behind it.
      for (++at; at != text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\' && at + 1 != text.size()) ++at;
      }
      if (at == text.size()) break;
    } else if (c == '(') {
      ++depth;
    } else if (c == ')') {
      if (depth != 0) --depth;
    } else if (depth == 0) {
      break;
    }
  }
  return {std::min(name, at), at};
}

/// Whether a field may have this name: the switch may know more fields than this program.
bool isName(std::string_view text) noexcept {
  auto const isOfName = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
  };
  return !text.empty() && std::all_of(text.begin(), text.end(), isOfName);
}

bool isHeading(std::string_view line) noexcept {
  return line.starts_with("NXST_FLOW reply") || line.starts_with("OFPST_FLOW reply");
}

/// Flows of the datapath have another form, and are what the switch caches of its tables.
bool isOfDatapath(std::string_view line) noexcept {
  if (line.starts_with("flow-dump from")) return true;
  return line.find("actions:") != line.npos &&
         (line.find("in_port(") != line.npos || line.find("eth_type(") != line.npos);
}

bool holdsActions(std::string_view line) noexcept {
  for (std::size_t at = line.find(actionsSign); at != line.npos;
       at = line.find(actionsSign, at + 1)) {
    if (at == 0 || isSeparator(line[at - 1])) return true;
  }
  return false;
}

/// Such a flow matches nothing alone: it is a part of a match that several flows make.
bool isOfConjunction(std::string_view actions) noexcept {
  constexpr std::string_view name = "conjunction(";
  for (std::size_t at = actions.find(name); at != actions.npos; at = actions.find(name, at + 1)) {
    if (at == 0 || isSeparator(actions[at - 1])) return true;
  }
  return false;
}

class OvsSource final : public Source {
 public:
  OvsSource(InputFile file, Complaints& complaints)
      : Source(complaints), lines_(std::move(file)), match_(lines_) {}

  const std::string& fileName() const noexcept override { return lines_.fileName(); }
  std::uint64_t lineNumber() const noexcept override { return lines_.lineNumber(); }

  Item next() override {
    if (isEntryReady_) {
      isEntryReady_ = false;
      return Item::entry;
    }
    std::string_view line;
    do {
      if (!lines_.next(line)) return Item::end;
      line = checked(line);
    } while (line.empty() || isHeading(line));
    readFlow(line);
    if (!isNewTable_) return Item::entry;
    isEntryReady_ = true;
    return Item::group;
  }

 private:
  /// A table that the flows name, and its group.
  struct NamedTable {
    std::string name;
    std::uint32_t groupId;
  };

  std::string_view checked(std::string_view line) const {
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (safeAsciiSize(line, LineBreaks::escaped) != line.size()) {
      if (line.find('\0') != line.npos) lines_.fail("the line holds a NUL byte");
      if (findControl(line) != line.npos) lines_.fail("the line holds a control character");
      if (!simdjson::validate_utf8(line.data(), line.size())) {
        lines_.fail("the line holds bytes that are not UTF-8");
      }
    }
    return trimmed(line);
  }

  void readFlow(std::string_view line) {
    entry_.clear();
    entry_.priority = usualPriority;
    match_.clear();
    seen_.reset();
    isNewTable_ = false;
    tableName_ = "0";
    bool isWhole = true;             // whether nothing stands between the parts of the match
    const char* matchEnd = nullptr;  // behind the last part of the match
    bool hasActions = false;
    for (std::string_view rest = line;;) {
      auto const from = static_cast<std::size_t>(
          std::find_if_not(rest.begin(), rest.end(), isSeparator) - rest.begin());
      rest.remove_prefix(from);
      if (rest.empty()) break;
      if (rest.starts_with(actionsSign)) {
        entry_.action = trimmed(rest.substr(actionsSign.size()));
        hasActions = true;
        break;
      }
      PartSizes const sizes = sizesAtFront(rest);
      std::string_view const text = rest.substr(0, sizes.all);
      rest.remove_prefix(text.size());
      OvsPart const part = ovsPart(text, sizes.name);
      if (part.field == OvsField::other && !isName(text.substr(0, sizes.name))) {
        failLine(line, inQuotes(text) + " is not a field");
      }
      if (isMatch(part.field)) {
        // One separator stands between neighbours.
        isWhole = isWhole && (matchEnd == nullptr || matchEnd + 1 == text.data());
        matchEnd = text.data() + text.size();
        match_.add(part);
      } else {
        readMember(part);
      }
    }
    if (!hasActions) failLine(line, "\"actions=\" is missing");
    if (entry_.action.empty()) lines_.fail("the flow has no actions");
    if (isOfConjunction(entry_.action)) match_.addOther(entry_.action);
    match_.fill(entry_);
    describe(isWhole);
    placeTable();
    entry_.shadowId = ++number_;
    entry_.feature = "openflow";
  }

  [[noreturn]] void failLine(std::string_view line, const std::string& reason) const {
    if (isOfDatapath(line)) {
      lines_.fail(
          "this is a flow of the datapath, which caches the tables; the flows of the tables are "
          "read: 'ovs-ofctl dump-flows BRIDGE'");
    }
    lines_.fail(inQuotes(line) + " is not a flow: " + reason);
  }

  void readMember(const OvsPart& part) {
    if (part.field == OvsField::ignored) return;
    auto const index = static_cast<std::size_t>(part.field);
    if (seen_[index]) lines_.fail(shownName(part.text) + " stands twice");
    seen_.set(index);
    switch (part.field) {
      case OvsField::table:
        tableName_ = part.value;
        break;
      case OvsField::packets:
        entry_.hits = number(part, UINT64_MAX);
        entry_.counterStatus = statusProgrammed;
        break;
      case OvsField::bytes:
        entry_.bytes = number(part, UINT64_MAX);
        break;
      default:
        entry_.priority = static_cast<std::uint32_t>(number(part, UINT32_MAX));
    }
  }

  std::uint64_t number(const OvsPart& part, std::uint64_t largest) const {
    std::uint64_t result = 0;
    if (!numberFromText(part.value, largest, result)) {
      lines_.fail(shownName(part.text.substr(0, part.text.find('='))) + ": " +
                  inQuotes(part.value) + " is not a number from 0 to " + std::to_string(largest));
    }
    return result;
  }

  /// The match as it is printed.
  void describe(bool isWhole) {
    const std::vector<OvsPart>& parts = match_.parts();
    if (parts.empty()) return;
    if (isWhole) {
      const char* const begin = parts.front().text.data();
      const char* const end = parts.back().text.data() + parts.back().text.size();
      entry_.description = {begin, static_cast<std::size_t>(end - begin)};
      return;
    }
    description_.clear();
    for (const OvsPart& part : parts) {
      if (!description_.empty()) description_ += ',';
      description_ += part.text;
    }
    entry_.description = description_;
  }

  /// Sets the entry's place, and makes the group if the table is new.
  void placeTable() {
    std::uint64_t table = 0;
    if (numberFromText(tableName_, firstNamedTable - 1, table)) {
      isNewTable_ = !isKnown_[table];
      isKnown_.set(table);
    } else {
      table = namedTable();
    }
    entry_.place.groupId = static_cast<std::uint32_t>(table);
    if (!isNewTable_) return;
    (groupName_ = "table ") += tableName_;
    group_ = Group();
    group_.place = entry_.place;
    group_.name = groupName_;
  }

  std::uint32_t namedTable() {
    if (tableName_.size() > 1 && tableName_.front() == '"' && tableName_.back() == '"') {
      tableName_ = tableName_.substr(1, tableName_.size() - 2);
    }
    if (tableName_.empty()) lines_.fail("table: the name is missing");
    for (const NamedTable& each : named_) {
      if (each.name == tableName_) return each.groupId;
    }
    // A switch has no more, and so few names take neither time nor memory.
    constexpr std::size_t mostNames = 255;
    constexpr std::size_t longestName = 256;
    if (named_.size() == mostNames) lines_.fail("table: there are more than 255 names of tables");
    if (tableName_.size() > longestName) {
      lines_.fail("table: the name is longer than 256 bytes");
    }
    named_.push_back(
        {std::string(tableName_), firstNamedTable + static_cast<std::uint32_t>(named_.size())});
    isNewTable_ = true;
    return named_.back().groupId;
  }

  LineReader lines_;
  OvsMatch match_;
  std::bitset<static_cast<std::size_t>(OvsField::protocol)> seen_;
  std::string_view tableName_;
  std::bitset<firstNamedTable> isKnown_;
  std::vector<NamedTable> named_;
  std::string description_;
  std::string groupName_;
  std::uint64_t number_ = 0;
  bool isNewTable_ = false;
  bool isEntryReady_ = false;
};

}  // namespace

std::string_view ovsRuledOut(std::string_view start) noexcept {
  while (!start.empty()) {
    std::string_view const line = start.substr(0, start.find('\n'));
    std::string_view const text = trimmed(line);
    if (isHeading(text) || isOfDatapath(text) || holdsActions(text)) return "";
    if (text.find_first_not_of('\r') != text.npos) break;
    start.remove_prefix(std::min(line.size() + 1, start.size()));
  }
  return "its first line has no actions=";
}

std::unique_ptr<Source> openOvs(InputFile file, Complaints& complaints) {
  return std::make_unique<OvsSource>(std::move(file), complaints);
}

}  // namespace tcamshow
