// The findings of a place of a store.
//
// Threads: any number may ask about one store.
#pragma once

#include <vector>

#include "questions/LintPlace.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

/// The classes that are looked for unless somebody asks for others.
constexpr LintClasses usualLintClasses =
    allLintClasses & ~(bitOf(LintClass::redundant) | bitOf(LintClass::neverHit));

struct PlaceFindings {
  /// In match order. The rules are indexes of PlaceInfo::entries.
  std::vector<LintFinding> findings;
  /// The fields that an entry of the place names.
  FieldMask named = 0;
};

/// The findings of these classes. Memory grows with the number of the place's entries.
///
///     for (const PlaceInfo& place : store.places()) {
///       show(place, lintOf(store, place, usualLintClasses).findings);
///     }
PlaceFindings lintOf(const EntryStore& store, const PlaceInfo& place, LintClasses classes);

}  // namespace tcamshow
