// How far counters have moved since an older snapshot.
#include "questions/Since.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

std::string line(int id, const std::string& members) {
  return R"({"type":"entry","table":"ip","shadowId":)" + std::to_string(id) + members + "}";
}

/// "hits bytes mark" of each entry, in match order; "-" where nothing is known.
std::vector<std::string> since(const std::vector<std::string>& before,
                               const std::vector<std::string>& now) {
  TemporaryFile const file(snapshotOf(before));
  Complaints complaints;
  auto const baseline = openSnapshot(InputFile(file.path()), complaints);
  Since moved(*baseline);
  std::vector<std::string> result;
  auto const store = storeOf(snapshotOf(now));
  auto const textOf = [](const std::optional<std::uint64_t>& number) {
    return number ? std::to_string(*number) : std::string("-");
  };
  for (const PlaceInfo& place : store->places()) {
    Entry scratch;
    for (std::uint32_t const number : place.entries) {
      SinceFacts const facts = moved.of(store->entry(number, scratch));
      result.push_back(textOf(facts.hits) + " " + textOf(facts.bytes) + " " +
                       std::string(sinceMarkName(facts.mark)));
    }
  }
  return result;
}

TEST(Since, ComparesWithThePartner) {
  std::string const counted = R"(,"counterStatus":7)";
  struct Row {
    const char* name;
    std::vector<std::string> before, now, facts;
  } const rows[] = {
      {"grown",
       {line(1, counted + R"(,"hits":5,"bytes":100)")},
       {line(1, counted + R"(,"hits":9,"bytes":100)")},
       {"4 0 "}},
      {"an action or a sequence makes no other entry",
       {line(1, counted + R"(,"hits":5,"action":"permit","sequence":1,"priority":3)")},
       {line(1, counted + R"(,"hits":9,"action":"deny","sequence":2,"priority":4)")},
       {"4 - "}},
      {"another id is new",
       {line(1, counted + R"(,"hits":5)")},
       {line(2, counted + R"(,"hits":9)")},
       {"9 - new"}},
      {"another match is new",
       {line(1, counted + R"(,"hits":5)")},
       {line(1, counted + R"(,"hits":9,"bytes":3,"otherMatch":"in_port=3")")},
       {"9 3 new"}},
      {"another place is new",
       {line(1, counted + R"(,"hits":5)")},
       {line(1, counted + R"(,"hits":9,"copyId":1)"), line(1, counted + R"(,"hits":6)")},
       {"1 - ", "9 - new"}},
      {"each counter that fell is whole",
       {line(1, counted + R"(,"hits":5,"bytes":50)")},
       {line(1, counted + R"(,"hits":3,"bytes":60)")},
       {"3 10 reset"}},
      {"bytes that fell",
       {line(1, counted + R"(,"bytes":50)")},
       {line(1, counted + R"(,"bytes":7)")},
       {"0 7 reset"}},
      {"not programmed or not reported is not 0",
       {line(1, R"(,"hits":5)"), line(2, counted + R"(,"hits":5,"bytes":1)")},
       {line(1, counted + R"(,"hits":6,"bytes":2)"), line(2, R"(,"hits":9)")},
       {"- - ", "- - "}},
      {"new and not programmed", {}, {line(1, R"(,"hits":6)")}, {"- - new"}},
      {"each of several alike has a partner of its own",
       {line(1, counted + R"(,"hits":1)"), line(1, counted + R"(,"hits":10)")},
       {line(1, counted + R"(,"hits":3)"), line(1, counted + R"(,"hits":14)"),
        line(1, counted + R"(,"hits":5)")},
       {"2 - ", "4 - ", "5 - new"}},
      {"up to the largest",
       {line(1, counted + R"(,"hits":0)")},
       {line(1, counted + R"(,"hits":18446744073709551615)")},
       {"18446744073709551615 - "}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(since(row.before, row.now), row.facts);
  }
}

TEST(Since, KnowsWhenTheBaselineWasTaken) {
  TemporaryFile const file(
      "{\"type\":\"snapshot\",\"version\":2,\"takenAt\":\"2026-01-31T12:30:00Z\"}\n"
      "{\"type\":\"end\",\"groups\":0,\"entries\":0}\n");
  Complaints complaints;
  auto const baseline = openSnapshot(InputFile(file.path()), complaints);
  Since const since(*baseline);
  EXPECT_EQ(since.header().takenAt.text, "2026-01-31T12:30:00Z");
  EXPECT_EQ(since.fileName(), file.path());
}

// --- list and JSON

using ::testing::HasSubstr;
using Words = std::vector<std::string>;

std::string headed(const std::string& header, const Words& lines) {
  std::string text = snapshotOf(lines);
  return R"({"type":"snapshot","version":2)" + header + "}" + text.substr(text.find('\n'));
}
std::string counted(int id, const std::string& members) {
  return line(id, R"(,"counterStatus":7)" + members);
}

// In the second snapshot an entry has grown, one has stood still, one was set back, one is new, and
// of one nothing is known.
const std::string& older() {
  static const std::string text = headed(
      R"(,"takenAt":"2026-01-30T06:00:00Z")",
      {counted(1, R"(,"sequence":1,"hits":5,"bytes":100)"), counted(2, R"(,"sequence":2,"hits":8)"),
       counted(3, R"(,"sequence":3,"hits":90,"bytes":900)"), line(5, R"(,"sequence":5,"hits":1)")});
  return text;
}
const std::string& newer() {
  static const std::string text = headed(
      R"(,"takenAt":"2026-01-31T06:00:00.5Z")",
      {counted(1, R"(,"sequence":1,"hits":1005,"bytes":64100)"),
       counted(2, R"(,"sequence":2,"hits":8)"), counted(3, R"(,"sequence":3,"hits":7,"bytes":950)"),
       counted(4, R"(,"sequence":4,"hits":12,"action":"deny")"),
       counted(5, R"(,"sequence":5,"hits":50)")});
  return text;
}

ProcessResult beside(const std::string& baseline, const std::string& now, const Words& arguments) {
  TemporaryFile const file(baseline);
  Words all = arguments;
  all.insert(all.end(), {"--since", file.path()});
  ProcessResult result = runTcamshow(all, {.input = now});
  for (std::size_t at; (at = result.out.find(file.path())) != result.out.npos;) {
    result.out.replace(at, file.path().size(), "BASELINE");
  }
  return result;
}

TEST(Since, IsShownByList) {
  std::string const heading =
      "hits and bytes from 2026-01-30T06:00:00Z (BASELINE) to 2026-01-31T06:00:00.5Z (<stdin>)\n\n";
  std::string const place = "ingress pipe 0 group 0 priority 0 copy 0: ";
  struct Row {
    Words arguments;
    std::string out;
  } const rows[] = {
      {{"list"},
       heading + place +
           "5 entries\n"
           "SEQ  PRIORITY  ACTION  PROTO  SOURCE  SPORT  DESTINATION  DPORT  VLAN  OTHER  HITS  "
           "SINCE  ID\n"
           "  1         0          *      *       *      *            *      *            1000     "
           "     1\n"
           "  2         0          *      *       *      *            *      *               0     "
           "     2\n"
           "  3         0          *      *       *      *            *      *               7  "
           "reset   3\n"
           "  4         0  deny    *      *       *      *            *      *              12  "
           "new "
           "    4\n"
           "  5         0          *      *       *      *            *      *               -     "
           "     5\n"},
      {{"list", "--columns", "id,hits,bytes,since"},
       heading + place +
           "5 entries\n"
           "ID  HITS  BYTES  SINCE\n"
           " 1  1000  64000\n"
           " 2     0      -\n"
           " 3     7     50  reset\n"
           " 4    12      -  new\n"
           " 5     -      -\n"},
      // Conditions and orders are about what is shown, and partners do not depend on them.
      {{"list", "--columns", "id,hits,since", "--where", "hits > 0 and hits < 1001", "--sort",
        "-hits", "--limit", "3"},
       heading + place +
           "3 entries\n"
           "ID  HITS  SINCE\n"
           " 1  1000\n"
           " 4    12  new\n"
           " 3     7  reset\n"},
      {{"list", "--where", "id = 77"}, heading + "no entries\n"},
      {{"list", "--where", "bytes = 50", "--count"}, "1\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = beside(older(), newer(), row.arguments);
    EXPECT_EQ(result.out, row.out);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
  // Without it, nothing is marked.
  EXPECT_EQ(
      runTcamshow({"list", "--columns", "since,id"}, {.input = snapshotOf({line(1, "")})}).out,
      place + "1 entry\nSINCE  ID\n        1\n");
}

TEST(Since, SaysWhereNoTimeIsGiven) {
  EXPECT_THAT(
      beside(snapshotOf({}), newer(), {"list"}).out,
      HasSubstr("hits and bytes from an unknown time (BASELINE) to 2026-01-31T06:00:00.5Z"));
  EXPECT_THAT(
      beside(older(), "{\"type\":\"snapshot\",\"version\":1}\n", {"list"}).out,
      HasSubstr("from 2026-01-30T06:00:00Z (BASELINE) to an unknown time (<stdin>)\n\nno entries"));
}

TEST(Since, IsInTheJson) {
  Words const parts = {R"(,"hitsSince":1000,"bytesSince":64000})", R"(,"hitsSince":0})",
                       R"(,"hitsSince":7,"bytesSince":50,"sinceMark":"reset"})",
                       R"(,"hitsSince":12,"sinceMark":"new"})", R"("rangeCheckers":{}})"};
  for (const char* const command : {"list", "ip", "tcam"}) {
    SCOPED_TRACE(command);
    ProcessResult const result = beside(older(), newer(), {command, "--json"});
    EXPECT_EQ(result.status, 0);
    Words const lines = linesOf(result.out);
    Words const without = linesOf(runTcamshow({command, "--json"}, {.input = newer()}).out);
    ASSERT_EQ(lines.size(), parts.size() + 1);
    EXPECT_EQ(lines[0], without[0]);
    for (std::size_t i = 0; i < parts.size(); ++i) {
      // All else stays, the hits as they are too.
      std::string const added = i + 1 == parts.size() ? "}" : parts[i];
      EXPECT_EQ(lines[i + 1], without[i + 1].substr(0, without[i + 1].size() - 1) + added);
      EXPECT_THAT(lines[i + 1], ::testing::EndsWith(parts[i]));
    }
  }
  EXPECT_EQ(linesOf(beside(older(), newer(), {"ip6", "--json"}).out).size(), 1U);
  EXPECT_EQ(linesOf(beside(older(), newer(),
                           {"tcam", "--json", "--sort", "-bytes", "--where", "bytes > 0"})
                        .out)
                .size(),
            3U);
}

// Of several alike, each keeps its partner, whatever is selected and in whatever order.
TEST(Since, PairsBeforeAnythingIsSelected) {
  std::string const now = snapshotOf(
      {counted(1, R"(,"hits":3,"sequence":2)"), counted(1, R"(,"hits":14,"sequence":1)")});
  std::string const then = snapshotOf(
      {counted(1, R"(,"hits":1,"sequence":2)"), counted(1, R"(,"hits":10,"sequence":1)")});
  auto const hits = [&](Words arguments) {
    arguments.insert(arguments.end(), {"--json", "--where", "sequence = 1"});
    return jsonLinesOf(beside(then, now, arguments).out)[1]["hitsSince"];
  };
  EXPECT_EQ(hits({"list"}), 4);
  EXPECT_EQ(hits({"tcam"}), 4);
  EXPECT_EQ(hits({"tcam", "--sort", "hits"}), 4);
  auto const all = jsonLinesOf(beside(then, now, {"list", "--json"}).out);
  EXPECT_EQ(all[1]["hitsSince"], 4);
  EXPECT_EQ(all[2]["hitsSince"], 2);
}

TEST(Since, RefusesWhatItCannotRead) {
  struct Row {
    Words arguments;
    int status;
    const char* error;
  } const rows[] = {
      {{"ip", "--since", "x"}, 2, "--since goes with list and with --json only"},
      {{"usage", "--since", "x"}, 2, "no such option: --since"},
      {{"list", "--since", "-"}, 2, "--since and FILE are both standard input"},
      {{"list", "--since", "-", "-"}, 2, "--since and FILE are both standard input"},
      {{"list", "--since", ""}, 2, "--since: the name is empty; standard input is -"},
      {{"list", "--since", "/nonexistent"}, 1, "/nonexistent"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments, {.input = newer()});
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(row.error));
  }
  // A baseline that was cut is not compared with.
  std::string cut = older();
  cut.resize(cut.rfind("{\"type\":\"end\""));
  ProcessResult const result = beside(cut, newer(), {"list"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  // It may come from standard input.
  TemporaryFile const file(newer());
  EXPECT_EQ(runTcamshow({"list", "--since", "-", file.path()}, {.input = older()}).status, 0);
}

}  // namespace
}  // namespace tcamshow
