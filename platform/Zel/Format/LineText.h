// Internal: text from outside made fit for one line of a message.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Halvo/String.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// Appends `text` with every control character (and DEL) written as \n, \r, \t or \xNN, so that it
/// stays on its line. All other bytes stay as they are, the backslash among them.
void appendOneLine(Halvo::String& out, std::string_view text);

/// The room that writeDecimal needs at most.
inline constexpr std::size_t maxDecimalSize = 20;
/// Writes `number` in decimal, without a NUL, and returns its end. In place of std::to_chars, whose
/// tables are unique symbols, and those keep a library from being unloaded.
char* writeDecimal(char* out, U64 number) noexcept;
/// Appends `number` in decimal, with zeros before it up to `width` digits.
void appendDecimal(Halvo::String& out, U64 number, std::size_t width = 1);

/// `text` between single quotes, fit for one line, cut after 64 bytes with "..." after it.
std::string quotedForMessage(std::string_view text);

/// Writes `line` to standard error with one write(2), more only when the system takes less at a
/// time. Failure is ignored: there is nowhere to report it.
void writeToStandardError(std::string_view line) noexcept;

}  // namespace Zel
