#include "Snapshot.h"

#include "NameTable.h"

namespace tcamshow {
namespace {

constexpr NameTable qualifierNames({
    "qualifierDSCP",
    "qualifierDstIp",
    "qualifierDstIp6",
    "qualifierDstIp6Alt",
    "qualifierDstMac",
    "qualifierEtherType",
    "qualifierIp6HopLimit",
    "qualifierIp6TrafficClass",
    "qualifierIpFrag",
    "qualifierIpProtocol",
    "qualifierL4DstPort",
    "qualifierL4SrcPort",
    "qualifierOuterVlanId",
    "qualifierSrcIp",
    "qualifierSrcIp6",
    "qualifierSrcIp6Alt",
    "qualifierSrcMac",
    "qualifierTcpControl",
});

constexpr QualifierName qualifiers[] = {
    {qualifierNames[0], 8, QualifierKind::word, 0},
    {qualifierNames[1], qualifierType::dstIp, QualifierKind::ip, 1},
    {qualifierNames[2], qualifierType::dstIp6, QualifierKind::ip6, 2},
    {qualifierNames[3], 25, QualifierKind::ip6, 3},
    {qualifierNames[4], qualifierType::dstMac, QualifierKind::mac, 4},
    {qualifierNames[5], qualifierType::etherType, QualifierKind::word, 5},
    {qualifierNames[6], 92, QualifierKind::word, 6},
    {qualifierNames[7], 95, QualifierKind::word, 7},
    {qualifierNames[8], 97, QualifierKind::word, 8},
    {qualifierNames[9], qualifierType::ipProtocol, QualifierKind::word, 9},
    {qualifierNames[10], qualifierType::l4DstPort, QualifierKind::word, 10},
    {qualifierNames[11], qualifierType::l4SrcPort, QualifierKind::word, 11},
    {qualifierNames[12], qualifierType::outerVlanId, QualifierKind::word, 12},
    {qualifierNames[13], qualifierType::srcIp, QualifierKind::ip, 13},
    {qualifierNames[14], qualifierType::srcIp6, QualifierKind::ip6, 14},
    {qualifierNames[15], 163, QualifierKind::ip6, 15},
    {qualifierNames[16], qualifierType::srcMac, QualifierKind::mac, 16},
    {qualifierNames[17], qualifierType::tcpControl, QualifierKind::word, 17},
};
static_assert(std::size(qualifiers) == qualifierNames.size());
static_assert(qualifierNames.size() <= 32);

constexpr NameTable rangeCheckerNames({
    "rangeCheckerL4SrcPort",
    "rangeCheckerL4DstPort",
    "rangeCheckerIpLength",
});

constexpr RangeCheckerName rangeCheckers[] = {
    {rangeCheckerNames[0], rangeCheckerType::l4SrcPort},
    {rangeCheckerNames[1], rangeCheckerType::l4DstPort},
    {rangeCheckerNames[2], 3},
};

constexpr NameTable stageNames({"lookup", "ingress", "egress"});
constexpr NameTable tableNames({"ip", "ip6", "mac", "tcam"});

template <class Row, std::size_t count>
const Row* rowByType(const Row (&rows)[count], std::uint8_t type) noexcept {
  for (const Row& row : rows) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

}  // namespace

const QualifierName* qualifierByName(std::string_view name) noexcept {
  std::size_t const index = qualifierNames.find(name);
  return index == qualifierNames.none ? nullptr : &qualifiers[index];
}

const QualifierName* qualifierByType(std::uint8_t type) noexcept {
  return rowByType(qualifiers, type);
}

const RangeCheckerName* rangeCheckerByName(std::string_view name) noexcept {
  std::size_t const index = rangeCheckerNames.find(name);
  return index == rangeCheckerNames.none ? nullptr : &rangeCheckers[index];
}

const RangeCheckerName* rangeCheckerByType(std::uint8_t type) noexcept {
  return rowByType(rangeCheckers, type);
}

std::string_view stageName(Stage stage) noexcept {
  return stageNames[static_cast<std::size_t>(stage) - 1];
}

std::string_view tableName(Table table) noexcept {
  return tableNames[static_cast<std::size_t>(table)];
}

bool stageByName(std::string_view name, Stage& stage) noexcept {
  std::size_t const index = stageNames.find(name);
  if (index == stageNames.none) return false;
  stage = static_cast<Stage>(index + 1);
  return true;
}

bool tableByName(std::string_view name, Table& table) noexcept {
  std::size_t const index = tableNames.find(name);
  if (index == tableNames.none) return false;
  table = static_cast<Table>(index);
  return true;
}

}  // namespace tcamshow
