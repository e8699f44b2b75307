// Boxes: matches that are reduced to the fields that matter, and can be cut into pieces.
//
// Threads: one thread at a time. Any number of threads may read a space that nobody changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "match/Match.h"

namespace tcamshow {

/// A box: one set of values for each field of its space, in the space's order. W is the word of the
/// sets; see FieldSetOf for the choice.
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

  /// `box` must not be in this list, whose memory may move.
  void push(Box<W> box) { sets_.insert(sets_.end(), box, box + fields_); }
  void pop() noexcept { sets_.resize(sets_.size() - fields_); }
  void clear() noexcept { sets_.clear(); }
  void reserve(std::size_t boxes) { sets_.reserve(boxes * fields_); }

 private:
  std::size_t fields_;
  std::vector<FieldSetOf<W>> sets_;
};

/// A choice of fields: those that at least one of the matches limits. The other fields cannot tell
/// the matches apart.
template <class W>
class BoxSpace {
 public:
  /// A space has at least one field. If `fields` is empty, it gets one in which every match is
  /// "any".
  explicit BoxSpace(FieldMask fields);

  std::size_t fields() const noexcept { return fields_.size(); }
  Field field(std::size_t index) const noexcept { return fields_[index]; }
  FieldMask mask() const noexcept { return mask_; }

  /// Appends the match as a box. It must not be empty, and must not limit a field outside the
  /// space.
  void push(const Match& match, BoxList<W>& to) const;
  /// The box as a match. Its named fields are those of the space.
  Match matchOf(Box<W> box) const noexcept;

  bool overlap(Box<W> a, Box<W> b) const noexcept;
  bool contains(Box<W> outer, Box<W> inner) const noexcept;
  /// Appends the part of `box` outside of `other`, as boxes that do not overlap. The two must
  /// overlap, and must not be in the list `to`.
  void differenceAppend(Box<W> box, Box<W> other, BoxList<W>& to) const;
  /// Appends the intersection. If it is empty, returns false and appends nothing.
  bool intersectionAppend(Box<W> a, Box<W> b, BoxList<W>& to) const;
  /// The share of `box` that lies in `by`, from 0 (none) to 1 (all), rounded.
  double shareTaken(Box<W> box, Box<W> by) const noexcept;

 private:
  FieldMask mask_;
  std::vector<Field> fields_;
};

extern template class BoxSpace<Word>;
extern template class BoxSpace<std::uint64_t>;

}  // namespace tcamshow
