// Internal: reads a dotted quad, for both IP families.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <string_view>

#include "Trelix/IpAddr.h"

namespace Trelix {

/// Reads `text`, all of it, into `address`. Returns null, or a text that says what is wrong.
const char* readDottedQuad(std::string_view text, IpAddr& address) noexcept;

}  // namespace Trelix
