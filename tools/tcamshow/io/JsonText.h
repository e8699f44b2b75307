// JSON text, as the program writes it.
#pragma once

#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

namespace tcamshow {

/// Appends `text` as a JSON string, quotes included. `text` is UTF-8; what is not ASCII stands as
/// it is.
inline void appendJsonString(std::string& out, std::string_view text) {
  static constexpr char digits[] = "0123456789abcdef";
  out += '"';
  std::size_t from = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto const c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c != '"' && c != '\\' && c != 0x7F) continue;
    out.append(text, from, i - from);
    from = i + 1;
    out += '\\';
    switch (c) {
      case '"':
      case '\\':
        out += text[i];
        break;
      case '\b':
        out += 'b';
        break;
      case '\f':
        out += 'f';
        break;
      case '\n':
        out += 'n';
        break;
      case '\r':
        out += 'r';
        break;
      case '\t':
        out += 't';
        break;
      default:
        out += "u00";
        out += digits[c >> 4];
        out += digits[c & 15];
    }
  }
  out.append(text, from, text.size() - from);
  out += '"';
}

template <std::integral Number>
void appendNumber(std::string& out, Number number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace tcamshow
