// How much ranges of ports and lengths cost.
//
// Threads: one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "snapshot/Source.h"

namespace tcamshow {

/// The costs of one place.
struct PlaceCost {
  Place place;
  std::string name;  ///< the group's
  std::uint64_t entries = 0;
  /// How many entries there would be if each range were written as prefixes. A range that matches
  /// nothing needs none, and so does its entry.
  std::uint64_t expandedEntries = 0;
  /// How many range checkers of each kind differ in their low or high, in the order of
  /// rangeCheckerList().
  std::vector<std::uint64_t> rangeCheckers;

  /// The entry with a range that would become most entries.
  struct Worst {
    std::uint64_t shadowId = 0;
    std::uint32_t sequence = 0;
    std::uint64_t entries = 0;
  };
  /// Of several, the first in match order. None where no entry has a range.
  std::optional<Worst> worst;
};

/// Reads the source to its end. The costs of each place, by ascending place.
/// Memory grows with the number of places and of different range checkers. A place that `isAsked`
/// turns down is left out.
std::vector<PlaceCost> costsOf(Source& source, const std::function<bool(const Place&)>& isAsked);

/// The least number of prefixes that together are the values from low to high of `bits` bits.
/// Values beyond the field are left out; 0 where none is left.
std::uint64_t prefixCount(std::int64_t low, std::int64_t high, unsigned bits) noexcept;

}  // namespace tcamshow
