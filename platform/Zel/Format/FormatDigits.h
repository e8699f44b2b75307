// Writes decimal digits. For the formatter's source files only.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "Zel/Base/Types.h"

namespace Zel::FormatDetail {

inline constexpr std::array<char, 200> decimalPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

inline constexpr std::array<U64, 20> powersOfTen = [] {
  std::array<U64, 20> powers{};
  U64 power = 1;
  for (U64& entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

/// The number of decimal digits of `value`; 1 for 0.
inline U32 decimalDigits(U64 value) {
  // 1233 / 4096 is just above log10(2): `fewest` is the number of digits, or one too low.
  value |= 1;
  U32 const fewest = static_cast<U32>(std::bit_width(value)) * 1233 >> 12;
  return fewest + (value >= powersOfTen[fewest] ? 1 : 0);
}

inline void writePair(char* at, U32 pair) {
  std::memcpy(at, &decimalPairs[std::size_t{pair} * 2], 2);
}

/// Writes four digits, including leading zeros.
inline void writeFour(char* at, U32 four) {
  writePair(at, four / 100);
  writePair(at + 2, four % 100);
}

/// Writes all digits of `value` so that they end at `end`. It writes four at a time, since each
/// division must wait for the one before.
[[gnu::always_inline]] inline void writeDecimal(char* end, U64 value) {
  while (value > 0xFFFFFFFF) {
    U32 const eight = static_cast<U32>(value % 100'000'000);
    value /= 100'000'000;
    end -= 8;
    writeFour(end, eight / 10'000);
    writeFour(end + 4, eight % 10'000);
  }
  U32 rest = static_cast<U32>(value);
  while (rest >= 10'000) {
    end -= 4;
    writeFour(end, rest % 10'000);
    rest /= 10'000;
  }
  if (rest >= 100) {
    end -= 2;
    writePair(end, rest % 100);
    rest /= 100;
  }
  if (rest >= 10) {
    writePair(end - 2, rest);
  } else {
    end[-1] = static_cast<char>('0' + rest);
  }
}

}  // namespace Zel::FormatDetail
