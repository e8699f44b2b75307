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

/// All ones in the lowest `bits` bits; a word has at least as many.
template <class W = Word>
constexpr W lowOnes(unsigned bits) noexcept {
  return bits >= sizeof(W) * 8 ? ~W{0} : (W{1} << bits) - 1;
}
/// The position of the highest bit that is set, from 0; `word` is not 0.
template <class W>
constexpr unsigned highestBit(W word) noexcept {
  if constexpr (sizeof(W) == 16) {
    auto const high = static_cast<std::uint64_t>(word >> 64);
    if (high != 0) return 64 + highestBit(high);
  }
  return 63U - static_cast<unsigned>(__builtin_clzll(static_cast<std::uint64_t>(word)));
}
template <class W>
constexpr unsigned countOnes(W word) noexcept {
  auto ones = static_cast<unsigned>(__builtin_popcountll(static_cast<std::uint64_t>(word)));
  if constexpr (sizeof(W) == 16) ones += countOnes(static_cast<std::uint64_t>(word >> 64));
  return ones;
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
/// W is the word that values stand in: Word holds those of every field; one of 64 bits, in which
/// all goes twice as fast, those of all fields but IPv6 addresses.
///
///     FieldSet ports = FieldSet::any(16);
///     FieldSet high = *FieldSet::range(1024, 65535, 16);
///     FieldSet::cube(80, 0xFFFF, 16)->overlaps(high)   // false
template <class W>
class FieldSetOf {
 public:
  /// 0 alone.
  constexpr FieldSetOf() noexcept : FieldSetOf(0, ~W{0}, 0, 0) {}
  /// All values of a field of `bits` bits, 1 to 128.
  static constexpr FieldSetOf any(unsigned bits) noexcept {
    return FieldSetOf(0, ~lowOnes<W>(bits), 0, lowOnes<W>(bits));
  }
  static constexpr FieldSetOf exactly(W value) noexcept {
    return FieldSetOf(value, ~W{0}, value, value);
  }
  /// The values x of `bits` bits with (x and mask) = (value and mask). Bits of the mask beyond the
  /// field ask for bits that are 0: nothing matches where the value has a 1 there.
  static std::optional<FieldSetOf> cube(W value, W mask, unsigned bits) noexcept;
  /// The values from low to high, both included; those beyond the field are left out.
  static std::optional<FieldSetOf> range(W low, W high, unsigned bits) noexcept;
  /// The values whose first `length` bits are those of `value`; `length` is at most `bits`.
  static FieldSetOf prefix(W value, unsigned length, unsigned bits) noexcept;

  /// The same set in words of another width, which holds all of its values.
  template <class Other>
  explicit FieldSetOf(const FieldSetOf<Other>& set, unsigned bits) noexcept
      : value_(static_cast<W>(set.value())),
        mask_(static_cast<W>(set.mask()) | ~lowOnes<W>(bits)),
        low_(static_cast<W>(set.low())),
        high_(static_cast<W>(set.high())) {}

  W value() const noexcept { return value_; }
  W mask() const noexcept { return mask_; }
  W low() const noexcept { return low_; }
  W high() const noexcept { return high_; }

  bool isAny(unsigned bits) const noexcept { return mask_ == ~lowOnes<W>(bits) && isCube(); }
  bool isExact() const noexcept { return low_ == high_; }
  /// Whether value and mask say all: no range cuts the set.
  bool isCube() const noexcept { return low_ == value_ && high_ == (value_ | ~mask_); }
  /// Whether low and high say all: no value between them is missing.
  bool isRange() const noexcept { return (~mask_ & (~mask_ + 1)) == 0; }
  /// Of a set that is a cube and a range: how many first bits of a field of `bits` bits are fixed.
  std::optional<unsigned> prefixLength(unsigned bits) const noexcept;
  /// How many values there are, rounded; for comparisons alone.
  double size() const noexcept;

  /// How much of this set the other one, which overlaps it, takes: above 0, at most 1; rounded.
  double shareTaken(const FieldSetOf& by) const noexcept;

  bool has(W x) const noexcept { return (x & mask_) == value_ && low_ <= x && x <= high_; }
  /// An element that `drawn`, any value, picks: all elements are picked by some.
  W picked(W drawn) const noexcept {
    W const inCube = value_ | (drawn & ~mask_);
    return inCube < low_ ? low_ : inCube > high_ ? high_ : inCube;
  }
  bool overlaps(const FieldSetOf& other) const noexcept {
    if (((value_ ^ other.value_) & mask_ & other.mask_) != 0) return false;
    if (low_ > other.high_ || other.low_ > high_) return false;
    // Two cubes that do not differ meet, and so do two ranges.
    if ((isCube() && other.isCube()) || (isRange() && other.isRange())) return true;
    return intersection(other).has_value();
  }
  /// Whether all values of `other` are in this set.
  bool contains(const FieldSetOf& other) const noexcept {
    return (mask_ & ~other.mask_) == 0 && (other.value_ & mask_) == value_ && low_ <= other.low_ &&
           other.high_ <= high_;
  }
  std::optional<FieldSetOf> intersection(const FieldSetOf& other) const noexcept;
  /// Appends the values that `other` lacks, as sets that do not overlap.
  void differenceAppend(const FieldSetOf& other, std::vector<FieldSetOf>& pieces) const;
  friend bool operator==(const FieldSetOf&, const FieldSetOf&) = default;

 private:
  constexpr FieldSetOf(W value, W mask, W low, W high) noexcept
      : value_(value), mask_(mask), low_(low), high_(high) {}
  static std::optional<FieldSetOf> canonical(W value, W mask, W low, W high) noexcept;

  W value_;
  W mask_;
  W low_;
  W high_;
};

using FieldSet = FieldSetOf<Word>;
extern template class FieldSetOf<Word>;
extern template class FieldSetOf<std::uint64_t>;

/// A set of values as disjoint pieces; none is the empty set.
using FieldSets = std::vector<FieldSet>;

/// Whether all values of `inner` are in `outer`.
bool isWithin(const FieldSets& inner, const FieldSets& outer);
bool overlap(const FieldSets& a, const FieldSets& b) noexcept;
/// Adds what is not there yet.
void uniteWith(FieldSets& sets, const FieldSet& more);

}  // namespace tcamshow
