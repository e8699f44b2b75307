// Internal: makes a text from outside safe for a message of one line.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Halvo/String.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// Appends `text` and writes each control character (also DEL) as \n, \r, \t or \xNN, so that the
/// text stays on one line. All other bytes stay as they are, also the backslash.
void appendOneLine(Halvo::String& out, std::string_view text);

/// The most bytes that writeDecimal writes.
inline constexpr std::size_t maxDecimalSize = 20;
/// Writes `number` in decimal, without a NUL, and returns its end. Used instead of std::to_chars:
/// the tables of std::to_chars are unique symbols, and a library that has those cannot be unloaded.
char* writeDecimal(char* out, U64 number) noexcept;
/// Appends `number` in decimal, with leading zeros up to `width` digits.
void appendDecimal(Halvo::String& out, U64 number, std::size_t width = 1);

/// `text` in single quotes, safe for a message of one line. A text of more than 64 bytes is cut
/// after 64, and "..." follows the closing quote.
std::string quotedForMessage(std::string_view text);

/// Writes `line` to standard error with one write(2), or more if the system takes only a part of
/// it. An error is ignored: there is nowhere to report it.
void writeToStandardError(std::string_view line) noexcept;

}  // namespace Zel
