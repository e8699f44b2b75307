// Matches side by side over the few fields that matter, cut into pieces.
//
// Threads: one at a time; any number may read a space that nobody changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "match/Match.h"

namespace tcamshow {

/// A box: as many sets of values as its space has fields, in the space's order. W is the word of
/// the sets: FieldSetOf says which serves.
template <class W>
using Box = const FieldSetOf<W>*;

/// A list of boxes of one space.
template <class W>
class BoxList {
 public:
  explicit BoxList(std::size_t fields) noexcept : fields_(fields) {}

  std::size_t size() const noexcept { return sets_.size() / fields_; }
  bool empty() const noexcept { return sets_.empty(); }
  Box<W> operator[](std::size_t index) const noexcept { return sets_.data() + index * fields_; }
  Box<W> back() const noexcept { return (*this)[size() - 1]; }

  /// `box` must not be one of this list: its memory may move.
  void push(Box<W> box) { sets_.insert(sets_.end(), box, box + fields_); }
  void pop() noexcept { sets_.resize(sets_.size() - fields_); }
  void clear() noexcept { sets_.clear(); }
  void reserve(std::size_t boxes) { sets_.reserve(boxes * fields_); }

 private:
  std::size_t fields_;
  std::vector<FieldSetOf<W>> sets_;
};

/// The fields in which some matches differ from "any": no other field can tell their packets apart.
template <class W>
class BoxSpace {
 public:
  /// A space has a field at least: where none is given, one that everything is any value of.
  explicit BoxSpace(FieldMask fields);

  std::size_t fields() const noexcept { return fields_.size(); }
  Field field(std::size_t index) const noexcept { return fields_[index]; }
  FieldMask mask() const noexcept { return mask_; }

  /// Appends the match, which holds a packet and limits no field but those of the space.
  void push(const Match& match, BoxList<W>& to) const;
  /// The box as a match; it names the fields of the space.
  Match matchOf(Box<W> box) const noexcept;

  bool overlap(Box<W> a, Box<W> b) const noexcept;
  bool contains(Box<W> outer, Box<W> inner) const noexcept;
  /// Appends what `other`, which overlaps `box`, leaves of it, in boxes that do not overlap.
  /// Neither may be of the list.
  void differenceAppend(Box<W> box, Box<W> other, BoxList<W>& to) const;
  /// Appends the packets of both; false, and nothing is appended, where there is none.
  bool intersectionAppend(Box<W> a, Box<W> b, BoxList<W>& to) const;
  /// How much of `box` the other takes, from 0 (none) to 1 (all); rounded.
  double shareTaken(Box<W> box, Box<W> by) const noexcept;

 private:
  FieldMask mask_;
  std::vector<Field> fields_;
};

extern template class BoxSpace<Word>;
extern template class BoxSpace<std::uint64_t>;

}  // namespace tcamshow
