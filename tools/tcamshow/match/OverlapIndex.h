// Which of many boxes meet a box.
//
// Threads: one adds; any number may ask an index that nobody adds to.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "match/BoxSpace.h"

namespace tcamshow {

/// Boxes in columns of 32-bit words, value beside mask, so that one step of a scan rules out many.
///
/// A scan over columns beats trees here: matches overlap in too many ways for a tree to part them,
/// and a scan reads memory in order.
///
///     OverlapIndex index(space);
///     for (...) index.add(box);
///     index.overlapping(box, 0, index.size(), found);
class OverlapIndex {
 public:
  /// `space` must outlive the index.
  explicit OverlapIndex(const BoxSpace& space);

  /// Appends a box; its number is size() as it was before.
  void add(Box box);
  std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(boxes_.size()); }
  const BoxList& boxes() const noexcept { return boxes_; }
  Box operator[](std::uint32_t number) const noexcept { return boxes_[number]; }

  /// Appends the numbers in [from, to) of the boxes that meet `box`, ascending.
  void overlapping(Box box, std::uint32_t from, std::uint32_t to,
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
  struct Ternary {
    std::uint32_t value;
    std::uint32_t mask;
  };
  struct Column {
    std::vector<Part> parts;
    std::vector<std::uint32_t> values;
    std::vector<std::uint32_t> masks;
    std::vector<Ternary> hulls;  // of each block: the bits that are the same in all of it
  };
  static Ternary wordOf(const Column& column, Box box) noexcept;
  std::uint32_t rangesOf(Box box) const noexcept;
  std::uint64_t blockHits(const std::vector<Ternary>& words, std::size_t block) const noexcept;

  const BoxSpace& space_;
  BoxList boxes_;
  std::vector<Column> columns_;
  std::vector<std::uint32_t> ranges_;  // of each box
};

}  // namespace tcamshow
