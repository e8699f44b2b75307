// Formats with one or two fields, which have a faster path: against the C library, with texts and
// numbers on both sides of each limit of the path.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "FormatOracle.h"
#include "Zel/Format/Format.h"

namespace {

using Halvo::String;
using Zel::_fmt;
using Zel::runtimeFormat;

constexpr int ints[] = {0,    1,     9,      10,      99,      100,     999,    1000,
                        9999, 10000, 123456, INT_MAX, INT_MIN, -1,      -9,     -10,
                        -99,  -999,  -1000,  -9999,   -10000,  0xABCDE, 0x1000, 0xFFFF};
constexpr unsigned long longs[] = {0,          9999,           10000,        99999999,
                                   0xFFFFFFFF, 0x100000000,    LONG_MAX,     1UL << 63,
                                   ULONG_MAX,  0xFEDCBA987654, ULONG_MAX - 1};

// Each type of text argument, and the format at run time.
#define EXPECT_TEXT_CELL(FORMAT)                                            \
  do {                                                                      \
    SCOPED_TRACE(FORMAT);                                                   \
    for (std::size_t size = 0; size < 130; ++size) {                        \
      std::string const text(size, 'x');                                    \
      String const expected = printed(FORMAT, text.c_str());                \
      ASSERT_EQ(_fmt(FORMAT, String(text)), expected);                      \
      ASSERT_EQ(_fmt(FORMAT, text.c_str()), expected);                      \
      ASSERT_EQ(_fmt(FORMAT, std::string_view(text)), expected);            \
      ASSERT_EQ(_fmt(runtimeFormat(FORMAT), String(text)), expected);       \
      ASSERT_EQ(_fmt(FORMAT, String(text)).c_str()[expected.size()], '\0'); \
    }                                                                       \
  } while (false)

TEST(FormatCell, PrintsTextsOfEverySize) {
  EXPECT_TEXT_CELL("%s");
  EXPECT_TEXT_CELL("%11s|");
  EXPECT_TEXT_CELL("%-7s|");
  EXPECT_TEXT_CELL(" %-6s|");
  EXPECT_TEXT_CELL("abcd%39s|");
  EXPECT_TEXT_CELL("abcde%39s|");
  EXPECT_TEXT_CELL("%44s|");
  EXPECT_TEXT_CELL("%-44s12345678");
  EXPECT_TEXT_CELL("%45s|");
  EXPECT_TEXT_CELL("%1s123456789");
  EXPECT_TEXT_CELL("abc%-3sdef");
}

#define EXPECT_TEXT_CELLS(FORMAT)                                               \
  do {                                                                          \
    SCOPED_TRACE(FORMAT);                                                       \
    for (std::size_t a = 0; a < 75; ++a) {                                      \
      for (std::size_t b = 0; b < 75; b += a % 5 + 1) {                         \
        String const first(a, 'a');                                             \
        String const second(b, 'b');                                            \
        String const expected = printed(FORMAT, first.c_str(), second.c_str()); \
        ASSERT_EQ(_fmt(FORMAT, first, second), expected);                       \
        ASSERT_EQ(_fmt(FORMAT, first.c_str(), second.c_str()), expected);       \
      }                                                                         \
    }                                                                           \
  } while (false)

TEST(FormatCell, PrintsTwoTextsOfEverySize) {
  EXPECT_TEXT_CELLS("%15s|%15s|");
  EXPECT_TEXT_CELLS("%-15s|%-4s|");
  EXPECT_TEXT_CELLS("%39s|%13s|");
  EXPECT_TEXT_CELLS("%s%s");
  EXPECT_TEXT_CELLS("<%s, %-3s>");
  EXPECT_TEXT_CELLS("%44s12345678%44s12345678");
}

#define EXPECT_NUMBER_CELL(FORMAT, NUMBERS)                     \
  do {                                                          \
    SCOPED_TRACE(FORMAT);                                       \
    for (auto const number : NUMBERS) {                         \
      ASSERT_EQ(_fmt(FORMAT, number), printed(FORMAT, number)); \
    }                                                           \
  } while (false)

TEST(FormatCell, PrintsNumbers) {
  EXPECT_NUMBER_CELL("%d", ints);
  EXPECT_NUMBER_CELL("%11d|", ints);
  EXPECT_NUMBER_CELL("%-11d|", ints);
  EXPECT_NUMBER_CELL("%-7u|", ints);
  EXPECT_NUMBER_CELL("(%44d)", ints);
  EXPECT_NUMBER_CELL("%xh", ints);
  EXPECT_NUMBER_CELL("0x%02x", ints);
  EXPECT_NUMBER_CELL("0x%08X|", ints);
  EXPECT_NUMBER_CELL("%016x", ints);
  EXPECT_NUMBER_CELL("%-16X|", ints);
  EXPECT_NUMBER_CELL("%44x|", ints);
  EXPECT_NUMBER_CELL("%lu", longs);
  EXPECT_NUMBER_CELL("%ld", longs);
  EXPECT_NUMBER_CELL("abcd%-44lu12345678", longs);
  EXPECT_NUMBER_CELL("abcd%44ld12345678", longs);
  EXPECT_NUMBER_CELL("%12lu", longs);
  EXPECT_NUMBER_CELL("%lx", longs);
  EXPECT_NUMBER_CELL("%016lX", longs);
}

#define EXPECT_NUMBER_CELLS(FORMAT, NUMBERS)                  \
  do {                                                        \
    SCOPED_TRACE(FORMAT);                                     \
    for (auto const a : NUMBERS) {                            \
      for (auto const b : NUMBERS) {                          \
        ASSERT_EQ(_fmt(FORMAT, a, b), printed(FORMAT, a, b)); \
      }                                                       \
    }                                                         \
  } while (false)

TEST(FormatCell, PrintsTwoNumbersOfEveryBase) {
  EXPECT_NUMBER_CELLS("%d-%d", ints);
  EXPECT_NUMBER_CELLS("%11u|%11u|", ints);
  EXPECT_NUMBER_CELLS("%-11d|%-11d|", ints);
  EXPECT_NUMBER_CELLS("%d/0x%02X", ints);
  EXPECT_NUMBER_CELLS("0x%04x/%d", ints);
  EXPECT_NUMBER_CELLS("%x:%X", ints);
  EXPECT_NUMBER_CELLS("%X.%x.", ints);
  // Too long for a string's inline buffer.
  EXPECT_NUMBER_CELLS("%44d|%-44d|", ints);
  EXPECT_NUMBER_CELLS("%-44u|%44x|", ints);
  EXPECT_NUMBER_CELLS("abcd%40X|%40d12345678", ints);
  EXPECT_NUMBER_CELLS("abcd%40x|%-20X12345678", ints);
  EXPECT_NUMBER_CELLS("%lu%lu", longs);
  EXPECT_NUMBER_CELLS("%20ld|%20ld|12345678", longs);
  EXPECT_NUMBER_CELLS("%26lu|%28ld|", longs);
  EXPECT_NUMBER_CELLS("%27lu|%28ld|", longs);
  EXPECT_NUMBER_CELLS("%28lu|%28ld|", longs);
  EXPECT_NUMBER_CELLS("%-27lu|%-28ld12345678", longs);
  EXPECT_NUMBER_CELLS("%lx-%lu", longs);
  EXPECT_NUMBER_CELLS("%016lx-%016lX", longs);
}

}  // namespace
