// The selected entries of a source, by place.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "questions/Selection.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

/// A place and those of its entries that were selected.
struct ListedPlace {
  const PlaceInfo* info;
  std::vector<std::uint32_t> entries;  ///< in match order, or in that of the selection's keys
};

/// All that a source gives, with the selected entries of each place. The limit counts over all
/// places, in the order of the places.
///
/// Memory: an EntryStore of the entries that the condition is true of, or of all if it asks for the
/// name of a group.
class Listing {
 public:
  /// Reads the source to its end.
  Listing(std::unique_ptr<Source> source, const Selection& selection, Complaints& complaints);

  const EntryStore& store() const noexcept { return store_; }
  /// By ascending place. Where entries were selected, a place without one is left out.
  std::span<const ListedPlace> places() const noexcept { return places_; }

 private:
  EntryStore store_;
  std::vector<ListedPlace> places_;
};

}  // namespace tcamshow
