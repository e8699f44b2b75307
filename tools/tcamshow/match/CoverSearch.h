// Whether some boxes together hold all of another one.
//
// Threads: one at a time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "match/BoxSpace.h"

namespace tcamshow {

enum class CoverAnswer : std::uint8_t {
  covered,
  open,     ///< some packet of the box is in no candidate
  unknown,  ///< the bound was met first
};

/// Boxes that one question may look at.
inline constexpr std::uint64_t coverBound = 100'000;

/// Answers for one space whether boxes cover another box, exactly, within a bound.
///
/// The box is cut: a candidate takes its part, and each piece that is left goes on with the
/// candidates that it still meets. A piece that meets none shows that the box is not covered.
///
///     CoverSearch<Word> search(space);
///     if (search.ask(entry, ahead, all) == CoverAnswer::open) show(search.witness());
template <class W>
class CoverSearch {
 public:
  /// `space` must outlive the search.
  explicit CoverSearch(const BoxSpace<W>& space);

  /// Whether the boxes of `all` with these indexes hold all of `box`, which is not of this search's
  /// own lists.
  CoverAnswer ask(Box<W> box, std::span<const std::uint32_t> candidates, const BoxList<W>& all,
                  std::uint64_t bound = coverBound);

  /// After `covered`: a small set of candidates that do, those that take most of the box first.
  const std::vector<std::uint32_t>& used() const noexcept { return used_; }
  /// After `open`: a box of packets that are in the box asked for and in no candidate. Good until
  /// the next question.
  Box<W> witness() const noexcept { return witness_.back(); }
  /// Boxes looked at, by all questions together.
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
  // Of a cut: the pieces that are left, and of each the first candidate that it may meet.
  BoxList<W> pieces_;
  std::vector<std::size_t> from_;
  BoxList<W> current_;
};

extern template class CoverSearch<Word>;
extern template class CoverSearch<std::uint64_t>;

}  // namespace tcamshow
