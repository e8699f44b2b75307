// `diff`: known edits, its texts, and pairing.
#include "questions/Diff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

using ::testing::HasSubstr;
using Words = std::vector<std::string>;
using Json = nlohmann::json;

ProcessResult diff(const std::string& a, const std::string& b, const Words& options = {}) {
  TemporaryFile const fileA(a);
  TemporaryFile const fileB(b);
  Words arguments = {"diff", fileA.path(), fileB.path()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return runTcamshow(arguments);
}

const std::string& before() {
  static const std::string text = snapshotOf({
      R"({"type":"group","groupId":1,"groupPriority":20,"name":"edge"})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":1,"sequence":10,"priority":90,"action":"permit","hits":5,"counterStatus":7,"feature":"web","description":"first","qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierL4DstPort":{"value":443}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":2,"sequence":20,"priority":80,"action":"permit","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0/8"}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":3,"sequence":30,"priority":70,"action":"deny","otherMatch":"in_port=3","qualifiers":{"qualifierL4DstPort":{"value":9}},"rangeCheckers":{"rangeCheckerL4DstPort":{"low":1,"high":5}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":4,"sequence":4294967295,"action":"deny"})",
      R"({"type":"entry","stage":"egress","table":"mac","shadowId":5})",
  });
  return text;
}
const std::string& after() {
  static const std::string text = snapshotOf({
      R"({"type":"group","groupId":1,"groupPriority":20,"name":"edge"})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":11,"sequence":11,"priority":91,"action":"deny","hits":9,"feature":"dns","description":"1st","state":"failed","qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierL4DstPort":{"value":443}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":2,"sequence":20,"priority":80,"action":"permit","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0/9"}}})",
      R"({"type":"entry","groupId":1,"groupPriority":20,"table":"ip","shadowId":4,"sequence":4294967295,"action":"deny","hits":3,"bytes":7})",
      R"({"type":"entry","stage":"egress","table":"mac","shadowId":5})",
      R"({"type":"entry","stage":"egress","pipe":1,"table":"ip6","shadowId":6,"qualifiers":{"qualifierSrcIp6":{"value":"2001:db8::/32"}}})",
  });
  return text;
}

TEST(Diff, PrintsWhatChangedToTheByte) {
  struct Row {
    Words options;
    const char* out;
  } const rows[] = {
      {{},
       "ingress pipe 0 group 1 \"edge\" priority 20 copy 0\n"
       "~ entry 10 (id 1): action \"permit\" -> \"deny\", priority 90 -> 91, sequence 10 -> 11, "
       "state \"programmed\" -> \"failed\", feature \"web\" -> \"dns\", description \"first\" -> "
       "\"1st\", counters programmed -> not programmed\n"
       "- entry 20 (id 2): permit src=10.0.0.0/8\n"
       "- entry 30 (id 3): deny none and in_port=3\n"
       "+ entry 20 (id 2): permit src=10.0.0.0/9\n"
       "egress pipe 1 group 0 priority 0 copy 0\n"
       "+ entry 0 (id 6): - src6=2001:db8::/32\n"
       "2 removed, 2 added, 1 changed, 2 equal\n"},
      {{"--by", "id"},
       "ingress pipe 0 group 1 \"edge\" priority 20 copy 0\n"
       "- entry 10 (id 1): permit ip tcp dport=443\n"
       "~ entry 20 (id 2): match \"src=10.0.0.0/8\" -> \"src=10.0.0.0/9\"\n"
       "- entry 30 (id 3): deny none and in_port=3\n"
       "+ entry 11 (id 11): deny ip tcp dport=443\n"
       "egress pipe 1 group 0 priority 0 copy 0\n"
       "+ entry 0 (id 6): - src6=2001:db8::/32\n"
       "2 removed, 2 added, 1 changed, 2 equal\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.options));
    ProcessResult const result = diff(before(), after(), row.options);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, row.out);
  }
  ProcessResult const json = diff(before(), after(), {"--json"});
  std::string const edge =
      R"("stage":"ingress","pipe":0,"groupPriority":20,"groupId":1,"copyId":0,"name":"edge",)";
  EXPECT_EQ(json.status, 3);
  EXPECT_EQ(
      json.out,
      "{\"type\":\"diff\",\"schema\":1}\n{\"type\":\"difference\"," + edge +
          R"("kind":"changed","shadowId":1,"sequence":10,"changes":{"action":["permit","deny"],"priority":[90,91],"sequence":[10,11],"state":["programmed","failed"],"feature":["web","dns"],"description":["first","1st"],"counters":[true,false]}})"
          "\n{\"type\":\"difference\"," +
          edge +
          R"("kind":"removed","shadowId":2,"sequence":20})"
          "\n{\"type\":\"difference\"," +
          edge +
          R"("kind":"removed","shadowId":3,"sequence":30})"
          "\n{\"type\":\"difference\"," +
          edge +
          R"("kind":"added","shadowId":2,"sequence":20})"
          "\n"
          R"({"type":"difference","stage":"egress","pipe":1,"groupPriority":0,"groupId":0,"copyId":0,"kind":"added","shadowId":6,"sequence":0})"
          "\n"
          R"({"type":"summary","removed":2,"added":2,"changed":1,"equal":2})"
          "\n");
}

TEST(Diff, OfASnapshotWithItselfIsEmpty) {
  for (const Words& options : {Words{}, Words{"--by", "id"}, Words{"--ignore-place"}}) {
    ProcessResult const result = diff(before(), before(), options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "0 removed, 0 added, 0 changed, 5 equal\n");
  }
}

TEST(Diff, RefusesTwoStandardInputs) {
  ProcessResult const result = runTcamshow({"diff", "-", "-"}, {.input = before()});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("A and B are both standard input"));
  TemporaryFile const file(before());
  EXPECT_EQ(runTcamshow({"diff", "-", file.path()}, {.input = before()}).status, 0);
  EXPECT_EQ(runTcamshow({"diff", file.path()}).status, 2);
  EXPECT_EQ(runTcamshow({"diff", file.path(), file.path(), "--by", "ids"}).status, 2);
  // A bad input wins over a difference.
  EXPECT_EQ(runTcamshow({"diff", "-", file.path()}, {.input = before() + "{}"}).status, 1);
}

TEST(Diff, TakesStageAndNameForThePlace) {
  auto const box = [](unsigned group, const char* name, const char* action) {
    std::string const place = std::to_string(group);
    return Words{R"({"type":"group","groupId":)" + place + R"(,"name":")" + name + "\"}",
                 R"({"type":"entry","table":"ip","groupId":)" + place +
                     R"(,"shadowId":1,"action":")" + action + "\"}"};
  };
  std::string const a = snapshotOf(box(1, "edge", "permit"));
  std::string const b = snapshotOf(box(7, "edge", "deny"));
  EXPECT_EQ(diff(a, b).out,
            "ingress pipe 0 group 1 \"edge\" priority 0 copy 0\n- entry 0 (id 1): permit ip\n"
            "ingress pipe 0 group 7 \"edge\" priority 0 copy 0\n+ entry 0 (id 1): deny ip\n"
            "1 removed, 1 added, 0 changed, 0 equal\n");
  EXPECT_EQ(diff(a, b, {"--ignore-place"}).out,
            "ingress \"edge\"\n~ entry 0 (id 1): action \"permit\" -> \"deny\"\n"
            "0 removed, 0 added, 1 changed, 0 equal\n");
  auto const json = jsonLinesOf(diff(a, b, {"--ignore-place", "--json"}).out);
  EXPECT_EQ(json[1]["groupId"], 1);
  EXPECT_EQ(diff(a, snapshotOf(box(7, "core", "permit")), {"--ignore-place"}).out,
            "ingress \"core\"\n+ entry 0 (id 1): permit ip\n"
            "ingress \"edge\"\n- entry 0 (id 1): permit ip\n"
            "1 removed, 1 added, 0 changed, 0 equal\n");
}

// Of several with one match, the equal ones first, among them those with one id; then in order.
TEST(Diff, PairsAlikeEntriesByWhatElseIsEqual) {
  auto const entries = [](const std::vector<std::pair<int, const char*>>& all) {
    Words lines;
    for (auto const& [id, action] : all) {
      lines.push_back(R"({"type":"entry","table":"ip","shadowId":)" + std::to_string(id) +
                      R"(,"action":")" + action + "\"}");
    }
    return snapshotOf(lines);
  };
  struct Row {
    std::vector<std::pair<int, const char*>> a, b;
    const char* out;
  } const rows[] = {
      {{{1, "x"}, {2, "y"}}, {{3, "y"}, {4, "x"}}, "0 removed, 0 added, 0 changed, 2 equal\n"},
      {{{1, "x"}, {2, "x"}},
       {{2, "x"}},
       "ingress pipe 0 group 0 priority 0 copy 0\n- entry 0 (id 1): x ip\n1 removed, 0 added, 0 "
       "changed, 1 equal\n"},
      {{{1, "x"}, {2, "y"}, {3, "z"}},
       {{4, "y"}, {5, "v"}, {6, "w"}},
       "ingress pipe 0 group 0 priority 0 copy 0\n~ entry 0 (id 1): action \"x\" -> \"v\"\n"
       "~ entry 0 (id 3): action \"z\" -> \"w\"\n0 removed, 0 added, 2 changed, 1 equal\n"},
      {{{1, "x"}},
       {{2, "y"}, {3, "x"}},
       "ingress pipe 0 group 0 priority 0 copy 0\n+ entry 0 (id 2): y ip\n0 removed, 1 added, 0 "
       "changed, 1 equal\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(diff(entries(row.a), entries(row.b)).out, row.out);
  }
}

// --- known edits of random snapshots, and the mirror

struct Rule {
  unsigned place = 0;
  unsigned id = 0;
  unsigned source = 0;  // the match
  unsigned action = 0;
  unsigned hits = 0;
};

std::string linesOfRules(const std::vector<Rule>& rules) {
  Words lines;
  for (const Rule& rule : rules) {
    lines.push_back(
        R"({"type":"entry","table":"ip","groupId":)" + std::to_string(rule.place) +
        R"(,"shadowId":)" + std::to_string(rule.id) + R"(,"sequence":)" + std::to_string(rule.id) +
        R"(,"hits":)" + std::to_string(rule.hits) + R"(,"action":"a)" +
        std::to_string(rule.action) + R"(","qualifiers":{"qualifierSrcIp":{"value":"10.0.)" +
        std::to_string(rule.source / 256) + "." + std::to_string(rule.source % 256) + "/32\"}}}");
  }
  return snapshotOf(lines);
}

TEST(Diff, FindsJustTheEdits) {
  std::mt19937 random(11);
  for (int round = 0; round < 30; ++round) {
    SCOPED_TRACE(round);
    std::vector<Rule> a(200);
    for (unsigned i = 0; i < a.size(); ++i) {
      a[i] = {static_cast<unsigned>(random() % 3), i, i, static_cast<unsigned>(random() % 4), 0};
    }
    std::vector<Rule> b;
    std::map<std::string, int> expected;  // "kind id"
    for (const Rule& rule : a) {
      switch (random() % 8) {
        case 0:
          ++expected["removed " + std::to_string(rule.id)];
          break;
        case 1:
          b.push_back(rule);
          b.back().action += 1;
          ++expected["changed " + std::to_string(rule.id)];
          break;
        default:
          b.push_back(rule);
          b.back().hits = 77;
      }
      if (random() % 16 == 0) {
        b.push_back({rule.place, rule.id + 1000, rule.source + 1000, 1, 0});
        ++expected["added " + std::to_string(rule.id + 1000)];
      }
    }
    std::shuffle(b.begin(), b.end(), random);
    for (const char* const by : {"match", "id"}) {
      std::map<std::string, int> found;
      for (const Json& line :
           jsonLinesOf(diff(linesOfRules(a), linesOfRules(b), {"--json", "--by", by}).out)) {
        if (line["type"] != "difference") continue;
        ++found[line["kind"].get<std::string>() + " " + line["shadowId"].dump()];
        if (line["kind"] == "changed") {
          EXPECT_EQ(line["changes"].size(), 1U);
        }
      }
      EXPECT_EQ(found, expected);
    }
  }
}

/// A difference as the other direction tells it.
Json mirrored(Json line) {
  if (line["type"] == "summary") {
    std::swap(line["removed"], line["added"]);
    return line;
  }
  if (line["type"] != "difference") return line;
  if (line["kind"] != "changed") {
    line["kind"] = line["kind"] == "added" ? "removed" : "added";
    return line;
  }
  for (auto& change : line["changes"]) std::swap(change[0], change[1]);
  // It is named by the entry of A.
  line.erase("shadowId");
  line.erase("sequence");
  return line;
}

// The hashes differ from run to run.
TEST(Diff, PrintsTheSameEachTime) {
  std::mt19937 random(13);
  auto const rules = [&random] {
    std::vector<Rule> made(60);
    for (Rule& rule : made) {
      rule = {static_cast<unsigned>(random() % 3), static_cast<unsigned>(random() % 20),
              static_cast<unsigned>(random() % 6), static_cast<unsigned>(random() % 3), 0};
    }
    return linesOfRules(made);
  };
  std::string const a = rules();
  std::string const b = rules();
  std::string const first = diff(a, b).out;
  EXPECT_GT(linesOf(first).size(), 20U);
  for (int run = 0; run < 8; ++run) EXPECT_EQ(diff(a, b).out, first);
}

TEST(Diff, MirrorsTheOtherDirection) {
  std::mt19937 random(12);
  for (int round = 0; round < 30; ++round) {
    SCOPED_TRACE(round);
    auto const rules = [&random] {
      std::vector<Rule> made(40);
      for (Rule& rule : made) {
        // Few matches and ids: many are alike.
        rule = {static_cast<unsigned>(random() % 2), static_cast<unsigned>(random() % 20),
                static_cast<unsigned>(random() % 6), static_cast<unsigned>(random() % 3), 0};
      }
      return linesOfRules(made);
    };
    std::string const a = rules();
    std::string const b = rules();
    for (const char* const by : {"match", "id"}) {
      auto const texts = [&](const std::string& from, const std::string& to, bool isMirrored) {
        std::multiset<std::string> lines;
        for (Json line : jsonLinesOf(diff(from, to, {"--json", "--by", by}).out)) {
          if (isMirrored) {
            line = mirrored(line);
          } else if (line["type"] == "difference" && line["kind"] == "changed") {
            line.erase("shadowId");
            line.erase("sequence");
          }
          lines.insert(line.dump());
        }
        return lines;
      };
      EXPECT_EQ(texts(a, b, false), texts(b, a, true)) << by;
    }
  }
}

}  // namespace
}  // namespace tcamshow
