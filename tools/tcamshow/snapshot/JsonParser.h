// The program's way to use simdjson.
#pragma once

// Turns off simdjson's checks of its caller: they write to memory whose allocation may have failed.
#define SIMDJSON_DEVELOPMENT_CHECKS 0
#include <simdjson.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace tcamshow {

namespace ondemand = simdjson::ondemand;

/// Call this before a parser is first used. simdjson then chooses its code, which allocates memory.
/// If that fails, the process ends with the message and the status of any other lack of memory.
void prepareJsonParser();

/// A value in the form for a message: a string or number as it is written.
std::string described(ondemand::value& value);

/// The first byte of a string that is not plain: a quote, a backslash or a control character. Every
/// string is followed by one of them, or by the padding.
inline const char* plainEnd(const char* at) noexcept {
  constexpr std::uint64_t ones = 0x0101010101010101U;
  constexpr std::uint64_t highs = ones * 0x80;
  if constexpr (std::endian::native == std::endian::little) {
    for (;; at += sizeof(std::uint64_t)) {
      std::uint64_t word = 0;
      std::memcpy(&word, at, sizeof word);
      // A byte that is 0 borrows from the byte above it, so only the lowest mark is certain. It is
      // the one that is needed.
      std::uint64_t const quotes = word ^ ones * '"';
      std::uint64_t const backslashes = word ^ ones * '\\';
      std::uint64_t const deletes = word ^ ones * 0x7F;
      std::uint64_t const marks = ((quotes - ones) & ~quotes) |
                                  ((backslashes - ones) & ~backslashes) |
                                  ((deletes - ones) & ~deletes) | ((word - ones * 0x20) & ~word);
      if ((marks & highs) != 0) return at + std::countr_zero(marks & highs) / 8;
    }
  } else {
    while (*at != '"' && *at != '\\' && *at != 0x7F && static_cast<unsigned char>(*at) >= 0x20) {
      ++at;
    }
    return at;
  }
}

/// The index of the first control character of a text (U+0000 to U+001F, U+007F), or npos.
std::size_t findControl(std::string_view text) noexcept;

}  // namespace tcamshow
