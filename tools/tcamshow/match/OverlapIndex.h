// Which of many boxes meet a box.
//
// Threads: one adds; any number may ask an index that nobody adds to.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "match/BoxSpace.h"

namespace tcamshow {

/// 32 bits of a box: where the mask has a 1, those of its packets are those of the value.
struct TernaryWord {
  std::uint32_t value;
  std::uint32_t mask;
};

/// Boxes in columns of 32-bit words, value beside mask, so that one step of a scan rules out many.
///
/// A scan over columns beats trees here: matches overlap in too many ways for a tree to part them,
/// and a scan reads memory in order.
///
///     OverlapIndex index(space);
///     for (...) index.add(box);
///     index.overlapping(box, 0, index.size(), found);
template <class W>
class OverlapIndex {
 public:
  /// `space` must outlive the index.
  explicit OverlapIndex(const BoxSpace<W>& space);

  /// Appends a box; its number is size() as it was before.
  void add(Box<W> box);
  std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(boxes_.size()); }
  const BoxList<W>& boxes() const noexcept { return boxes_; }
  Box<W> operator[](std::uint32_t number) const noexcept { return boxes_[number]; }

  /// Appends the numbers in [from, to) of the boxes that meet `box`, ascending.
  void overlapping(Box<W> box, std::uint32_t from, std::uint32_t to,
                   std::vector<std::uint32_t>& found) const;

 private:
  static constexpr std::uint32_t blockSize = 64;

  /// Where a field's bits stand: 32 of them at most in a word.
  struct Part {
    std::uint8_t field;       // in the space's order
    std::uint8_t fieldShift;  // the field's lowest bit that is in it
    std::uint8_t bits;
    std::uint8_t wordShift;
  };
  struct Column {
    std::vector<Part> parts;
    std::vector<std::uint32_t> values;
    std::vector<std::uint32_t> masks;
    std::vector<TernaryWord> hulls;  // of each block: the bits that are the same in all of it
  };
  static TernaryWord wordOf(const Column& column, Box<W> box) noexcept;
  std::uint32_t rangesOf(Box<W> box) const noexcept;
  std::uint64_t blockHits(const std::vector<TernaryWord>& words, std::size_t block) const noexcept;

  const BoxSpace<W>& space_;
  BoxList<W> boxes_;
  std::vector<Column> columns_;
  std::vector<std::uint32_t> ranges_;  // of each box
};

extern template class OverlapIndex<Word>;
extern template class OverlapIndex<std::uint64_t>;

}  // namespace tcamshow
