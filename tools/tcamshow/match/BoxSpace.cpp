#include "match/BoxSpace.h"

#include <array>

namespace tcamshow {

template <class W>
BoxSpace<W>::BoxSpace(FieldMask fields) : mask_(fields == 0 ? bitOf(Field::ethertype) : fields) {
  for (std::size_t index = 0; index < fieldCount; ++index) {
    auto const field = static_cast<Field>(index);
    if ((mask_ & bitOf(field)) != 0) fields_.push_back(field);
  }
}

template <class W>
void BoxSpace<W>::push(const Match& match, BoxList<W>& to) const {
  std::array<FieldSetOf<W>, fieldCount> sets;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    sets[i] = FieldSetOf<W>(match[fields_[i]], bitsOf(fields_[i]));
  }
  to.push(sets.data());
}

template <class W>
Match BoxSpace<W>::matchOf(Box<W> box) const noexcept {
  Match match;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    match.restrict(fields_[i], FieldSet(box[i], bitsOf(fields_[i])));
  }
  return match;
}

template <class W>
bool BoxSpace<W>::overlap(Box<W> a, Box<W> b) const noexcept {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!a[i].overlaps(b[i])) return false;
  }
  return true;
}

template <class W>
bool BoxSpace<W>::contains(Box<W> outer, Box<W> inner) const noexcept {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!outer[i].contains(inner[i])) return false;
  }
  return true;
}

template <class W>
void BoxSpace<W>::differenceAppend(Box<W> box, Box<W> other, BoxList<W>& to) const {
  // The part of `box` that agrees with `other` in the fields before this one.
  std::array<FieldSetOf<W>, fieldCount> rest;
  std::copy(box, box + fields_.size(), rest.begin());
  std::vector<FieldSetOf<W>> pieces;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (other[i].contains(rest[i])) continue;
    pieces.clear();
    rest[i].differenceAppend(other[i], pieces);
    auto const common = rest[i].intersection(other[i]);
    for (const FieldSetOf<W>& piece : pieces) {
      rest[i] = piece;
      to.push(rest.data());
    }
    rest[i] = *common;
  }
}

template <class W>
bool BoxSpace<W>::intersectionAppend(Box<W> a, Box<W> b, BoxList<W>& to) const {
  std::array<FieldSetOf<W>, fieldCount> common;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    auto const set = a[i].intersection(b[i]);
    if (!set) return false;
    common[i] = *set;
  }
  to.push(common.data());
  return true;
}

template <class W>
double BoxSpace<W>::shareTaken(Box<W> box, Box<W> by) const noexcept {
  double share = 1;
  for (std::size_t i = 0; i < fields_.size(); ++i) share *= box[i].shareTaken(by[i]);
  return share;
}

template class BoxSpace<Word>;
template class BoxSpace<std::uint64_t>;

}  // namespace tcamshow
