// Where a line stops being JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tcamshow {

/// The first fault of a text that is no JSON value.
struct JsonFault {
  std::size_t byte = 0;    ///< from 1; 0: the text is a JSON value
  std::string_view what;   ///< what is wrong there, for a message
  bool hasMember = false;  ///< whether a member's name had been read
  std::string member;      ///< the member read last: its names from the outermost on, with dots
};

/// For messages: reads the text once more, from its beginning.
JsonFault findJsonFault(std::string_view text);

}  // namespace tcamshow
