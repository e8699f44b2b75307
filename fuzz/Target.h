// The parts of a fuzz target: its name, the bytes that it is given, and its checks.
//
//     FUZZ_TARGET(text) {
//       std::string_view const text = in.rest();
//       FUZZ_CHECK(parsed(text) == expected(text));
//     }
//
// A target is deterministic: it keeps nothing from one input to the next. So an input that once
// failed fails in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmorfuzz {

/// The bytes of one input, taken from the front. After the last byte it gives zeros without end.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  bool empty() const { return at_ == end_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - at_); }

  std::uint8_t u8() { return at_ == end_ ? std::uint8_t{0} : *at_++; }
  template <class Number>
  Number number() {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) bits |= std::uint64_t{u8()} << 8 * i;
    return static_cast<Number>(bits);
  }
  bool flag() { return (u8() & 1) != 0; }
  /// A number from 0 to bound - 1. Takes one byte. `bound` is at most 256.
  unsigned below(unsigned bound) { return u8() % bound; }
  /// Any number of the type. Small numbers and the limits of the type are frequent.
  template <class Number>
  Number oddNumber() {
    using Unsigned = std::make_unsigned_t<Number>;
    unsigned const shape = u8();
    constexpr unsigned bits = 8 * sizeof(Number);
    switch (shape >> 6) {
      case 0:
        return static_cast<Number>(shape & 63);
      case 1:
        return static_cast<Number>(Unsigned(0) - Unsigned(shape & 63));
      case 2:
        return static_cast<Number>((std::uint64_t{1} << shape % bits) - (shape & 1));
      default:
        return number<Number>();
    }
  }
  /// The next `count` bytes, or as many as are left.
  std::string_view text(std::size_t count) {
    if (count > size()) count = size();
    std::string_view const taken(reinterpret_cast<const char*>(at_), count);
    at_ += count;
    return taken;
  }
  /// A text of up to 255 bytes. The byte in front of it is its length.
  std::string_view shortText() { return text(u8()); }
  std::string_view rest() { return text(size()); }

 private:
  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

using Run = void (*)(Input& in);

/// A target of this program, in the list of all its targets.
struct Target {
  Target(const char* targetName, Run targetRun);

  const char* name;
  Run run;
  Target* next;
  static Target* first;
};

[[noreturn]] void checkFailed(const char* file, int line, const std::string& what);

/// Shows both texts and stops the process, unless the texts are equal.
void checkTextsAre(const char* file, int line, std::string_view text, std::string_view expected);

}  // namespace velmorfuzz

#define FUZZ_TARGET(NAME)                                            \
  static void NAME##Run(::velmorfuzz::Input& in);                    \
  static const ::velmorfuzz::Target NAME##Target{#NAME, &NAME##Run}; \
  static void NAME##Run([[maybe_unused]] ::velmorfuzz::Input& in)

#define FUZZ_CHECK(CONDITION)            \
  (static_cast<bool>(CONDITION) ? void() \
                                : ::velmorfuzz::checkFailed(__FILE__, __LINE__, #CONDITION))
#define FUZZ_CHECK_TEXT(TEXT, EXPECTED) \
  ::velmorfuzz::checkTextsAre(__FILE__, __LINE__, (TEXT), (EXPECTED))
