// UTF-8, one character at a time.
#pragma once

#include <cstddef>
#include <string_view>

namespace tcamshow {

struct Utf8Character {
  char32_t codePoint = 0;
  std::size_t size = 0;  ///< in bytes; 0: the text does not begin with a character
};

/// The character at the front of `text`. Overlong forms, surrogates, numbers above U+10FFFF and
/// incomplete characters do not count as characters.
constexpr Utf8Character frontCharacter(std::string_view text) noexcept {
  auto const byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  char32_t const lead = byte(0);
  if (lead < 0x80) return {lead, text.empty() ? std::size_t{0} : 1};
  std::size_t const size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (lead < 0xC2 || lead > 0xF4) return {};
  char32_t codePoint = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    codePoint = codePoint << 6 | (byte(i) & 0x3F);
  }
  bool const isOverlong = (size == 3 && codePoint < 0x800) || (size == 4 && codePoint < 0x10000);
  bool const isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
  if (isOverlong || isSurrogate || codePoint > 0x10FFFF) return {};
  return {codePoint, size};
}

/// Where the first byte stands that belongs to no character, or npos.
constexpr std::size_t findBadByte(std::string_view text) noexcept {
  for (std::size_t at = 0; at < text.size();) {
    std::size_t const size = frontCharacter(text.substr(at)).size;
    if (size == 0) return at;
    at += size;
  }
  return text.npos;
}

}  // namespace tcamshow
