// The values of one field that an entry, a packet or a question allows.
//
// Threads: plain values. Distinct threads may use distinct objects. Any number of threads may read
// an object that nobody changes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tcamshow {

/// A value of any field; the widest has 128 bits.
__extension__ using Word = unsigned __int128;

/// A word with ones in its lowest `bits` bits.
template <class W = Word>
constexpr W lowOnes(unsigned bits) noexcept {
  return bits >= sizeof(W) * 8 ? ~W{0} : (W{1} << bits) - 1;
}
/// The position of the highest bit that is set, counted from 0. `word` must not be 0.
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

/// A non-empty set of values: all x with (x and mask) = value and low <= x <= high.
///
/// This form covers the matches of hardware: values with any mask, ranges, and both together. An
/// intersection has the same form, and so has each piece of a difference.
///
/// Invariant: the form is canonical, so equal sets have equal members. `low` and `high` are
/// elements of the set. `mask` has a 1 for each bit that is the same in all elements, including the
/// bits beyond the field. `value` is 0 where `mask` is 0. No object is the empty set: an operation
/// whose result may be empty returns an optional.
///
/// W is the type of a value. Word holds the values of every field. A word of 64 bits is twice as
/// fast, and holds the values of all fields except IPv6 addresses.
///
///     FieldSet ports = FieldSet::any(16);
///     FieldSet high = *FieldSet::range(1024, 65535, 16);
///     FieldSet::cube(80, 0xFFFF, 16)->overlaps(high)   // false
template <class W>
class FieldSetOf {
 public:
  /// The set with the single value 0.
  constexpr FieldSetOf() noexcept : FieldSetOf(0, ~W{0}, 0, 0) {}
  /// All values of a field of `bits` bits, 1 to 128.
  static constexpr FieldSetOf any(unsigned bits) noexcept {
    return FieldSetOf(0, ~lowOnes<W>(bits), 0, lowOnes<W>(bits));
  }
  static constexpr FieldSetOf exactly(W value) noexcept {
    return FieldSetOf(value, ~W{0}, value, value);
  }
  /// All x of `bits` bits with (x and mask) = (value and mask). The bits of x beyond the field
  /// count as 0: if the mask and the value have a 1 there, the set is empty.
  static std::optional<FieldSetOf> cube(W value, W mask, unsigned bits) noexcept;
  /// The values from low to high, both included. Values that the field cannot hold are left out.
  static std::optional<FieldSetOf> range(W low, W high, unsigned bits) noexcept;
  /// The values whose first `length` bits are equal to those of `value`. `length` is at most
  /// `bits`.
  static FieldSetOf prefix(W value, unsigned length, unsigned bits) noexcept;

  /// The same set in words of another width. That width must hold all of its values.
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
  /// Whether value and mask alone describe the set: the range excludes nothing.
  bool isCube() const noexcept { return low_ == value_ && high_ == (value_ | ~mask_); }
  /// Whether low and high alone describe the set: it has every value between them.
  bool isRange() const noexcept { return (~mask_ & (~mask_ + 1)) == 0; }
  /// If the set is both a cube and a range: the number of fixed first bits of a field of `bits`
  /// bits.
  std::optional<unsigned> prefixLength(unsigned bits) const noexcept;
  /// The number of values, rounded. Only for comparisons.
  double size() const noexcept;

  /// The share of this set that lies in `by`: above 0, at most 1, rounded. The sets must overlap.
  double shareTaken(const FieldSetOf& by) const noexcept;

  bool has(W x) const noexcept { return (x & mask_) == value_ && low_ <= x && x <= high_; }
  /// An element that depends on `drawn`. Each element is the result for some value of `drawn`.
  W picked(W drawn) const noexcept {
    W const inCube = value_ | (drawn & ~mask_);
    return inCube < low_ ? low_ : inCube > high_ ? high_ : inCube;
  }
  bool overlaps(const FieldSetOf& other) const noexcept {
    if (((value_ ^ other.value_) & mask_ & other.mask_) != 0) return false;
    if (low_ > other.high_ || other.low_ > high_) return false;
    // Two cubes overlap if no fixed bit differs; two ranges overlap if neither ends before the
    // other.
    if ((isCube() && other.isCube()) || (isRange() && other.isRange())) return true;
    return intersection(other).has_value();
  }
  /// Whether all values of `other` are in this set.
  bool contains(const FieldSetOf& other) const noexcept {
    return (mask_ & ~other.mask_) == 0 && (other.value_ & mask_) == value_ && low_ <= other.low_ &&
           other.high_ <= high_;
  }
  std::optional<FieldSetOf> intersection(const FieldSetOf& other) const noexcept;
  /// Appends the values of this set that are not in `other`, as sets that do not overlap.
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

/// A set of values in disjoint pieces. Without a piece, it is the empty set.
using FieldSets = std::vector<FieldSet>;

/// Whether all values of `inner` are in `outer`.
bool isWithin(std::span<const FieldSet> inner, std::span<const FieldSet> outer);
bool overlap(std::span<const FieldSet> a, std::span<const FieldSet> b) noexcept;
/// Adds the values of `more` that are not in `sets` yet.
void uniteWith(FieldSets& sets, const FieldSet& more);

}  // namespace tcamshow
