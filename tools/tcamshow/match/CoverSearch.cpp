#include "match/CoverSearch.h"

#include <algorithm>
#include <numeric>

namespace tcamshow {

namespace {

/// A piece looks at so many candidates that meet it, and goes on with the one that takes most of
/// it.
constexpr unsigned compared = 32;

/// A piece whose candidates meet it less often than once in so many gets a list of those that do.
constexpr std::size_t sparse = 4;

}  // namespace

template <class W>
CoverSearch<W>::CoverSearch(const BoxSpace<W>& space)
    : space_(space), witness_(space.fields()), pieces_(space.fields()), current_(space.fields()) {}

template <class W>
CoverAnswer CoverSearch<W>::ask(Box<W> box, std::span<const std::uint32_t> candidates,
                                const BoxList<W>& all, std::uint64_t bound) {
  used_.clear();
  witness_.clear();
  // Most boxes that are asked about are open, and a few packets show it.
  if (isOpenBySample(box, candidates, all, 4)) return CoverAnswer::open;
  if (isHeldByOne(box, candidates, all)) return CoverAnswer::covered;
  if (bound == 0) return CoverAnswer::unknown;
  lineUp(box, candidates, all);
  CoverAnswer const answer = cut(box, met_, all, bound);
  if (answer == CoverAnswer::covered) {
    for (std::size_t i = 0; i < met_.size(); ++i) {
      if (isUsed_[i]) used_.push_back(met_[i]);
    }
    usedMinimize(box, all);
  }
  if (answer == CoverAnswer::unknown && isOpenBySample(box, met_, all, 256))
    return CoverAnswer::open;
  return answer;
}

/// Whether one candidate holds all of the box; that one is used.
template <class W>
bool CoverSearch<W>::isHeldByOne(Box<W> box, std::span<const std::uint32_t> candidates,
                                 const BoxList<W>& all) {
  for (std::uint32_t const candidate : candidates) {
    if (!space_.contains(all[candidate], box)) continue;
    used_.push_back(candidate);
    ++boxes_;
    return true;
  }
  return false;
}

/// Puts those that meet the box into met_.
template <class W>
void CoverSearch<W>::lineUp(Box<W> box, std::span<const std::uint32_t> candidates,
                            const BoxList<W>& all) {
  struct Share {
    double share;
    std::uint32_t candidate;
  };
  std::vector<Share> shares;
  for (std::uint32_t const candidate : candidates) {
    Box<W> const other = all[candidate];
    if (space_.overlap(other, box)) {
      shares.push_back({space_.shareTaken(box, other), candidate});
    }
  }
  std::stable_sort(shares.begin(), shares.end(),
                   [](const Share& a, const Share& b) { return a.share > b.share; });
  met_.clear();
  for (const Share& share : shares) met_.push_back(share.candidate);
}

template <class W>
CoverAnswer CoverSearch<W>::cut(Box<W> box, std::span<const std::uint32_t> candidates,
                                const BoxList<W>& all, std::uint64_t bound) {
  isUsed_.assign(candidates.size(), false);
  pieces_.clear();
  pieces_.push(box);
  narrowed_.resize(candidates.size());
  std::iota(narrowed_.begin(), narrowed_.end(), 0U);
  parts_.assign(1, {0, candidates.size()});
  auto const candidate = [&](std::size_t at) { return all[candidates[narrowed_[at]]]; };
  for (std::uint64_t looked = 0; !parts_.empty(); ++looked) {
    if (looked == bound) return CoverAnswer::unknown;
    ++boxes_;
    Part part = parts_.back();
    parts_.pop_back();
    narrowed_.resize(part.end);
    current_.clear();
    current_.push(pieces_.back());
    pieces_.pop();
    Box<W> const current = current_[0];
    unsigned met = 0;
    std::size_t best = 0;
    double bestShare = 0;
    std::size_t at = part.begin;
    for (; at < part.end && met < compared; ++at) {
      Box<W> const other = candidate(at);
      if (!space_.overlap(other, current)) continue;
      if (met == 0) part.begin = at;
      ++met;
      double const share = space_.shareTaken(current, other);
      if (share <= bestShare) continue;
      best = at;
      bestShare = share;
      if (share == 1) break;
    }
    if (met == 0) {
      witness_.push(current);
      return CoverAnswer::open;
    }
    isUsed_[narrowed_[best]] = true;
    std::size_t const before = pieces_.size();
    space_.differenceAppend(current, candidate(best), pieces_);
    if (pieces_.size() == before) continue;
    // No piece meets a candidate that the whole did not. Where few meet the whole, they are listed.
    if (at - part.begin > sparse * met) {
      Part const wide = part;
      part.begin = narrowed_.size();
      for (std::size_t each = wide.begin; each < wide.end; ++each) {
        std::uint32_t const place = narrowed_[each];
        if (each != best && space_.overlap(all[candidates[place]], current)) {
          narrowed_.push_back(place);
        }
      }
      part.end = narrowed_.size();
    }
    parts_.insert(parts_.end(), pieces_.size() - before, part);
  }
  return CoverAnswer::covered;
}

/// Leaves out of used_ what the others do without, from the smallest share on: by few searches of
/// few boxes.
template <class W>
void CoverSearch<W>::usedMinimize(Box<W> box, const BoxList<W>& all) {
  constexpr std::size_t most = 32;
  constexpr std::uint64_t bound = 1000;
  if (used_.size() > most) return;
  std::vector<std::uint32_t> fewer;
  for (std::size_t i = used_.size(); i-- > 0 && used_.size() > 1;) {
    fewer = used_;
    fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
    if (cut(box, fewer, all, bound) == CoverAnswer::covered) used_ = fewer;
  }
  witness_.clear();
}

/// Looks for an open packet by trial: the box's lowest, its highest, and others.
template <class W>
bool CoverSearch<W>::isOpenBySample(Box<W> box, std::span<const std::uint32_t> candidates,
                                    const BoxList<W>& all, unsigned trials) {
  std::uint64_t state = 1;  // the same packets each time: two runs print the same
  auto const half = [&state] {
    state += 0x9E3779B97F4A7C15;
    std::uint64_t mixed = (state ^ state >> 30) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
    return mixed ^ mixed >> 31;
  };
  auto const random = [&half] {
    if constexpr (sizeof(W) == 16) {
      // cppcheck-suppress shiftTooManyBits  // W has 128 bits here
      return W{half()} << 64 | half();
    } else {
      return half();
    }
  };
  packet_.assign(space_.fields(), FieldSetOf<W>());
  for (unsigned trial = 0; trial < trials; ++trial) {
    for (std::size_t i = 0; i < packet_.size(); ++i) {
      W const drawn = trial == 0 ? W{0} : trial == 1 ? ~W{0} : random();
      packet_[i] = FieldSetOf<W>::exactly(box[i].picked(drawn));
    }
    bool const isTaken = std::any_of(
        candidates.begin(), candidates.end(),
        [&](std::uint32_t candidate) { return space_.contains(all[candidate], packet_.data()); });
    if (!isTaken) {
      ++boxes_;
      witness_.push(packet_.data());
      return true;
    }
  }
  return false;
}

template class CoverSearch<Word>;
template class CoverSearch<std::uint64_t>;

}  // namespace tcamshow
