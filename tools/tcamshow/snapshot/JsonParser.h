// simdjson, as the program uses it.
#pragma once

// The parser's checks of its caller write to memory that it may not have got.
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

/// To be called before a parser is first used. simdjson chooses its code then, with memory that may
/// not be there; the process ends with the message and the status of any other lack of memory.
void prepareJsonParser();

/// A value as a message shows it: a string or number as it is written.
std::string described(ondemand::value& value);

/// Up to where a string is plain: the first byte that is a quote, a backslash or a control
/// character. One of them, or the padding, follows every string.
inline const char* plainEnd(const char* at) noexcept {
  constexpr std::uint64_t ones = 0x0101010101010101U;
  constexpr std::uint64_t highs = ones * 0x80;
  if constexpr (std::endian::native == std::endian::little) {
    for (;; at += sizeof(std::uint64_t)) {
      std::uint64_t word = 0;
      std::memcpy(&word, at, sizeof word);
      // A byte that is 0 borrows from the one above it, so only the lowest mark is sure; it is the
      // one that is asked for.
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

/// Where the first byte of a text that is not plain stands (U+0000 to U+001F, U+007F), or npos.
std::size_t findControl(std::string_view text) noexcept;

}  // namespace tcamshow
