#include "match/CoverSearch.h"

#include <algorithm>

namespace tcamshow {

namespace {

/// Candidates that the levels of a search keep for themselves: beyond it they go through those of
/// the level above again, which takes time in place of memory.
constexpr std::size_t maxKept = std::size_t{1} << 22;
/// Of so many candidates that meet a piece the one is taken that takes most of it.
constexpr std::size_t compared = 8;

}  // namespace

CoverSearch::CoverSearch(const BoxSpace& space)
    : space_(space), witness_(space.fields()), pieces_(space.fields()), current_(space.fields()) {}

CoverSearch::Answer CoverSearch::ask(Box box, std::span<const std::uint32_t> candidates,
                                     const BoxList& all, std::uint64_t bound) {
  used_.clear();
  witness_.clear();
  // Most boxes that are asked about are open, and a few packets show it.
  if (isOpenBySample(box, candidates, all, 4)) return Answer::open;
  if (lineUp(box, candidates, all)) return Answer::covered;
  Answer const answer = cut(box, met_, all, bound);
  if (answer == Answer::covered) {
    for (std::size_t i = 0; i < met_.size(); ++i) {
      if (isUsed_[i]) used_.push_back(met_[i]);
    }
    usedMinimize(box, all);
  }
  if (answer == Answer::unknown && isOpenBySample(box, met_, all, 256)) return Answer::open;
  return answer;
}

/// Puts those that meet the box into met_. True where one of them holds all of it: then that one is
/// used.
bool CoverSearch::lineUp(Box box, std::span<const std::uint32_t> candidates, const BoxList& all) {
  struct Share {
    double share;
    std::uint32_t candidate;
  };
  std::vector<Share> shares;
  for (std::uint32_t const candidate : candidates) {
    Box const other = all[candidate];
    if (!space_.overlap(other, box)) continue;
    if (space_.contains(other, box)) {
      used_.push_back(candidate);
      ++boxes_;
      return true;
    }
    shares.push_back({space_.shareTaken(box, other), candidate});
  }
  std::stable_sort(shares.begin(), shares.end(),
                   [](const Share& a, const Share& b) { return a.share > b.share; });
  met_.clear();
  for (const Share& share : shares) met_.push_back(share.candidate);
  return false;
}

CoverSearch::Answer CoverSearch::cut(Box box, std::span<const std::uint32_t> candidates,
                                     const BoxList& all, std::uint64_t bound) {
  auto const count = static_cast<std::uint32_t>(candidates.size());
  isUsed_.assign(count, false);
  kept_.resize(count);
  for (std::uint32_t i = 0; i < count; ++i) kept_[i] = i;
  pieces_.clear();
  pieces_.push(box);
  stack_.assign(1, {0, count});
  for (std::uint64_t looked = 0; !stack_.empty(); ++looked) {
    if (looked == bound) return Answer::unknown;
    ++boxes_;
    Piece const piece = stack_.back();
    stack_.pop_back();
    current_.clear();
    current_.push(pieces_.back());
    pieces_.pop();
    Box const current = current_[0];
    // What stands behind belonged to pieces that are done.
    kept_.resize(piece.endCandidate);
    bool const isKept = kept_.size() < maxKept;
    bool isCovered = false;
    std::size_t met = 0;
    std::uint32_t best = 0;
    double bestShare = -1;
    for (std::uint32_t at = piece.firstCandidate; at < piece.endCandidate && !isCovered; ++at) {
      std::uint32_t const candidate = kept_[at];
      Box const other = all[candidates[candidate]];
      if (!space_.overlap(other, current)) continue;
      isCovered = space_.contains(other, current);
      if (isCovered) {
        best = candidate;
        break;
      }
      if (met < compared) {
        double const share = space_.shareTaken(current, other);
        if (share > bestShare) {
          bestShare = share;
          best = candidate;
        }
      }
      ++met;
      if (isKept) kept_.push_back(candidate);
    }
    if (met == 0 && !isCovered) {
      witness_.push(current);
      return Answer::open;
    }
    isUsed_[best] = true;
    if (isCovered) continue;
    std::size_t const before = pieces_.size();
    space_.differenceAppend(current, all[candidates[best]], pieces_);
    Piece const next =
        isKept ? Piece{piece.endCandidate, static_cast<std::uint32_t>(kept_.size())} : piece;
    stack_.insert(stack_.end(), pieces_.size() - before, next);
  }
  return Answer::covered;
}

/// Leaves out of used_ what the others do without, from the smallest share on: by few searches of
/// few boxes.
void CoverSearch::usedMinimize(Box box, const BoxList& all) {
  constexpr std::size_t most = 32;
  constexpr std::uint64_t bound = 1000;
  if (used_.size() > most) return;
  std::vector<std::uint32_t> fewer;
  for (std::size_t i = used_.size(); i-- > 0 && used_.size() > 1;) {
    fewer = used_;
    fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
    if (cut(box, fewer, all, bound) == Answer::covered) used_ = fewer;
  }
  witness_.clear();
}

/// Looks for an open packet by trial: the box's lowest, its highest, and others.
bool CoverSearch::isOpenBySample(Box box, std::span<const std::uint32_t> candidates,
                                 const BoxList& all, unsigned trials) {
  std::uint64_t state = 1;  // the same packets each time: two runs print the same
  auto const random = [&state] {
    state += 0x9E3779B97F4A7C15;
    std::uint64_t mixed = (state ^ state >> 30) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
    return mixed ^ mixed >> 31;
  };
  packet_.assign(space_.fields(), FieldSet());
  for (unsigned trial = 0; trial < trials; ++trial) {
    for (std::size_t i = 0; i < packet_.size(); ++i) {
      Word const drawn = trial == 0   ? Word{0}
                         : trial == 1 ? ~Word{0}
                                      : Word{random()} << 64 | random();
      packet_[i] = FieldSet::exactly(box[i].picked(drawn));
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

}  // namespace tcamshow
