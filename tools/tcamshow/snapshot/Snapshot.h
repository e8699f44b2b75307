// The model: the lines of a snapshot as plain values. Every source gives these values.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "VelmorTcamEntryShadow.h"
#include "snapshot/AddressText.h"
#include "snapshot/Time.h"

namespace tcamshow {

enum class Stage : std::uint8_t {
  lookup = VelmorTcam::stageTypeLookup,
  ingress = VelmorTcam::stageTypeIngress,
  egress = VelmorTcam::stageTypeEgress,
};

constexpr VelmorTcam::StageType stageType(Stage stage) noexcept {
  return static_cast<VelmorTcam::StageType>(stage);
}

enum class Table : std::uint8_t { ip, ip6, mac, tcam };

/// How far hardware has got with an entry.
enum class EntryState : std::uint8_t { programmed, pending, failed, unknown };

/// The status of what is programmed in hardware; every other value means absent.
constexpr std::uint8_t statusProgrammed = VelmorTcam::hwQualStatusProgrammed;

/// The place of one copy of a group. Ordered by stage, pipe, group priority, group id and copy id.
struct Place {
  Stage stage = Stage::ingress;
  std::int16_t pipe = 0;
  std::uint32_t groupPriority = 0;
  std::uint32_t groupId = 0;
  std::uint32_t copyId = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): no pointer is compared
  friend auto operator<=>(const Place&, const Place&) = default;
};

/// The version of the snapshot's own format, 1 or 2.
struct SnapshotVersion {
  static constexpr std::uint32_t newest = 2;

  std::uint32_t number = newest;
  friend bool operator==(const SnapshotVersion&, const SnapshotVersion&) = default;
};

/// What a source says of itself. Texts are views into what the source or the writer's caller keeps.
/// They hold no control character (U+0000 to U+001F, U+007F).
struct Header {
  SnapshotVersion version;
  std::uint8_t numPipes = 1;
  bool hasNumPipes = false;  ///< whether the number was given
  Time takenAt;              ///< when the entries were so
  std::string_view source;   ///< what made it
  std::string_view device;   ///< the switch
};

/// One copy of a group. The rules for its text are those of Header's texts. A number that is not
/// there is not reported, which is not the same as 0.
struct Group {
  Place place;
  std::string_view name;
  std::optional<std::uint32_t> availableEntries;  ///< how many more entries the copy can take
  std::optional<std::uint32_t> freeEntries;       ///< rows of the hardware that nobody uses
  std::optional<std::uint32_t> totalEntries;      ///< the copy's size
};

/// The kind of a qualifier's value and mask.
enum class QualifierKind : std::uint8_t {
  word,  ///< a number
  ip,    ///< an IPv4 address, kept as a number
  ip6,
  mac,
};

template <class Octets>
struct AddressAndMask {
  Octets value;
  Octets mask;
};

struct Qualifier {
  // Leaves the addresses uninitialised: only the kinds ip6 and mac use them.
  // NOLINTNEXTLINE(modernize-use-equals-default): that would clear them
  Qualifier() noexcept {}

  std::uint8_t type = 0;  ///< the number of the qualifier type
  QualifierKind kind = QualifierKind::word;
  std::uint8_t status = statusProgrammed;
  /// Value and mask of the kinds word and ip; an address has its first octet in the high byte.
  std::uint32_t value = 0;
  std::uint32_t mask = 0;
  /// Value and mask of the kinds ip6 and mac, in network order.
  union {
    AddressAndMask<Ip6Octets> ip6;
    AddressAndMask<MacOctets> mac;
  };
};

struct RangeChecker {
  std::uint8_t type = 0;  ///< the number of the range checker type
  std::int32_t low = 0;
  std::int32_t high = 0;
  std::uint8_t status = statusProgrammed;
};

enum class SinceMark : std::uint8_t {
  none,
  isNew,  ///< the older snapshot does not have the entry
  reset,  ///< a counter fell: it was set back in between
};

/// How far the counters of an entry have moved since an older snapshot. A new entry and a counter
/// that fell have moved by all that they show.
struct SinceFacts {
  SinceMark mark = SinceMark::none;
  /// None where the counters are not programmed, now or then.
  std::optional<std::uint64_t> hits;
  /// None where bytes are not reported, now or then.
  std::optional<std::uint64_t> bytes;
};

/// One TCAM entry. The rules for its texts are those of Header's texts. No qualifier type and no
/// range checker type occurs twice.
struct Entry {
  Place place;
  Table table = Table::ip;
  std::uint64_t shadowId = 0;
  std::uint32_t sequence = 0;
  std::uint32_t priority = 0;
  std::string_view description;
  std::string_view action;
  std::uint64_t hits = 0;
  std::uint8_t counterStatus = 0;
  std::optional<std::uint64_t> bytes;
  std::optional<EntryState> givenState;  ///< what was given; see stateOf()
  std::string_view reason;               ///< why it is in that state
  /// What it matches on beside its qualifiers and range checkers. Where it is not empty, the entry
  /// matches some of the packets that these allow.
  std::string_view otherMatch;
  std::uint32_t featurePriority = 0;
  std::string_view feature;
  std::vector<Qualifier> qualifiers;
  std::vector<RangeChecker> rangeCheckers;
  /// Beside an older snapshot, if there is one: see Since. No file has it.
  std::optional<SinceFacts> since;

  /// Sets everything to the defaults. The vectors keep their memory.
  void clear() {
    qualifiers.clear();
    rangeCheckers.clear();
    place = Place();
    table = Table::ip;
    shadowId = hits = 0;
    sequence = priority = featurePriority = 0;
    counterStatus = 0;
    bytes.reset();
    since.reset();
    givenState.reset();
    description = action = feature = reason = otherMatch = std::string_view();
  }
};

struct QualifierName {
  std::string_view name;
  std::uint8_t type;
  QualifierKind kind;
  std::uint8_t index;  ///< the place in the list of names, from 0, below 32
  std::uint8_t bits;   ///< the width of what it matches on
};

struct RangeCheckerName {
  std::string_view name;
  std::uint8_t type;
};

/// These functions return null if nothing has that name or number.
const QualifierName* qualifierByName(std::string_view name) noexcept;
const QualifierName* qualifierByType(std::uint8_t type) noexcept;
const RangeCheckerName* rangeCheckerByName(std::string_view name) noexcept;
const RangeCheckerName* rangeCheckerByType(std::uint8_t type) noexcept;

/// All of them, ascending by number.
std::span<const QualifierName> qualifierList() noexcept;
std::span<const RangeCheckerName> rangeCheckerList() noexcept;

Halvo::String stageName(Stage stage);
std::string_view tableName(Table table) noexcept;
std::string_view stateName(EntryState state) noexcept;
/// "", "new" or "reset".
std::string_view sinceMarkName(SinceMark mark) noexcept;
/// If nothing has that name, these functions return false and leave the result unchanged.
bool stageByName(std::string_view name, Stage& stage) noexcept;
bool tableByName(std::string_view name, Table& table) noexcept;
bool stateByName(std::string_view name, EntryState& state) noexcept;

/// A programmed qualifier of the kind word or ip.
inline Qualifier wordQualifier(std::uint8_t type, std::uint32_t value, std::uint32_t mask,
                               QualifierKind kind = QualifierKind::word) {
  Qualifier qualifier;
  qualifier.type = type;
  qualifier.kind = kind;
  qualifier.value = value;
  qualifier.mask = mask;
  return qualifier;
}

inline Qualifier ip6Qualifier(std::uint8_t type, const Ip6Octets& value, const Ip6Octets& mask) {
  Qualifier qualifier;
  qualifier.type = type;
  qualifier.kind = QualifierKind::ip6;
  qualifier.ip6 = {value, mask};
  return qualifier;
}

inline Qualifier macQualifier(std::uint8_t type, const MacOctets& value, const MacOctets& mask) {
  Qualifier qualifier;
  qualifier.type = type;
  qualifier.kind = QualifierKind::mac;
  qualifier.mac = {value, mask};
  return qualifier;
}

}  // namespace tcamshow
