// All text that reaches a terminal is safe: from the views, from messages, from the command line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFile.h"

namespace {

using ::testing::HasSubstr;
using Words = std::vector<std::string>;

struct Unsafe {
  std::string text;
  std::string escaped;  ///< in text
  std::string json;     ///< in JSON
};

/// What a file may hold: no C0, which the reader refuses.
std::vector<Unsafe> unsafeTexts() {
  std::vector<Unsafe> texts;
  for (unsigned const c : {0x80U, 0x9BU, 0x9FU, 0x61CU, 0x200BU, 0x200FU, 0x2028U, 0x202EU, 0x2060U,
                           0x206FU, 0xFEFFU, 0xFFF9U, 0xFFFBU}) {
    char escaped[16];
    std::snprintf(escaped, sizeof escaped, "\\u{%X}", c);
    char json[16];
    std::snprintf(json, sizeof json, "\\u%04x", c);
    std::string utf8(1, static_cast<char>(c < 0x800 ? 0xC0 | c >> 6 : 0xE0 | c >> 12));
    if (c >= 0x800) utf8 += static_cast<char>(0x80 | (c >> 6 & 63));
    utf8 += static_cast<char>(0x80 | (c & 63));
    texts.push_back({utf8, escaped, json});
  }
  return texts;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

/// A snapshot in which `text` stands wherever a text can stand.
std::string snapshotWith(const std::string& text) {
  std::string snapshot =
      "{\"type\":\"snapshot\",\"version\":1}\n"
      "{\"type\":\"group\",\"name\":\"n" +
      text + "\"}\n";
  int id = 0;
  for (const char* const table : {"ip", "ip6", "mac", "tcam"}) {
    snapshot += R"({"type":"entry","table":")" + std::string(table) + R"(","action":")" + text +
                R"(","feature":"f)" + text + R"(","description":"d)" + text + R"(","shadowId":)" +
                std::to_string(++id) + "}\n";
  }
  return snapshot;
}

// The cells keep the width that they had: the one character is replaced, no other byte changes.
TEST(SafeOutput, ViewsEscapeAndChangeNoOtherByte) {
  Words const views[] = {{"ip"},      {"ip6"},     {"mac"},
                         {"tcam"},    {"usage"},   {"usage", "--detail"},
                         {"summary"}, {"inspect"}, {"explain", "vlan=1"},
                         {"lint"},    {"cost"}};
  for (const Unsafe& unsafe : unsafeTexts()) {
    SCOPED_TRACE(unsafe.escaped);
    // A letter of as many bytes shows where it stands.
    std::string const letter = unsafe.text.size() == 2 ? "\xC3\xA9" : "\xE2\x82\xAC";
    for (const Words& view : views) {
      SCOPED_TRACE(::testing::PrintToString(view));
      ProcessResult const result = runTcamshow(view, {.input = snapshotWith(unsafe.text)});
      ProcessResult expected = runTcamshow(view, {.input = snapshotWith(letter)});
      ASSERT_THAT(expected.out, HasSubstr(letter));
      replaceAll(expected.out, letter, unsafe.escaped);
      EXPECT_EQ(result.out, expected.out);
      EXPECT_EQ(result.status, 0);
      // The escaped form in the file is the same text.
      EXPECT_EQ(runTcamshow(view, {.input = snapshotWith(unsafe.json)}).out, expected.out);
    }
  }
}

TEST(SafeOutput, JsonEscapesAsJson) {
  for (const Unsafe& unsafe : unsafeTexts()) {
    SCOPED_TRACE(unsafe.escaped);
    ProcessResult const table =
        runTcamshow({"tcam", "--json"}, {.input = snapshotWith(unsafe.text)});
    EXPECT_THAT(table.out, HasSubstr("\"description\":\"d" + unsafe.json + "\""));
    EXPECT_EQ(table.out.find(unsafe.text), std::string::npos);
    for (const char* const command : {"capacity", "usage", "summary"}) {
      ProcessResult const answer =
          runTcamshow({command, "--json"}, {.input = snapshotWith(unsafe.text)});
      EXPECT_THAT(answer.out, HasSubstr("\"name\":\"n" + unsafe.json + "\""));
      EXPECT_EQ(answer.out.find(unsafe.text), std::string::npos);
    }
    ProcessResult const import = runTcamshow(
        {"import", "openconfig"},
        {.input =
             R"({"acl":{"acl-sets":{"acl-set":{"a)" + unsafe.text +
             R"(":{"acl-entries":{"acl-entry":{"1":{"config":{"sequence-id":1,"description":"d)" +
             unsafe.text + R"("},"actions":{"config":{"forwarding-action":"DROP"}}}}}}}}}})"});
    EXPECT_EQ(import.status, 0) << import.err;
    EXPECT_THAT(import.out, HasSubstr("\"name\":\"a" + unsafe.json + "\""));
    EXPECT_THAT(import.out, HasSubstr("\"description\":\"d" + unsafe.json + "\""));
    EXPECT_EQ(import.out.find(unsafe.text), std::string::npos);
    // It reads back as the same text.
    EXPECT_THAT(runTcamshow({"summary"}, {.input = import.out}).out,
                HasSubstr("a" + unsafe.escaped + "\n"));
  }
}

TEST(SafeOutput, RefusesC0AsEver) {
  for (const char* const text : {"\\u0000", "\\u001b", "\\n", "\\u007f", "\x7F"}) {
    ProcessResult const result = runTcamshow({"tcam"}, {.input = snapshotWith(text)});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err,
                HasSubstr("<stdin>:2: group: member \"name\": holds the control character"));
  }
}

/// Every text that can reach standard error from outside, and what of it does.
TEST(SafeOutput, MessagesEscapeTheCommandLine) {
  struct Row {
    Words arguments;
    const char* error;
  };
  Row const rows[] = {
      {{"\x1B[2J"}, "no such command: \\u{1B}[2J"},
      {{"\xC2\x9B"
        "2J"},
       "no such command: \\u{9B}2J"},
      {{"a\nb"}, "no such command: a\\u{A}b"},
      {{"\xE2\x80\xAE"
        "abc"},
       "no such command: \\u{202E}abc"},
      {{"\xFF\xFE"}, "no such command: \\xFF\\xFE"},
      {{"--\x1B[2J"}, "no such option: --\\u{1B}[2J"},
      {{"import", "\a", "file"}, "no such format: \\u{7}"},
      {{"ip", "x", "\x1B"}, "one argument too many: \\u{1B}"},
      {{"ip", "--\x1B=\xC2\x9B"}, "no such option: --\\u{1B}=\\u{9B}"},
      {{"usage", "--detail=\x1B\n"}, "\\u{1B}"},
      {{"--json=\xE2\x80\xAE", "ip"}, "\\u{202E}"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.error);
    ProcessResult const result = runTcamshow(row.arguments);
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(row.error));
    for (char const c : result.err) {
      EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F)) << result.err;
    }
    EXPECT_LE(std::count(result.err.begin(), result.err.end(), '\n'), 2);
  }
}

TEST(SafeOutput, MessagesEscapeTheNameOfTheFileAndShowAllOfIt) {
  std::filesystem::path const directory = std::filesystem::temp_directory_path();
  std::string const part(180, 'n');
  std::string const name =
      (directory / (part + "\x1B[31m\n\xC2\x9B\xE2\x80\xAE\xFF" + part.substr(0, 40) + "end"))
          .string();
  std::string const shown =
      (directory / (part + "\\u{1B}[31m\\u{A}\\u{9B}\\u{202E}\\xFF" + part.substr(0, 40) + "end"))
          .string();
  for (const Words& command : {Words{"ip", "--from", "snapshot"}, Words{"usage", "--from=snapshot"},
                               Words{"import", "openconfig"}}) {
    Words arguments = command;
    arguments.push_back(name);
    EXPECT_EQ(runTcamshow(arguments).err,
              "tcamshow: " + shown + ": cannot open: No such file or directory\n");
    std::ofstream(name) << "{\"x\" \xC2\x9B}";
    ProcessResult const result = runTcamshow(arguments);
    std::filesystem::remove(name);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: " + shown + ":1: not valid JSON, at byte 6, member \"x\"\n");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
  }
}

TEST(SafeOutput, MessagesEscapeWhatTheFileHolds) {
  std::string const header = "{\"type\":\"snapshot\",\"version\":1}\n";
  std::string const unsafe = "\xC2\x9B\xE2\x80\xAE";
  struct Row {
    std::string line;
    const char* error;
  };
  Row const rows[] = {
      {R"({"type":")" + unsafe + "\"}",
       R"(member "type": "\u{9B}\u{202E}" is not "snapshot", "group" or "entry")"},
      {R"({"type":"entry",")" + unsafe + "\":1}", R"(entry: member "\u{9B}\u{202E}" is not known)"},
      {R"({"type":"entry","\u001b[2J\u0000":1})", R"(entry: member "\u{1B}[2J\u{0}" is not known)"},
      {R"({"type":"entry","table":")" + unsafe + "\"}",
       R"(entry: member "table": "\u{9B}\u{202E}" is not "ip", "ip6", "mac" or "tcam")"},
      {R"({"type":"entry","qualifiers":{")" + unsafe + "\":{}}}",
       R"(entry: member "qualifiers.\u{9B}\u{202E}" is not a qualifier)"},
      {R"({"type":"entry","hits":)" + unsafe + "}",
       R"(entry: member "hits": \u{9B}\u{202E} is not a whole number from 0 to 18446744073709551615)"},
      {R"({"type":"entry",")" + unsafe + "\" 1}",
       R"(entry: not valid JSON, at byte 25, member "\u{9B}\u{202E}")"},
      {"{\"type\":\"entry\",\"a\x1B\":1}",
       R"(not valid JSON: a control character stands in a string, at byte 19, member "type")"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.error);
    ProcessResult const result = runTcamshow({"ip"}, {.input = header + row.line + "\n"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: <stdin>:2: " + std::string(row.error) + "\n");
  }
}

}  // namespace
