// Finds the place where a text stops being JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tcamshow {

/// The first fault of a text that is not a JSON value.
struct JsonFault {
  std::size_t byte = 0;    ///< counted from 1; 0 if the text is a JSON value
  std::string what;        ///< the description of the fault, for a message
  bool hasMember = false;  ///< whether a member's name had been read
  std::string member;      ///< the member that was read last: its names, outermost first, with dots
};

/// Reads the text up to its first fault. `whole` is the name of the text in messages. An object or
/// array inside `deepest` others is a fault too.
///
/// Memory: one bit for each level that is open at the same time, and 16 bytes more if it is an
/// object.
JsonFault findJsonFault(std::string_view text, std::string_view whole = "line",
                        std::size_t deepest = static_cast<std::size_t>(-1));

}  // namespace tcamshow
