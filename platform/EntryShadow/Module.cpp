// The type module of the entry-shadow library: its enumerations, node types and identifiers.
#include <array>
#include <functional>

#include "VelmorTcamEntryShadow.h"
#include "Zel/Types/AttributeTable.h"
#include "Zel/Types/Enum8.h"
#include "Zel/Types/ModuleInspectData.h"

namespace VelmorTcam {

namespace {

#define VALUE(name) \
  { name, #name }

constexpr std::array qualifierTypes = std::to_array<Zel::EnumValue>({
    VALUE(qualifierDSCP),
    VALUE(qualifierDstIp),
    VALUE(qualifierDstIp6),
    VALUE(qualifierDstIp6Alt),
    VALUE(qualifierDstMac),
    VALUE(qualifierEtherType),
    VALUE(qualifierIp6HopLimit),
    VALUE(qualifierIp6TrafficClass),
    VALUE(qualifierIpFrag),
    VALUE(qualifierIpProtocol),
    VALUE(qualifierL4DstPort),
    VALUE(qualifierL4SrcPort),
    VALUE(qualifierOuterVlanId),
    VALUE(qualifierSrcIp),
    VALUE(qualifierSrcIp6),
    VALUE(qualifierSrcIp6Alt),
    VALUE(qualifierSrcMac),
    VALUE(qualifierTcpControl),
});

constexpr std::array rangeCheckerTypes = std::to_array<Zel::EnumValue>({
    VALUE(rangeCheckerL4SrcPort),
    VALUE(rangeCheckerL4DstPort),
    VALUE(rangeCheckerIpLength),
});

constexpr std::array hwQualStatuses = std::to_array<Zel::EnumValue>({
    VALUE(hwQualStatusInvalid),
    VALUE(hwQualStatusRequested),
    VALUE(hwQualStatusAllocated),
    VALUE(hwQualStatusProgramming),
    VALUE(hwQualStatusFailed),
    VALUE(hwQualStatusRemoving),
    VALUE(hwQualStatusRemoved),
    VALUE(hwQualStatusProgrammed),
});

constexpr std::array stageTypes = std::to_array<Zel::EnumValue>({
    {stageTypeInvalid, "invalid"},
    {stageTypeLookup, "lookup"},
    {stageTypeIngress, "ingress"},
    {stageTypeEgress, "egress"},
});

#undef VALUE

using Zel::TypeKind;

constexpr Zel::TypeDescriptor qualifierTypeType{.name = "VelmorTcam::QualifierType",
                                                .kind = TypeKind::enumeration,
                                                .enumValues = qualifierTypes};
constexpr Zel::TypeDescriptor rangeCheckerTypeType{.name = "VelmorTcam::RangeCheckerType",
                                                   .kind = TypeKind::enumeration,
                                                   .enumValues = rangeCheckerTypes};
constexpr Zel::TypeDescriptor hwQualStatusType{.name = "VelmorTcam::HwQualStatus",
                                               .kind = TypeKind::enumeration,
                                               .enumValues = hwQualStatuses};
constexpr Zel::TypeDescriptor stageTypeType{
    .name = "VelmorTcam::StageType", .kind = TypeKind::enumeration, .enumValues = stageTypes};
constexpr Zel::TypeDescriptor qualifierDataType{.name = "VelmorTcam::QualifierData",
                                                .kind = TypeKind::node,
                                                .tracker = &QualifierData::memAllocationTracker_};
constexpr Zel::TypeDescriptor qualifierStatusType{
    .name = "VelmorTcam::QualifierStatus",
    .kind = TypeKind::node,
    .tracker = &QualifierStatus::memAllocationTracker_};
constexpr Zel::TypeDescriptor entryShadowType{
    .name = "VelmorTcam::VelmorTcamEntryShadow",
    .kind = TypeKind::node,
    .tracker = &VelmorTcamEntryShadow::memAllocationTracker_};

namespace requestKey {
using Class = RequestKey;
constexpr auto attributes = Zel::attributeTable<2, 2>(ZEL_KEY(name));
constexpr auto operations = Zel::valueOperations<Class, Halvo::String>([](const void* value) {
  return std::hash<Halvo::String>{}(static_cast<const Class*>(value)->name());
});
}  // namespace requestKey
namespace ruleId {
using Class = RuleId;
constexpr auto attributes = Zel::attributeTable<2, 2>(ZEL_KEY(sequenceNum));
constexpr auto operations = Zel::valueOperations<Class, U32>([](const void* value) {
  return std::hash<U32>{}(static_cast<const Class*>(value)->sequenceNum());
});
}  // namespace ruleId
namespace tcamGroupId {
using Class = TcamGroupId;
constexpr auto attributes = Zel::attributeTable<2, 2>(ZEL_KEY(number));
constexpr auto operations = Zel::valueOperations<Class, U32>(
    [](const void* value) { return std::hash<U16>{}(static_cast<const Class*>(value)->number()); });
}  // namespace tcamGroupId

constexpr Zel::TypeDescriptor requestKeyType{.name = "VelmorTcam::RequestKey",
                                             .kind = TypeKind::value,
                                             .attributes = requestKey::attributes,
                                             .value = &requestKey::operations,
                                             .constructor = Zel::constructorOf<Halvo::String>()};
constexpr Zel::TypeDescriptor ruleIdType{.name = "VelmorTcam::RuleId",
                                         .kind = TypeKind::value,
                                         .attributes = ruleId::attributes,
                                         .value = &ruleId::operations,
                                         .constructor = Zel::constructorOf<U32>()};
constexpr Zel::TypeDescriptor tcamGroupIdType{.name = "VelmorTcam::TcamGroupId",
                                              .kind = TypeKind::value,
                                              .attributes = tcamGroupId::attributes,
                                              .value = &tcamGroupId::operations,
                                              .constructor = Zel::constructorOf<U32>()};

enum TypeIndex : U32 {
  indexQualifierType,
  indexRangeCheckerType,
  indexHwQualStatus,
  indexStageType
};

constexpr std::array types = std::to_array<const Zel::TypeDescriptor*>({
    &qualifierTypeType,
    &rangeCheckerTypeType,
    &hwQualStatusType,
    &stageTypeType,
    &qualifierDataType,
    &qualifierStatusType,
    &entryShadowType,
    &requestKeyType,
    &ruleIdType,
    &tcamGroupIdType,
});

constexpr Zel::TypeModule entryShadowModule{"VelmorTcamEntryShadow", types};

// The only code of this file that runs at load.
Halvo::ModuleInspectData inspectData{entryShadowModule};
[[maybe_unused]] bool const isLoaded = (inspectData.loaded(), true);

}  // namespace

constinit Zel::AllocationTracker QualifierData::memAllocationTracker_{"VelmorTcam::QualifierData"};
constinit Zel::AllocationTracker QualifierStatus::memAllocationTracker_{
    "VelmorTcam::QualifierStatus"};
constinit Zel::AllocationTracker VelmorTcamEntryShadow::memAllocationTracker_{
    "VelmorTcam::VelmorTcamEntryShadow"};

const Zel::TypeDescriptor* QualifierData::typeData() const { return &qualifierDataType; }
const Zel::TypeDescriptor* QualifierStatus::typeData() const { return &qualifierStatusType; }
const Zel::TypeDescriptor* VelmorTcamEntryShadow::typeData() const { return &entryShadowType; }

ZEL_DEFINE_TYPE(QualifierData, qualifierDataType)
ZEL_DEFINE_TYPE(QualifierStatus, qualifierStatusType)
ZEL_DEFINE_TYPE(VelmorTcamEntryShadow, entryShadowType)
ZEL_DEFINE_TYPE(RequestKey, requestKeyType)
ZEL_DEFINE_TYPE(RuleId, ruleIdType)
ZEL_DEFINE_TYPE(TcamGroupId, tcamGroupIdType)

ZEL_DEFINE_ENUM8(QualifierType, entryShadowModule, indexQualifierType)
ZEL_DEFINE_ENUM8(RangeCheckerType, entryShadowModule, indexRangeCheckerType)
ZEL_DEFINE_ENUM8(HwQualStatus, entryShadowModule, indexHwQualStatus)
ZEL_DEFINE_ENUM8(StageType, entryShadowModule, indexStageType)

std::span<const Zel::EnumValue> qualifierTypeValues() noexcept { return qualifierTypes; }
std::span<const Zel::EnumValue> rangeCheckerTypeValues() noexcept { return rangeCheckerTypes; }

}  // namespace VelmorTcam
