// Text that is safe to show: nothing in it moves the cursor, hides, or turns the reading direction.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "io/Utf8.h"

namespace tcamshow {

/// Whether a terminal could take the character for a command, or show nothing of it, or show what
/// stands around it in another order: control characters, marks and overrides of direction,
/// characters without a width, line and paragraph separators.
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

/// What the pieces of a text stand in.
enum class LineBreaks : unsigned char {
  escaped,  ///< the text is one line; a line feed in it is escaped
  kept,     ///< the text is whole lines of the program's own; their line feeds stand
};

/// The bytes at the front of `text` that are safe, as far as they are ASCII.
std::size_t safeAsciiSize(std::string_view text, LineBreaks lineBreaks) noexcept;

/// Calls `use(piece)` for the pieces of `text` as it is safe to show, in order. An unsafe character
/// becomes `\u{9B}`, its number in upper-case hexadecimal without leading zeros; a byte that is not
/// UTF-8 becomes `\xFF`. All else stands as it is, backslashes too, so that a text that is safe
/// stays the same. Takes no memory; a piece that is not of `text` is good until `use` returns.
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

/// A text of the input as a message may show it: safe, on one line, and cut behind a whole
/// character when it is longer than `longest` bytes.
std::string shown(std::string_view text, std::size_t longest = 60);
/// The same of a name, which is cut only where nobody could have meant it.
std::string shownName(std::string_view name);
/// A text as shown() gives it, in double quotes.
std::string inQuotes(std::string_view text);

}  // namespace tcamshow
