// The set of packets that an entry matches: a box, with a set of values for each field.
//
// Threads: plain values. Distinct threads may use distinct objects. Any number of threads may read
// an object that nobody changes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "match/Field.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// A set of packets. It has a set of values for each field. A packet is in the match if the value
/// of each of its fields is in the set of that field.
///
/// Invariant: the sets are canonical, so equal matches are equal field by field. All empty matches
/// are equal.
///
///     Match match;                                              // every packet
///     match.restrict(Field::proto, FieldSet::exactly(6));
///     match.restrict(Field::dport, FieldSet::range(80, 90, 16));
class Match {
 public:
  /// Every packet.
  Match() noexcept;

  /// Keeps only the packets whose value of `field` is in `set`, which has the field's width.
  /// std::nullopt is the empty set. From then on the field counts as named.
  void restrict(Field field, const std::optional<FieldSet>& set) noexcept;
  /// As restrict(), but the field does not count as named.
  void limit(Field field, const std::optional<FieldSet>& set) noexcept;

  /// Whether the match has no packet.
  bool isEmpty() const noexcept { return emptied_ != 0; }
  /// The fields that no value satisfies. They make the match empty.
  FieldMask emptied() const noexcept { return emptied_; }
  /// The values of the field. Meaningless for a field that no value satisfies.
  const FieldSet& operator[](Field field) const noexcept { return sets_[indexOf(field)]; }
  bool isAny(Field field) const noexcept { return (limited_ & bitOf(field)) == 0; }
  /// The fields that may not have every value.
  FieldMask limited() const noexcept { return limited_; }
  /// The fields that were named, including those that may have every value.
  FieldMask named() const noexcept { return named_; }

  bool has(Field field, Word value) const noexcept { return (*this)[field].has(value); }
  bool overlaps(const Match& other) const noexcept;
  bool contains(const Match& other) const noexcept;
  /// Whether both have the same packets. Named fields do not count.
  friend bool operator==(const Match& a, const Match& b) noexcept;

  /// Appends a key for hashing and comparing: equal matches, and only these, have equal keys.
  void keyAppend(std::string& key) const;

 private:
  FieldMask limited_ = 0;
  FieldMask named_ = 0;
  FieldMask emptied_ = 0;
  std::array<FieldSet, fieldCount> sets_;
};

/// The match of the entry's qualifiers and range checkers, whatever their status. The entry's table
/// limits the ether type: ip to IPv4, ip6 to IPv6. In the tables mac and tcam, a field that only
/// IPv4 or only IPv6 has limits it.
Match matchOf(const Entry& entry) noexcept;

/// The kind of an entry's packets. In a match of one kind, the fields of the other kind mean
/// nothing.
enum class PacketKind : std::uint8_t { any, ip, ip6 };
PacketKind kindOf(const Match& match) noexcept;

}  // namespace tcamshow
