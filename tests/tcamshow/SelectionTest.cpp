// --where, --sort, --limit and --count.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Process.h"

namespace tcamshow {
namespace {

using ::testing::HasSubstr;

constexpr const char* snapshot = R"({"type":"snapshot","version":1}
{"type":"entry","table":"ip","shadowId":1,"groupId":1,"sequence":30,"hits":9,"counterStatus":7,"action":"deny","feature":"web","description":"d1","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0","mask":"255.0.0.0"}}}
{"type":"entry","table":"ip","shadowId":2,"groupId":1,"sequence":10,"hits":5,"counterStatus":7,"action":"permit","feature":"dns","description":"d2","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0","mask":"255.255.0.0"}}}
{"type":"entry","table":"mac","shadowId":3,"groupId":2,"sequence":20,"hits":7,"action":"permit","feature":"web","description":"d3"}
{"type":"group","groupId":1,"name":"acl","availableEntries":5}
{"type":"entry","table":"ip","shadowId":4,"groupId":1,"sequence":10,"hits":5,"counterStatus":7,"action":"permit","feature":"web","description":"d4","qualifiers":{"qualifierSrcIp":{"value":"9.0.0.0","mask":"255.0.0.0"}}}
)";

/// The ids of the entries that `tcam` shows.
std::string idsOf(std::vector<std::string> options) {
  options.insert(options.begin(), "tcam");
  ProcessResult const result = runTcamshow(options, {.input = snapshot});
  if (result.status != 0) return result.err;
  std::string ids;
  for (std::size_t at = 0; (at = result.out.find("0x0000000", at)) != std::string::npos; ++at) {
    ids += result.out[at + 9];
  }
  return ids;
}

TEST(Selection, PicksAndOrders) {
  struct Row {
    std::vector<std::string> options;
    const char* ids;
  };
  Row const rows[] = {
      {{}, "1234"},
      {{"--where", "id > 2"}, "34"},
      {{"--where", "feature = web and not action = deny"}, "34"},
      {{"--where", "id > 9"}, ""},
      // The line that names the group comes behind its first entries.
      {{"--where", "name = acl"}, "124"},
      {{"--where", "not name = acl"}, "3"},
      {{"--where", "name = acl and id > 1", "--sort", "-id"}, "42"},
      // Stable, both ways.
      {{"--sort", "sequence"}, "2431"},
      {{"--sort", "-sequence"}, "1324"},
      {{"--sort", "sequence,-id"}, "4231"},
      {{"--sort", "action,-hits"}, "1243"},
      // Without a number last, both ways: the counters of 3 are not programmed.
      {{"--sort", "hits"}, "2413"},
      {{"--sort", "-hits"}, "1243"},
      {{"--sort", "bytes"}, "1234"},
      // The lowest value, then the fewest; any value begins with 0.
      {{"--sort", "src"}, "3421"},
      {{"--sort", "-src"}, "1243"},
      {{"--sort", "src6"}, "3124"},
      {{"--sort", "feature,id"}, "2134"},
      {{"--sort", "name,id"}, "3124"},
      {{"--limit", "2"}, "12"},
      {{"--limit", "0"}, ""},
      {{"--limit", "4"}, "1234"},
      {{"--limit", "1", "--sort", "-id"}, "4"},
      {{"--limit", "1", "--where", "action = permit"}, "2"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.options));
    EXPECT_EQ(idsOf(row.options), row.ids);
  }
}

TEST(Selection, SaysHowManyAreNotShown) {
  auto const errorsOf = [](std::vector<std::string> arguments) {
    ProcessResult const result = runTcamshow(arguments, {.input = snapshot});
    EXPECT_EQ(result.status, 0);
    return result.err;
  };
  EXPECT_EQ(errorsOf({"tcam", "--limit", "4"}), "");
  EXPECT_EQ(errorsOf({"tcam", "--limit", "3"}), "tcamshow: 1 more entry is not shown\n");
  EXPECT_EQ(errorsOf({"ip", "--limit", "1"}), "tcamshow: 2 more entries are not shown\n");
  EXPECT_EQ(errorsOf({"ip", "--json", "--limit", "1"}), "tcamshow: 2 more entries are not shown\n");
  EXPECT_EQ(errorsOf({"list", "--limit", "1"}), "tcamshow: 3 more entries are not shown\n");
  EXPECT_EQ(errorsOf({"list", "--json", "--limit", "3"}), "tcamshow: 1 more entry is not shown\n");
  EXPECT_EQ(errorsOf({"mac", "--limit", "1"}), "");
}

TEST(Selection, Counts) {
  struct Row {
    std::vector<std::string> arguments;
    const char* count;
  };
  Row const rows[] = {
      {{"ip", "--count"}, "3\n"},
      {{"ip6", "--count"}, "0\n"},
      {{"mac", "--count"}, "1\n"},
      {{"tcam", "--count"}, "4\n"},
      {{"list", "--count"}, "4\n"},
      {{"list", "--count", "--json"}, "4\n"},
      {{"ip", "--count", "--where", "name = acl and action = permit"}, "2\n"},
      {{"list", "--count", "--where", "name = acl"}, "3\n"},
      {{"tcam", "--count", "--sort", "id", "--limit", "1"}, "4\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments, {.input = snapshot});
    EXPECT_EQ(result.out, row.count);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
}

TEST(Selection, RestrictsTheTreesToo) {
  ProcessResult const usage =
      runTcamshow({"usage", "--where", "action = permit"}, {.input = snapshot});
  EXPECT_THAT(usage.out, HasSubstr("TCAM group 1 uses 2 entries and can use up to 5 more."));
  EXPECT_THAT(usage.out, HasSubstr("TCAM group 2 uses 1 entry"));
  EXPECT_EQ(runTcamshow({"summary", "--where", "feature = dns"}, {.input = snapshot}).out,
            "acl\n  dns\n");
  std::string const whole = runTcamshow({"inspect"}, {.input = snapshot}).out;
  std::string const part =
      runTcamshow({"inspect", "--where", "name = acl"}, {.input = snapshot}).out;
  EXPECT_LT(part.size(), whole.size());
  EXPECT_THAT(part, ::testing::Not(HasSubstr("d3")));
  // The exact tables keep their header and their rows as they are.
  std::string const table = runTcamshow({"ip"}, {.input = snapshot}).out;
  EXPECT_EQ(runTcamshow({"ip", "--where", "id >= 0"}, {.input = snapshot}).out, table);
  EXPECT_EQ(runTcamshow({"ip", "--where", "name ~ \"\""}, {.input = snapshot}).out, table);
}

TEST(Selection, FaultsAreThoseOfTheCommandLine) {
  struct Row {
    std::vector<std::string> arguments;
    const char* error;
  };
  Row const rows[] = {
      {{"ip", "--where", "id = x"}, "--where: column 6: expected a number in place of \"x\""},
      {{"list", "--where", ""},
       "--where: column 1: expected a term such as \"src within 10.0.0.0/8\", \"not\" or \"(\""},
      {{"usage", "--where", "foo = 1"}, "--where: column 1: \"foo\" is no field and no attribute"},
      {{"ip", "--sort", "id,prio"}, "--sort: column 4: \"prio\" is no attribute and no field"},
      {{"ip", "--sort", "-"}, "--sort: column 2: \"\" is no attribute and no field"},
      {{"ip", "--limit", "-1"}, "--limit: \"-1\" is not a number"},
      {{"ip", "--limit", "1x"}, "--limit: \"1x\" is not a number"},
      {{"list", "--columns", "id,sequense"},
       "--columns: column 4: \"sequense\" is no column; did you mean \"sequence\"?"},
      {{"list", "--color", "maybe"}, "--color: \"maybe\" is not known; expected auto|always|never"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments, {.input = snapshot});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("tcamshow: " + std::string(row.error)));
  }
}

TEST(Selection, FindsFaultsOfTheInputAllTheSame) {
  std::string const bad = std::string(snapshot) + "{}\n";
  for (const char* const options : {"--limit=1", "--count", "--sort=id", "--where=name = x"}) {
    for (const char* const command : {"ip", "tcam", "list"}) {
      SCOPED_TRACE(std::string(command) + " " + options);
      ProcessResult const result = runTcamshow({command, options}, {.input = bad});
      EXPECT_EQ(result.status, 1);
      EXPECT_THAT(result.err, HasSubstr("<stdin>:7: member \"type\" is missing"));
    }
  }
}

}  // namespace
}  // namespace tcamshow
