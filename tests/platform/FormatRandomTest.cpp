// Random formats and arguments at run time, against the C library.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include "FormatOracle.h"
#include "Zel/Format/Format.h"

namespace {

using Halvo::String;
using Value = std::variant<int, unsigned, char, short, unsigned char, bool, long, unsigned long,
                           long long, const char*, const void*>;
using FewValues = std::variant<int, unsigned long, const char*>;

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
  template <class T>
  T oneOf(std::initializer_list<T> values) {
    return values.begin()[below(static_cast<unsigned>(values.size()))];
  }

  /// Numbers of all magnitudes. The limits of the types are frequent.
  std::uint64_t bits() {
    switch (below(4)) {
      case 0:
        return oneOf<std::uint64_t>({0,         1,
                                     7,         8,
                                     9,         10,
                                     99,        100,
                                     INT_MAX,   1ULL + INT_MAX,
                                     UINT_MAX,  1ULL + UINT_MAX,
                                     INT64_MAX, UINT64_MAX,
                                     127,       128,
                                     255,       256,
                                     32767,     32768,
                                     65535,     65536});
      case 1:
        return 0 - (random_() >> below(64));
      default:
        return random_() >> below(64);
    }
  }
  const char* text() {
    return oneOf<const char*>({nullptr, "", "a", "ab", "abc", "abcdefg", "10.200.31.7",
                               "abcdefghijklmnopqrstuvwxyz", "0123456789abcdef0123456789abcdef",
                               "a longer text that alone does not find room in a short string"});
  }
  int star() { return static_cast<int>(below(90)) - 30; }

  void value(int& to) { to = static_cast<int>(bits()); }
  template <class T>
  requires std::is_integral_v<T>
  void value(T& to) { to = static_cast<T>(bits()); }
  void value(const char*& to) { to = text(); }
  void value(const void*& to) { to = reinterpret_cast<const void*>(bits()); }

  template <class... Types>
  void value(std::variant<Types...>& to) {
    unsigned index = below(sizeof...(Types));
    (void)((index-- == 0 ? (to.template emplace<Types>(), true) : false) || ...);
    std::visit([this](auto& held) { this->value(held); }, to);
  }

  std::string literal() {
    return oneOf<const char*>({"", "", "|", " ", "%%", "0x", "a%%b", "text, rather a long one, ",
                               "12345678", "a literal text that leaves hardly any room for more "});
  }

  /// A conversion for an argument of type T. `width` and `precision` say which of the two is a
  /// star.
  template <class T>
  std::string conversion(const T&, bool width, bool precision) {
    std::string text = "%";
    for (unsigned count = below(4); count != 0; --count) text += oneOf({'-', '+', ' ', '#', '0'});
    if (width) {
      text += '*';
    } else if (below(2) != 0) {
      unsigned const number = below(10) == 0 ? below(700) : below(30);
      if (number != 0) text += std::to_string(number);
    }
    if (precision) {
      text += ".*";
    } else if (below(3) == 0) {
      text += '.';
      if (below(5) != 0) text += std::to_string(below(10) == 0 ? below(700) : below(30));
    }
    if constexpr (std::is_same_v<T, const char*>) {
      text += below(8) == 0 ? 'p' : 's';
    } else if constexpr (std::is_same_v<T, const void*>) {
      text += 'p';
    } else if constexpr (sizeof(T) == 8) {
      text += oneOf<const char*>({"l", "ll", "j", "z", "t"});
      text += oneOf({'d', 'i', 'u', 'x', 'X', 'o'});
    } else if (below(8) == 0) {
      text += 'c';
    } else {
      text += oneOf<const char*>({"", "h", "hh"});
      text += oneOf({'d', 'i', 'u', 'x', 'X', 'o'});
    }
    return text;
  }

 private:
  std::mt19937_64 random_;
};

template <class... Args>
[[nodiscard]] bool agrees(const std::string& format, Args... args) {
  String const expected = printed(format.c_str(), args...);
  String const text = Zel::_fmt(Zel::runtimeFormat(format), args...);
  String appended("0123456789");
  Zel::_fmtAppend(appended, Zel::runtimeFormat(format), args...);
  EXPECT_EQ(text, expected) << "format \"" << format << '"';
  EXPECT_EQ(appended, "0123456789" + expected) << "format \"" << format << '"';
  return text == expected && appended == "0123456789" + expected;
}

TEST(FormatRandom, AgreesOnOneConversion) {
  Generator random(5);
  for (int step = 0; step < 300'000; ++step) {
    Value value;
    random.value(value);
    bool const width = random.below(4) == 0;
    bool const precision = random.below(4) == 0;
    bool const good = std::visit(
        [&](auto held) {
          std::string const format =
              random.literal() + random.conversion(held, width, precision) + random.literal();
          int const w = random.star();
          int const p = random.star();
          if (width && precision) return agrees(format, w, p, held);
          if (width) return agrees(format, w, held);
          if (precision) return agrees(format, p, held);
          return agrees(format, held);
        },
        value);
    ASSERT_TRUE(good) << "step " << step;
  }
}

TEST(FormatRandom, AgreesOnThreeConversions) {
  Generator random(6);
  for (int step = 0; step < 200'000; ++step) {
    FewValues values[3];
    for (FewValues& value : values) random.value(value);
    bool const good = std::visit(
        [&](auto a, auto b, auto c) {
          std::string const format = random.literal() + random.conversion(a, false, false) +
                                     random.literal() + random.conversion(b, false, false) +
                                     random.literal() + random.conversion(c, false, false) +
                                     random.literal();
          return agrees(format, a, b, c);
        },
        values[0], values[1], values[2]);
    ASSERT_TRUE(good) << "step " << step;
  }
}

TEST(FormatRandom, AgreesOnSizedTexts) {
  Generator random(7);
  for (int step = 0; step < 100'000; ++step) {
    const char* const text = random.text();
    if (text == nullptr) continue;
    std::string const format =
        random.literal() + random.conversion(text, true, true) + random.literal();
    if (format.find('p') != std::string::npos) continue;
    int const width = random.star();
    int const precision = random.star();
    String const expected = printed(format.c_str(), width, precision, text);
    ASSERT_EQ(Zel::_fmt(Zel::runtimeFormat(format), width, precision, String(text)), expected);
    ASSERT_EQ(Zel::_fmt(Zel::runtimeFormat(format), width, precision, std::string_view(text)),
              expected);
  }
}

/// Whether a format fits one int. Decides it for any bytes, by reading the grammar in another way
/// than Zel does.
bool fitsOneInt(const std::string& format) {
  std::size_t conversions = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') continue;
    if (++i < format.size() && format[i] == '%') continue;
    i = format.find_first_not_of("-+ #0", i);
    if (i == std::string::npos) return false;
    i = std::min(format.find_first_not_of("0123456789", i), format.size());
    if (i < format.size() && format[i] == '.') {
      i = std::min(format.find_first_not_of("0123456789", i + 1), format.size());
    }
    bool const modified = i < format.size() && format[i] == 'h';
    if (modified && ++i < format.size() && format[i] == 'h') ++i;
    if (i >= format.size()) return false;
    if (std::string("diuxXo").find(format[i]) == std::string::npos &&
        (modified || format[i] != 'c')) {
      return false;
    }
    ++conversions;
  }
  return conversions == 1;
}

TEST(FormatRandom, PrintsWhateverFits) {
  Generator random(8);
  int fitting = 0;
  for (int step = 0; step < 400'000; ++step) {
    std::string format;
    for (unsigned count = random.below(8); count != 0; --count) {
      format += random.oneOf({'%', '%', 'd', 'x', 'o', 'c', 'h', '0', '5', '-', '+', '.', '#', ' ',
                              'a', 'l', 's', '*'});
    }
    if (!fitsOneInt(format)) continue;
    ++fitting;
    ASSERT_TRUE(agrees(format, 107)) << format;
  }
  EXPECT_GT(fitting, 10'000);
}

}  // namespace
