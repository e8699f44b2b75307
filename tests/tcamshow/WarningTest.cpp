// Warnings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFile.h"
#include "io/Complaints.h"

namespace {

using Words = std::vector<std::string>;

const Words& allViews() {
  static const Words views = {"ip", "ip6", "mac", "tcam", "usage", "summary", "inspect"};
  return views;
}

std::string entry(const std::string& members) {
  return R"({"type":"entry","table":"ip","shadowId":)" + members + "}\n";
}

TEST(Warning, TellsAPipeThatTheHeaderDoesNotHave) {
  std::string const warning = "warning: member \"pipe\": 2, but the header's \"numPipes\" is 2";
  struct Row {
    std::string header;
    std::string lines;
    std::string error;
  };
  std::string const two = R"({"type":"snapshot","version":1,"numPipes":2})"
                          "\n";
  Row const rows[] = {
      {two, entry(R"(1,"pipe":1)") + entry(R"(2,"pipe":-5)"), ""},
      {two, entry(R"(1,"pipe":2)"), "tcamshow: <stdin>:2: " + warning + "\n"},
      {two, "\n{\"type\":\"group\",\"pipe\":2}\n", "tcamshow: <stdin>:3: " + warning + "\n"},
      {two,
       entry(R"(1,"pipe":1)") + entry(R"(2,"pipe":2)") + entry(R"(3,"pipe":300)") +
           "{\"type\":\"group\",\"pipe\":32767}\n",
       "tcamshow: <stdin>:3: " + warning + " (and 2 more)\n"},
      // Only where the header gives it.
      {R"({"type":"snapshot","version":1})"
       "\n",
       entry(R"(1,"pipe":2)"), ""},
      {R"({"type":"snapshot","version":1,"numPipes":1})"
       "\n",
       entry(R"(1,"pipe":1)"),
       "tcamshow: <stdin>:2: warning: member \"pipe\": 1, but the header's \"numPipes\" is 1\n"},
      {R"({"numPipes":0,"type":"snapshot","version":1})"
       "\n",
       entry("1"),
       "tcamshow: <stdin>:2: warning: member \"pipe\": 0, but the header's \"numPipes\" is 0\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.lines);
    for (const std::string& view : allViews()) {
      SCOPED_TRACE(view);
      ProcessResult const result = runTcamshow({view}, {.input = row.header + row.lines});
      EXPECT_EQ(result.status, 0);
      EXPECT_EQ(result.err, row.error);
    }
  }
}

TEST(Warning, TellsALowAboveItsHigh) {
  std::string const header = "{\"type\":\"snapshot\",\"version\":1}\n";
  auto const range = [](const std::string& name, int low, int high) {
    return "\"" + name + "\":{\"low\":" + std::to_string(low) +
           ",\"high\":" + std::to_string(high) + "}";
  };
  std::string const text =
      header + entry(R"(1,"rangeCheckers":{)" + range("rangeCheckerIpLength", 5, 5) + "}") +
      entry(R"(2,"rangeCheckers":{)" + range("rangeCheckerL4DstPort", 7, -7) + "," +
            range("rangeCheckerIpLength", 9, 8) + "}") +
      entry(R"(3,"rangeCheckers":{"rangeCheckerL4SrcPort":{"high":1,"low":2,"status":0}})");
  for (const std::string& view : allViews()) {
    SCOPED_TRACE(view);
    ProcessResult const result = runTcamshow({view}, {.input = text});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(
        result.err,
        "tcamshow: <stdin>:3: warning: entry: member \"rangeCheckers.rangeCheckerL4DstPort\": 7 "
        "is over -7, so that it matches nothing (and 2 more)\n");
  }
}

TEST(Warning, TellsAnIdThatAPlaceHasTwice) {
  std::string text = "{\"type\":\"snapshot\",\"version\":1}\n";
  // Blocks of ids, the largest id, one id in every place, table and feature.
  for (const char* const id : {"0", "255", "256", "18446744073709551615", "18446744073709551360"}) {
    text += entry(id);
  }
  for (const char* const place : {R"("stage":"egress")", R"("pipe":1)", R"("groupPriority":1)",
                                  R"("groupId":1)", R"("copyId":1)"}) {
    text += entry("0," + std::string(place));
  }
  for (const std::string& view : allViews()) {
    SCOPED_TRACE(view);
    EXPECT_EQ(runTcamshow({view}, {.input = text}).err, "");
    bool const holdsAll = view == "usage" || view == "summary" || view == "inspect";
    EXPECT_EQ(
        runTcamshow({view}, {.input = text + entry("256,\"feature\":\"other\",\"priority\":9")})
            .err,
        holdsAll ? "tcamshow: <stdin>:12: warning: entry: member \"shadowId\": an earlier entry "
                   "of its place has 256 too\n"
                 : "");
    EXPECT_EQ(
        runTcamshow({view}, {.input = text + entry("18446744073709551615") + entry("0,\"pipe\":1") +
                                      entry("0,\"pipe\":1")})
            .err,
        holdsAll
            ? "tcamshow: <stdin>:12: warning: entry: member \"shadowId\": an earlier entry of its "
              "place has 18446744073709551615 too (and 2 more)\n"
            : "");
  }
}

TEST(Warning, ComesBehindTheOutputAndBeforeTheError) {
  std::string const text =
      "{\"type\":\"snapshot\",\"version\":1,\"numPipes\":1}\n" + entry("1,\"pipe\":1") + "x\n";
  ProcessResult const result =
      runProcess({"/bin/sh", "-c", "'" TCAMSHOW_PROGRAM "' tcam 2>&1"}, {.input = text});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out,
            "    0x00000001            0 hits - \n"
            "tcamshow: <stdin>:2: warning: member \"pipe\": 1, but the header's \"numPipes\" is 1\n"
            "tcamshow: <stdin>:3: the line is not a JSON object\n");
}

TEST(Warning, IsNotToldToAReaderWhoHasGone) {
  ProcessResult const result = runTcamshow(
      {"tcam"},
      {.input = "{\"type\":\"snapshot\",\"version\":1,\"numPipes\":1}\n" + entry("1,\"pipe\":1"),
       .outHasNoReader = true});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
}

TEST(Warning, IsSafeText) {
  std::string const name =
      (std::filesystem::temp_directory_path() / "tcamshow_\x1B[2J_\xC2\x9B").string();
  std::ofstream(name) << "{\"type\":\"snapshot\",\"version\":1,\"numPipes\":1}\n"
                      << entry("1,\"pipe\":1");
  ProcessResult const result = runTcamshow({"ip", name});
  std::filesystem::remove(name);
  EXPECT_THAT(result.err, ::testing::HasSubstr("tcamshow_\\u{1B}[2J_\\u{9B}:2: warning: "));
  ProcessResult const import = runTcamshow(
      {"import", "openconfig"},
      {.input = "{\"acl\":{\"acl-sets\":{\"acl-set\":{\"\xE2\x80\xAE\":\"\\u001b\xC2\x9B\"}}}}"});
  EXPECT_EQ(import.err,
            "tcamshow: <stdin>:1: warning: member \"acl.acl-sets.acl-set.\\u{202E}\": "
            "\"\\u{1B}\\u{9B}\" is not an ACL, and is left out\n");
}

TEST(Complaints, KeepsTheFirstOfAKindAndCountsTheOthers) {
  tcamshow::Complaints complaints;
  static constexpr tcamshow::WarningKind one;
  static constexpr tcamshow::WarningKind other;
  int made = 0;
  auto const message = [&made] { return "message " + std::to_string(++made); };
  EXPECT_EQ(complaints.texts(), Words());
  complaints.warn(one, message);
  EXPECT_EQ(complaints.texts(), Words({"message 1"}));
  complaints.warn(other, message);
  complaints.warn(one, message);
  for (int i = 0; i < 1000; ++i) complaints.warn(other, message);
  EXPECT_EQ(complaints.texts(), Words({"message 1 (and 1 more)", "message 2 (and 1000 more)"}));
  EXPECT_EQ(made, 2);
}

}  // namespace
