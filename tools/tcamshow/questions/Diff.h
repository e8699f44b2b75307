// What differs between two snapshots.
//
// Threads: one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "questions/Pairing.h"

namespace tcamshow {

/// Which places of the two snapshots are the same.
enum class PlaceBy : std::uint8_t {
  place,         ///< stage, pipe, group priority, group id and copy
  stageAndName,  ///< of one stage, with groups of one name
};

/// Places that are the same: of each snapshot none, one or several.
struct CommonPlace {
  std::vector<const PlaceInfo*> a;
  std::vector<const PlaceInfo*> b;

  /// The first of A, else of B.
  const PlaceInfo& first() const noexcept { return a.empty() ? *b.front() : *a.front(); }
};

/// By ascending place, or by stage and name.
std::vector<CommonPlace> commonPlaces(const EntryStore& a, const EntryStore& b, PlaceBy by);

/// An entry that only one snapshot has, or two partners that differ.
struct Difference {
  const Entry* a = nullptr;   ///< null: only B has it
  const Entry* b = nullptr;   ///< null: only A has it
  Properties properties = 0;  ///< of partners
};

struct DiffCounts {
  std::uint64_t removed = 0;
  std::uint64_t added = 0;
  std::uint64_t changed = 0;
  std::uint64_t equal = 0;
};

/// Gives the differences of a place to `use`: first the entries of A, then those that only B has,
/// each in match order (of several places, place by place). Adds to `counts`.
void diffPlace(const EntryStore& a, const EntryStore& b, const CommonPlace& place, PairBy by,
               DiffCounts& counts, const std::function<void(const Difference&)>& use);

}  // namespace tcamshow
