// Matches side by side over the few fields that matter, cut into pieces.
//
// Threads: one at a time; any number may read a space that nobody changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "match/Match.h"

namespace tcamshow {

/// A box: as many sets of values as its space has fields, in the space's order.
using Box = const FieldSet*;

/// A list of boxes of one space.
class BoxList {
 public:
  explicit BoxList(std::size_t fields) noexcept : fields_(fields) {}

  std::size_t size() const noexcept { return sets_.size() / fields_; }
  bool empty() const noexcept { return sets_.empty(); }
  Box operator[](std::size_t index) const noexcept { return sets_.data() + index * fields_; }
  Box back() const noexcept { return (*this)[size() - 1]; }

  /// `box` must not be one of this list: its memory may move.
  void push(Box box) { sets_.insert(sets_.end(), box, box + fields_); }
  void pop() noexcept { sets_.resize(sets_.size() - fields_); }
  void clear() noexcept { sets_.clear(); }
  void reserve(std::size_t boxes) { sets_.reserve(boxes * fields_); }

 private:
  std::size_t fields_;
  std::vector<FieldSet> sets_;
};

/// The fields in which some matches differ from "any": no other field can tell their packets apart.
class BoxSpace {
 public:
  /// A space has a field at least: where none is given, one that everything is any value of.
  explicit BoxSpace(FieldMask fields);

  std::size_t fields() const noexcept { return fields_.size(); }
  Field field(std::size_t index) const noexcept { return fields_[index]; }
  FieldMask mask() const noexcept { return mask_; }

  /// Appends the match, which holds a packet and limits no field but those of the space.
  void push(const Match& match, BoxList& to) const;
  /// The box as a match; it names the fields of the space.
  Match matchOf(Box box) const noexcept;

  bool overlap(Box a, Box b) const noexcept;
  bool contains(Box outer, Box inner) const noexcept;
  /// Appends what `other`, which overlaps `box`, leaves of it, in boxes that do not overlap.
  /// Neither may be of the list.
  void differenceAppend(Box box, Box other, BoxList& to) const;
  /// Appends the packets of both; false, and nothing is appended, where there is none.
  bool intersectionAppend(Box a, Box b, BoxList& to) const;
  /// How much of `box` the other takes, from 0 (none) to 1 (all); rounded.
  double shareTaken(Box box, Box by) const noexcept;

 private:
  FieldMask mask_;
  std::vector<Field> fields_;
};

}  // namespace tcamshow
