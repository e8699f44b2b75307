// The set of packets that an entry matches: a box, with a set of values for each field.
//
// Threads: plain values; distinct objects may be used from distinct threads, and one that nobody
// changes from any.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "match/Field.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The packets whose every field has a value of the field's set.
///
/// Invariant: the sets are canonical, so that equal matches are equal field by field; all matches
/// that hold no packet are equal.
///
///     Match match;                                              // every packet
///     match.restrict(Field::proto, FieldSet::exactly(6));
///     match.restrict(Field::dport, FieldSet::range(80, 90, 16));
class Match {
 public:
  /// Every packet.
  Match() noexcept;

  /// Leaves the packets whose field is in the set too; none is the empty set. The field counts as
  /// named from then on.
  void restrict(Field field, const std::optional<FieldSet>& set) noexcept;
  /// As restrict, but the field is not named by it.
  void limit(Field field, const std::optional<FieldSet>& set) noexcept;

  /// Whether there is no packet at all.
  bool isEmpty() const noexcept { return isEmpty_; }
  /// The field's values. Of an empty match: any set.
  const FieldSet& operator[](Field field) const noexcept { return sets_[indexOf(field)]; }
  bool isAny(Field field) const noexcept { return (limited_ & bitOf(field)) == 0; }
  /// The fields that are not any value.
  FieldMask limited() const noexcept { return limited_; }
  /// The fields that were named, those that any value satisfies included.
  FieldMask named() const noexcept { return named_; }

  bool has(Field field, Word value) const noexcept { return (*this)[field].has(value); }
  bool overlaps(const Match& other) const noexcept;
  bool contains(const Match& other) const noexcept;
  /// Whether both hold the same packets, whatever they name.
  friend bool operator==(const Match& a, const Match& b) noexcept;

  /// The same bytes for equal matches, others for others: to be hashed and compared.
  void keyAppend(std::string& key) const;

 private:
  FieldMask limited_ = 0;
  FieldMask named_ = 0;
  bool isEmpty_ = false;
  std::array<FieldSet, fieldCount> sets_;
};

/// What the entry's qualifiers and range checkers say, whatever their status. Its table limits the
/// ether type: ip to IPv4, ip6 to IPv6; in the tables mac and tcam a field that is IPv4's or IPv6's
/// alone does.
Match matchOf(const Entry& entry) noexcept;

/// Which packets an entry's match has: by these, some fields mean nothing in it.
enum class PacketKind : std::uint8_t { any, ip, ip6 };
PacketKind kindOf(const Match& match) noexcept;

}  // namespace tcamshow
