// The model: the lines of a snapshot as plain values. Every source gives these values.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "VelmorTcamEntryShadow.h"
#include "snapshot/AddressText.h"

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

/// The status of what is programmed in hardware; every other value means absent.
constexpr std::uint8_t statusProgrammed = VelmorTcam::hwQualStatusProgrammed;

/// The place of one copy of a group. Ordered by stage, pipe, group priority, group id and copy id.
struct Place {
  Stage stage = Stage::ingress;
  std::int16_t pipe = 0;
  std::uint32_t groupPriority = 0;
  std::uint32_t groupId = 0;
  std::uint32_t copyId = 0;

  friend auto operator<=>(const Place&, const Place&) = default;
};

/// The version of the snapshot's own format.
struct SnapshotVersion {
  std::uint32_t number = 1;
  friend bool operator==(const SnapshotVersion&, const SnapshotVersion&) = default;
};

struct Header {
  SnapshotVersion version;
  std::uint8_t numPipes = 1;
  bool hasNumPipes = false;  ///< whether the number was given
};

/// One copy of a group. The name is a view: the source, or the writer's caller, keeps the text. It
/// holds no control character (U+0000 to U+001F, U+007F).
struct Group {
  Place place;
  std::string_view name;
  std::uint32_t availableEntries = 0;
  std::uint32_t freeEntries = 0;
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

/// One TCAM entry. The rules for its texts are those of Group's name. No qualifier type and no
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
  std::uint32_t featurePriority = 0;
  std::string_view feature;
  std::vector<Qualifier> qualifiers;
  std::vector<RangeChecker> rangeCheckers;

  /// Sets everything to the defaults. The vectors keep their memory.
  void clear() {
    qualifiers.clear();
    rangeCheckers.clear();
    place = Place();
    table = Table::ip;
    shadowId = hits = 0;
    sequence = priority = featurePriority = 0;
    counterStatus = 0;
    description = action = feature = std::string_view();
  }
};

struct QualifierName {
  std::string_view name;
  std::uint8_t type;
  QualifierKind kind;
  std::uint8_t index;  ///< the place in the list of names, from 0, below 32
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
/// If nothing has that name, these functions return false and leave the result unchanged.
bool stageByName(std::string_view name, Stage& stage) noexcept;
bool tableByName(std::string_view name, Table& table) noexcept;

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
