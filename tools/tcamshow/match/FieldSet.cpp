#include "match/FieldSet.h"

#include <algorithm>
#include <cmath>

namespace tcamshow {

namespace {

/// The smallest x >= from with (x and mask) = value; none where there is none. `value` is 0 outside
/// of the mask.
template <class W>
std::optional<W> ceiling(W value, W mask, W from) noexcept {
  if (from <= value) return value;
  W const candidate = (from & ~mask) | value;
  if (candidate == from) return from;
  // The fixed bits differ from those of `from`, first at bit d.
  unsigned const d = highestBit(candidate ^ from);
  W const below = lowOnes<W>(d + 1);
  if (candidate > from) return (candidate & ~(below & ~mask));
  // Too small: the free bits above d have to count on, those below begin again at 0.
  W const counted = (candidate | mask | below) + 1;
  if (counted == 0) return std::nullopt;  // there was no free bit above d that was 0
  return (counted & ~mask) | value;
}

/// The largest x <= to with (x and mask) = value.
template <class W>
std::optional<W> floor(W value, W mask, W to) noexcept {
  auto const mirrored = ceiling(~value & mask, mask, ~to);
  if (!mirrored) return std::nullopt;
  return ~*mirrored;
}

/// The bits of `word` where `mask` has a 1, side by side from the lowest on.
template <class W>
W gathered(W word, W mask) noexcept {
  W result = 0;
  for (W bit = 1; mask != 0; bit <<= 1) {
    W const lowest = mask & (~mask + 1);
    if ((word & lowest) != 0) result |= bit;
    mask ^= lowest;
  }
  return result;
}

template <class W>
double asDouble(W word) noexcept {
  auto const low = static_cast<double>(static_cast<std::uint64_t>(word));
  if constexpr (sizeof(W) == 16) {
    return std::ldexp(static_cast<double>(static_cast<std::uint64_t>(word >> 64)), 64) + low;
  } else {
    return low;
  }
}

}  // namespace

template <class W>
std::optional<FieldSetOf<W>> FieldSetOf<W>::canonical(W value, W mask, W low, W high) noexcept {
  auto const first = ceiling(value, mask, low);
  if (!first || *first > high) return std::nullopt;
  auto const last = floor(value, mask, high);
  if (!last || *last < *first) return std::nullopt;
  // The elements in order count the free bits up. So the bits above the highest one in which the
  // first and the last differ are the same in all of them, and all free bits below it vary.
  if (*first == *last) return exactly(*first);
  W const fixed = mask | ~lowOnes<W>(highestBit(*first ^ *last) + 1);
  return FieldSetOf(*first & fixed, fixed, *first, *last);
}

template <class W>
std::optional<FieldSetOf<W>> FieldSetOf<W>::cube(W value, W mask, unsigned bits) noexcept {
  if ((value & mask & ~lowOnes<W>(bits)) != 0) return std::nullopt;
  W const fixed = mask | ~lowOnes<W>(bits);
  return FieldSetOf(value & mask, fixed, value & mask, (value & mask) | ~fixed);
}

template <class W>
std::optional<FieldSetOf<W>> FieldSetOf<W>::range(W low, W high, unsigned bits) noexcept {
  W const most = lowOnes<W>(bits);
  if (low > most || low > high) return std::nullopt;
  return canonical(0, ~most, low, std::min(high, most));
}

template <class W>
FieldSetOf<W> FieldSetOf<W>::prefix(W value, unsigned length, unsigned bits) noexcept {
  W const mask = ~lowOnes<W>(bits - length);
  W const fixed = value & lowOnes<W>(bits) & mask;
  return FieldSetOf(fixed, mask, fixed, fixed | ~mask);
}

template <class W>
std::optional<unsigned> FieldSetOf<W>::prefixLength(unsigned bits) const noexcept {
  if (!isCube() || !isRange()) return std::nullopt;
  return bits - countOnes(~mask_);
}

template <class W>
double FieldSetOf<W>::size() const noexcept {
  if (isCube()) return std::ldexp(1.0, static_cast<int>(countOnes(~mask_)));
  if (isRange()) return asDouble(high_ - low_) + 1;
  return asDouble(gathered(high_, ~mask_) - gathered(low_, ~mask_)) + 1;
}

template <class W>
double FieldSetOf<W>::shareTaken(const FieldSetOf& by) const noexcept {
  if (by.contains(*this)) return 1;
  if (isCube() && by.isCube()) {
    return std::ldexp(1.0, -static_cast<int>(countOnes(by.mask_ & ~mask_)));
  }
  if (isRange() && by.isRange()) {
    W const taken = std::min(high_, by.high_) - std::max(low_, by.low_);
    return (asDouble(taken) + 1) / (asDouble(high_ - low_) + 1);
  }
  auto const common = intersection(by);
  return common ? common->size() / size() : 0;
}

template <class W>
std::optional<FieldSetOf<W>> FieldSetOf<W>::intersection(const FieldSetOf& other) const noexcept {
  if (((value_ ^ other.value_) & mask_ & other.mask_) != 0) return std::nullopt;
  W const value = value_ | other.value_;
  W const mask = mask_ | other.mask_;
  if (isCube() && other.isCube()) return FieldSetOf(value, mask, value, value | ~mask);
  return canonical(value, mask, std::max(low_, other.low_), std::min(high_, other.high_));
}

template <class W>
void FieldSetOf<W>::differenceAppend(const FieldSetOf& other,
                                     std::vector<FieldSetOf>& pieces) const {
  auto const append = [&pieces](std::optional<FieldSetOf> const& piece) {
    if (piece) pieces.push_back(*piece);
  };
  // Ranges first: a prefix leaves two pieces by its ends, and one a bit by its bits.
  if (low_ < other.low_) append(canonical(value_, mask_, low_, other.low_ - 1));
  if (other.high_ < high_) append(canonical(value_, mask_, other.high_ + 1, high_));
  if (other.isRange()) return;
  auto rest = canonical(value_, mask_, std::max(low_, other.low_), std::min(high_, other.high_));
  if (!rest) return;
  for (W fixed = other.mask_ & ~rest->mask_; fixed != 0;) {
    W const bit = W{1} << highestBit(fixed);
    fixed ^= bit;
    // Values with the opposite bit are not in the other set. The rest has the other set's bit.
    append(canonical(rest->value_ | (~other.value_ & bit), rest->mask_ | bit, rest->low_,
                     rest->high_));
    rest =
        canonical(rest->value_ | (other.value_ & bit), rest->mask_ | bit, rest->low_, rest->high_);
    if (!rest) return;
    fixed &= ~rest->mask_;
    if (((rest->value_ ^ other.value_) & other.mask_ & rest->mask_) != 0) {
      pieces.push_back(*rest);
      return;
    }
  }
  if (((rest->value_ ^ other.value_) & other.mask_) != 0) pieces.push_back(*rest);
}

template class FieldSetOf<Word>;
template class FieldSetOf<std::uint64_t>;

bool isWithin(std::span<const FieldSet> inner, std::span<const FieldSet> outer) {
  // Nearly all conditions name one set. They need no pieces, and so no memory.
  if (outer.size() == 1) {
    return std::all_of(inner.begin(), inner.end(),
                       [&outer](const FieldSet& piece) { return outer.front().contains(piece); });
  }
  FieldSets left(inner.begin(), inner.end());
  FieldSets next;
  for (const FieldSet& taken : outer) {
    next.clear();
    for (const FieldSet& piece : left) {
      if (piece.overlaps(taken)) {
        piece.differenceAppend(taken, next);
      } else {
        next.push_back(piece);
      }
    }
    left.swap(next);
  }
  return left.empty();
}

bool overlap(std::span<const FieldSet> a, std::span<const FieldSet> b) noexcept {
  return std::any_of(a.begin(), a.end(), [&b](const FieldSet& piece) {
    return std::any_of(b.begin(), b.end(),
                       [&piece](const FieldSet& other) { return piece.overlaps(other); });
  });
}

void uniteWith(FieldSets& sets, const FieldSet& more) {
  FieldSets added{more};
  FieldSets next;
  for (const FieldSet& present : sets) {
    next.clear();
    for (const FieldSet& piece : added) {
      if (piece.overlaps(present)) {
        piece.differenceAppend(present, next);
      } else {
        next.push_back(piece);
      }
    }
    added.swap(next);
  }
  sets.insert(sets.end(), added.begin(), added.end());
}

}  // namespace tcamshow
