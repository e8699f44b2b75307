#include "Zel/Format/Format.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "CountedNew.h"
#include "FormatOracle.h"

namespace {

using CountedNew::allocations;
using CountedNew::lastRefused;
using Halvo::String;
using Zel::_fmt;
using Zel::_fmtAppend;
using Zel::runtimeFormat;

enum Color { red, green = 7 };
enum Wide : unsigned long { widest = ULONG_MAX };
enum Narrow : signed char { lowest = -3 };

/// Every way to format gives `expected`, and so does the C library. `format` is `text`, as the
/// compiler read it.
template <class... Args>
void expectFormat(const testing::ScopedTrace&, const String& expected, const char* text,
                  Zel::FormatString<std::type_identity_t<Args>...> format, const Args&... args) {
  EXPECT_EQ(printed(text, args...), expected);
  EXPECT_EQ(_fmt(format, args...), expected);
  EXPECT_EQ(_fmt(runtimeFormat(text), args...), expected);
  String out("before ");
  _fmtAppend(out, format, args...);
  _fmtAppend(out, runtimeFormat(text), args...);
  EXPECT_EQ(out, String("before ") + expected + expected);
}

#define EXPECT_FORMAT(EXPECTED, FORMAT, ...)                                       \
  expectFormat(testing::ScopedTrace(__FILE__, __LINE__, FORMAT), EXPECTED, FORMAT, \
               FORMAT __VA_OPT__(, ) __VA_ARGS__)

TEST(Format, PrintsLiteralText) {
  EXPECT_FORMAT("", "");
  EXPECT_FORMAT("plain", "plain");
  EXPECT_FORMAT("%", "%%");
  EXPECT_FORMAT("100%", "100%%");
  EXPECT_FORMAT("%%", "%%%%");
  EXPECT_FORMAT("%d", "%%d");
  EXPECT_FORMAT("a%b1%c%2d%e", "a%%b%d%%c%%%dd%%e", 1, 2);
  EXPECT_FORMAT("\xFF\x80", "\xFF\x80");
}

TEST(Format, PrintsTheCellsOfTables) {
  EXPECT_FORMAT("12     |", "%-7u|", 12U);
  EXPECT_FORMAT("12345678|", "%-7u|", 12345678U);
  EXPECT_FORMAT("Drop   |", "%-7s|", "Drop");
  EXPECT_FORMAT("Drop     |", "%-9s|", "Drop");
  EXPECT_FORMAT(" ICMPv6|", " %-6s|", "ICMPv6");
  EXPECT_FORMAT("          *|", "%11s|", "*");
  EXPECT_FORMAT("64-1500", "%d-%d", 64, 1500);
  EXPECT_FORMAT("        100|      0xfff|", "%11s|%11s|", "100", "0xfff");
  EXPECT_FORMAT("4294967296|", "%-10lu|", 4294967296UL);
  EXPECT_FORMAT("18446744073709551615|", "%-10lu|", ULONG_MAX);
  EXPECT_FORMAT("         17", "%11lu", 17UL);
  EXPECT_FORMAT("       10.0.0.0|      255.0.0.0|", "%15s|%15s|", "10.0.0.0", "255.0.0.0");
  EXPECT_FORMAT("   46/0x3F|", "%10s|", "46/0x3F");
  EXPECT_FORMAT("46/0x3F", "%d/0x%02X", 46, 63);
  EXPECT_FORMAT("-1/0xFFFFFFFF", "%d/0x%02X", UINT_MAX, UINT_MAX);
  EXPECT_FORMAT("   *   |", " %3s   |", "*");
  EXPECT_FORMAT("0x2f", "0x%02x", 47);
  EXPECT_FORMAT("                            2001:db8::1|          /64|", "%39s|%13s|",
                "2001:db8::1", "/64");
  EXPECT_FORMAT("     AF41 |", " %8s |", "AF41");
  EXPECT_FORMAT("    *|", "%5s|", "*");
  EXPECT_FORMAT("86ddh", "%xh", 0x86DD);
  EXPECT_FORMAT("         731", "%12lu", 731UL);
  EXPECT_FORMAT("    0x0002001f          731 hits - permit tcp\n", "    0x%08x %s hits - %s\n",
                0x2001F, "         731", "permit tcp");
  EXPECT_FORMAT("TCAM group 17 in PIPE 1 uses 1 entry and can use up to -2147483648 more.\n",
                "TCAM group %d%s uses %d %s and can use up to %d more.\n", 17, " in PIPE 1", 1,
                "entry", 0x80000000U);
  EXPECT_FORMAT("  ACL uses 120 entries.\n", "  %s uses %d entries.\n", "ACL", 120);
}

TEST(Format, PrintsIntegersToTheirLimits) {
  EXPECT_FORMAT("0", "%d", 0);
  EXPECT_FORMAT("-1", "%i", -1);
  EXPECT_FORMAT("2147483647", "%d", INT_MAX);
  EXPECT_FORMAT("-2147483648", "%d", INT_MIN);
  EXPECT_FORMAT("9223372036854775807", "%ld", LONG_MAX);
  EXPECT_FORMAT("-9223372036854775808", "%ld", LONG_MIN);
  EXPECT_FORMAT("4294967295", "%u", UINT_MAX);
  EXPECT_FORMAT("18446744073709551615", "%lu", ULONG_MAX);
  EXPECT_FORMAT("ffffffffffffffff", "%lx", ULONG_MAX);
  EXPECT_FORMAT("FFFFFFFFFFFFFFFF", "%lX", ULONG_MAX);
  EXPECT_FORMAT("1777777777777777777777", "%lo", ULONG_MAX);
}

TEST(Format, PrintsEveryCountOfDigits) {
  for (unsigned long power = 1, count = 1; count <= 20; power *= 10, ++count) {
    EXPECT_EQ(_fmt("%lu", power), printed("%lu", power));
    EXPECT_EQ(_fmt("%lu", power - 1), printed("%lu", power - 1));
    EXPECT_EQ(_fmt("%30ld|", -static_cast<long>(power)),
              printed("%30ld|", -static_cast<long>(power)));
  }
  for (unsigned shift = 0; shift < 64; ++shift) {
    unsigned long const bit = 1UL << shift;
    EXPECT_EQ(_fmt("%lu %lx %lX %lo", bit, bit, bit, bit),
              printed("%lu %lx %lX %lo", bit, bit, bit, bit));
    EXPECT_EQ(_fmt("%lu %lx %lX %lo", bit - 1, bit - 1, bit - 1, bit - 1),
              printed("%lu %lx %lX %lo", bit - 1, bit - 1, bit - 1, bit - 1));
  }
}

TEST(Format, LetsTheConversionDecideOnTheSign) {
  EXPECT_FORMAT("-2147483648", "%d", 0x80000000U);
  EXPECT_FORMAT("4294967295", "%u", -1);
  EXPECT_FORMAT("-1", "%ld", ULONG_MAX);
  EXPECT_FORMAT("18446744073709551615", "%lu", -1L);
  EXPECT_FORMAT("ffffffff", "%x", -1);
  EXPECT_FORMAT("37777777777", "%o", -1);
}

TEST(Format, CutsByTheLengthModifier) {
  EXPECT_FORMAT("44", "%hhd", 300);
  EXPECT_FORMAT("-56", "%hhd", 200);
  EXPECT_FORMAT("255", "%hhu", -1);
  EXPECT_FORMAT("1170", "%hx", 70000);
  EXPECT_FORMAT("-25536", "%hd", 40000);
  EXPECT_FORMAT("177777", "%ho", -1);
  EXPECT_FORMAT("0", "%#hhx", 256);
  EXPECT_FORMAT("", "%.0hhu", 256);
  EXPECT_FORMAT("5", "%lld", 5LL);
  EXPECT_FORMAT("5", "%lld", 5L);
  EXPECT_FORMAT("5", "%jd", std::intmax_t{5});
  EXPECT_FORMAT("5", "%zu", std::size_t{5});
  EXPECT_FORMAT("-5", "%td", std::ptrdiff_t{-5});
}

TEST(Format, TakesEveryKindOfInteger) {
  EXPECT_FORMAT("1 0", "%d %d", true, false);
  EXPECT_FORMAT("65", "%d", 'A');
  EXPECT_FORMAT("-128", "%d", static_cast<signed char>(-128));
  EXPECT_FORMAT("4294967168", "%u", static_cast<signed char>(-128));
  EXPECT_FORMAT("255", "%d", static_cast<unsigned char>(255));
  EXPECT_FORMAT("-2", "%hd", static_cast<short>(-2));
  EXPECT_FORMAT("65535", "%d", static_cast<unsigned short>(65535));
  EXPECT_FORMAT("7", "%d", green);
  EXPECT_FORMAT("-3", "%d", lowest);
  EXPECT_FORMAT("18446744073709551615", "%lu", widest);
  EXPECT_EQ(_fmt("%d", u8'A'), "65");
  EXPECT_EQ(_fmt("%u", U'\U0010FFFF'), "1114111");
  Color const color = green;
  EXPECT_EQ(_fmt("%s", _fmt("%02d", color)), "07");
}

TEST(Format, ObeysEachFlag) {
  EXPECT_FORMAT("+5 -5 +0", "%+d %+d %+d", 5, -5, 0);
  EXPECT_FORMAT(" 5 -5", "% d % d", 5, -5);
  EXPECT_FORMAT("+5", "%+ d", 5);
  EXPECT_FORMAT("+5", "% +d", 5);
  EXPECT_FORMAT("5    |", "%-5d|", 5);
  EXPECT_FORMAT("00005", "%05d", 5);
  EXPECT_FORMAT("-0005", "%05d", -5);
  EXPECT_FORMAT("+0005", "%+05d", 5);
  EXPECT_FORMAT(" 0005", "% 05d", 5);
  EXPECT_FORMAT("5    |", "%-05d|", 5);
  EXPECT_FORMAT("5    |", "%0-5d|", 5);
  EXPECT_FORMAT("  005", "%05.3d", 5);
  EXPECT_FORMAT("0x1f", "%#x", 31);
  EXPECT_FORMAT("0X1F", "%#X", 31);
  EXPECT_FORMAT("0x00001f", "%#08x", 31);
  EXPECT_FORMAT("    0x1f", "%#8x", 31);
  EXPECT_FORMAT("0x1f    |", "%-#8x|", 31);
  EXPECT_FORMAT("0x001f", "%#.4x", 31);
  EXPECT_FORMAT("0", "%#x", 0);
  EXPECT_FORMAT("", "%#.0x", 0U);
  EXPECT_FORMAT("00000", "%#05x", 0);
  EXPECT_FORMAT("010", "%#o", 8);
  EXPECT_FORMAT("0", "%#o", 0U);
  EXPECT_FORMAT("0", "%#.0o", 0);
  EXPECT_FORMAT("00010", "%#05o", 8);
  EXPECT_FORMAT("010", "%#.3o", 8);
  EXPECT_FORMAT("00010", "%#.5o", 8);
  EXPECT_FORMAT("  010|", "%#5o|", 8);
  EXPECT_FORMAT("010  |", "%-#5o|", 8);
}

TEST(Format, IgnoresAFlagThatSaysNothingForItsLetter) {
  EXPECT_FORMAT("5", "%+u", 5);
  EXPECT_FORMAT("5", "% x", 5);
  EXPECT_FORMAT("5", "%#d", 5);
  EXPECT_FORMAT("   ab", "%05s", "ab");
  EXPECT_FORMAT("ab   |", "%-05s|", "ab");
  EXPECT_FORMAT("    x", "%05c", 'x');
  EXPECT_FORMAT("ab", "%+#s", "ab");
  EXPECT_FORMAT("x", "%+# .0c", 'x');
}

TEST(Format, ObeysWidthAndPrecisionOfIntegers) {
  EXPECT_FORMAT("", "%.0d", 0);
  EXPECT_FORMAT("", "%.d", 0);
  EXPECT_FORMAT("+", "%+.0d", 0);
  EXPECT_FORMAT("     ", "%5.0d", 0);
  EXPECT_FORMAT("     |", "%-5.0u|", 0);
  EXPECT_FORMAT("1", "%.0d", 1);
  EXPECT_FORMAT("00042", "%.5d", 42);
  EXPECT_FORMAT("-00042", "%.5d", -42);
  EXPECT_FORMAT("  -00042", "%8.5d", -42);
  EXPECT_FORMAT("-00042  |", "%-8.5d|", -42);
  EXPECT_FORMAT("123456", "%3d", 123456);
  EXPECT_FORMAT("123456", "%.3d", 123456);
  EXPECT_FORMAT("00000000000000000000000000000000000000000000000001", "%.50d", 1);
  EXPECT_FORMAT("00000000000000000000000000000000000000000000000001", "%050d", 1);
  EXPECT_FORMAT("                                                 1", "%50d", 1);
  EXPECT_FORMAT("1                                                 ", "%-50d", 1);
}

TEST(Format, TakesWidthAndPrecisionFromArguments) {
  EXPECT_FORMAT("    5", "%*d", 5, 5);
  EXPECT_FORMAT("5    |", "%*d|", -5, 5);
  EXPECT_FORMAT("5    |", "%-*d|", -5, 5);
  EXPECT_FORMAT("5       |", "%0*d|", -8, 5);
  EXPECT_FORMAT("00000005", "%0*d", 8, 5);
  EXPECT_FORMAT("5", "%.*d", -1, 5);
  EXPECT_FORMAT("5", "%.*d", INT_MIN, 5);
  EXPECT_FORMAT("00000005", "%08.*d", -1, 5);
  EXPECT_FORMAT("     005", "%08.*d", 3, 5);
  EXPECT_FORMAT("", "%.*x", 0, 0);
  EXPECT_FORMAT("  005|abc  |", "%*.*d|%-*.*s|", 5, 3, 5, 5, 3, "abcdef");
  EXPECT_FORMAT("abcdef", "%.*s", -1, "abcdef");
  EXPECT_FORMAT("  ab", "%*.*s", 4U, static_cast<short>(2), "abcdef");
  EXPECT_FORMAT("ab  |", "%*.2s|", 0xFFFFFFFCU, "abcdef");
}

TEST(Format, PrintsCharacters) {
  EXPECT_FORMAT("x", "%c", 'x');
  EXPECT_FORMAT("x", "%c", 'x' + 256);
  EXPECT_FORMAT("   x|", "%4c|", 'x');
  EXPECT_FORMAT("x   |", "%-4c|", 'x');
  EXPECT_FORMAT("\xFF", "%c", -1);
  EXPECT_FORMAT(String("a\0b", 3), "a%cb", 0);
}

TEST(Format, PrintsTexts) {
  char array[8] = "abc";
  char* const writable = array;
  EXPECT_FORMAT("abc", "%s", array);
  EXPECT_FORMAT("abc", "%s", writable);
  EXPECT_FORMAT("abc", "%.5s", "abc");
  EXPECT_FORMAT("", "%.0s", "abc");
  EXPECT_FORMAT("", "%.s", "abc");
  EXPECT_FORMAT("  abc|abc  |", "%5s|%-5s|", "abc", "abc");
  EXPECT_FORMAT("   ab|ab   |", "%5.2s|%-5.2s|", "abc", "abc");
  EXPECT_FORMAT("abcdef", "%3s", "abcdef");
  EXPECT_EQ(_fmt("%s %s %s", String("a"), std::string("b"), std::string_view("c")), "a b c");
  EXPECT_EQ(_fmt("%5s|%-5.1s|", String("ab"), std::string_view("cd")), "   ab|c    |");
  EXPECT_EQ(_fmt("%s|", std::string_view()), "|");
}

TEST(Format, PrintsTextsOfEverySizeAndWidth) {
  for (int size = 0; size < 80; ++size) {
    String const text(static_cast<std::size_t>(size), 'x');
    for (int width = -80; width < 80; ++width) {
      String const expected = printed("<%*s>", width, text.c_str());
      ASSERT_EQ(_fmt("<%*s>", width, text), expected);
      ASSERT_EQ(_fmt("<%*s>", width, text.c_str()), expected);
    }
  }
}

TEST(Format, PrintsNullTexts) {
  const char* const null = nullptr;
  EXPECT_FORMAT("(null)", "%s", null);
  EXPECT_FORMAT("  (null)|", "%8s|", null);
  EXPECT_FORMAT("(null)  |", "%-8s|", null);
  EXPECT_FORMAT("(null)", "%.6s", null);
  EXPECT_FORMAT("", "%.5s", null);
  EXPECT_FORMAT("   ", "%3.5s", null);
}

TEST(Format, PrintsPointers) {
  int object = 0;
  void* const place = &object;
  const void* const null = nullptr;
  const void* const low = reinterpret_cast<const void*>(0x1234);
  EXPECT_FORMAT("0x1234", "%p", low);
  EXPECT_FORMAT("    0x1234|0x1234    |", "%10p|%-10p|", low, low);
  EXPECT_FORMAT("0x00001234", "%010p", low);
  EXPECT_FORMAT("0x00001234", "%.8p", low);
  EXPECT_FORMAT("+0x1234| 0x1234|0x1234", "%+p|% p|%#p", low, low, low);
  EXPECT_FORMAT("(nil)", "%p", null);
  EXPECT_FORMAT("     (nil)|(nil)     |", "%010p|%-10p|", null, null);
  EXPECT_FORMAT("(nil)", "%.2p", null);
  EXPECT_EQ(_fmt("%p", nullptr), "(nil)");
  EXPECT_FORMAT(printed("%p", place), "%p", place);
  EXPECT_FORMAT(printed("%p", place), "%p", &object);
  const char* const text = "text";
  EXPECT_FORMAT(printed("%p", text), "%p", text);
  char array[4] = "abc";
  EXPECT_EQ(_fmt("%p %s", array, array), printed("%p %s", array, array));
  int numbers[2] = {};
  EXPECT_EQ(_fmt("%p", numbers), printed("%p", numbers));
}

TEST(Format, PrintsAllBytesOfATextThatKnowsItsSize) {
  std::string const text("a\0b", 3);
  String const wide("  a\0b|", 6);
  EXPECT_EQ(_fmt("%5s|", text), wide);
  EXPECT_EQ(_fmt("%5s|", String(text)), wide);
  EXPECT_EQ(_fmt("%5s|", std::string_view(text)), wide);
  EXPECT_EQ(_fmt(runtimeFormat("%5s|"), text), wide);
  EXPECT_EQ(_fmt("%.2s", text), String("a\0", 2));
  EXPECT_EQ(_fmt("%s", "a\0b"), "a");
}

TEST(Format, TakesNulBytesInARuntimeFormatForText) {
  EXPECT_EQ(_fmt(runtimeFormat(std::string_view("a\0%d\0", 5)), 7), String("a\0"
                                                                           "7\0",
                                                                           4));
}

TEST(Format, ReadsATextNoFurtherThanItsPrecision) {
  // Exactly as large as the text, so that a sanitizer sees a read behind it.
  auto const text = std::make_unique<char[]>(4);
  std::memcpy(text.get(), "abcd", 4);
  const char* const unterminated = text.get();
  EXPECT_EQ(_fmt("%.4s", unterminated), "abcd");
  EXPECT_EQ(_fmt("%.*s", 3, unterminated), "abc");
  EXPECT_EQ(_fmt("%.0s|", unterminated), "|");
  EXPECT_EQ(_fmt("%8.4s", unterminated), "    abcd");
  EXPECT_EQ(_fmt(runtimeFormat("%.4s"), unterminated), "abcd");
  EXPECT_EQ(_fmt(runtimeFormat("%.*s"), 4, unterminated), "abcd");
  text[3] = '\0';
  EXPECT_EQ(_fmt("%.100s", unterminated), "abc");
  EXPECT_EQ(_fmt("%.*s", INT_MAX, unterminated), "abc");
}

TEST(Format, EndsAnArrayAtItsEnd) {
  char const array[3] = {'a', 'b', 'c'};
  EXPECT_EQ(_fmt("%s|", array), "abc|");
  EXPECT_EQ(_fmt(runtimeFormat("%5s|"), array), "  abc|");
}

TEST(Format, ReadsARuntimeFormatNoFurtherThanItsSize) {
  auto const text = std::make_unique<char[]>(5);
  std::memcpy(text.get(), "%d %d", 5);
  EXPECT_EQ(_fmt(runtimeFormat(std::string_view(text.get(), 2)), 1), "1");
  EXPECT_EQ(_fmt(runtimeFormat(std::string_view(text.get(), 5)), 1, 2), "1 2");
  std::memcpy(text.get(), "ab%4s", 5);
  EXPECT_EQ(_fmt(runtimeFormat(std::string_view(text.get() + 2, 3)), String("x")), "   x");
}

TEST(Format, AllocatesOnceAtMost) {
  struct Row {
    int width;
    std::size_t allocations;
  };
  for (Row const& row : {Row{0, 0}, Row{62, 0}, Row{63, 0}, Row{64, 1}, Row{500, 1}, Row{512, 1},
                         Row{513, 1}, Row{2000, 1}, Row{100'000, 1}}) {
    SCOPED_TRACE(row.width);
    {
      std::size_t const before = allocations;
      String const text = _fmt("%*d%s", row.width, 7, "");
      EXPECT_EQ(allocations - before, row.allocations);
      EXPECT_EQ(text, printed("%*d", row.width, 7));
    }
    {
      std::size_t const before = allocations;
      String const text = _fmt(runtimeFormat("%*d%s"), row.width, 7, "");
      EXPECT_EQ(allocations - before, row.allocations);
      EXPECT_EQ(text, printed("%*d", row.width, 7));
    }
    {
      String text("before");
      text.reserve(200'000);
      std::size_t const before = allocations;
      _fmtAppend(text, "%*d", row.width, 7);
      EXPECT_EQ(allocations - before, 0U);
      EXPECT_EQ(text, "before" + printed("%*d", row.width, 7));
    }
  }
}

TEST(Format, KeepsItsTextAcrossEachBorderOfRoom) {
  for (int size = 0; size < 1100; ++size) {
    SCOPED_TRACE(size);
    String const text(static_cast<std::size_t>(size), 'x');
    String const expected = text + "|  7|" + text + "%0x2a";
    ASSERT_EQ(_fmt("%s|%3d|%s%%%#x", text, 7, text.c_str(), 42), expected);
    String out(text);
    _fmtAppend(out, "%s|%3d|%s%%%#x", text, 7, text.c_str(), 42);
    ASSERT_EQ(out, text + expected);
    ASSERT_EQ(out.c_str()[out.size()], '\0');
  }
}

TEST(Format, AppendsTheStringToItself) {
  for (std::size_t size : {0U, 5U, 30U, 31U, 60U, 63U, 64U, 400U, 1000U}) {
    SCOPED_TRACE(size);
    String const text(size, 'x');
    String out(text);
    _fmtAppend(out, "|%s|%s|", out, out.c_str());
    EXPECT_EQ(out, text + "|" + text + "|" + text + "|");
    String part(text);
    _fmtAppend(part, "|%s", part.c_str() + size);
    EXPECT_EQ(part, text + "|");
  }
  String format("%d %s|");
  _fmtAppend(format, runtimeFormat(format), 7, format);
  EXPECT_EQ(format, "%d %s|7 %d %s||");
}

TEST(Format, ThrowsBeyondTheLargestStringAndLeavesTheStringAsItWas) {
  // No text has this size: it must be refused for its size alone.
  std::string_view const endless("x", String::maxSize());
  String out("before");
  EXPECT_THROW(_fmtAppend(out, "%d%s", 7, endless), std::length_error);
  EXPECT_EQ(out, "before");
  EXPECT_STREQ(out.c_str(), "before");
  std::string_view const beyond("x", String::maxSize() + 1);
  EXPECT_THROW(_fmtAppend(out, "%d%s", 7, beyond), std::length_error);
  EXPECT_THROW(static_cast<void>(_fmt("%s|", beyond)), std::length_error);
  EXPECT_EQ(out, "before");
  EXPECT_THROW(static_cast<void>(_fmt("%s%s%s%s%s", endless, endless, endless, endless, endless)),
               std::length_error);
}

TEST(Format, AsksForTheRoomOfTheLargestWidths) {
  String out("before");
  // The size that is refused includes the NUL.
  EXPECT_THROW(_fmtAppend(out, "%2147483647d|%s", 7, "end"), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483647U + 4U + 6U + 1U);
  EXPECT_EQ(out, "before");
  EXPECT_STREQ(out.c_str(), "before");
  EXPECT_THROW(static_cast<void>(_fmt("%2147483647d|%s", 7, "end")), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483647U + 4U + 1U);
  EXPECT_THROW(static_cast<void>(_fmt("%*d", INT_MIN, 7)), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483648U + 1U);
  EXPECT_THROW(static_cast<void>(_fmt("%*s", INT_MIN, "text")), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483648U + 1U);
  EXPECT_THROW(static_cast<void>(_fmt("%+.2147483647d", 7)), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483648U + 1U);
  EXPECT_THROW(static_cast<void>(_fmt("%.2147483647d%#.*x", 7, INT_MAX, 7)), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483647UL + 2147483649UL + 1UL);
  EXPECT_THROW(static_cast<void>(_fmt(runtimeFormat("%2147483647d"), 7)), std::bad_alloc);
  EXPECT_EQ(lastRefused, 2147483647U + 1U);
}

TEST(Format, TakesConstantsThatAreNotLiterals) {
  static constexpr const char* pointer = "%d|";
  static constexpr std::string_view view("%d|%d", 3);
  static constexpr char array[] = "%d|";
  EXPECT_EQ(_fmt(pointer, 1), "1|");
  EXPECT_EQ(_fmt(view, 1), "1|");
  EXPECT_EQ(_fmt(array, 1), "1|");
}

TEST(Format, KeepsManyArgumentsInOrder) {
  EXPECT_FORMAT("1 a -2 b 0x3 c 4 d 5 e 6", "%d %s %ld %c %#x %.1s %u %s %hhd %c %zu", 1, "a", -2L,
                'b', 3, "cx", 4U, "d", 5, 'e', std::size_t{6});
}

TEST(FormatDeathTest, StopsWhenARuntimeFormatDoesNotFit) {
  constexpr const char* stop =
      "^assertion failed: the format's conversions fit its arguments at platform/Zel/Format:0 in "
      "Halvo::String Zel::_fmt\\(RuntimeFormat, const Args&\\.\\.\\.\\)\n$";
  // Each format gets one int, which it does not fit.
  for (const char* const format : {"",
                                   "text",
                                   "%%",
                                   "%d%d",
                                   "%d%",
                                   "%",
                                   "%5",
                                   "%.",
                                   "%l",
                                   "%-",
                                   "%ld",
                                   "%lld",
                                   "%jx",
                                   "%zu",
                                   "%td",
                                   "%s",
                                   "%p",
                                   "%n",
                                   "%f",
                                   "%e",
                                   "%g",
                                   "%a",
                                   "%y",
                                   "%S",
                                   "%C",
                                   "%m",
                                   "%ls",
                                   "%lc",
                                   "%hs",
                                   "%hhc",
                                   "%hp",
                                   "%Ld",
                                   "%qd",
                                   "%1$d",
                                   "%'d",
                                   "%Id",
                                   "%hhhd",
                                   "%llld",
                                   "%5%",
                                   "%-%",
                                   "%*d",
                                   "%.*d",
                                   "%*.*d",
                                   "%.-5d",
                                   "%5-d",
                                   "%**d",
                                   "%..5d",
                                   "%2147483648d",
                                   "%.2147483648d",
                                   "%99999999999999999999d",
                                   "%d%s",
                                   "%d %5",
                                   "%D",
                                   "% "}) {
    SCOPED_TRACE(format);
    EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat(format), 7)), stop);
  }
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%d"))), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%d"), 7L)), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%d"), "text")), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%x"), static_cast<void*>(nullptr))), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%p"), String("text"))), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%s"), nullptr)), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%*d"), 7L, 7)), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%*d"), "7", 7)), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%.*s"), 7, 7)), stop);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat("%s"), "a", "b")), stop);
  String const nul("%\0d", 3);
  EXPECT_DEATH(static_cast<void>(_fmt(runtimeFormat(nul), 7)), stop);
}

TEST(FormatDeathTest, StopsWhenAnAppendedRuntimeFormatDoesNotFit) {
  String out;
  EXPECT_DEATH(_fmtAppend(out, runtimeFormat("%s"), 7),
               "^assertion failed: the format's conversions fit its arguments at "
               "platform/Zel/Format:0 in void Zel::_fmtAppend\\(Halvo::String&, RuntimeFormat, "
               "const Args&\\.\\.\\.\\)\n$");
}

}  // namespace
