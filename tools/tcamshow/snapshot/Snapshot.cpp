#include "snapshot/Snapshot.h"

#include <utility>

#include "Zel/Base/Assert.h"
#include "snapshot/NameTable.h"

namespace tcamshow {
namespace {

constexpr std::size_t qualifierCount = 18;
constexpr std::size_t rangeCheckerCount = 3;
static_assert(qualifierCount <= 32);

constexpr QualifierKind kindOf(VelmorTcam::U8 type) noexcept {
  switch (type) {
    case VelmorTcam::qualifierSrcIp:
    case VelmorTcam::qualifierDstIp:
      return QualifierKind::ip;
    case VelmorTcam::qualifierSrcIp6:
    case VelmorTcam::qualifierSrcIp6Alt:
    case VelmorTcam::qualifierDstIp6:
    case VelmorTcam::qualifierDstIp6Alt:
      return QualifierKind::ip6;
    case VelmorTcam::qualifierSrcMac:
    case VelmorTcam::qualifierDstMac:
      return QualifierKind::mac;
    default:
      return QualifierKind::word;
  }
}

constexpr std::uint8_t bitsOf(VelmorTcam::U8 type) noexcept {
  switch (type) {
    case VelmorTcam::qualifierSrcIp:
    case VelmorTcam::qualifierDstIp:
      return 32;
    case VelmorTcam::qualifierSrcIp6:
    case VelmorTcam::qualifierSrcIp6Alt:
    case VelmorTcam::qualifierDstIp6:
    case VelmorTcam::qualifierDstIp6Alt:
      return 128;
    case VelmorTcam::qualifierSrcMac:
    case VelmorTcam::qualifierDstMac:
      return 48;
    case VelmorTcam::qualifierEtherType:
    case VelmorTcam::qualifierL4SrcPort:
    case VelmorTcam::qualifierL4DstPort:
      return 16;
    case VelmorTcam::qualifierOuterVlanId:
      return 12;
    case VelmorTcam::qualifierDSCP:
    case VelmorTcam::qualifierTcpControl:
      return 6;
    case VelmorTcam::qualifierIpFrag:
      return 2;  // 1 to 3
    default:
      return 8;
  }
}

/// A list of the entry-shadow library, with what the program adds to each value. The names are the
/// library's own.
template <class Row, std::size_t count>
class Rows {
 public:
  template <class RowOf>
  Rows(std::span<const Zel::EnumValue> values, RowOf rowOf) noexcept
      : Rows(values, rowOf, std::make_index_sequence<count>()) {}

  const Row* byName(std::string_view name) const noexcept {
    std::size_t const index = names_.find(name);
    return index == names_.none ? nullptr : &rows_[index];
  }
  const Row* byType(std::uint8_t type) const noexcept {
    for (const Row& row : rows_) {
      if (row.type == type) return &row;
    }
    return nullptr;
  }
  std::span<const Row> list() const noexcept { return rows_; }

 private:
  template <class RowOf, std::size_t... indices>
  Rows(std::span<const Zel::EnumValue> values, RowOf rowOf,
       std::index_sequence<indices...>) noexcept
      : rows_{rowOf(checked(values)[indices], indices)...}, names_({rows_[indices].name...}) {}

  static std::span<const Zel::EnumValue> checked(std::span<const Zel::EnumValue> values) noexcept {
    Zel::assertThat(values.size() == count,
                    {"values.size() == count", "tools/tcamshow/Snapshot", 0,
                     "tcamshow::Rows::checked(std::span<const Zel::EnumValue>)"});
    return values;
  }

  std::array<Row, count> rows_;
  NameTable<count> names_;
};

const Rows<QualifierName, qualifierCount> qualifiers(
    VelmorTcam::qualifierTypeValues(), [](const Zel::EnumValue& value, std::size_t index) noexcept {
      return QualifierName{value.name, value.number, kindOf(value.number),
                           static_cast<std::uint8_t>(index), bitsOf(value.number)};
    });

const Rows<RangeCheckerName, rangeCheckerCount> rangeCheckers(
    VelmorTcam::rangeCheckerTypeValues(), [](const Zel::EnumValue& value, std::size_t) noexcept {
      return RangeCheckerName{value.name, value.number};
    });

constexpr NameTable tableNames({"ip", "ip6", "mac", "tcam"});
constexpr NameTable stateNames({"programmed", "pending", "failed", "unknown"});

/// Sets the result to the value of an enumeration with that name in `names`, if there is one.
template <class Value, class Names>
bool valueByName(const Names& names, std::string_view name, Value& value) noexcept {
  std::size_t const index = names.find(name);
  if (index == names.none) return false;
  value = static_cast<Value>(index);
  return true;
}

}  // namespace

const QualifierName* qualifierByName(std::string_view name) noexcept {
  return qualifiers.byName(name);
}

const QualifierName* qualifierByType(std::uint8_t type) noexcept { return qualifiers.byType(type); }

const RangeCheckerName* rangeCheckerByName(std::string_view name) noexcept {
  return rangeCheckers.byName(name);
}

const RangeCheckerName* rangeCheckerByType(std::uint8_t type) noexcept {
  return rangeCheckers.byType(type);
}

std::span<const QualifierName> qualifierList() noexcept { return qualifiers.list(); }

std::span<const RangeCheckerName> rangeCheckerList() noexcept { return rangeCheckers.list(); }

Halvo::String stageName(Stage stage) { return stringValue(stageType(stage)); }

std::string_view tableName(Table table) noexcept {
  return tableNames[static_cast<std::size_t>(table)];
}

bool stageByName(std::string_view name, Stage& stage) noexcept {
  for (Stage const each : {Stage::ingress, Stage::egress, Stage::lookup}) {
    if (stageName(each) != name) continue;
    stage = each;
    return true;
  }
  return false;
}

bool tableByName(std::string_view name, Table& table) noexcept {
  return valueByName(tableNames, name, table);
}

std::string_view stateName(EntryState state) noexcept {
  return stateNames[static_cast<std::size_t>(state)];
}

std::string_view sinceMarkName(SinceMark mark) noexcept {
  constexpr std::array<std::string_view, 3> names{"", "new", "reset"};
  return names[static_cast<std::size_t>(mark)];
}

bool stateByName(std::string_view name, EntryState& state) noexcept {
  return valueByName(stateNames, name, state);
}

}  // namespace tcamshow
