// Numbers as the sources write them.
#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace tcamshow {

/// Reads the whole of `text` as a number of at most `largest`: decimal or, after 0x, hexadecimal.
/// If it is none, returns false and leaves the result unchanged.
inline bool numberFromText(std::string_view text, std::uint64_t largest,
                           std::uint64_t& number) noexcept {
  int base = 10;
  if (text.starts_with("0x")) {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t read = 0;
  const char* const end = text.data() + text.size();
  auto const [at, error] = std::from_chars(text.data(), end, read, base);
  if (at != end || error != std::errc() || read > largest) return false;
  number = read;
  return true;
}

}  // namespace tcamshow
