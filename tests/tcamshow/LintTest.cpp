// `lint`: its texts, its options, and what it says of real filter sets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

using ::testing::HasSubstr;
using Words = std::vector<std::string>;

// A finding of each class but `unknown`.
const Words& everyClass() {
  static const Words lines = {
      R"({"type":"group","groupId":1,"groupPriority":20,"name":"edge"})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":1,"sequence":10,"priority":90,"action":"permit","hits":0,"counterStatus":7,"qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierDstIp":{"value":"192.0.2.0/25"}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":2,"sequence":20,"priority":80,"action":"deny","qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierDstIp":{"value":"192.0.2.128/25"}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":3,"sequence":30,"priority":70,"action":"permit","hits":4,"counterStatus":7,"qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierDstIp":{"value":"192.0.2.0/24"},"qualifierL4DstPort":{"value":443}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":4,"sequence":40,"priority":70,"action":"permit","qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierDstIp":{"value":"192.0.2.0/25"}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":5,"sequence":50,"priority":60,"action":"permit","qualifiers":{"qualifierL4DstPort":{"value":443}},"rangeCheckers":{"rangeCheckerL4DstPort":{"low":80,"high":90}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":6,"sequence":60,"priority":50,"action":"permit","state":"failed","reason":"table full","qualifiers":{"qualifierIpProtocol":{"value":17}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":7,"sequence":70,"priority":40,"action":"permit","qualifiers":{"qualifierIpProtocol":{"value":1}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":8,"sequence":80,"priority":40,"action":"deny","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0/8"}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":9,"sequence":4294967295,"priority":0,"action":"deny"})",
  };
  return lines;
}

TEST(Lint, PrintsEveryClassToTheByte) {
  std::string const place = "ingress pipe 0 group 1 \"edge\" priority 20 copy 0: ";
  ProcessResult const text =
      runTcamshow({"lint", "--with", "redundant,never-hit"}, {.input = snapshotOf(everyClass())});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.err, "");
  EXPECT_EQ(text.out,
            place + "entry 10 (id 1): never-hit\n" +  //
                place + "entry 20 (id 2): redundant before Drop (id 9)\n" + place +
                "entry 30 (id 3): shadowed by 10 (id 1), 20 (id 2); conflict; packet tcp "
                "src=0.0.0.0 dst=192.0.2.128 dport=443\n" +
                place + "entry 30 (id 3): dead-but-hit\n" +  //
                place + "entry 40 (id 4): duplicate of 10 (id 1)\n" + place +
                "entry 50 (id 5): empty\n" + place +
                "entry 60 (id 6): not-installed: failed, table full\n" + place +
                "entry 80 (id 8): redundant before Drop (id 9)\n" + place +
                "entry 80 (id 8): tie with 70 (id 7); packet icmp src=10.0.0.0 dst=0.0.0.0 "
                "dport=0\n");

  ProcessResult const json = runTcamshow({"lint", "--json", "--only", "shadowed,not-installed,tie"},
                                         {.input = snapshotOf(everyClass())});
  EXPECT_EQ(json.status, 0);
  std::string const start =
      R"({"type":"finding","stage":"ingress","pipe":0,"groupPriority":20,"groupId":1,"copyId":0,"name":"edge",)";
  EXPECT_EQ(
      json.out,
      "{\"type\":\"lint\",\"schema\":1}\n" + start +
          R"("class":"shadowed","shadowId":3,"sequence":30,"action":"permit","blame":[1,2],"conflict":true,"packet":"tcp src=0.0.0.0 dst=192.0.2.128 dport=443"})" +
          "\n" + start +
          R"("class":"not-installed","shadowId":6,"sequence":60,"action":"permit","blame":[],"conflict":false,"state":"failed","reason":"table full"})" +
          "\n" + start +
          R"("class":"tie","shadowId":8,"sequence":80,"action":"deny","blame":[7],"conflict":false,"packet":"icmp src=10.0.0.0 dst=0.0.0.0 dport=0"})" +
          "\n");
}

TEST(Lint, ChoosesClassesAndFailsOnThem) {
  struct Row {
    Words options;
    int status;
    std::size_t lines;
  } const rows[] = {
      {{}, 0, 6},
      {{"--fail-on", "any"}, 3, 6},
      {{"--fail-on", "shadowed"}, 3, 6},
      {{"--fail-on", "unknown"}, 0, 6},
      {{"--fail-on", "unknown,tie"}, 3, 6},
      {{"--with", "redundant"}, 0, 8},
      {{"--with", "never-hit,redundant"}, 0, 9},
      // Who names a class asks for it.
      {{"--fail-on", "redundant"}, 3, 8},
      {{"--only", "never-hit"}, 0, 1},
      {{"--only", "shadowed,duplicate"}, 0, 2},
      {{"--only", "empty", "--fail-on", "any"}, 3, 1},
      {{"--only", "unknown", "--fail-on", "any"}, 0, 0},
      // A class that is named counts where it is not shown too.
      {{"--only", "empty", "--fail-on", "tie"}, 3, 1},
      {{"--where", "groupPriority = 20 and name = edge"}, 0, 6},
      {{"--where", "stage = egress", "--fail-on", "any"}, 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.options));
    Words arguments = {"lint"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    ProcessResult const result = runTcamshow(arguments, {.input = snapshotOf(everyClass())});
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(linesOf(result.out).size(), row.lines) << result.out;
    EXPECT_EQ(result.err, "");
  }
}

TEST(Lint, RefusesWhatIsNoClass) {
  struct Row {
    Words options;
    const char* error;
  } const rows[] = {
      {{"--only", "shadow"}, R"("shadow" is not known; did you mean "shadowed"?)"},
      {{"--only", "shadwed"}, R"("shadwed" is not known; did you mean "shadowed"?)"},
      {{"--only", "any"}, R"("any" is not known; expected not-installed, empty, duplicate, )"},
      {{"--only", ""}, R"("" is not known)"},
      {{"--fail-on", "tie,"}, R"("" is not known)"},
      {{"--with", "tie"}, R"("tie" is not known; expected redundant or never-hit)"},
      {{"--where", "action = deny"}, "--where: column 1: expected a term on the place"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.options));
    Words arguments = {"lint"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    ProcessResult const result = runTcamshow(arguments, {.input = snapshotOf({})});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(row.error));
  }
}

// A bad input wins over a finding.
TEST(Lint, FailsOnABadInputFirst) {
  std::string snapshot = snapshotOf(everyClass());
  snapshot.resize(snapshot.rfind("{\"type\":\"end\""));
  ProcessResult const result = runTcamshow({"lint", "--fail-on", "any"}, {.input = snapshot});
  EXPECT_EQ(result.status, 1);
}

// Findings are the same however the lines of different places are interleaved, and each time.
TEST(Lint, DoesNotDependOnTheOrderOfPlaces) {
  std::mt19937 random(7);
  std::vector<Words> places(4);
  for (std::size_t place = 0; place < places.size(); ++place) {
    for (unsigned i = 0; i < 40; ++i) {
      unsigned const length = 8 + static_cast<unsigned>(random()) % 6;
      places[place].push_back(
          R"({"type":"entry","table":"ip","groupId":)" + std::to_string(place) + R"(,"shadowId":)" +
          std::to_string(i) + R"(,"priority":)" + std::to_string(random() % 4) + R"(,"action":")" +
          (random() % 2 == 0 ? "deny" : "permit") +
          R"(","qualifiers":{"qualifierSrcIp":{"value":"10.)" + std::to_string(random() % 64 * 4) +
          R"(.0.0/)" + std::to_string(length) + "\"}}}");
    }
  }
  Words inOrder;
  for (const Words& place : places) inOrder.insert(inOrder.end(), place.begin(), place.end());
  ProcessResult const first =
      runTcamshow({"lint", "--with", "redundant"}, {.input = snapshotOf(inOrder)});
  EXPECT_GT(linesOf(first.out).size(), 20U);
  for (int round = 0; round < 5; ++round) {
    Words mixed;
    std::vector<std::size_t> at(places.size());
    while (mixed.size() < inOrder.size()) {
      std::size_t const place = random() % places.size();
      if (at[place] < places[place].size()) mixed.push_back(places[place][at[place]++]);
    }
    ProcessResult const again =
        runTcamshow({"lint", "--with", "redundant"}, {.input = snapshotOf(mixed)});
    EXPECT_EQ(again.out, first.out);
  }
}

// Whether all of an entry is covered is a puzzle: the search ends, and does not guess.
TEST(Lint, GivesUpAtItsBounds) {
  Words lines = pigeonEntries();
  lines.emplace_back(
      R"({"type":"entry","table":"ip6","shadowId":999,"sequence":999,"action":"permit"})");
  ProcessResult const result =
      runTcamshow({"lint", "--with", "redundant"}, {.input = snapshotOf(lines)});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out,
              HasSubstr("ingress pipe 0 group 0 priority 0 copy 0: entry 999 (id 999): unknown\n"));
}

}  // namespace
}  // namespace tcamshow
