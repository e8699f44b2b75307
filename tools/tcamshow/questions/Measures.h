// The numbers that a monitoring system keeps of a snapshot.
//
// Threads: one thread at a time.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "questions/Attributes.h"
#include "questions/Capacity.h"
#include "questions/LintPlace.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

/// The counters of the entries of a place that have one id: their sums.
struct IdCounters {
  std::uint64_t id = 0;
  std::optional<Number> hits;   ///< none unless the counters of an entry are programmed
  std::optional<Number> bytes;  ///< none unless an entry's are reported
};

struct PlaceMeasures {
  CopyUse use;
  /// The different range checkers of each kind, in the order of rangeCheckerList().
  std::vector<std::uint64_t> rangeCheckers;
  std::array<std::uint64_t, lintClassCount> findings{};  ///< by LintClass
  std::vector<IdCounters> counters;                      ///< by ascending id
};

struct MeasuresAsked {
  LintClasses findings = 0;  ///< the classes to look for
  bool counters = false;
};

/// The measures of each place, by ascending place. Memory, with the counters: about 100 bytes an
/// entry.
std::vector<PlaceMeasures> measuresOf(const EntryStore& store, const MeasuresAsked& asked,
                                      Complaints& complaints);

}  // namespace tcamshow
