// Finds out whether some boxes together cover another box.
//
// Threads: one thread at a time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "match/BoxSpace.h"

namespace tcamshow {

enum class CoverAnswer : std::uint8_t {
  covered,
  open,     ///< at least one packet of the box is in no candidate
  unknown,  ///< the search reached its bound first
};

/// The largest number of boxes that one question looks at.
inline constexpr std::uint64_t coverBound = 100'000;

/// Answers whether boxes of one space cover another box. The answer is exact, unless the search
/// reaches its bound.
///
/// The search subtracts one candidate from the box and cuts the rest into pieces. It goes on with
/// each piece and the candidates that overlap the piece. If no candidate overlaps a piece, the box
/// is not covered.
///
///     CoverSearch<Word> search(space);
///     if (search.ask(entry, ahead, all) == CoverAnswer::open) show(search.witness());
template <class W>
class CoverSearch {
 public:
  /// `space` must outlive the search.
  explicit CoverSearch(const BoxSpace<W>& space);

  /// Whether the boxes of `all` with the indexes `candidates` cover `box`. `box` must not be in a
  /// list of this search.
  CoverAnswer ask(Box<W> box, std::span<const std::uint32_t> candidates, const BoxList<W>& all,
                  std::uint64_t bound = coverBound);

  /// After `covered`: a small set of candidates that cover the box, the largest share first.
  const std::vector<std::uint32_t>& used() const noexcept { return used_; }
  /// After `open`: a part of the box that is in no candidate. Valid until the next question.
  Box<W> witness() const noexcept { return witness_.back(); }
  /// The number of boxes that all questions together have looked at.
  std::uint64_t boxes() const noexcept { return boxes_; }

 private:
  bool isHeldByOne(Box<W> box, std::span<const std::uint32_t> candidates, const BoxList<W>& all);
  void lineUp(Box<W> box, std::span<const std::uint32_t> candidates, const BoxList<W>& all);
  CoverAnswer cut(Box<W> box, std::span<const std::uint32_t> candidates, const BoxList<W>& all,
                  std::uint64_t bound);
  bool isOpenBySample(Box<W> box, std::span<const std::uint32_t> candidates, const BoxList<W>& all,
                      unsigned trials);
  void usedMinimize(Box<W> box, const BoxList<W>& all);

  const BoxSpace<W>& space_;
  std::vector<std::uint32_t> met_;  // the candidates that meet the box, the largest share first
  std::vector<bool> isUsed_;        // by place in cut()'s candidates
  std::vector<std::uint32_t> used_;
  BoxList<W> witness_;
  std::vector<FieldSetOf<W>> packet_;
  std::uint64_t boxes_ = 0;
  // During a cut: the pieces that are left, and for each the part of narrowed_ with the candidates
  // that it may overlap. The parts of later pieces stand behind those of earlier ones.
  struct Part {
    std::size_t begin;
    std::size_t end;
  };
  BoxList<W> pieces_;
  std::vector<Part> parts_;
  std::vector<std::uint32_t> narrowed_;  // by place in cut()'s candidates
  BoxList<W> current_;
};

extern template class CoverSearch<Word>;
extern template class CoverSearch<std::uint64_t>;

}  // namespace tcamshow
