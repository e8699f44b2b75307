// `capacity`: how full a copy is, and the text and JSON of it.
#include "questions/Capacity.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

std::string group(const std::string& members) { return R"({"type":"group",)" + members + "}"; }

/// An entry of a group, in a state.
std::string entry(int id, int group, const std::string& more = "") {
  return R"({"type":"entry","table":"ip","groupId":)" + std::to_string(group) + R"(,"shadowId":)" +
         std::to_string(id) + more + "}";
}

std::vector<CopyUse> useOf(const std::vector<std::string>& lines) {
  TemporaryFile const file(snapshotOf(lines));
  Complaints complaints;
  auto const source = openSnapshot(InputFile(file.path()), complaints);
  return capacityOf(*source, [](const Place&) { return true; });
}

TEST(Fill, RoundsToTenthsOfAPercent) {
  struct Case {
    std::uint64_t used;
    std::uint64_t size;
    std::uint64_t tenths;
  };
  constexpr std::uint64_t most = 0xFFFFFFFF;
  for (Case const& each : {Case{0, 1, 0},
                           {1, 1, 1000},
                           {1, 3, 333},
                           {2, 3, 667},
                           {1, 2000, 1},  // 0.05 is rounded up
                           {1, 2001, 0},
                           {9995, 10000, 1000},
                           {9994, 10000, 999},
                           {3, 2, 1500},
                           {most, most, 1000},
                           {most, 1, most * 1000}}) {
    EXPECT_EQ((Fill{each.used, each.size}.tenths()), each.tenths)
        << each.used << " of " << each.size;
  }
}

TEST(Fill, ComparesTheExactPart) {
  struct Case {
    std::uint64_t used;
    std::uint64_t size;
    double percent;
    bool isAtLeast;
  };
  for (Case const& each : {Case{85, 100, 85, true},
                           {8499, 10000, 85, false},  // shown as 85.0
                           {8500, 10000, 85, true},
                           {7, 10000, 0.07, true},  // 0.07 * 10000 is above 700
                           {333, 1000, 33.3, true},
                           {0, 5, 0, true},
                           {1, 4294967295, 0, true},
                           {4294967294, 4294967295, 100, false},
                           {4294967295, 4294967295, 100, true}}) {
    EXPECT_EQ((Fill{each.used, each.size}.isAtLeast(each.percent)), each.isAtLeast)
        << each.used << " of " << each.size << " at " << each.percent;
  }
}

TEST(Capacity, TakesTheTotalElseWhatIsAvailable) {
  struct Case {
    std::string members;
    std::optional<std::uint64_t> size;
  };
  for (Case const& each : {Case{"", std::nullopt},
                           {R"("freeEntries":7)", std::nullopt},
                           {R"("availableEntries":6)", 8},
                           {R"("availableEntries":0)", 2},
                           {R"("totalEntries":16)", 16},
                           {R"("totalEntries":16,"availableEntries":3,"freeEntries":9)", 16},
                           {R"("totalEntries":1)", 1},
                           {R"("totalEntries":0)", std::nullopt},
                           {R"("totalEntries":0,"availableEntries":3)", std::nullopt},
                           {R"("availableEntries":4294967295)", 4294967297}}) {
    std::string const members = each.members.empty() ? "" : "," + each.members;
    auto const copies = useOf({group(R"("groupId":1)" + members), entry(1, 1), entry(2, 1)});
    ASSERT_EQ(copies.size(), 1U);
    auto const fill = copies[0].fill();
    ASSERT_EQ(fill.has_value(), each.size.has_value()) << each.members;
    if (!fill) continue;
    EXPECT_EQ(fill->used, 2U);
    EXPECT_EQ(fill->size, *each.size) << each.members;
  }
  EXPECT_FALSE(useOf({group(R"("availableEntries":0)")})[0].fill()) << "0 of 0";
}

TEST(Capacity, CountsWhatIsNeitherFailedNorPending) {
  constexpr const char* word = R"(,"qualifiers":{"qualifierIpProtocol":{"value":6,"status":)";
  auto const copies = useOf({
      entry(1, 1),
      entry(2, 1, R"(,"state":"failed")"),
      entry(3, 1, R"(,"state":"pending")"),
      entry(4, 1, R"(,"state":"unknown","feature":"a")"),
      entry(5, 1, std::string(word) + "4}}"),
      entry(6, 1, std::string(word) + "1}}"),
      entry(7, 1, std::string(word) + "0}}"),
      entry(7, 1, R"(,"feature":"a","featurePriority":2)"),
      entry(8, 2, R"(,"state":"failed")"),
  });
  ASSERT_EQ(copies.size(), 2U);
  EXPECT_EQ(copies[0].usedEntries(), 4U);
  EXPECT_EQ(copies[0].byState, (std::array<std::uint64_t, 4>{2, 2, 2, 2}));
  EXPECT_EQ(copies[0].byFeature,
            (std::map<std::string, std::uint64_t, std::less<>>{{"", 6}, {"a", 2}}));
  EXPECT_EQ(copies[1].usedEntries(), 0U);
  EXPECT_EQ(copies[1].place.groupId, 2U);
}

TEST(Capacity, AddsUpStages) {
  auto const stages = stageUse(useOf({
      group(R"("stage":"egress","groupId":1,"totalEntries":4294967295)"),
      group(R"("stage":"egress","groupId":2,"totalEntries":1)"),
      group(R"("groupId":1,"totalEntries":5)"),
      group(R"("groupId":2,"availableEntries":5)"),
      group(R"("groupId":3,"totalEntries":5)"),
      entry(1, 1),
      entry(2, 3),
      entry(3, 3, R"(,"state":"failed")"),
  }));
  ASSERT_EQ(stages.size(), 2U);
  EXPECT_EQ(stages[0].stage, Stage::ingress);
  EXPECT_EQ(stages[0].used, 2U);
  EXPECT_FALSE(stages[0].total) << "one copy does not report its total";
  EXPECT_EQ(stages[1].stage, Stage::egress);
  EXPECT_EQ(stages[1].used, 0U);
  EXPECT_EQ(stages[1].total, 4294967296U);
}

// Every kind of number that is or is not reported, a name that is not safe, a place without a group
// line, a bar at each end.
std::string manyCopies() {
  std::vector<std::string> lines = {
      group(R"("stage":"lookup","pipe":-2,"groupId":9,"copyId":3,"name":"full","totalEntries":2)"),
      R"({"type":"entry","table":"mac","stage":"lookup","pipe":-2,"groupId":9,"copyId":3,"shadowId":1})",
      R"({"type":"entry","table":"mac","stage":"lookup","pipe":-2,"groupId":9,"copyId":3,"shadowId":2})",
      group(R"("groupId":1,"name":"Zürich \u202e","availableEntries":0,"freeEntries":0)"),
      group(R"("groupId":2,"name":"one","totalEntries":100000)"),
      group(R"("groupId":3,"name":"nearly","totalEntries":8,"availableEntries":1,"freeEntries":2)"),
      entry(1, 2),
      entry(2, 4),
      group(R"("groupId":5,"name":"over","totalEntries":1)"),
      entry(1, 5),
      entry(2, 5),
  };
  for (int id = 0; id < 7; ++id) lines.push_back(entry(id, 3));
  return snapshotOf(lines);
}

TEST(Capacity, PrintsToTheByte) {
  ProcessResult const result = runTcamshow({"capacity"}, {.input = manyCopies()});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.out,
      R"(STAGE    PIPE  PRIORITY  GROUP  COPY  NAME             USED  AVAILABLE  FREE   TOTAL  PERCENT
lookup     -2         0      9     3  full                2          -     -       2    100.0  [####################]
ingress     0         0      1     0  Zürich \u{202E}     0          0     0       -        -
ingress     0         0      2     0  one                 1          -     -  100000      0.0  [#...................]
ingress     0         0      3     0  nearly              7          1     2       8     87.5  [##################..]
ingress     0         0      4     0                      1          -     -       -        -
ingress     0         0      5     0  over                2          -     -       1    200.0  [####################]

STAGE    USED  TOTAL
lookup      2      2
ingress    11      -
)");
}

TEST(Capacity, PrintsJsonToTheByte) {
  ProcessResult const result = runTcamshow({"capacity", "--json"}, {.input = manyCopies()});
  EXPECT_EQ(result.status, 0);
  constexpr const char* at = R"("groupPriority":0,)";
  std::string const ingress = R"({"type":"copy","stage":"ingress","pipe":0,)" + std::string(at);
  EXPECT_EQ(
      result.out,
      R"({"type":"capacity","schema":1}
{"type":"copy","stage":"lookup","pipe":-2,)" +
          std::string(at) +
          R"("groupId":9,"copyId":3,"name":"full","usedEntries":2,"totalEntries":2,"percent":100.0}
)" + ingress +
          R"("groupId":1,"copyId":0,"name":"Zürich \u202e","usedEntries":0,"availableEntries":0,"freeEntries":0}
)" + ingress +
          R"("groupId":2,"copyId":0,"name":"one","usedEntries":1,"totalEntries":100000,"percent":0.0}
)" + ingress +
          R"("groupId":3,"copyId":0,"name":"nearly","usedEntries":7,"availableEntries":1,"freeEntries":2,"totalEntries":8,"percent":87.5}
)" + ingress +
          R"("groupId":4,"copyId":0,"usedEntries":1}
)" + ingress +
          R"("groupId":5,"copyId":0,"name":"over","usedEntries":2,"totalEntries":1,"percent":200.0}
)");
}

TEST(Capacity, EndsWithStatus3WhereFailIsReached) {
  struct Case {
    std::vector<std::string> arguments;
    int status;
  };
  for (Case const& each : {Case{{}, 0},
                           {{"--fail", "100"}, 3},
                           {{"--fail=0", "--where", "group = 2"}, 3},
                           {{"--fail", "87.5", "--where", "group = 3"}, 3},
                           {{"--fail", "87.6", "--where", "group = 3"}, 0},
                           {{"--warn", "1", "--where", "group = 3"}, 0},
                           {{"--fail", "0", "--where", "group = 1 or group = 4"}, 0},
                           {{"--fail", "0.001", "--where", "name = one", "--json"}, 3}}) {
    std::vector<std::string> arguments = {"capacity"};
    arguments.insert(arguments.end(), each.arguments.begin(), each.arguments.end());
    ProcessResult const result = runTcamshow(arguments, {.input = manyCopies()});
    EXPECT_EQ(result.status, each.status) << testing::PrintToString(arguments) << result.err;
    EXPECT_EQ(result.err, "");
  }
  std::string cut = manyCopies();
  cut.resize(cut.rfind(R"({"type":"end")"));
  EXPECT_EQ(runTcamshow({"capacity", "--fail", "0"}, {.input = cut}).status, 1)
      << "a fault of the input wins";
}

TEST(Capacity, RefusesWhatIsNoPercent) {
  for (const char* const word : {"-1", "100.1", "x", "", "5%", "nan", "inf", "1e3", " 5"}) {
    for (std::string const option : {"--warn", "--fail"}) {
      ProcessResult const result = runTcamshow({"capacity", option + "=" + word}, {.input = ""});
      EXPECT_EQ(result.status, 2) << option << " " << word;
      EXPECT_NE(result.err.find(option), result.err.npos) << result.err;
    }
  }
}

TEST(Capacity, ShowsThePlacesThatAreAskedFor) {
  ProcessResult const result = runTcamshow(
      {"capacity", "--where", "stage = ingress and name ~ ONE"}, {.input = manyCopies()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            R"(STAGE    PIPE  PRIORITY  GROUP  COPY  NAME  USED  AVAILABLE  FREE   TOTAL  PERCENT
ingress     0         0      2     0  one      1          -     -  100000      0.0  [#...................]

STAGE    USED   TOTAL
ingress     1  100000
)");
  EXPECT_EQ(runTcamshow({"capacity", "--where", "pipe = 7"}, {.input = manyCopies()}).out,
            "no groups and no entries\n");
  ProcessResult const refused =
      runTcamshow({"capacity", "--where", "hits > 3"}, {.input = manyCopies()});
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.err.find("column 1: expected a term on the place"), refused.err.npos)
      << refused.err;
}

TEST(Capacity, ColoursByThresholds) {
  struct Case {
    std::vector<std::string> arguments;
    const char* colour;  // before "87.5"
  };
  for (Case const& each : {Case{{}, "\x1B[31m"},
                           {{"--fail", "88"}, "\x1B[33m"},
                           {{"--fail", "88", "--warn", "87.6"}, "\x1B[32m"}}) {
    std::vector<std::string> arguments = {"capacity", "--color", "always", "--where", "group = 3"};
    arguments.insert(arguments.end(), each.arguments.begin(), each.arguments.end());
    ProcessResult const result = runTcamshow(arguments, {.input = manyCopies()});
    EXPECT_NE(result.out.find(each.colour + std::string("87.5\x1B[0m  ") + each.colour + "[###"),
              result.out.npos)
        << result.out;
  }
}

/// The answers about the example are those in golden/.
TEST(Example, IsAnsweredToTheByte) {
  struct Case {
    std::vector<std::string> arguments;
    const char* golden;
  };
  for (Case const& each :
       {Case{{"capacity"}, "capacity.txt"},
        {{"capacity", "--json"}, "capacity.jsonl"},
        {{"usage", "--json"}, "usage.jsonl"},
        {{"summary", "--json"}, "summary.jsonl"},
        {{"metrics", "--lint"}, "metrics.openmetrics.txt"},
        {{"metrics", "--format", "prometheus", "--per-entry"}, "metrics.prometheus.txt"}}) {
    std::vector<std::string> arguments = each.arguments;
    arguments.emplace_back(TCAMSHOW_EXAMPLES "/leaf1.jsonl");
    ProcessResult const result = runTcamshow(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    std::ostringstream golden;
    golden << std::ifstream(std::string(TCAMSHOW_GOLDEN "/") + each.golden).rdbuf();
    EXPECT_EQ(result.out, golden.str()) << each.golden;
  }
}

}  // namespace
}  // namespace tcamshow
