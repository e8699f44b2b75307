// How full each copy of a group is.
//
// Threads: one thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "snapshot/Source.h"

namespace tcamshow {

/// The numbers that a group line reports of its copy. A number that is absent is not reported,
/// which is not the same as 0.
struct ReportedEntries {
  std::optional<std::uint32_t> available;
  std::optional<std::uint32_t> free;
  std::optional<std::uint32_t> total;
};
inline ReportedEntries reportedBy(const Group& group) noexcept {
  return {group.availableEntries, group.freeEntries, group.totalEntries};
}

/// The used part of a copy.
struct Fill {
  std::uint64_t used = 0;
  std::uint64_t size = 1;  ///< not 0; may be less than `used`

  /// In tenths of a percent, rounded to the nearest, halves up.
  std::uint64_t tenths() const noexcept;
  /// Whether the exact part, not the rounded one, is at least so many percent.
  bool isAtLeast(double percent) const noexcept;
};

inline constexpr std::size_t entryStateCount = 4;

/// The entries of one copy.
struct CopyUse {
  Place place;
  std::string name;  ///< the group's
  ReportedEntries reported;
  std::array<std::uint64_t, entryStateCount> byState{};  ///< by EntryState
  /// By the feature's name. Entries of every state are counted.
  std::map<std::string, std::uint64_t, std::less<>> byFeature;

  /// The entries that are neither failed nor pending.
  std::uint64_t usedEntries() const noexcept;
  /// Used of the total, or where that is not reported, of used and available. None where neither is
  /// reported, or the size is 0.
  std::optional<Fill> fill() const noexcept;
};

/// Reads the source to its end. The use of each copy, by ascending place. A copy has a group line,
/// or an entry, or both. A place that `isAsked` turns down is left out.
///
/// Memory grows with the number of places and of their features.
std::vector<CopyUse> capacityOf(Source& source, const std::function<bool(const Place&)>& isAsked);

/// The sums of one stage.
struct StageUse {
  Stage stage = Stage::ingress;
  std::uint64_t used = 0;
  std::optional<std::uint64_t> total;  ///< none unless every copy's total is reported
};
/// By ascending stage. `copies` are ordered as capacityOf() gives them.
std::vector<StageUse> stageUse(std::span<const CopyUse> copies);

}  // namespace tcamshow
