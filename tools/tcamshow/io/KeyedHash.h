// Hashes that nobody outside the process can foresee.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tcamshow {

/// SipHash-1-3 of the bytes, with a key that the process draws when it first needs one. Tables that
/// are keyed by what comes in use it: with a hash that is known, a file could be made whose keys
/// all collide.
std::uint64_t keyedHash(std::string_view bytes) noexcept;
/// Of a number and bytes.
std::uint64_t keyedHash(std::uint64_t first, std::string_view bytes) noexcept;
/// Of two numbers.
std::uint64_t keyedHash(std::uint64_t first, std::uint64_t second) noexcept;

/// For the standard library's tables of texts.
struct KeyedTextHash {
  std::size_t operator()(std::string_view text) const noexcept {
    return static_cast<std::size_t>(keyedHash(text));
  }
};

}  // namespace tcamshow
