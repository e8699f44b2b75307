// Internal: writes the text of addresses and reports wrong text.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include "Halvo/String.h"
#include "Trelix/ByteOrder.h"
#include "Zel/Base/Error.h"
#include "Zel/Format/LineText.h"

namespace Trelix {

/// Stores a word with its low byte first, on any machine.
inline void storeLowFirst(char* out, U32 word) noexcept {
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
  std::memcpy(out, &word, sizeof word);
}
inline void storeLowFirst(char* out, U64 word) noexcept {
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  std::memcpy(out, &word, sizeof word);
}

/// The eight lower-case hexadecimal digits of `number`, the first one in the low byte. All eight
/// are computed at once: each byte of the word becomes one digit.
constexpr U64 hexDigits(U32 number) noexcept {
  U64 x = __builtin_bswap32(number);  // the digits of the most significant byte come first
  x = (x | x << 16) & 0x0000FFFF0000FFFFU;
  x = (x | x << 8) & 0x00FF00FF00FF00FFU;
  x = ((x >> 4) & 0x000F000F000F000FU) | ((x & 0x000F000F000F000FU) << 8);
  U64 const isLetter = ((x + 0x0606060606060606U) >> 4) & 0x0101010101010101U;
  return x + 0x3030303030303030U + isLetter * ('a' - '0' - 10);
}

/// The value of a hexadecimal digit of either case; 16 or more for any other character.
constexpr unsigned hexValue(char c) noexcept {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  auto const letter = static_cast<unsigned>((static_cast<unsigned char>(c) | 0x20) - 'a');
  return letter < 6 ? letter + 10 : 16;
}

template <class Address>
Halvo::String textOf(const Address& address) {
  char text[Address::maxTextSize];
  return Halvo::String(text, static_cast<std::size_t>(address.write(text) - text));
}

template <class Address>
std::ostream& writeTo(std::ostream& out, const Address& address) {
  char text[Address::maxTextSize];
  return out << std::string_view(text, static_cast<std::size_t>(address.write(text) - text));
}

[[noreturn]] inline void throwParseError(std::string_view text, const char* kind,
                                         const char* reason) {
  throw Zel::ParseError(Zel::quotedForMessage(text) + " is not " + kind + ": " + reason);
}

/// Spreads a 64-bit number over the bits of a hash. Its high half is folded in first, since a
/// multiplication moves no bit downwards.
constexpr std::size_t hashOf(U64 number) noexcept {
  number ^= number >> 32;
  number *= 0x9E3779B97F4A7C15U;
  return number ^ (number >> 32);
}

}  // namespace Trelix
