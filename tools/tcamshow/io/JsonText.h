// JSON text, as the program writes it.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace tcamshow {

/// Appends `text` as a JSON string, quotes included. What isUnsafe() names is escaped, `\u009b`; a
/// byte that is not UTF-8 becomes U+FFFD, for JSON has no other way to say it. All else stands as
/// it is.
void appendJsonString(std::string& out, std::string_view text);

template <std::integral Number>
void appendNumber(std::string& out, Number number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace tcamshow
