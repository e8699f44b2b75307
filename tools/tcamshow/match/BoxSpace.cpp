#include "match/BoxSpace.h"

#include <array>

namespace tcamshow {

BoxSpace::BoxSpace(FieldMask fields) : mask_(fields == 0 ? bitOf(Field::ethertype) : fields) {
  for (std::size_t index = 0; index < fieldCount; ++index) {
    auto const field = static_cast<Field>(index);
    if ((mask_ & bitOf(field)) != 0) fields_.push_back(field);
  }
}

void BoxSpace::push(const Match& match, BoxList& to) const {
  std::array<FieldSet, fieldCount> sets;
  for (std::size_t i = 0; i < fields_.size(); ++i) sets[i] = match[fields_[i]];
  to.push(sets.data());
}

Match BoxSpace::matchOf(Box box) const noexcept {
  Match match;
  for (std::size_t i = 0; i < fields_.size(); ++i) match.restrict(fields_[i], box[i]);
  return match;
}

bool BoxSpace::overlap(Box a, Box b) const noexcept {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!a[i].overlaps(b[i])) return false;
  }
  return true;
}

bool BoxSpace::contains(Box outer, Box inner) const noexcept {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!outer[i].contains(inner[i])) return false;
  }
  return true;
}

void BoxSpace::differenceAppend(Box box, Box other, BoxList& to) const {
  // The part of `box` that agrees with `other` in the fields before this one.
  std::array<FieldSet, fieldCount> rest;
  std::copy(box, box + fields_.size(), rest.begin());
  FieldSets pieces;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (other[i].contains(rest[i])) continue;
    pieces.clear();
    rest[i].differenceAppend(other[i], pieces);
    auto const common = rest[i].intersection(other[i]);
    for (const FieldSet& piece : pieces) {
      rest[i] = piece;
      to.push(rest.data());
    }
    rest[i] = *common;
  }
}

bool BoxSpace::intersectionAppend(Box a, Box b, BoxList& to) const {
  std::array<FieldSet, fieldCount> common;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    auto const set = a[i].intersection(b[i]);
    if (!set) return false;
    common[i] = *set;
  }
  to.push(common.data());
  return true;
}

double BoxSpace::shareTaken(Box box, Box by) const noexcept {
  double share = 1;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (by[i].contains(box[i])) continue;
    auto const common = box[i].intersection(by[i]);
    if (!common) return 0;
    share *= common->size() / box[i].size();
  }
  return share;
}

}  // namespace tcamshow
