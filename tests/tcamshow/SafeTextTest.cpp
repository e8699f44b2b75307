#include "io/SafeText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "io/InputError.h"
#include "io/JsonText.h"

namespace tcamshow {
namespace {

std::string utf8(char32_t c) {
  std::string text;
  auto const follow = [&](unsigned shift) {
    text += static_cast<char>(0x80 | (static_cast<unsigned>(c) >> shift & 63));
  };
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | c >> 6);
    follow(0);
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 | c >> 12);
    follow(6);
    follow(0);
  } else {
    text += static_cast<char>(0xF0 | c >> 18);
    follow(12);
    follow(6);
    follow(0);
  }
  return text;
}

std::string json(std::string_view text) {
  std::string out;
  appendJsonString(out, text);
  return out;
}

struct Range {
  char32_t first;
  char32_t last;
};
constexpr Range unsafeRanges[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x61C, 0x61C},
                                  {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F},
                                  {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}};

TEST(SafeText, EscapesTheseCharactersAndNoOthers) {
  std::size_t unsafe = 0;
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    std::string const text = utf8(c);
    bool expected = false;
    for (Range const& range : unsafeRanges) expected |= c >= range.first && c <= range.last;
    if (!expected) {
      ASSERT_EQ(safeText(text), text) << static_cast<unsigned>(c);
      continue;
    }
    ++unsafe;
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\u{%X}", static_cast<unsigned>(c));
    ASSERT_EQ(safeText(text), escape);
    ASSERT_EQ(safeText("a" + text + "b"), "a" + std::string(escape) + "b");
    // JSON has short forms of a few.
    std::snprintf(escape, sizeof escape, "\"\\u%04x\"", static_cast<unsigned>(c));
    std::string const shortForms = "\b\f\n\r\t";
    bool const isShort = c < 0x20 && shortForms.find(static_cast<char>(c)) != std::string::npos;
    ASSERT_EQ(json(text), isShort ? json(text) : escape);
  }
  EXPECT_EQ(unsafe, 32U + 33 + 1 + 5 + 7 + 16 + 1 + 3);
}

TEST(SafeText, ShowsBytesThatAreNotUtf8) {
  struct Row {
    const char* text;
    const char* safe;
  };
  Row const rows[] = {
      {"\xFF", "\\xFF"},
      {"a\x80z", "a\\x80z"},
      {"\xC2", "\\xC2"},
      {"\xC2(", "\\xC2("},
      {"\xE2\x82", "\\xE2\\x82"},
      {"\xE2\x82\xAC", "\xE2\x82\xAC"},
      {"\xF0\x9F\x98", "\\xF0\\x9F\\x98"},
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {"\xC0\xAF", "\\xC0\\xAF"},                    // overlong
      {"\xE0\x80\xAF", "\\xE0\\x80\\xAF"},           // overlong
      {"\xF0\x80\x80\xAF", "\\xF0\\x80\\x80\\xAF"},  // overlong
      {"\xED\xA0\x80", "\\xED\\xA0\\x80"},           // a surrogate
      {"\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"},  // over U+10FFFF
      {"\xF5\x80\x80\x80", "\\xF5\\x80\\x80\\x80"},
      {"\xC2\xC2\x9B", "\\xC2\\u{9B}"},
      {"\xE2\x80\xC2\x9B", "\\xE2\\x80\\u{9B}"},
      {"\xC2\x9B\x9B", "\\u{9B}\\x9B"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.safe);
    EXPECT_EQ(safeText(row.text), row.safe);
    // Safe text does not change.
    EXPECT_EQ(safeText(row.safe), row.safe);
  }
}

TEST(SafeText, KeepsTheLineBreaksOfWholeLinesAlone) {
  EXPECT_EQ(safeText("a\nb\r\n"), "a\\u{A}b\\u{D}\\u{A}");
  EXPECT_EQ(safeText("a\nb\r\n", LineBreaks::kept), "a\nb\\u{D}\n");
  EXPECT_EQ(safeText("\t\x1B[2J\a", LineBreaks::kept), "\\u{9}\\u{1B}[2J\\u{7}");
}

// Where texts are looked at in blocks, every place in a block counts.
TEST(SafeText, FindsACharacterWhereverItStands) {
  for (std::size_t size = 1; size <= 200; ++size) {
    std::string const plain(size, 'x');
    for (LineBreaks const breaks : {LineBreaks::kept, LineBreaks::escaped}) {
      ASSERT_EQ(safeAsciiSize(plain, breaks), size);
      for (std::size_t at = 0; at < size; ++at) {
        for (char const c : {'\x1F', '\x7F', '\x80', '\xFF', '\0', '\n'}) {
          std::string text = plain;
          text[at] = c;
          bool const isKept = c == '\n' && breaks == LineBreaks::kept;
          ASSERT_EQ(safeAsciiSize(text, breaks), isKept ? size : at);
        }
        for (char const c : {' ', '~'}) {
          std::string text = plain;
          text[at] = c;
          ASSERT_EQ(safeAsciiSize(text, breaks), size);
        }
      }
    }
  }
}

TEST(SafeText, IsTheSameWhereverATextIsCut) {
  std::mt19937 random(5);
  std::string const pieces[] = {
      "plain ASCII",      "\xC2\x9B", "\xC3\xA9", "\xE2\x80\xAE", "\n", "\xFF", "\x1B",
      "\xF0\x9F\x98\x80", "",         "a",        "\x7F"};
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    std::string safe;
    for (auto count = random() % 40; count != 0; --count) {
      std::string const& piece = pieces[random() % std::size(pieces)];
      text += piece;
      safe += safeText(piece);
    }
    ASSERT_EQ(safeText(text), safe);
  }
}

TEST(SafeText, CutsWhatAMessageShows) {
  std::string const sixty(60, 'x');
  EXPECT_EQ(shown(sixty), sixty);
  EXPECT_EQ(shown(sixty + "y"), sixty + "...");
  EXPECT_EQ(inQuotes("a\nb\xC2\x9B"), "\"a\\u{A}b\\u{9B}\"");
  // A character, and an escape, are whole or not there.
  EXPECT_EQ(shown(sixty.substr(1) + "\xE2\x82\xAC"), sixty.substr(1) + "\xE2\x82\xAC");
  EXPECT_EQ(shown(sixty.substr(1) + "\xE2\x82\xAC!"), sixty.substr(1) + "\xE2\x82\xAC...");
  EXPECT_EQ(shown(sixty.substr(1) + "\x1B!"), sixty.substr(1) + "\\u{1B}...");
  // Names are much longer before they are cut.
  std::string const name(1000, 'n');
  EXPECT_EQ(shownName(name), name);
  EXPECT_EQ(shownName(name + name).size(), 1024U + 3);
}

TEST(SafeText, JsonKeepsItsBytesOrTellsThatTheyAreNone) {
  EXPECT_EQ(json("say \"hi\" \\ \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"),
            "\"say \\\"hi\\\" \\\\ \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"");
  EXPECT_EQ(json("\b\f\n\r\t"), R"("\b\f\n\r\t")");
  EXPECT_EQ(json("a\xC2\x9B"
                 "b\xE2\x80\xAE\xEF\xBB\xBF"),
            R"("a\u009bb\u202e\ufeff")");
  EXPECT_EQ(json("a\xFF\xE2\x82z"), R"("a\ufffd\ufffd\ufffdz")");
  EXPECT_EQ(json(""), R"("")");
}

TEST(InputError, IsSafeAndNamesTheWholeFile) {
  std::string const name = std::string(5000, 'n') + "\n\x1B[2J\xC2\x9B\xFF";
  std::string const safe = std::string(5000, 'n') + "\\u{A}\\u{1B}[2J\\u{9B}\\xFF";
  EXPECT_EQ(InputError(name, 7, "bad\xE2\x80\xAE").what(), safe + ":7: bad\\u{202E}");
  EXPECT_EQ(InputError(name, 0, "bad").what(), safe + ": bad");
  EXPECT_EQ(InputError(name, 0, "bad").file(), name);
}

}  // namespace
}  // namespace tcamshow
