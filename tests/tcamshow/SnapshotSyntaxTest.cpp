// The lines of a snapshot as JSON and as bytes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "SnapshotText.h"
#include "TemporaryFile.h"
#include "io/InputError.h"
#include "io/LineReader.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"

namespace tcamshow {
namespace {

TEST(SnapshotReader, RefusesWhatIsNotJson) {
  std::string const deep(10000, '[');
  struct Row {
    std::string line;
    std::string error;
  };
  constexpr const char* unended = "not valid JSON: the line does not end where the object does";
  constexpr const char* following = "entry: not valid JSON: something follows the object";
  Row const rows[] = {
      {R"({"type":"entry","table":"ip","shadowId":1)",
       std::string(unended) + R"(, at byte 42, member "shadowId")"},
      {R"({"type":"entry","table":"i)",
       R"(not valid JSON: a string does not end, at byte 25, member "table")"},
      {R"({"type":"entry")", std::string(unended) + R"(, at byte 16, member "type")"},
      {"{", std::string(unended) + ", at byte 2"},
      {"{}", R"(member "type" is missing)"},
      {"}", "the line is not a JSON object"},
      {R"({"type":"entry","table":"ip","shadowId":1} x)",
       "not valid JSON: something follows the object, at byte 44"},
      {R"({"type":"entry","table":"ip","shadowId":1}})", std::string(following) + ", at byte 43"},
      {R"({"type":"entry","table":"ip","shadowId":1}{})", std::string(following) + ", at byte 43"},
      {R"({"type":"entry","table":"ip","shadowId":1,})",
       R"(entry: not valid JSON, at byte 43, member "shadowId")"},
      {R"({"type":"entry" "table":"ip","shadowId":1})",
       R"(entry: not valid JSON, at byte 17, member "type")"},
      {R"({"type":"entry","table" "ip","shadowId":1})",
       R"(entry: not valid JSON, at byte 25, member "table")"},
      {R"({"type":"entry",table:"ip","shadowId":1})",
       R"(entry: not valid JSON, at byte 17, member "type")"},
      {R"({"type":"entry","qualifiers":{"qualifierDSCP":{"value":1,"mask" 2}}})",
       R"(entry: not valid JSON, at byte 65, member "qualifiers.qualifierDSCP.mask")"},
      {R"({'type':'entry'})", "not valid JSON, at byte 2"},
      {"{\"type\":\"entry\",\"action\":\"a\tb\"}",
       R"(not valid JSON: a control character stands in a string, at byte 28, member "action")"},
      {"{\"type\":\"entry\",\"action\":\"\xFF\"}",
       R"(not valid UTF-8, at byte 27, member "action")"},
      {"{\"type\":\"entry\",\"action\":\"\xC0\xAF\"}",
       R"(not valid UTF-8, at byte 27, member "action")"},
      {"{\"type\":\"entry\",\"action\":\"a\xED\xA0\x80\"}",
       R"(not valid UTF-8, at byte 28, member "action")"},
      // Of two faults the first counts.
      {"{\"type\":\"entry\" x, \"table\":\"a\xFF\"}",
       R"(not valid JSON, at byte 17, member "type")"},
      {R"({"type" "entry", "table":"ip})", R"(not valid JSON, at byte 9, member "type")"},
      {"{\"type\":\"entry\",,\"table\":\"a\x01\"}", R"(not valid JSON, at byte 17, member "type")"},
      {R"({"type":"entry","action":"abc\q)",
       R"(not valid JSON: a bad escape stands in a string, at byte 30, member "action")"},
      {R"({"type":"entry","table":"ip","shadowId":1,"\ud800":1})",
       R"(not valid JSON: a bad escape stands in a string, at byte 44, member "shadowId")"},
      {deep, "the line is not a JSON object"},
      {R"({"type":"entry","qualifiers":)" + deep + std::string(10000, ']') + "}",
       R"(entry: member "qualifiers": an array is not an object)"},
      {R"({"qualifiers":)" + deep + std::string(10000, ']') + R"(,"type":"entry"})",
       R"(entry: member "qualifiers": an array is not an object)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line.substr(0, 100));
    std::string const error = errorOf(std::string(header1) + row.line + "\n");
    EXPECT_EQ(error.substr(0, 3), "2: ");
    // Which of two faults of the text is met first is the parser's business.
    EXPECT_THAT(error.substr(3),
                ::testing::AnyOf(::testing::Eq(row.error), ::testing::Eq("entry: " + row.error)));
  }
}

TEST(SnapshotReader, ErrorNamesTheFile) {
  TemporaryFile const snapshot("x");
  Complaints complaints;
  try {
    openSnapshot(InputFile(snapshot.path()), complaints);
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), snapshot.path() + ":1: " + error.message());
  }
}

TEST(SnapshotReader, TakesLinesUpToOneMebibyte) {
  std::string const start = R"({"type":"entry","table":"ip","shadowId":1,"description":")";
  auto line = [&](std::size_t size) {
    return start + std::string(size - start.size() - 2, 'x') + "\"}";
  };
  std::string const longest = line(1 << 20);
  ASSERT_EQ(longest.size(), LineReader::longestLine);
  for (const char* const lineBreak : {"", "\n"}) {
    EXPECT_EQ(countEntries(std::string(header1) + longest + "\n" + longest + lineBreak), 2u);
    EXPECT_EQ(errorOf(std::string(header1) + longest + "\n" + line((1 << 20) + 1) + lineBreak),
              "3: the line is longer than 1 MiB");
  }
  // A blank line is a line too.
  EXPECT_EQ(errorOf(std::string(header1) + std::string((1 << 20) + 1, ' ')),
            "2: the line is longer than 1 MiB");
}

TEST(SnapshotReader, ReadsLinesOfEveryLengthAcrossTheBuffersEnd) {
  std::mt19937 random(7);
  std::string text(header1);
  std::vector<std::string> descriptions;
  for (std::uint64_t i = 0; i < 3000; ++i) {
    std::size_t const size = random() % (i % 100 == 0 ? 200000 : 300);
    Entry entry;
    entry.shadowId = i;
    descriptions.emplace_back(size, static_cast<char>('a' + i % 26));
    entry.description = descriptions.back();
    appendLine(text, entry);
    if (random() % 10 == 0) text += random() % 2 == 0 ? "\n" : " \r\n";
  }
  TemporaryFile const snapshot(text);
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  for (std::uint64_t i = 0; i < descriptions.size(); ++i) {
    ASSERT_EQ(reader->next(), Source::Item::entry);
    ASSERT_EQ(reader->entry().shadowId, i);
    ASSERT_EQ(reader->entry().description, descriptions[i]);
  }
  EXPECT_EQ(reader->next(), Source::Item::end);
}

TEST(SnapshotReader, EveryCutLineIsRefused) {
  std::string const line =
      R"({"type":"entry","table":"ip","shadowId":12,"description":"a\"b","qualifiers":)"
      R"({"qualifierSrcIp":{"value":"10.0.0.1","mask":"255.0.0.0","status":7}},)"
      R"("rangeCheckers":{"rangeCheckerIpLength":{"low":1,"high":2}}})";
  ASSERT_EQ(errorOf(std::string(header1) + line), "no error");
  for (std::size_t size = 1; size < line.size(); ++size) {
    SCOPED_TRACE(line.substr(0, size));
    EXPECT_EQ(errorOf(std::string(header1) + line.substr(0, size)).substr(0, 3), "2: ");
    // The next line must not complete it.
    EXPECT_EQ(errorOf(std::string(header1) + line.substr(0, size) + "\n" + line.substr(size))
                  .substr(0, 3),
              "2: ");
  }
}

TEST(SnapshotReader, ChangedBytesNeverDoMoreThanThrow) {
  std::string const line =
      R"({"type":"entry","table":"mac","shadowId":12,"description":"a\"b\u00e9","qualifiers":)"
      R"({"qualifierSrcMac":{"value":"00:11:22:33:44:55","mask":"ff:ff:ff:ff:ff:ff"},)"
      R"("qualifierSrcIp6":{"value":"::1","mask":"::"}},"hits":123456789})";
  std::mt19937 random(3);
  std::size_t refused = 0;
  for (int round = 0; round < 2000; ++round) {
    std::string changed = line;
    for (auto changes = 1 + random() % 3; changes != 0; --changes) {
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    if (errorOf(std::string(header1) + changed) != "no error") ++refused;
  }
  EXPECT_GT(refused, 1000u);
}

}  // namespace
}  // namespace tcamshow
