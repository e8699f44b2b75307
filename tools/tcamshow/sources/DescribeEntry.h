// A description for an entry that has none.
#pragma once

#include <string>

#include "snapshot/Snapshot.h"

namespace tcamshow {

/// Appends the action and the match of the entry, in the form of a line of an access list:
///
///     permit tcp any range 1024 2000 host 192.0.2.80 eq 443 flags syn
///
/// Every qualifier and range checker that the entry has is named.
void appendDescription(const Entry& entry, std::string& out);

}  // namespace tcamshow
