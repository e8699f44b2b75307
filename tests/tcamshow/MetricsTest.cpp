// `metrics`: the two formats, and what has no series. tests/tcamshow/metrics-test reads random
// snapshots' metrics back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Answers.h"

namespace {

/// The lines of a family: its samples, or the lines that describe it.
std::vector<std::string> linesWith(const std::string& text, const std::string& start) {
  std::vector<std::string> lines = linesOf(text);
  std::erase_if(lines, [&start](const std::string& line) { return !line.starts_with(start); });
  return lines;
}

std::string metricsOf(const std::vector<std::string>& lines,
                      const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = {"metrics"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  ProcessResult const result = runTcamshow(arguments, {.input = snapshotOf(lines)});
  EXPECT_EQ(result.status, 0) << result.err;
  return result.out;
}

constexpr const char* place = R"(stage="ingress",pipe="0",group="0",name="",copy="0")";

TEST(Metrics, HaveNoSeriesForWhatIsNotReported) {
  EXPECT_EQ(metricsOf({}), "# EOF\n");
  EXPECT_EQ(metricsOf({}, {"--format", "prometheus", "--per-entry", "--lint"}), "");
  std::string const bare =
      metricsOf({R"({"type":"entry","table":"ip","shadowId":1,"hits":5})"}, {"--per-entry"});
  for (const char* const absent :
       {"available", "free", "total", "hits", "bytes", "timestamp", "lint"}) {
    EXPECT_EQ(bare.find(absent), bare.npos) << bare;
  }
  std::string const zero =
      metricsOf({R"({"type":"group","availableEntries":0})",
                 R"({"type":"entry","table":"ip","shadowId":1,"counterStatus":7,"bytes":0})"},
                {"--per-entry"});
  for (const char* const name : {"tcam_available_entries", "tcam_hits_total", "tcam_bytes_total"}) {
    EXPECT_THAT(linesWith(zero, name), testing::ElementsAre(testing::EndsWith(" 0"))) << zero;
  }
}

TEST(Metrics, EscapeLabelValues) {
  EXPECT_THAT(
      linesWith(
          metricsOf({R"({"type":"group","name":"a\"b\\c{d=e}, é\u0085","availableEntries":1})"}),
          "tcam_available_entries{"),
      testing::ElementsAre(
          R"(tcam_available_entries{stage="ingress",pipe="0",group="0",name="a\"b\\c{d=e}, é\\u{85}",copy="0"} 1)"));
}

TEST(Metrics, SumWhatHasTheSameLabels) {
  auto const entry = [](const std::string& members) {
    return R"({"type":"entry","table":"ip",)" + members + "}";
  };
  // Names that differ only in what is escaped, a feature with two priorities, an id that comes
  // twice, sums beyond 64 bits.
  std::string const out = metricsOf(
      {entry(R"("shadowId":1,"feature":"a\u202e","counterStatus":7,"hits":18446744073709551615)"),
       entry(R"("shadowId":1,"feature":"a\\u{202E}","counterStatus":7,"hits":2,"bytes":7)"),
       entry(R"("shadowId":1,"feature":"a\u202e","featurePriority":4,"hits":3)"),
       entry(R"("shadowId":18446744073709551615,"bytes":1)")},
      {"--per-entry"});
  EXPECT_THAT(
      linesWith(out, "tcam_entries{"),
      testing::ElementsAre("tcam_entries{" + std::string(place) + R"(,feature=""} 1)",
                           "tcam_entries{" + std::string(place) + R"(,feature="a\\u{202E}"} 3)"));
  EXPECT_THAT(linesWith(out, "tcam_hits_total{"),
              testing::ElementsAre("tcam_hits_total{" + std::string(place) +
                                   R"(,id="1"} 18446744073709551617)"));
  EXPECT_THAT(linesWith(out, "tcam_bytes_total{"),
              testing::ElementsAre(
                  "tcam_bytes_total{" + std::string(place) + R"(,id="1"} 7)",
                  "tcam_bytes_total{" + std::string(place) + R"(,id="18446744073709551615"} 1)"));
}

TEST(Metrics, TellGroupsApartThatDifferInPriorityAlone) {
  std::string const out = metricsOf({
      R"({"type":"group","groupPriority":1,"groupId":5,"totalEntries":8})",
      R"({"type":"group","groupPriority":2,"groupId":5,"totalEntries":9})",
      R"({"type":"group","groupPriority":2,"groupId":6,"totalEntries":7})",
  });
  EXPECT_THAT(
      linesWith(out, "tcam_total_entries{"),
      testing::ElementsAre(
          R"(tcam_total_entries{stage="ingress",pipe="0",group="5",name="",copy="0",group_priority="1"} 8)",
          R"(tcam_total_entries{stage="ingress",pipe="0",group="5",name="",copy="0",group_priority="2"} 9)",
          R"(tcam_total_entries{stage="ingress",pipe="0",group="6",name="",copy="0"} 7)"));
}

TEST(Metrics, TellWhenTheSnapshotWasTaken) {
  struct Case {
    const char* taken;
    const char* seconds;
  };
  for (Case const& each : {Case{"1970-01-01T00:00:00Z", "0"},
                           {"2026-03-02T08:15:00Z", "1772439300"},
                           {"2026-03-02T08:15:00.250Z", "1772439300.25"},
                           {"2026-03-02T08:15:00.000000001Z", "1772439300.000000001"},
                           {"1969-12-31T23:59:59Z", "-1"},
                           {"1969-12-31T23:59:59.25Z", "-0.75"},
                           {"0000-01-01T00:00:00Z", "-62167219200"}}) {
    std::string const snapshot = R"({"type":"snapshot","version":2,"takenAt":")" +
                                 std::string(each.taken) + "\"}\n" +
                                 R"({"type":"end","groups":0,"entries":0})" + "\n";
    ProcessResult const result = runTcamshow({"metrics"}, {.input = snapshot});
    EXPECT_THAT(
        linesWith(result.out, "tcam"),
        testing::ElementsAre(std::string("tcam_snapshot_timestamp_seconds ") + each.seconds));
  }
}

TEST(Metrics, DifferOnlyInTheLinesOfCountersAndTheEnd) {
  std::vector<std::string> const lines = {
      R"({"type":"group","name":"x","totalEntries":4,"freeEntries":3,"availableEntries":3})",
      R"({"type":"entry","table":"ip","shadowId":1,"counterStatus":7,"hits":5,"bytes":9})"};
  std::vector<std::string> newer = linesOf(metricsOf(lines, {"--per-entry"}));
  std::vector<std::string> older =
      linesOf(metricsOf(lines, {"--per-entry", "--format=prometheus"}));
  ASSERT_EQ(newer.back(), "# EOF");
  newer.pop_back();
  ASSERT_EQ(newer.size(), older.size());
  std::vector<std::string> differences;
  for (std::size_t i = 0; i < newer.size(); ++i) {
    if (newer[i] != older[i]) differences.push_back(newer[i] + " | " + older[i]);
  }
  EXPECT_THAT(
      differences,
      testing::ElementsAre(
          "# TYPE tcam_hits counter | # TYPE tcam_hits_total counter",
          "# HELP tcam_hits Packets that hit the entry. | # HELP tcam_hits_total Packets that hit "
          "the entry.",
          "# TYPE tcam_bytes counter | # TYPE tcam_bytes_total counter",
          "# HELP tcam_bytes Bytes of the packets that hit the entry. | # HELP tcam_bytes_total "
          "Bytes of the packets that hit the entry."));
}

TEST(Metrics, CountTheFindingsOfLint) {
  auto const entry = [](int id, const char* action) {
    return R"({"type":"entry","table":"ip","shadowId":)" + std::to_string(id) + R"(,"sequence":)" +
           std::to_string(id) + R"(,"action":")" + action + "\"}";
  };
  std::string const out =
      metricsOf({entry(1, "permit"), entry(2, "permit"), entry(3, "deny")}, {"--lint"});
  EXPECT_THAT(linesWith(out, "tcam_lint_findings{"),
              testing::ElementsAre(testing::HasSubstr(R"(class="not-installed"} 0)"),
                                   testing::HasSubstr(R"(class="empty"} 0)"),
                                   testing::HasSubstr(R"(class="duplicate"} 2)"),
                                   testing::HasSubstr(R"(class="shadowed"} 0)"),
                                   testing::HasSubstr(R"(class="dead-but-hit"} 0)"),
                                   testing::HasSubstr(R"(class="tie"} 1)"),
                                   testing::HasSubstr(R"(class="unknown"} 0)")));
}

TEST(Metrics, PrintNothingOfACutSnapshot) {
  ProcessResult const result = runTcamshow(
      {"metrics"},
      {.input =
           "{\"type\":\"snapshot\",\"version\":2}\n{\"type\":\"group\",\"totalEntries\":1}\n"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
}

TEST(Metrics, RefuseFormatsThatAreNotKnown) {
  ProcessResult const result = runTcamshow({"metrics", "--format", "openmetric"}, {.input = ""});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find(R"(did you mean "openmetrics"?)"), result.err.npos) << result.err;
  EXPECT_EQ(runTcamshow({"metrics", "--json"}, {.input = ""}).status, 2);
}

}  // namespace
