// Hashes that nobody outside the process can predict.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tcamshow {

/// SipHash-1-3 of the bytes, with a random key that the process draws at first use. Use it for
/// tables whose keys come from the input: with a known hash, somebody could make a file whose keys
/// all collide.
std::uint64_t keyedHash(std::string_view bytes) noexcept;
/// The hash of a number and bytes.
std::uint64_t keyedHash(std::uint64_t first, std::string_view bytes) noexcept;
/// The hash of two numbers.
std::uint64_t keyedHash(std::uint64_t first, std::uint64_t second) noexcept;

/// The hash object for the standard library's tables with text keys.
struct KeyedTextHash {
  std::size_t operator()(std::string_view text) const noexcept {
    return static_cast<std::size_t>(keyedHash(text));
  }
};

}  // namespace tcamshow
