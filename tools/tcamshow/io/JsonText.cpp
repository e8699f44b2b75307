#include "io/JsonText.h"

#include <cstdint>

#include "io/SafeText.h"

namespace tcamshow {
namespace {

/// The bytes at the front that stand as they are, as far as they are ASCII.
std::size_t plainSize(std::string_view text) noexcept {
  std::size_t at = 0;
  for (; at != text.size(); ++at) {
    auto const c = static_cast<unsigned char>(text[at]);
    if (c < 0x20 || c >= 0x7F || c == '"' || c == '\\') break;
  }
  return at;
}

void appendEscape(std::string& out, char32_t c) {
  constexpr const char* digits = "0123456789abcdef";
  out += '\\';
  switch (c) {
    case '"':
    case '\\':
      out += static_cast<char>(c);
      return;
    case '\b':
      out += 'b';
      return;
    case '\f':
      out += 'f';
      return;
    case '\n':
      out += 'n';
      return;
    case '\r':
      out += 'r';
      return;
    case '\t':
      out += 't';
      return;
    default:
      // None of the unsafe characters is above U+FFFF.
      out += 'u';
      for (unsigned shift = 16; shift != 0;) out += digits[c >> (shift -= 4) & 15];
  }
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
  out += '"';
  std::size_t begin = 0;
  for (std::size_t at = 0;;) {
    at += plainSize(text.substr(at));
    if (at == text.size()) break;
    Utf8Character const character = frontCharacter(text.substr(at));
    if (character.size > 1 && !isUnsafe(character.codePoint)) {
      at += character.size;
      continue;
    }
    out.append(text, begin, at - begin);
    appendEscape(out, character.size == 0 ? char32_t{0xFFFD} : character.codePoint);
    at += character.size == 0 ? 1 : character.size;
    begin = at;
  }
  out.append(text, begin, text.size() - begin);
  out += '"';
}

}  // namespace tcamshow
