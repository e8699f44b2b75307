// The members of a snapshot: the table, the documents that describe it, and those who use it.
#include "snapshot/Members.h"

#include <gtest/gtest.h>

#include <concepts>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace tcamshow {
namespace {

/// How a document writes a member's form and default.
struct Style {
  const char* quote;  ///< around what is typed as it stands
  const char* minus;
};
constexpr Style markdown{"`", "\xE2\x88\x92"};
constexpr Style manual{"", "\\-"};

std::string numberText(const Style& style, const std::string& number) {
  return number.starts_with('-') ? style.minus + number.substr(1) : number;
}
std::string quoted(const Style& style, std::string_view text) {
  return style.quote + std::string(text) + style.quote;
}
std::string listed(const Style& style, std::vector<std::string> names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += i == 0 ? "" : i + 1 == names.size() ? " or " : ", ";
    text += quoted(style, '"' + names[i] + '"');
  }
  return text;
}

std::string formOf(const Style&, SnapshotVersion) { return "the number 1 or 2"; }
std::string formOf(const Style&, const Time&) { return "time"; }
template <std::integral Number>
std::string formOf(const Style& style, Number) {
  return "number, " + numberText(style, std::to_string(std::numeric_limits<Number>::min())) +
         " to " + std::to_string(std::numeric_limits<Number>::max());
}
std::string formOf(const Style&, std::string_view) { return "string"; }
std::string formOf(const Style& style, Stage) {
  std::vector<std::string> names;
  for (Stage const stage : {Stage::lookup, Stage::ingress, Stage::egress}) {
    names.emplace_back(stageName(stage).view());
  }
  return listed(style, names);
}
std::string formOf(const Style& style, Table) {
  std::vector<std::string> names;
  for (Table const table : {Table::ip, Table::ip6, Table::mac, Table::tcam}) {
    names.emplace_back(tableName(table));
  }
  return listed(style, names);
}
std::string formOf(const Style& style, EntryState) {
  std::vector<std::string> names;
  for (EntryState const state :
       {EntryState::programmed, EntryState::pending, EntryState::failed, EntryState::unknown}) {
    names.emplace_back(stateName(state));
  }
  return listed(style, names);
}
template <class Value>
std::string formOf(const Style& style, const std::optional<Value>&) {
  return formOf(style, Value());
}
template <class Record>
std::string formOf(const Style&, const std::vector<Record>&) {
  return "object";
}

std::string usualText(const Style&, SnapshotVersion version) {
  return std::to_string(version.number);
}
template <std::integral Number>
std::string usualText(const Style& style, Number number) {
  return numberText(style, std::to_string(number));
}
std::string usualText(const Style& style, std::string_view text) {
  return quoted(style, '"' + std::string(text) + '"');
}
std::string usualText(const Style& style, Stage stage) {
  return quoted(style, '"' + std::string(stageName(stage).view()) + '"');
}
std::string usualText(const Style& style, Table table) {
  return quoted(style, '"' + std::string(tableName(table)) + '"');
}
std::string usualText(const Style&, const Time&) { return "not given"; }
std::string usualText(const Style&, const std::optional<EntryState>&) { return "not given"; }
template <std::integral Number>
std::string usualText(const Style&, const std::optional<Number>&) {
  return "not reported";
}
template <class Record>
std::string usualText(const Style& style, const std::vector<Record>&) {
  return quoted(style, "{}");
}

struct Description {
  std::string form;
  std::string usual;
};
/// By "OWNER.MEMBER".
using Descriptions = std::map<std::string, Description>;

template <class Owner>
const char* ownerName() {
  if constexpr (std::is_same_v<Owner, Header>) return "header";
  if constexpr (std::is_same_v<Owner, Place>) return "place";
  if constexpr (std::is_same_v<Owner, Group>) return "group";
  if constexpr (std::is_same_v<Owner, Entry>) return "entry";
  if constexpr (std::is_same_v<Owner, SnapshotEnd>) return "end";
  if constexpr (std::is_same_v<Owner, Qualifier>) return "qualifier";
  return "rangeChecker";
}

Descriptions expected(const Style& style) {
  Descriptions descriptions;
  auto const add = [&](auto const& member) {
    using Row = std::decay_t<decltype(member)>;
    auto const usual = usualValue(member);
    descriptions[ownerName<typename Row::Owner>() + ("." + std::string(member.name))] = {
        formOf(style, usual),
        member.presence == Presence::required ? "required" : usualText(style, usual)};
  };
  auto const addAll = [&](auto const&... each) { (add(each), ...); };
  std::apply(addAll, members);
  std::apply(addAll, qualifierMembers);
  std::apply(addAll, rangeCheckerMembers);
  return descriptions;
}

std::string contentOf(const char* path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> cellsOf(const std::string& row) {
  std::vector<std::string> cells;
  std::istringstream rest(row.substr(1));
  for (std::string cell; std::getline(rest, cell, '|');) {
    std::size_t const begin = cell.find_first_not_of(' ');
    std::size_t const end = cell.find_last_not_of(' ');
    cells.push_back(begin == cell.npos ? "" : cell.substr(begin, end - begin + 1));
  }
  return cells;
}

/// The tables of the document. The heading above a table names the owner of its members.
TEST(Members, TheDocumentDescribesTheTable) {
  struct Section {
    const char* start;
    const char* owner;
  };
  constexpr Section sections[] = {
      {"### `\"type\":\"snapshot\"`", "header"},
      {"### The place of a group or an entry", "place"},
      {"### `\"type\":\"group\"`", "group"},
      {"### `\"type\":\"entry\"`", "entry"},
      {"### `\"type\":\"end\"`", "end"},
      {"A qualifier is an object", "qualifier"},
      {"A range checker is an object", "rangeChecker"},
      {"## ", ""},
  };
  Descriptions described;
  std::string owner;
  std::istringstream document(contentOf(TCAMSHOW_DOCS "/tcamshow.md"));
  for (std::string line; std::getline(document, line);) {
    for (Section const& section : sections) {
      if (line.starts_with(section.start)) owner = section.owner;
    }
    if (owner.empty() || !line.starts_with("| `")) continue;
    std::vector<std::string> const cells = cellsOf(line);
    if (cells.size() != 3) continue;  // not of members
    std::istringstream names(cells[0]);
    for (std::string name; std::getline(names, name, ',');) {
      std::size_t const begin = name.find('`') + 1;
      std::string const key = owner + "." + name.substr(begin, name.find('`', begin) - begin);
      EXPECT_TRUE(described.emplace(key, Description{cells[1], cells[2]}).second) << key;
    }
  }
  // Their forms are those of the qualifier's kind.
  EXPECT_EQ(described["qualifier.value"].usual, "required; in version 2 only `value` is");
  EXPECT_EQ(described["qualifier.mask"].usual, "required; in version 2 only `value` is");
  described.erase("qualifier.value");
  described.erase("qualifier.mask");
  Descriptions const all = expected(markdown);
  for (auto const& [name, description] : all) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(described.contains(name));
    // Behind the form stands what the value means.
    std::string const& form = described[name].form;
    EXPECT_EQ(form.substr(0, description.form.size()), description.form);
    bool const isWhole =
        form.size() == description.form.size() ||
        std::string(",:;").find(form[description.form.size()]) != std::string::npos;
    EXPECT_TRUE(isWhole) << form;
    EXPECT_EQ(described[name].usual, description.usual);
  }
  EXPECT_EQ(described.size(), all.size());
}

// .It Li NAME
// FORM; default DEFAULT
TEST(Members, TheManualDescribesTheTable) {
  struct Section {
    const char* start;
    const char* owner;
  };
  constexpr Section sections[] = {
      {".Ss The header", "header"},
      {".Ss The place", "place"},
      {".Ss Groups", "group"},
      {".Ss Entries", "entry"},
      {".Ss The end", "end"},
      {".Ss Qualifiers", "qualifier"},
      {".Ss Range checkers", "rangeChecker"},
      {".Sh ", ""},
  };
  Descriptions described;
  std::string owner;
  std::string name;
  std::istringstream document(contentOf(TCAMSHOW_DOCS "/tcamshow.1"));
  for (std::string line; std::getline(document, line);) {
    for (Section const& section : sections) {
      if (line.starts_with(section.start)) owner = section.owner;
    }
    if (owner.empty()) continue;
    if (!name.empty()) {
      std::size_t const semicolon = line.find("; ");
      ASSERT_NE(semicolon, line.npos) << line;
      std::string usual = line.substr(semicolon + 2);
      if (usual.starts_with("default ")) usual = usual.substr(8);
      EXPECT_TRUE(
          described.emplace(owner + "." + name, Description{line.substr(0, semicolon), usual})
              .second);
    }
    name = line.starts_with(".It Li ") ? line.substr(7) : "";
  }
  described.erase("qualifier.value");
  described.erase("qualifier.mask");
  Descriptions const all = expected(manual);
  for (auto const& [key, description] : all) {
    SCOPED_TRACE(key);
    ASSERT_TRUE(described.contains(key));
    EXPECT_EQ(described[key].form, description.form);
    EXPECT_EQ(described[key].usual, description.usual);
  }
  EXPECT_EQ(described.size(), all.size());
}

TEST(Members, KnowTheirLines) {
  auto const has = [](MemberBits bits, std::string_view name) {
    std::size_t const index = memberNames.find(name);
    return index != memberNames.none && (bits >> index & 1) != 0;
  };
  struct Row {
    const char* name;
    bool isOfHeader;
    bool isOfGroup;
    bool isOfEntry;
    bool isRequired;
    bool isNew = false;  // in version 2
  };
  Row const rows[] = {
      {"type", true, true, true, false},
      {"version", true, false, false, true},
      {"numPipes", true, false, false, false},
      {"pipe", false, true, true, false},
      {"stage", false, true, true, false},
      {"name", false, true, false, false},
      {"table", false, false, true, true},
      {"shadowId", false, false, true, true},
      {"sequence", false, false, true, false},
      {"rangeCheckers", false, false, true, false},
      {"nothing", false, false, false, false},
      {"takenAt", true, false, false, false, true},
      {"totalEntries", false, true, false, false, true},
      {"bytes", false, false, true, false, true},
      {"otherMatch", false, false, true, false, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(has(membersOf<Header>(2), row.name), row.isOfHeader);
    EXPECT_EQ(has(membersOf<Group>(2), row.name), row.isOfGroup);
    EXPECT_EQ(has(membersOf<Entry>(2), row.name), row.isOfEntry);
    MemberBits const required = requiredMembersOf<Header>() | requiredMembersOf<Group>() |
                                requiredMembersOf<Entry>() | requiredMembersOf<SnapshotEnd>();
    EXPECT_EQ(has(required, row.name), row.isRequired);
    MemberBits const first = membersOf<Header>(1) | membersOf<Group>(1) | membersOf<Entry>(1);
    MemberBits const newest = membersOf<Header>(2) | membersOf<Group>(2) | membersOf<Entry>(2);
    EXPECT_EQ(has(newest & ~first, row.name), row.isNew);
  }
}

}  // namespace
}  // namespace tcamshow
