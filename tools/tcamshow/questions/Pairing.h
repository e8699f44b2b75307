// Which entries of two snapshots are the same one.
//
// Threads: any number may ask about the same stores.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "snapshot/EntryStore.h"

namespace tcamshow {

/// What partners have in common beside their place. The match includes the other match.
enum class PairBy : std::uint8_t { match, id, idAndMatch };

/// Appends a key: partners, and only these, have equal keys.
void pairKeyAppend(std::string& key, const Entry& entry, PairBy by);

/// The properties in which partners may differ. A set of them has one bit each.
enum class Property : std::uint8_t {
  action,
  priority,
  sequence,
  state,
  feature,
  description,
  match,     ///< with the other match
  counters,  ///< whether they are programmed
};
inline constexpr std::size_t propertyCount = 8;
using Properties = std::uint8_t;
constexpr Properties bitOf(Property property) noexcept {
  return static_cast<Properties>(1U << static_cast<unsigned>(property));
}

/// The properties in which the two entries differ.
Properties differencesOf(const Entry& a, const Entry& b);

/// Entries of one place: their numbers in a store, in match order.
struct PairSide {
  const EntryStore& store;
  std::span<const std::uint32_t> entries;
};

/// No partner.
inline constexpr std::uint32_t noPartner = 0xFFFFFFFF;

/// For each entry of `a`, the index of its partner in `b.entries`, or noPartner. An entry is the
/// partner of one other at most. Of several with the same key, those that differ in nothing are
/// paired first, among them those with the same id; the rest are paired in match order.
///
/// Takes n log n time and about 40 bytes an entry.
std::vector<std::uint32_t> partnersOf(const PairSide& a, const PairSide& b, PairBy by);

}  // namespace tcamshow
