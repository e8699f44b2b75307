// Writing JSON text.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace tcamshow {

/// Appends `text` as a JSON string, with its quotes. Unsafe characters (isUnsafe()) are escaped, as
/// `\u009b`. A byte that is not UTF-8 becomes U+FFFD, because JSON cannot express it. All else is
/// unchanged, except for the escapes that JSON requires.
void appendJsonString(std::string& out, std::string_view text);

template <std::integral Number>
void appendNumber(std::string& out, Number number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace tcamshow
