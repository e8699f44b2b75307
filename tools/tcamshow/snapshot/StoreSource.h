// What an EntryStore holds, given once more.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "snapshot/EntryStore.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Gives the store's groups by ascending place, then its entries in the order of `numbers`. The
/// store outlives the source.
std::unique_ptr<Source> storeSource(const EntryStore& store, std::vector<std::uint32_t> numbers,
                                    Complaints& complaints);
/// As above, all entries in the order in which the store got them.
std::unique_ptr<Source> storeSource(const EntryStore& store, Complaints& complaints);

}  // namespace tcamshow
