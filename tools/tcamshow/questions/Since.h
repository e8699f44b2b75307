// How far the counters of entries have moved since an older snapshot.
//
// Threads: one thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "questions/Pairing.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

enum class SinceMark : std::uint8_t {
  none,
  isNew,  ///< the baseline does not have the entry
  reset,  ///< a counter fell: it was set back in between
};
/// "", "new" or "reset".
std::string_view sinceMarkName(SinceMark mark) noexcept;

/// An entry beside its partner in the baseline.
struct SinceFacts {
  SinceMark mark = SinceMark::none;
  /// None where the counters are not programmed, now or in the baseline.
  std::optional<std::uint64_t> hits;
  /// None where bytes are not reported, now or in the baseline.
  std::optional<std::uint64_t> bytes;
};

/// Compares entries with those of an older snapshot, the baseline. The partner of an entry has its
/// place, id and match. A new entry and a counter that fell have moved by all that they show.
///
///     Since since(*baseline);                       // reads it to its end
///     title(since.header().takenAt);
///     SinceFacts const facts = since.of(entry);     // for each entry of the newer snapshot
///
/// Takes about 170 bytes for each entry of the baseline, beyond its texts.
class Since {
 public:
  explicit Since(Source& baseline);

  const Header& header() const noexcept { return store_.header(); }
  const std::string& fileName() const noexcept { return store_.fileName(); }

  /// Ask once for each entry: an entry of the baseline is the partner of one other at most. Where
  /// several have one place, id and match, the first that is asked about gets the first in match
  /// order.
  SinceFacts of(const Entry& entry);

 private:
  struct Item {
    std::uint64_t hash;
    std::uint32_t number;  // in the store
    std::uint32_t taken;   // of the first with its hash: how many from there on have a partner
  };

  std::uint64_t hashOf(const Entry& entry);
  const Entry* partnerOf(const Entry& entry);

  EntryStore store_;
  std::vector<Item> items_;  // by hash, then in match order
  std::string key_;
  Entry scratch_;
};

}  // namespace tcamshow
