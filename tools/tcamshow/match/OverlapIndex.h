// Finds the boxes that overlap a given box.
//
// Threads: one thread may add. Any number of threads may search an index that nobody adds to.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "match/BoxSpace.h"

namespace tcamshow {

/// 32 bits of a box. A mask bit of 1 means that all packets of the box have the value's bit.
struct TernaryWord {
  std::uint32_t value;
  std::uint32_t mask;
};

/// Boxes in columns of 32-bit words of values and masks. One step of a scan excludes many boxes.
///
/// A scan over columns is faster here than a tree: matches overlap in too many ways for a tree to
/// separate them, and a scan reads memory in order.
///
///     OverlapIndex index(space);
///     for (...) index.add(box);
///     index.overlapping(box, 0, index.size(), found);
template <class W>
class OverlapIndex {
 public:
  /// `space` must outlive the index.
  explicit OverlapIndex(const BoxSpace<W>& space);

  /// Appends a box. Its number is the size() before the call.
  void add(Box<W> box);
  std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(boxes_.size()); }
  const BoxList<W>& boxes() const noexcept { return boxes_; }
  Box<W> operator[](std::uint32_t number) const noexcept { return boxes_[number]; }

  /// Appends the numbers of the boxes in [from, to) that overlap `box`, in ascending order.
  void overlapping(Box<W> box, std::uint32_t from, std::uint32_t to,
                   std::vector<std::uint32_t>& found) const;

 private:
  static constexpr std::uint32_t blockSize = 64;

  /// The place of a field's bits in a word, at most 32 of them.
  struct Part {
    std::uint8_t field;       // in the space's order
    std::uint8_t fieldShift;  // the field's lowest bit in this part
    std::uint8_t bits;
    std::uint8_t wordShift;
  };
  struct Column {
    std::vector<Part> parts;
    std::vector<std::uint32_t> values;
    std::vector<std::uint32_t> masks;
    std::vector<TernaryWord> hulls;  // for each block: the bits that all its boxes have in common
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
