// The values of one field that an entry, a packet or a question allows.
//
// Threads: plain values; distinct objects may be used from distinct threads, and one that nobody
// changes from any.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace tcamshow {

/// A value of any field; the widest has 128 bits.
__extension__ using Word = unsigned __int128;

/// All ones in the lowest `bits` bits, 0 to 128.
constexpr Word lowOnes(unsigned bits) noexcept {
  return bits >= 128 ? ~Word{0} : (Word{1} << bits) - 1;
}
/// The position of the highest bit that is set, from 0; `word` is not 0.
constexpr unsigned highestBit(Word word) noexcept {
  auto const high = static_cast<std::uint64_t>(word >> 64);
  return high != 0 ? 127U - static_cast<unsigned>(__builtin_clzll(high))
                   : 63U - static_cast<unsigned>(__builtin_clzll(static_cast<std::uint64_t>(word)));
}
constexpr unsigned countOnes(Word word) noexcept {
  return static_cast<unsigned>(__builtin_popcountll(static_cast<std::uint64_t>(word >> 64)) +
                               __builtin_popcountll(static_cast<std::uint64_t>(word)));
}

/// A non-empty set of values: those x with (x and mask) = value and low <= x <= high.
///
/// This form holds what hardware matches on, values with masks that need not be prefixes, and
/// ranges, and both at once. Intersections are of the same form, and so are the pieces of a
/// difference.
///
/// Invariant: the form is canonical, so that equal sets are equal member by member. `low` and
/// `high` are elements; `mask` has each bit that is the same in all elements, the bits beyond the
/// field among them, and `value` is 0 outside of it. An empty set has no object: operations that
/// may come to nothing return an optional.
///
///     FieldSet ports = FieldSet::any(16);
///     FieldSet high = *FieldSet::range(1024, 65535, 16);
///     FieldSet::cube(80, 0xFFFF, 16)->overlaps(high)   // false
class FieldSet {
 public:
  /// 0 alone.
  constexpr FieldSet() noexcept : FieldSet(0, ~Word{0}, 0, 0) {}
  /// All values of a field of `bits` bits, 1 to 128.
  static constexpr FieldSet any(unsigned bits) noexcept {
    return FieldSet(0, ~lowOnes(bits), 0, lowOnes(bits));
  }
  static constexpr FieldSet exactly(Word value) noexcept {
    return FieldSet(value, ~Word{0}, value, value);
  }
  /// The values x of `bits` bits with (x and mask) = (value and mask). Bits of the mask beyond the
  /// field ask for bits that are 0: nothing matches where the value has a 1 there.
  static std::optional<FieldSet> cube(Word value, Word mask, unsigned bits) noexcept;
  /// The values from low to high, both included; those beyond the field are left out.
  static std::optional<FieldSet> range(Word low, Word high, unsigned bits) noexcept;
  /// The values whose first `length` bits are those of `value`; `length` is at most `bits`.
  static FieldSet prefix(Word value, unsigned length, unsigned bits) noexcept;

  Word value() const noexcept { return value_; }
  Word mask() const noexcept { return mask_; }
  Word low() const noexcept { return low_; }
  Word high() const noexcept { return high_; }

  bool isAny(unsigned bits) const noexcept { return mask_ == ~lowOnes(bits) && isCube(); }
  bool isExact() const noexcept { return low_ == high_; }
  /// Whether value and mask say all: no range cuts the set.
  bool isCube() const noexcept { return low_ == value_ && high_ == (value_ | ~mask_); }
  /// Whether low and high say all: no value between them is missing.
  bool isRange() const noexcept { return (~mask_ & (~mask_ + 1)) == 0; }
  /// Of a set that is a cube and a range: how many first bits of a field of `bits` bits are fixed.
  std::optional<unsigned> prefixLength(unsigned bits) const noexcept;
  /// How many values there are, rounded; for comparisons alone.
  double size() const noexcept;

  bool has(Word x) const noexcept { return (x & mask_) == value_ && low_ <= x && x <= high_; }
  /// An element that `drawn`, any value, picks: all elements are picked by some.
  Word picked(Word drawn) const noexcept {
    Word const inCube = value_ | (drawn & ~mask_);
    return inCube < low_ ? low_ : inCube > high_ ? high_ : inCube;
  }
  bool overlaps(const FieldSet& other) const noexcept {
    if (((value_ ^ other.value_) & mask_ & other.mask_) != 0) return false;
    if (low_ > other.high_ || other.low_ > high_) return false;
    // Two cubes that do not differ meet, and so do two ranges.
    if ((isCube() && other.isCube()) || (isRange() && other.isRange())) return true;
    return intersection(other).has_value();
  }
  /// Whether all values of `other` are in this set.
  bool contains(const FieldSet& other) const noexcept {
    return (mask_ & ~other.mask_) == 0 && (other.value_ & mask_) == value_ && low_ <= other.low_ &&
           other.high_ <= high_;
  }
  std::optional<FieldSet> intersection(const FieldSet& other) const noexcept;
  /// Appends the values that `other` lacks, as sets that do not overlap.
  void differenceAppend(const FieldSet& other, std::vector<FieldSet>& pieces) const;
  friend bool operator==(const FieldSet&, const FieldSet&) = default;

 private:
  constexpr FieldSet(Word value, Word mask, Word low, Word high) noexcept
      : value_(value), mask_(mask), low_(low), high_(high) {}
  static std::optional<FieldSet> canonical(Word value, Word mask, Word low, Word high) noexcept;

  Word value_;
  Word mask_;
  Word low_;
  Word high_;
};

/// A set of values as disjoint pieces; none is the empty set.
using FieldSets = std::vector<FieldSet>;

/// Whether all values of `inner` are in `outer`.
bool isWithin(const FieldSets& inner, const FieldSets& outer);
bool overlap(const FieldSets& a, const FieldSets& b) noexcept;
/// Adds what is not there yet.
void uniteWith(FieldSets& sets, const FieldSet& more);

}  // namespace tcamshow
