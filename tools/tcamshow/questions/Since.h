// How far the counters of entries have moved since an older snapshot.
//
// Threads: one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "questions/Pairing.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

/// Compares entries with those of an older snapshot, the baseline. The partner of an entry has its
/// place, id and match.
///
///     Since since(*baseline);                       // reads it to its end
///     source = withSince(std::move(source), since, complaints);
///     while (source->next() != Source::Item::end) use(source->entry().since);
///
/// Takes about 170 bytes for each entry of the baseline, beyond its texts.
class Since {
 public:
  explicit Since(Source& baseline);

  const Header& header() const noexcept { return store_.header(); }
  const std::string& fileName() const noexcept { return store_.fileName(); }

  /// Ask once for each entry, in the order of its file: an entry of the baseline is the partner of
  /// one other at most. Where several have one place, id and match, they are partners in the order
  /// of both files.
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
  std::vector<Item> items_;  // by hash, then by number
  std::string key_;
  Entry scratch_;
};

/// What `source` gives, each entry with what `since` says of it. It stands before any selection,
/// which would leave out entries that have partners. `since` outlives the result.
std::unique_ptr<Source> withSince(std::unique_ptr<Source> source, Since& since,
                                  Complaints& complaints);

}  // namespace tcamshow
