// `usage --json` and `summary --json`.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Answers.h"

namespace {

// Stages out of order, a signed pipe, reported and unreported numbers, a place without a group
// line, a feature in two priorities, an id that comes twice, a group's name in two stages.
std::string someUsage() {
  return snapshotOf({
      R"({"type":"group","stage":"egress","groupId":2,"name":"acl","availableEntries":0,"totalEntries":3})",
      R"({"type":"group","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"name":"acl","freeEntries":9})",
      R"({"type":"entry","table":"ip","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"shadowId":4294967299,"priority":2,"featurePriority":5,"feature":"web","hits":18446744073709551615,"description":"a \"b\""})",
      R"({"type":"entry","table":"ip","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"shadowId":3,"priority":2,"featurePriority":5,"feature":"web"})",
      R"({"type":"entry","table":"ip","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"shadowId":4,"priority":9,"featurePriority":5,"feature":"web","state":"failed"})",
      R"({"type":"entry","table":"ip","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"shadowId":5,"featurePriority":5,"feature":"dns"})",
      R"({"type":"entry","table":"ip","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"shadowId":6,"featurePriority":1,"feature":"web"})",
      R"({"type":"entry","table":"ip","groupId":8,"shadowId":1})",
      R"({"type":"entry","table":"ip","stage":"egress","groupId":2,"shadowId":1,"feature":"new"})",
  });
}

TEST(UsageJson, PrintsTheTreeToTheByte) {
  ProcessResult const result = runTcamshow({"usage", "--json"}, {.input = someUsage()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, R"({"type":"usage","schema":1}
{"type":"copy","stage":"ingress","pipe":-1,"groupPriority":7,"groupId":65537,"copyId":1,"name":"acl","usedEntries":4,"freeEntries":9,"features":[{"featurePriority":1,"feature":"web","usedEntries":1},{"featurePriority":5,"feature":"web","usedEntries":2},{"featurePriority":5,"feature":"dns","usedEntries":1}]}
{"type":"copy","stage":"ingress","pipe":0,"groupPriority":0,"groupId":8,"copyId":0,"usedEntries":1,"features":[{"featurePriority":0,"feature":"","usedEntries":1}]}
{"type":"copy","stage":"egress","pipe":0,"groupPriority":0,"groupId":2,"copyId":0,"name":"acl","usedEntries":1,"availableEntries":0,"totalEntries":3,"features":[{"featurePriority":0,"feature":"new","usedEntries":1}]}
)");
}

TEST(UsageJson, AddsTheEntriesInDetail) {
  ProcessResult const result = runTcamshow(
      {"usage", "--json", "--detail", "--where", "feature = web"}, {.input = someUsage()});
  EXPECT_EQ(result.status, 0);
  auto const lines = jsonLinesOf(result.out);
  ASSERT_EQ(lines.size(), 3U);  // the egress group has a line, and no entry
  EXPECT_EQ(
      lines[1]["features"].dump(),
      R"([{"entries":[{"description":"","entryId":6,"hits":0}],"feature":"web","featurePriority":1,"usedEntries":1},)"
      R"({"entries":[{"description":"","entryId":4,"hits":0},{"description":"a \"b\"","entryId":3,"hits":18446744073709551615}],)"
      R"("feature":"web","featurePriority":5,"usedEntries":2}])");
  EXPECT_EQ(lines[2]["features"].dump(), "[]");
}

TEST(UsageJson, PrintsTheSummaryToTheByte) {
  ProcessResult const result = runTcamshow({"--json", "summary"}, {.input = someUsage()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, R"({"type":"summary","schema":1}
{"type":"groupName","name":"","features":[""]}
{"type":"groupName","name":"acl","features":["web","web","dns","new"]}
)");
}

/// The text of `usage` and `summary` again, made from their JSON.
TEST(UsageJson, SaysWhatTheTextSays) {
  for (std::string const file : {"/leaf1.jsonl", "/acl.jsonl"}) {
    std::string const path = TCAMSHOW_EXAMPLES + file;
    std::string text;
    std::string stage;
    auto const usage = jsonLinesOf(runTcamshow({"usage", "--json", path}).out);
    for (std::size_t i = 1; i < usage.size(); ++i) {
      auto const& copy = usage[i];
      if (copy["stage"] != stage) {
        stage = copy["stage"];
        text += "Stage " + stage + "\n";
      }
      std::uint64_t const used = copy["usedEntries"];
      text += "TCAM group " + std::to_string(copy["groupId"].get<unsigned>() & 0xFFFF) + " uses " +
              std::to_string(used) + (used == 1 ? " entry" : " entries") + " and can use up to " +
              std::to_string(copy.value("availableEntries", 0U)) + " more.\n";
      for (auto const& feature : copy["features"]) {
        text += "  " + feature["feature"].get<std::string>() + " uses " +
                feature["usedEntries"].dump() + " entries.\n";
      }
    }
    EXPECT_EQ(text, runTcamshow({"usage", path}).out);

    text.clear();
    auto const summary = jsonLinesOf(runTcamshow({"summary", "--json", path}).out);
    for (std::size_t i = 1; i < summary.size(); ++i) {
      text += summary[i]["name"].get<std::string>() + "\n";
      for (auto const& feature : summary[i]["features"]) {
        text += "  " + feature.get<std::string>() + "\n";
      }
    }
    EXPECT_EQ(text, runTcamshow({"summary", path}).out);
  }
}

}  // namespace
