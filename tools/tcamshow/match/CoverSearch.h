// Whether some boxes together hold all of another one.
//
// Threads: one at a time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "match/BoxSpace.h"

namespace tcamshow {

/// Answers for one space whether boxes cover another box, exactly, within a bound.
///
/// The box is cut: a candidate takes its part, and each piece that is left goes on with the
/// candidates that it still meets. A piece that meets none shows that the box is not covered.
///
///     CoverSearch search(space);
///     if (search.ask(entry, ahead, all) == CoverSearch::Answer::open) show(search.witness());
class CoverSearch {
 public:
  enum class Answer : std::uint8_t {
    covered,
    open,     ///< some packet of the box is in no candidate
    unknown,  ///< the bound was met first
  };
  /// Boxes that one question may look at.
  static constexpr std::uint64_t defaultBound = 100'000;

  /// `space` must outlive the search.
  explicit CoverSearch(const BoxSpace& space);

  /// Whether the boxes of `all` with these indexes hold all of `box`, which is not of this search's
  /// own lists.
  Answer ask(Box box, std::span<const std::uint32_t> candidates, const BoxList& all,
             std::uint64_t bound = defaultBound);

  /// After `covered`: a small set of candidates that do, those that take most of the box first.
  const std::vector<std::uint32_t>& used() const noexcept { return used_; }
  /// After `open`: a box of packets that are in the box asked for and in no candidate. Good until
  /// the next question.
  Box witness() const noexcept { return witness_.back(); }
  /// Boxes looked at, by all questions together.
  std::uint64_t boxes() const noexcept { return boxes_; }

 private:
  struct Piece {
    std::uint32_t firstCandidate;  // in kept_
    std::uint32_t endCandidate;
  };

  bool lineUp(Box box, std::span<const std::uint32_t> candidates, const BoxList& all);
  Answer cut(Box box, std::span<const std::uint32_t> candidates, const BoxList& all,
             std::uint64_t bound);
  bool isOpenBySample(Box box, std::span<const std::uint32_t> candidates, const BoxList& all,
                      unsigned trials);
  void usedMinimize(Box box, const BoxList& all);

  const BoxSpace& space_;
  std::vector<std::uint32_t> met_;  // the candidates that meet the box, the largest share first
  std::vector<bool> isUsed_;        // by place in cut()'s candidates
  std::vector<std::uint32_t> used_;
  BoxList witness_;
  std::vector<FieldSet> packet_;
  std::uint64_t boxes_ = 0;
  // Of a cut: the pieces that are left, each with its candidates, as places in kept_.
  BoxList pieces_;
  BoxList current_;
  std::vector<Piece> stack_;
  std::vector<std::uint32_t> kept_;
};

}  // namespace tcamshow
