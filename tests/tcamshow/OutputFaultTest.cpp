// Every command with output that cannot be written, or not at once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFile.h"

namespace {

using Words = std::vector<std::string>;

std::string largeSnapshot() {
  std::string text = "{\"type\":\"snapshot\",\"version\":1}\n";
  const char* const tables[] = {"ip", "ip6", "mac", "tcam"};
  for (int i = 0; i < 3200; ++i) {
    std::string const number = std::to_string(i);
    text += "{\"type\":\"group\",\"groupId\":" + number + ",\"name\":\"group " + number + "\"}\n";
    text += "{\"type\":\"entry\",\"groupId\":" + number + ",\"shadowId\":" + number +
            ",\"feature\":\"feature " + number + "\",\"table\":\"" + tables[i % 4] + "\"}\n";
  }
  return text;
}

std::string largeFilters() {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "@1.2.3.4/32 1.2.3.4/32 0 : 65535 0 : 65535 6/255\n";
  return text;
}

std::string largeAcl() {
  std::string text = R"({"acl":{"acl-sets":{"acl-set":{"list":{"acl-entries":{"acl-entry":{)";
  for (int i = 1; i <= 1000; ++i) {
    std::string const number = std::to_string(i);
    text += (i == 1 ? "\"" : ",\"") + number + R"(":{"config":{"sequence-id":)" + number +
            R"(},"actions":{"config":{"forwarding-action":"ACCEPT"}}})";
  }
  return text + "}}}}}}}";
}

std::string largeFlows() {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += " priority=1,ip,nw_src=1.2.3.4 actions=drop\n";
  return text;
}

struct Row {
  Words arguments;
  const std::string* input;
  bool isLarge = true;  ///< the output is more than a pipe holds
};

std::vector<Row> rows() {
  static const std::string none;
  static const std::string snapshot = largeSnapshot();
  static const std::string filters = largeFilters();
  static const std::string acl = largeAcl();
  static const std::string flows = largeFlows();
  return {
      {{"ip"}, &snapshot},
      {{"ip6"}, &snapshot},
      {{"mac"}, &snapshot},
      {{"tcam"}, &snapshot},
      {{"--json", "tcam"}, &snapshot},
      {{"usage", "--detail"}, &snapshot},
      {{"summary"}, &snapshot},
      {{"explain", "vlan=1"}, &snapshot},
      {{"--json", "explain", "vlan=1"}, &snapshot},
      {{"cost"}, &snapshot},
      {{"--json", "cost"}, &snapshot},
      {{"metrics", "--per-entry"}, &snapshot},
      {{"inspect"}, &snapshot},
      {{"inspect", "--types"}, &none, false},
      {{"import", "classbench"}, &filters},
      {{"import", "openconfig"}, &acl},
      {{"import", "ovs"}, &flows},
      {{"--help"}, &none, false},
      {{"--version"}, &none, false},
  };
}

TEST(OutputFault, IsToldWithItsReason) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    TemporaryFile const file(*row.input);
    Words fromFile = row.arguments;
    if (!row.input->empty()) fromFile.push_back(file.path());
    // With standard output closed, a file that is opened takes its number.
    for (const Words& arguments : {row.arguments, fromFile}) {
      ProcessResult result = runTcamshow(arguments, {.input = *row.input, .outPath = "/dev/full"});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.err, "tcamshow: cannot write the output: No space left on device\n");
      result = runTcamshow(arguments, {.input = *row.input, .outIsClosed = true});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.err, "tcamshow: cannot write the output: Bad file descriptor\n");
    }
  }
}

TEST(OutputFault, AReaderThatHasGoneEndsTheProgramQuietly) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    for (bool const atOnce : {true, false}) {
      ProcessOptions options{.input = *row.input, .outHasNoReader = atOnce};
      if (!atOnce) options.outLimit = 1;
      ProcessResult const result = runTcamshow(row.arguments, options);
      EXPECT_EQ(result.status, 0);
      EXPECT_EQ(result.err, "");
    }
  }
}

TEST(OutputFault, ASlowReaderGetsAll) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    ProcessResult const whole = runTcamshow(row.arguments, {.input = *row.input});
    ASSERT_EQ(whole.status, 0);
    EXPECT_EQ(whole.out.size() > 65536, row.isLarge);
    for (bool const nonBlocking : {false, true}) {
      ProcessResult const result = runTcamshow(
          row.arguments,
          {.input = *row.input, .outIsNonBlocking = nonBlocking, .outIsReadLate = true});
      EXPECT_EQ(result.status, 0);
      EXPECT_EQ(result.err, "");
      EXPECT_TRUE(result.out == whole.out);
    }
  }
}

}  // namespace
