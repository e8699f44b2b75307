// Which entries win the packets of a set, place by place.
//
// Threads: one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "match/CoverSearch.h"
#include "match/Packet.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

enum class Verdict : std::uint8_t {
  wins,
  mayWin,    ///< wins it if its other match holds
  wouldWin,  ///< is not installed, and would win if it alone were
  none,      ///< no entry matches
  unknown,   ///< the search reached its bound
};
/// "wins", "may-win", ...
std::string_view verdictName(Verdict verdict) noexcept;

struct Answer {
  Verdict verdict = Verdict::none;
  /// The index in PlaceInfo::entries. With `unknown`, no entry means: whether something is left.
  std::optional<std::uint32_t> entry;
  /// The packets of one box, of which each proves the answer. Not with `unknown`.
  std::unique_ptr<Match> packet;
};

/// The largest number of boxes that the search of one place looks at, beside one for each question.
inline constexpr std::uint64_t explainBound = coverBound;

/// The entries of a source that meet one of the packets, and all of its groups. The others are not
/// kept.
class MeetingEntries {
 public:
  /// Reads the source to its end. An entry of a place that `isAsked` turns down is left out.
  MeetingEntries(Source& source, const Packets& packets,
                 const std::function<bool(const Place&)>& isAsked);

  const EntryStore& store() const noexcept { return *store_; }
  /// The fields that the packets or any entry of the place name, those left out included.
  FieldMask named(const Place& place) const noexcept;

 private:
  FieldMask packetsNamed_;
  std::map<Place, FieldMask> named_;
  std::unique_ptr<EntryStore> store_;
};

/// The answers about one place, in match order; the last is about the packets that no entry
/// matches. Each answer is exact.
///
/// An entry with another match may match a packet or not: the search goes on behind it as if it had
/// not. It hides only entries with the same other match.
std::vector<Answer> explain(const EntryStore& store, const PlaceInfo& place,
                            const Packets& packets);

}  // namespace tcamshow
