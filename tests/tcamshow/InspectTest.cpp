// What `inspect` prints of a snapshot and of the library's types.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "Process.h"

namespace {

using ::testing::HasSubstr;

std::string golden(const std::string& name) {
  std::ifstream const file(std::string(TCAMSHOW_GOLDEN "/") + name);
  EXPECT_TRUE(file) << name;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Two stages, two pipes, features that come back, entries of one priority, an entry that stands
// twice, bytes that need quoting.
constexpr const char* snapshot =
    R"({"type":"snapshot","version":1,"numPipes":2}
{"type":"group","name":"b","stage":"egress","groupId":7,"copyId":1,"availableEntries":64,"freeEntries":61}
{"type":"group","name":"a","pipe":-1,"groupPriority":20,"groupId":70000}
{"type":"entry","table":"ip","shadowId":3,"stage":"egress","groupId":7,"copyId":1,"priority":5,"feature":"f","hits":18446744073709551615}
{"type":"entry","table":"mac","shadowId":2,"stage":"egress","groupId":7,"copyId":1,"priority":5,"feature":"f","description":"\"é\\"}
{"type":"entry","table":"ip6","shadowId":9,"stage":"egress","groupId":7,"copyId":1,"priority":9,"feature":"g"}
{"type":"entry","table":"ip6","shadowId":9,"stage":"egress","groupId":7,"copyId":1,"priority":9,"feature":"g","description":"again"}
{"type":"entry","table":"tcam","shadowId":1,"pipe":-1,"groupPriority":20,"groupId":70000,"featurePriority":4294967295,"feature":"f"}
)";

TEST(Inspect, PrintsTheUsageTreeAndTheSummary) {
  ProcessResult const result = runTcamshow({"inspect"}, {.input = snapshot});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.err,
      "tcamshow: <stdin>:7: warning: entry: member \"shadowId\": an earlier entry of its place "
      "has 9 too\n");
  EXPECT_EQ(result.out, golden("inspect.txt"));
}

TEST(Inspect, PrintsTheRootsOfAnEmptySnapshot) {
  ProcessResult const result =
      runTcamshow({"inspect"}, {.input = "{\"type\":\"snapshot\",\"version\":1}\n"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            "VelmorTcam::CliShowTcamUsageChipInfo\n"
            "  hash map stageInfo: 0\n"
            "VelmorTcam::CliShowTcamSummaryOrdered\n"
            "  ordered map tcamSummary: 0\n");
}

TEST(Inspect, PrintsTheTypes) {
  ProcessResult const result = runTcamshow({"inspect", "--types"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, golden("inspect-types.txt"));
}

TEST(Inspect, TellsWhereTheSnapshotIsBad) {
  ProcessResult const result = runTcamshow(
      {"inspect"}, {.input = "{\"type\":\"snapshot\",\"version\":1}\n{\"type\":\"foo\"}\n"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("<stdin>:2: "));
}

}  // namespace
