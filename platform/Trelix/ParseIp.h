// Internal: reading a dotted quad, for both IP families.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <string_view>

#include "Trelix/IpAddr.h"

namespace Trelix {

/// Reads all of `text` into `address`. Null, or what is wrong with the text.
const char* readDottedQuad(std::string_view text, IpAddr& address) noexcept;

}  // namespace Trelix
