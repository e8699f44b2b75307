#include "questions/Measures.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "questions/Cost.h"
#include "questions/Lint.h"
#include "snapshot/EntryState.h"
#include "snapshot/StoreSource.h"

namespace tcamshow {

namespace {

bool isAnyPlace(const Place&) noexcept { return true; }

void addTo(std::optional<Number>& sum, std::uint64_t number) {
  sum = sum.value_or(0) + static_cast<Number>(number);
}

std::vector<IdCounters> countersOf(const EntryStore& store, const PlaceInfo& place) {
  std::vector<IdCounters> counters;
  counters.reserve(place.entries.size());
  Entry scratch;
  for (std::uint32_t const number : place.entries) {
    const Entry& entry = store.entry(number, scratch);
    IdCounters& one = counters.emplace_back();
    one.id = entry.shadowId;
    if (countersAreProgrammed(entry)) addTo(one.hits, entry.hits);
    if (entry.bytes) addTo(one.bytes, *entry.bytes);
  }
  std::sort(counters.begin(), counters.end(),
            [](const IdCounters& a, const IdCounters& b) { return a.id < b.id; });
  std::size_t kept = 0;
  for (std::size_t i = 1; i < counters.size(); ++i) {
    const IdCounters& one = counters[i];
    if (one.id != counters[kept].id) {
      counters[++kept] = one;
      continue;
    }
    IdCounters& sum = counters[kept];
    if (one.hits) sum.hits = sum.hits.value_or(0) + *one.hits;
    if (one.bytes) sum.bytes = sum.bytes.value_or(0) + *one.bytes;
  }
  if (!counters.empty()) counters.resize(kept + 1);
  return counters;
}

}  // namespace

std::vector<PlaceMeasures> measuresOf(const EntryStore& store, const MeasuresAsked& asked,
                                      Complaints& complaints) {
  // All of them, as the store's places, by ascending place.
  std::vector<CopyUse> uses = capacityOf(*storeSource(store, complaints), isAnyPlace);
  std::vector<PlaceCost> costs = costsOf(*storeSource(store, complaints), isAnyPlace);
  std::vector<PlaceMeasures> measures(store.places().size());
  for (std::size_t i = 0; i < measures.size(); ++i) {
    const PlaceInfo& place = store.places()[i];
    PlaceMeasures& one = measures[i];
    one.use = std::move(uses[i]);
    one.rangeCheckers = std::move(costs[i].rangeCheckers);
    if (asked.findings != 0) {
      for (const LintFinding& finding : lintOf(store, place, asked.findings).findings) {
        ++one.findings[static_cast<std::size_t>(finding.kind)];
      }
    }
    if (asked.counters) one.counters = countersOf(store, place);
  }
  return measures;
}

}  // namespace tcamshow
