// The tables as JSON Lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFile.h"
#include "io/OutputBuffer.h"
#include "views/JsonPrinter.h"

namespace tcamshow {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;

constexpr const char* headerLine = "{\"type\":\"snapshot\",\"version\":1}\n";

std::vector<json> linesOf(const std::string& text) {
  std::vector<json> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(json::parse(line));
  return lines;
}

TEST(JsonTable, HasEveryMember) {
  std::string const snapshot =
      std::string(headerLine) +
      R"({"type":"entry","stage":"egress","pipe":-32768,"groupPriority":4294967295,"groupId":2,)"
      R"("copyId":3,"table":"ip6","shadowId":18446744073709551615,"sequence":4294967295,)"
      R"("priority":4294967294,"description":"say \"hi\" \\ é","action":"permit|",)"
      R"("hits":18446744073709551614,"counterStatus":7,"featurePriority":6,"feature":"acl",)"
      R"("qualifiers":{"qualifierSrcIp6":{"value":"2001:DB8::0:1","mask":"ffff::"},)"
      R"("qualifierIpProtocol":{"value":4294967295,"mask":0,"status":6},)"
      R"("qualifierDstMac":{"value":"00:00:5E:00:53:01","mask":"ff:ff:ff:ff:ff:00"},)"
      R"("qualifierSrcIp":{"value":3232235521,"mask":"255.255.0.0","status":0}},)"
      R"("rangeCheckers":{"rangeCheckerIpLength":{"low":-2147483648,"high":2147483647},)"
      R"("rangeCheckerL4SrcPort":{"low":1,"high":0,"status":255}}})"
      "\n"
      R"({"type":"entry","table":"ip6","shadowId":0})"
      "\n";
  ProcessResult const result = runTcamshow({"ip6", "--json"}, {.input = snapshot});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.err,
      "tcamshow: <stdin>:2: warning: entry: member \"rangeCheckers.rangeCheckerL4SrcPort\": 1 "
      "is over 0, so that it matches nothing\n");
  EXPECT_EQ(
      result.out,
      R"({"type":"table","schema":1,"table":"ip6"})"
      "\n"
      R"({"type":"entry","stage":"egress","pipe":-32768,"groupPriority":4294967295,"groupId":2,)"
      R"("copyId":3,"table":"ip6","shadowId":18446744073709551615,"sequence":4294967295,)"
      R"("priority":4294967294,"description":"say \"hi\" \\ é","action":"permit|",)"
      R"("hits":18446744073709551614,"counterStatus":7,"featurePriority":6,"feature":"acl",)"
      R"("qualifiers":{)"
      R"("qualifierDstMac":{"value":"00:00:5e:00:53:01","mask":"ff:ff:ff:ff:ff:00","status":7},)"
      R"("qualifierIpProtocol":{"value":4294967295,"mask":0,"status":6},)"
      R"("qualifierSrcIp":{"value":"192.168.0.1","mask":"255.255.0.0","status":0},)"
      R"("qualifierSrcIp6":{"value":"2001:db8::1","mask":"ffff::","status":7}},)"
      R"("rangeCheckers":{"rangeCheckerL4SrcPort":{"low":1,"high":0,"status":255},)"
      R"("rangeCheckerIpLength":{"low":-2147483648,"high":2147483647,"status":7}}})"
      "\n"
      R"({"type":"entry","stage":"ingress","pipe":0,"groupPriority":0,"groupId":0,"copyId":0,)"
      R"("table":"ip6","shadowId":0,"sequence":0,"priority":0,"description":"","action":"",)"
      R"("hits":0,"counterStatus":0,"featurePriority":0,"feature":"","qualifiers":{},)"
      R"("rangeCheckers":{}})"
      "\n");
}

TEST(JsonTable, HoldsTheEntriesOfItsTable) {
  std::string snapshot = headerLine;
  std::vector<std::string> const tables = {"ip", "ip6", "mac", "tcam"};
  for (std::size_t i = 0; i < tables.size(); ++i) {
    snapshot +=
        R"({"type":"entry","table":")" + tables[i] + R"(","shadowId":)" + std::to_string(i) + "}\n";
  }
  for (std::size_t i = 0; i < tables.size(); ++i) {
    SCOPED_TRACE(tables[i]);
    // Before the command, after it, and behind the file.
    std::vector<std::vector<std::string>> const commandLines = {
        {"--json", tables[i], "-"}, {tables[i], "--json", "-"}, {tables[i], "-", "--json"}};
    for (auto const& arguments : commandLines) {
      ProcessResult const result = runTcamshow(arguments, {.input = snapshot});
      EXPECT_EQ(result.status, 0);
      std::vector<json> const lines = linesOf(result.out);
      ASSERT_GE(lines.size(), 1u);
      EXPECT_EQ(lines[0], (json{{"type", "table"}, {"schema", 1}, {"table", tables[i]}}));
      if (tables[i] == "tcam") {
        ASSERT_EQ(lines.size(), 5u);
        for (std::size_t j = 0; j < 4; ++j) EXPECT_EQ(lines[j + 1]["table"], tables[j]);
      } else {
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[1]["shadowId"], i);
      }
    }
  }
}

// The entries' lines are a snapshot's lines: behind a header they print the same tables, and each
// value is the snapshot's own.
TEST(JsonTable, RoundTrips) {
  for (std::string const table : {"ip6", "mac"}) {
    SCOPED_TRACE(table);
    std::string const golden =
        (std::filesystem::path(TCAMSHOW_GOLDEN) / (table + ".jsonl")).string();
    ProcessResult const printed = runTcamshow({"--json", "tcam", golden});
    ASSERT_EQ(printed.status, 0) << printed.err;
    std::size_t const entries = printed.out.find('\n') + 1;
    TemporaryFile const again(headerLine + printed.out.substr(entries));
    for (const char* const each : {"ip", "ip6", "mac", "tcam"}) {
      EXPECT_EQ(runTcamshow({each, again.path()}).out, runTcamshow({each, golden}).out);
    }
    // Printed once more it does not change.
    EXPECT_EQ(runTcamshow({"--json", "tcam", again.path()}).out, printed.out);
  }
}

TEST(JsonTable, KeepsTheValuesOfRealFilterSets) {
  std::filesystem::path const file =
      std::filesystem::path(TCAMSHOW_SHARED_DATA) / "classbench" / "ipc1_1k";
  if (!std::filesystem::exists(file)) GTEST_SKIP() << "no filter sets";
  std::string const snapshot = runTcamshow({"import", "classbench", file}).out;
  std::vector<json> const read = linesOf(snapshot);
  std::vector<json> const printed = linesOf(runTcamshow({"ip", "--json"}, {.input = snapshot}).out);
  // The snapshot has an end line.
  ASSERT_EQ(printed.size() + 1, read.size());
  EXPECT_GT(read.size(), 900u);
  for (std::size_t i = 1; i < printed.size(); ++i) {
    for (auto const& [name, value] : read[i].items()) {
      if (name == "qualifiers" || name == "rangeCheckers") {
        ASSERT_EQ(printed[i][name].size(), value.size());
        for (auto const& [type, record] : value.items()) {
          json expected = record;
          expected["status"] = 7;
          ASSERT_EQ(printed[i][name][type], expected);
        }
      } else {
        ASSERT_EQ(printed[i][name], value);
      }
    }
  }
}

TEST(JsonTable, IsReadByJq) {
  if (!std::filesystem::exists("/usr/bin/jq")) GTEST_SKIP() << "no jq";
  std::string const golden = (std::filesystem::path(TCAMSHOW_GOLDEN) / "mac.jsonl").string();
  ProcessResult const printed = runTcamshow({"mac", "--json", golden});
  ProcessResult const result =
      runProcess({"/usr/bin/jq", "-r",
                  "select(.type == \"entry\" and .hits == 340) | .qualifiers.qualifierSrcMac.mask"},
                 {.input = printed.out});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "ff:ff:ff:ff:ff:00\n");
}

TEST(JsonTable, IsOfTheTablesAlone) {
  std::vector<std::vector<std::string>> const commandLines = {
      {"--json", "import", "classbench", "-"},
      {"import", "--json", "openconfig", "-"},
      {"import", "classbench", "-", "--json"}};
  for (auto const& arguments : commandLines) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    ProcessResult const result = runTcamshow(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "tcamshow: --json goes with list, ip, ip6, mac, tcam, usage, summary, explain, lint, "
              "cost, diff "
              "and capacity only\n"
              "Try 'tcamshow --help'.\n");
  }
  EXPECT_EQ(runTcamshow({"--json"}).status, 2);
}

// The lines before the bad line are printed, as whole lines.
TEST(JsonTable, EndsAtABadLine) {
  ProcessResult const result = runTcamshow(
      {"mac", "--json"}, {.input = std::string(headerLine) +
                                   "{\"type\":\"entry\",\"table\":\"mac\",\"shadowId\":1}\nx"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("<stdin>:3: "));
  EXPECT_EQ(linesOf(result.out).size(), 2u);
  EXPECT_EQ(result.out.back(), '\n');
}

/// The output of a printer.
template <class Print>
std::string printed(Print print) {
  TemporaryFile const file;
  std::FILE* const stream = std::fopen(file.path().c_str(), "r+");
  {
    OutputBuffer out(fileno(stream));
    JsonPrinter printer(out);
    print(printer);
    out.flush();
  }
  std::rewind(stream);
  std::string text(4096, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), stream));
  std::fclose(stream);
  return text;
}

TEST(JsonPrinter, WritesEachDocumentAsALine) {
  EXPECT_EQ(printed([](pravo::Printer& printer) {
              printer.objectBegin();
              printer.objectEnd();
              printer.objectBegin();
              printer.attribute("u", pravo::U64{18446744073709551615U});
              printer.attribute("s", std::numeric_limits<pravo::S64>::min());
              printer.attribute("yes", true);
              printer.attribute("no", false);
              printer.attribute("text", "a literal");
              printer.objectBegin("object");
              printer.objectEnd();
              printer.arrayBegin("array");
              printer.attribute({}, "x");
              printer.attribute({}, pravo::U64{1});
              printer.objectBegin();
              printer.attribute("y", pravo::S64{-1});
              printer.objectEnd();
              printer.arrayBegin();
              printer.arrayEnd();
              printer.arrayEnd();
              printer.attribute("last", pravo::U64{0});
              printer.objectEnd();
            }),
            "{}\n"
            R"({"u":18446744073709551615,"s":-9223372036854775808,"yes":true,"no":false,)"
            R"("text":"a literal","object":{},"array":["x",1,{"y":-1},[]],"last":0})"
            "\n");
}

TEST(JsonPrinter, EscapesNamesAndTexts) {
  EXPECT_EQ(printed([](pravo::Printer& printer) {
              printer.objectBegin();
              printer.attribute("a\"b", std::string_view("\\ \" \b\f\n\r\t\0\x1F\x7F é", 15));
              printer.objectEnd();
            }),
            "{\"a\\\"b\":\"\\\\ \\\" \\b\\f\\n\\r\\t\\u0000\\u001f\\u007f é\"}\n");
}

TEST(JsonPrinter, WritesNothingOfADocumentThatDoesNotEnd) {
  EXPECT_EQ(printed([](pravo::Printer& printer) {
              printer.objectBegin();
              printer.objectEnd();
              printer.objectBegin();
              printer.attribute("x", true);
            }),
            "{}\n");
}

}  // namespace
}  // namespace tcamshow
