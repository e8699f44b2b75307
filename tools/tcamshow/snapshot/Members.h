// The members of a snapshot's lines: one table for all code that reads, writes, prints or explains
// them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "snapshot/NameTable.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The kinds of lines, by their `type`.
enum class LineKind : std::uint8_t { header, group, entry, end };
inline constexpr NameTable lineKindNames({"snapshot", "group", "entry", "end"});

/// The last line, from version 2 on: what stands before it.
struct SnapshotEnd {
  std::uint64_t groups = 0;
  std::uint64_t entries = 0;
};

enum class Presence : std::uint8_t {
  optional,  ///< has its default if it is missing; written only if it differs from that
  always,    ///< has its default if it is missing; always written
  required,  ///< an error if it is missing; always written
};

/// One member. The model gives its range and form (by its type) and its default.
template <class OwnerType, class ValueType>
struct Member {
  using Owner = OwnerType;
  using Value = ValueType;

  constexpr Member(std::string_view memberName, Value Owner::*member,
                   Presence memberPresence = Presence::optional,
                   std::uint32_t firstVersion = 1) noexcept
      : name(memberName), at(member), presence(memberPresence), since(firstVersion) {}

  std::string_view name;
  Value Owner::*at;
  Presence presence;
  std::uint32_t since;  ///< the first version of the snapshot that has it
};

/// All members except `type`, in the order in which they are written. A member of Place belongs to
/// all lines that have a place.
inline constexpr std::tuple members{
    Member("version", &Header::version, Presence::required),
    Member("numPipes", &Header::numPipes),
    Member("takenAt", &Header::takenAt, Presence::optional, 2),
    Member("source", &Header::source, Presence::optional, 2),
    Member("device", &Header::device, Presence::optional, 2),
    Member("stage", &Place::stage),
    Member("pipe", &Place::pipe),
    Member("groupPriority", &Place::groupPriority),
    Member("groupId", &Place::groupId),
    Member("copyId", &Place::copyId),
    Member("name", &Group::name),
    Member("availableEntries", &Group::availableEntries),
    Member("freeEntries", &Group::freeEntries),
    Member("totalEntries", &Group::totalEntries, Presence::optional, 2),
    Member("table", &Entry::table, Presence::required),
    Member("shadowId", &Entry::shadowId, Presence::required),
    Member("sequence", &Entry::sequence, Presence::always),
    Member("priority", &Entry::priority, Presence::always),
    Member("description", &Entry::description),
    Member("action", &Entry::action),
    Member("hits", &Entry::hits),
    Member("bytes", &Entry::bytes, Presence::optional, 2),
    Member("counterStatus", &Entry::counterStatus),
    Member("state", &Entry::givenState, Presence::optional, 2),
    Member("reason", &Entry::reason, Presence::optional, 2),
    Member("featurePriority", &Entry::featurePriority),
    Member("feature", &Entry::feature),
    Member("qualifiers", &Entry::qualifiers),
    Member("rangeCheckers", &Entry::rangeCheckers),
    Member("otherMatch", &Entry::otherMatch, Presence::optional, 2),
    Member("groups", &SnapshotEnd::groups, Presence::required, 2),
    Member("entries", &SnapshotEnd::entries, Presence::required, 2),
};
inline constexpr std::size_t memberCount = std::tuple_size_v<decltype(members)>;
/// A set of members, a bit for each at its index in `members`.
using MemberBits = std::uint64_t;
static_assert(memberCount < 64);

/// The members of the records in `qualifiers` and `rangeCheckers`. A qualifier's value and mask
/// have the form of the qualifier's kind. The value is required, and so is the mask in version 1.
/// The others are as above.
inline constexpr std::string_view valueName = "value";
inline constexpr std::string_view maskName = "mask";
inline constexpr std::tuple qualifierMembers{
    Member("status", &Qualifier::status),
};
inline constexpr std::tuple rangeCheckerMembers{
    Member("low", &RangeChecker::low, Presence::required),
    Member("high", &RangeChecker::high, Presence::required),
    Member("status", &RangeChecker::status),
};

/// The kind of line of a Header, Group or Entry.
template <class Line>
constexpr LineKind lineKind = std::is_same_v<Line, Header>  ? LineKind::header
                              : std::is_same_v<Line, Group> ? LineKind::group
                              : std::is_same_v<Line, Entry> ? LineKind::entry
                                                            : LineKind::end;

/// Whether a Line has the members of Owner.
template <class Line, class Owner>
constexpr bool hasMembersOf = std::is_same_v<Line, Owner> ||
                              (std::is_same_v<Owner, Place> &&
                               (std::is_same_v<Line, Group> || std::is_same_v<Line, Entry>));

/// The member's value. The line must have the member.
template <class Line, class Owner, class Value>
constexpr auto& memberOf(Line& line, const Member<Owner, Value>& member) noexcept {
  if constexpr (std::is_same_v<Owner, Place>) {
    return line.place.*member.at;
  } else {
    return line.*member.at;
  }
}

/// Calls `use(member, index)` if a Line has the member at this index.
template <class Line, std::size_t index, class Use>
constexpr void useMember(const Use& use) {
  constexpr auto& member = std::get<index>(members);
  if constexpr (hasMembersOf<Line, typename std::decay_t<decltype(member)>::Owner>) {
    use(member, std::integral_constant<std::size_t, index>());
  }
}
template <class Line, class Use, std::size_t... indices>
constexpr void useMembers(const Use& use, std::index_sequence<indices...>) {
  (useMember<Line, indices>(use), ...);
}

/// Calls `use(member, index)` for each member that a Line has, in order, with its index in
/// `members`.
template <class Line, class Use>
constexpr void forEachMember(const Use& use) {
  useMembers<Line>(use, std::make_index_sequence<memberCount>());
}

template <std::size_t... indices>
constexpr auto makeMemberNames(std::index_sequence<indices...>) {
  return NameTable({std::get<indices>(members).name..., std::string_view("type")});
}
/// The names of `members`, each at its index there, followed by "type".
inline constexpr auto memberNames = makeMemberNames(std::make_index_sequence<memberCount>());
inline constexpr std::size_t memberType = memberCount;

/// The members that a Line has in a version of the snapshot, with its type, as a set of bits
/// numbered as in memberNames.
template <class Line>
constexpr MemberBits membersOf(std::uint32_t version) noexcept {
  MemberBits bits = MemberBits{1} << memberType;
  forEachMember<Line>([&](auto const& member, auto index) {
    if (member.since <= version) bits |= MemberBits{1} << index();
  });
  return bits;
}

/// The members that every Line must have.
template <class Line>
constexpr MemberBits requiredMembersOf() noexcept {
  MemberBits bits = 0;
  forEachMember<Line>([&](auto const& member, auto index) {
    if (member.presence == Presence::required) bits |= MemberBits{1} << index();
  });
  return bits;
}

/// The default of a member in the model.
template <class Owner, class Value>
Value usualValue(const Member<Owner, Value>& member) {
  return Owner().*member.at;
}
/// Whether a member has its default.
template <class Value>
bool isUsual(const Value& value, const Value& usual) {
  return value == usual;
}
template <class Record>
bool isUsual(const std::vector<Record>& records, const std::vector<Record>&) {
  return records.empty();
}

}  // namespace tcamshow
