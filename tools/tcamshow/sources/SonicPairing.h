// Which rule of the configuration an entry of the ASIC carries.
#pragma once

#include <cstdint>
#include <vector>

#include "sources/SonicModel.h"

namespace tcamshow {

/// What is known of entries and rules beside the model.
struct SonicEvidence {
  /// A rule and the counter that the switch has given to it.
  struct Counted {
    std::uint64_t counter;
    std::uint32_t rule;
  };
  /// A table of the configuration, and a counter of one of its rules that the configuration lacks.
  struct CountedTable {
    std::uint64_t counter;
    std::uint32_t table;
  };

  /// The same number for the same priority and fields, for each entry and each rule.
  std::vector<std::uint64_t> entryMatches;
  std::vector<std::uint64_t> ruleMatches;
  std::vector<Counted> counted;
  std::vector<CountedTable> countedTables;
};

/// Finds the rule of each entry and the name of each table, and notes them in the model. The
/// counters tell most. The rest is told by rules of the same priority and fields: in the table of
/// that name, or in the only table that has such a rule. Takes n log n for n entries and rules.
void pairSonicRules(SonicModel& model, SonicEvidence& evidence);

}  // namespace tcamshow
