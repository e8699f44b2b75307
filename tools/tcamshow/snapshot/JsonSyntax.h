// Where a text stops being JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tcamshow {

/// The first fault of a text that is no JSON value.
struct JsonFault {
  std::size_t byte = 0;    ///< from 1; 0: the text is a JSON value
  std::string what;        ///< what is wrong there, for a message
  bool hasMember = false;  ///< whether a member's name had been read
  std::string member;      ///< the member read last: its names from the outermost on, with dots
};

/// Reads the text from its beginning to its first fault. `whole` is what messages call the text. An
/// object or array inside `deepest` others is a fault too.
///
/// Memory: a bit for each level that is open at once, and 16 bytes for each that is an object.
JsonFault findJsonFault(std::string_view text, std::string_view whole = "line",
                        std::size_t deepest = static_cast<std::size_t>(-1));

}  // namespace tcamshow
