// Text that is safe to show: it cannot move the cursor, hide, or change the reading direction.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "io/Utf8.h"

namespace tcamshow {

/// Whether the character is unsafe: a control character, a mark or override of the reading
/// direction, a character without a width, or a line or paragraph separator. A terminal could take
/// it as a command, show nothing, or show the text around it in another order.
constexpr bool isUnsafe(char32_t c) noexcept {
  if (c < 0x20) return true;
  if (c < 0x7F) return false;
  if (c < 0xA0) return true;
  struct Range {
    char32_t first;
    char32_t last;
  };
  constexpr Range ranges[] = {{0x061C, 0x061C}, {0x200B, 0x200F}, {0x2028, 0x202E},
                              {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}};
  for (Range const& range : ranges) {
    if (c >= range.first && c <= range.last) return true;
  }
  return false;
}

/// How line feeds are treated.
enum class LineBreaks : unsigned char {
  escaped,  ///< the text belongs to one line: a line feed is escaped
  kept,     ///< the text is whole lines that the program made: line feeds stay
};

/// The number of safe ASCII bytes at the front of `text`.
std::size_t safeAsciiSize(std::string_view text, LineBreaks lineBreaks) noexcept;

/// Calls `use(piece)` for each piece of the safe form of `text`, in order. In the safe form, an
/// unsafe character is `\u{9B}`: its number in upper-case hexadecimal without leading zeros. A byte
/// that is not UTF-8 is `\xFF`. All else is unchanged, backslashes too, so a safe text stays the
/// same. Allocates no memory. A piece is valid until `use` returns.
template <class Use>
void forEachSafePiece(std::string_view text, LineBreaks lineBreaks, const Use& use) {
  constexpr const char* digits = "0123456789ABCDEF";
  std::size_t begin = 0;
  for (std::size_t at = 0;;) {
    at += safeAsciiSize(text.substr(at), lineBreaks);
    if (at == text.size()) break;
    Utf8Character const character = frontCharacter(text.substr(at));
    if (character.size > 1 && !isUnsafe(character.codePoint)) {
      at += character.size;
      continue;
    }
    if (at != begin) use(text.substr(begin, at - begin));
    if (character.size == 0) {
      auto const byte = static_cast<unsigned char>(text[at]);
      char const escape[] = {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
      use(std::string_view(escape, sizeof escape));
      at += 1;
    } else {
      char escape[16] = {'\\', 'u', '{'};
      std::size_t size = 3;
      unsigned shift = 28;
      while (shift != 0 && character.codePoint >> shift == 0) shift -= 4;
      for (;; shift -= 4) {
        escape[size++] = digits[character.codePoint >> shift & 15];
        if (shift == 0) break;
      }
      escape[size++] = '}';
      use(std::string_view(escape, size));
      at += character.size;
    }
    begin = at;
  }
  if (begin != text.size()) use(text.substr(begin));
}

/// Appends `text` as forEachSafePiece gives it.
void appendSafe(std::string& out, std::string_view text,
                LineBreaks lineBreaks = LineBreaks::escaped);
std::string safeText(std::string_view text, LineBreaks lineBreaks = LineBreaks::escaped);

/// A text of the input in the form for a message: safe, on one line, and cut after a whole
/// character if it is longer than `longest` bytes.
std::string shown(std::string_view text, std::size_t longest = 60);
/// The same for a name. The limit is so high that no real name is cut.
std::string shownName(std::string_view name);
/// shown(text) in double quotes.
std::string inQuotes(std::string_view text);

}  // namespace tcamshow
