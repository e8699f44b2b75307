// What tcamshow says on standard error, and how it then ends.
#pragma once

#include <string_view>

namespace tcamshow {

/// The exit status when the input is bad or the output cannot be written.
inline constexpr int exitFailure = 1;

/// Writes a message on standard error, after the program's name; also when memory has run out.
void complain(std::string_view message) noexcept;

}  // namespace tcamshow
