// The module's tables of enumerations, classes and value types, and the list of its types.
#include "VelmorTcamManagerBase/VelmorTcamCliTypesDescriptors.h"

#include <array>
#include <span>

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Types/AttributeTable.h"
#include "Zel/Types/Enum8.h"

namespace VelmorTcam {

namespace {

#define VALUE(name) \
  { name, #name }

constexpr std::array cliHeaderTypes = std::to_array<Zel::EnumValue>({
    VALUE(cliHeaderTypeInvalid),
    VALUE(cliHeaderTypeIp),
    VALUE(cliHeaderTypeIp6),
    VALUE(cliHeaderTypeMac),
    VALUE(cliHeaderTypeTcam),
});

constexpr std::array cliOutputTypes = std::to_array<Zel::EnumValue>({
    VALUE(cliOutputTypeInvalid),
    VALUE(cliOutputTypeTcam),
    VALUE(cliOutputTypeTcamAcl),
    VALUE(cliOutputTypeTcamCopp),
    VALUE(cliOutputTypeTcamDetail),
    VALUE(cliOutputTypeTcamDirectedBroadcast),
    VALUE(cliOutputTypeTcamNat),
    VALUE(cliOutputTypeTcamPbr),
    VALUE(cliOutputTypeTcamPolicyQos),
    VALUE(cliOutputTypeTcamUrpf),
});

#undef VALUE

constexpr Zel::TypeDescriptor cliHeaderTypeType{.name = "VelmorTcam::CliHeaderType",
                                                .kind = Zel::TypeKind::enumeration,
                                                .enumValues = cliHeaderTypes};
constexpr Zel::TypeDescriptor cliOutputTypeType{.name = "VelmorTcam::CliOutputType",
                                                .kind = Zel::TypeKind::enumeration,
                                                .enumValues = cliOutputTypes};

template <class Class, class... Parameters>
constexpr Zel::TypeDescriptor nodeType(const char* name, std::span<const Zel::Attribute> attributes,
                                       const Zel::TypeDescriptor* base = nullptr) {
  return {.name = name,
          .kind = Zel::TypeKind::node,
          .base = base,
          .tracker = &Class::memAllocationTracker_,
          .attributes = attributes,
          .create = &Zel::nodeCreate<Class, Parameters...>,
          .constructor = Zel::constructorOf<Parameters...>()};
}

template <class Class, class... Parameters>
constexpr Zel::TypeDescriptor valueType(const char* name,
                                        std::span<const Zel::Attribute> attributes,
                                        const Zel::ValueOperations& operations) {
  return {.name = name,
          .kind = Zel::TypeKind::value,
          .attributes = attributes,
          .value = &operations,
          .constructor = Zel::constructorOf<Parameters...>()};
}

namespace cliFormat {
using Class = CliFormat;
constexpr auto attributes = Zel::attributeTable<130, 135>(
    ZEL_READ_ONLY(headerType), ZEL_OPERATION(displayHeader), ZEL_OPERATION(displayFeatureHeader),
    ZEL_OPERATION(formatEntryRequest), ZEL_READ_WRITE(initialized),
    ZEL_OPERATION(handleInitialized));
constexpr auto type = nodeType<Class>("VelmorTcam::CliFormat", attributes);
}  // namespace cliFormat

namespace entryRequestCliFormat {
using Class = EntryRequestCliFormat;
constexpr auto attributes = Zel::attributeTable<136, 144>(
    ZEL_OPERATION(formatActions), ZEL_OPERATION(formatSequenceNum),
    ZEL_OPERATION(formatQualifierIpProtocol), ZEL_OPERATION(formatQualifierOuterVlanId),
    ZEL_OPERATION(formatQualifierL4SrcPort), ZEL_OPERATION(formatQualifierL4DstPort),
    ZEL_OPERATION(formatQualifierTcpControl), ZEL_OPERATION(formatQualifierIpLength),
    ZEL_OPERATION(formatQualifierRangeCheck));
constexpr auto type =
    nodeType<Class>("VelmorTcam::EntryRequestCliFormat", attributes, &cliFormat::type);
}  // namespace entryRequestCliFormat

namespace ipEntryRequestCliFormat {
using Class = IpEntryRequestCliFormat;
constexpr auto attributes = Zel::attributeTable<145, 148>(
    ZEL_OPERATION(formatQualifierSrcIp), ZEL_OPERATION(formatQualifierDstIp),
    ZEL_OPERATION(formatQualifierDSCP), ZEL_OPERATION(formatQualifierIpFrag));
constexpr auto type = nodeType<Class>("VelmorTcam::IpEntryRequestCliFormat", attributes,
                                      &entryRequestCliFormat::type);
}  // namespace ipEntryRequestCliFormat

namespace ip6EntryRequestCliFormat {
using Class = Ip6EntryRequestCliFormat;
constexpr auto attributes = Zel::attributeTable<145, 149>(
    ZEL_OPERATION(formatQualifierDSCP), ZEL_OPERATION(formatQualifierSrcIp6),
    ZEL_OPERATION(formatQualifierDstIp6), ZEL_OPERATION(formatQualifierIp6TrafficClass),
    ZEL_OPERATION(formatQualifierIp6HopLimit));
constexpr auto type = nodeType<Class>("VelmorTcam::Ip6EntryRequestCliFormat", attributes,
                                      &entryRequestCliFormat::type);
}  // namespace ip6EntryRequestCliFormat

namespace macEntryRequestCliFormat {
using Class = MacEntryRequestCliFormat;
constexpr auto attributes = Zel::attributeTable<145, 146>(ZEL_OPERATION(formatQualifierMacAddr),
                                                          ZEL_OPERATION(formatQualifierEtherType));
constexpr auto type = nodeType<Class>("VelmorTcam::MacEntryRequestCliFormat", attributes,
                                      &entryRequestCliFormat::type);
}  // namespace macEntryRequestCliFormat

namespace velmorTcamCliFormat {
using Class = VelmorTcamCliFormat;
constexpr auto attributes = Zel::attributeTable<136, 137>(ZEL_OPERATION(formatGroupHeader),
                                                          ZEL_OPERATION(formatRequestHeader));
constexpr auto type =
    nodeType<Class>("VelmorTcam::VelmorTcamCliFormat", attributes, &cliFormat::type);
}  // namespace velmorTcamCliFormat

namespace cliDisplayStrings {
using Class = CliDisplayStrings;
constexpr auto attributes = Zel::attributeTable<2, 6>(
    ZEL_READ_ONLY(stageHeaderFmt), ZEL_READ_ONLY(pipeHeaderFmt), ZEL_READ_ONLY(groupInfoFmt),
    ZEL_READ_ONLY(requestHeaderFmt), ZEL_READ_ONLY(entryInfoFmt));
constexpr auto operations = Zel::valueOperations<Class>();
constexpr auto type = valueType<Class>("VelmorTcam::CliDisplayStrings", attributes, operations);
}  // namespace cliDisplayStrings

namespace cliShowTcamSummaryGroupName {
using Class = CliShowTcamSummaryGroupName;
constexpr auto attributes = Zel::attributeTable<130, 134>(
    ZEL_KEY(groupName), ZEL_QUEUE(tcamSummaryGroupName), ZEL_READ_WRITE(pipeFinished),
    ZEL_OPERATION(isGroupPipeDuplicate));
constexpr auto type =
    nodeType<Class, Halvo::String>("VelmorTcam::CliShowTcamSummaryGroupName", attributes);
}  // namespace cliShowTcamSummaryGroupName

namespace cliShowTcamSummaryOrdered {
using Class = CliShowTcamSummaryOrdered;
constexpr auto attributes = Zel::attributeTable<130, 130>(ZEL_ORDERED_MAP(tcamSummary));
constexpr auto type = nodeType<Class>("VelmorTcam::CliShowTcamSummaryOrdered", attributes);
}  // namespace cliShowTcamSummaryOrdered

namespace cliShowTcamUsageChipInfo {
using Class = CliShowTcamUsageChipInfo;
constexpr auto attributes = Zel::attributeTable<130, 130>(ZEL_HASH_MAP(stageInfo));
constexpr auto type = nodeType<Class>("VelmorTcam::CliShowTcamUsageChipInfo", attributes);
}  // namespace cliShowTcamUsageChipInfo

namespace cliShowTcamUsageEntryInfo {
using Class = CliShowTcamUsageEntryInfo;
constexpr auto attributes = Zel::attributeTable<2, 5>(
    ZEL_KEY(entryPriority), ZEL_KEY(entryId), ZEL_READ_WRITE(description), ZEL_READ_WRITE(hits));
constexpr auto operations = Zel::valueOperations<Class, U32, U32>();
constexpr auto type =
    valueType<Class, U32, U32>("VelmorTcam::CliShowTcamUsageEntryInfo", attributes, operations);
}  // namespace cliShowTcamUsageEntryInfo

namespace cliShowTcamUsageFeatureInfo {
using Class = CliShowTcamUsageFeatureInfo;
constexpr auto attributes =
    Zel::attributeTable<130, 133>(ZEL_KEY(cliFeatureName), ZEL_READ_WRITE(usedEntries),
                                  ZEL_READ_WRITE(reservedEntries), ZEL_ENTRY_SET(entrySet));
constexpr auto type =
    nodeType<Class, Halvo::String>("VelmorTcam::CliShowTcamUsageFeatureInfo", attributes);
}  // namespace cliShowTcamUsageFeatureInfo

namespace cliShowTcamUsageFeaturePrioBucket {
using Class = CliShowTcamUsageFeaturePrioBucket;
constexpr auto attributes =
    Zel::attributeTable<130, 132>(ZEL_KEY(featurePrio), ZEL_QUEUE(featureInfo));
constexpr auto type =
    nodeType<Class, U32>("VelmorTcam::CliShowTcamUsageFeaturePrioBucket", attributes);
}  // namespace cliShowTcamUsageFeaturePrioBucket

namespace cliShowTcamUsageGroupInfo {
using Class = CliShowTcamUsageGroupInfo;
constexpr auto attributes =
    Zel::attributeTable<130, 131>(ZEL_KEY(groupId), ZEL_ORDERED_MAP(groupPerCopyInfo));
constexpr auto type = nodeType<Class, U32>("VelmorTcam::CliShowTcamUsageGroupInfo", attributes);
}  // namespace cliShowTcamUsageGroupInfo

namespace cliShowTcamUsageGroupPerCopyInfo {
using Class = CliShowTcamUsageGroupPerCopyInfo;
constexpr auto attributes = Zel::attributeTable<130, 134>(
    ZEL_KEY(copyId), ZEL_READ_WRITE(usedEntries), ZEL_READ_WRITE(freeEntries),
    ZEL_READ_WRITE(availableEntries), ZEL_ORDERED_MAP(featurePrioBucket));
constexpr auto type =
    nodeType<Class, U32>("VelmorTcam::CliShowTcamUsageGroupPerCopyInfo", attributes);
}  // namespace cliShowTcamUsageGroupPerCopyInfo

namespace cliShowTcamUsageGroupPriorityBucket {
using Class = CliShowTcamUsageGroupPriorityBucket;
constexpr auto attributes =
    Zel::attributeTable<130, 131>(ZEL_KEY(groupPriority), ZEL_ORDERED_MAP(groupInfo));
constexpr auto type =
    nodeType<Class, U32>("VelmorTcam::CliShowTcamUsageGroupPriorityBucket", attributes);
}  // namespace cliShowTcamUsageGroupPriorityBucket

namespace cliShowTcamUsagePipeInfo {
using Class = CliShowTcamUsagePipeInfo;
constexpr auto attributes =
    Zel::attributeTable<130, 131>(ZEL_KEY(pipeId), ZEL_ORDERED_MAP(groupPrioBucket));
constexpr auto type = nodeType<Class, S16>("VelmorTcam::CliShowTcamUsagePipeInfo", attributes);
}  // namespace cliShowTcamUsagePipeInfo

namespace cliShowTcamUsageStageInfo {
using Class = CliShowTcamUsageStageInfo;
constexpr auto attributes =
    Zel::attributeTable<130, 131>(ZEL_KEY(stage), ZEL_ORDERED_MAP(pipeInfo));
constexpr auto type =
    nodeType<Class, StageType>("VelmorTcam::CliShowTcamUsageStageInfo", attributes);
}  // namespace cliShowTcamUsageStageInfo

enum TypeIndex : U32 { indexCliHeaderType = 0, indexCliOutputType = 1 };

constexpr std::array types = std::to_array<const Zel::TypeDescriptor*>({
    &cliHeaderTypeType,
    &cliOutputTypeType,
    &cliFormat::type,
    &entryRequestCliFormat::type,
    &ipEntryRequestCliFormat::type,
    &ip6EntryRequestCliFormat::type,
    &macEntryRequestCliFormat::type,
    &velmorTcamCliFormat::type,
    &cliDisplayStrings::type,
    &cliShowTcamSummaryGroupName::type,
    &cliShowTcamSummaryOrdered::type,
    &cliShowTcamUsageChipInfo::type,
    &cliShowTcamUsageEntryInfo::type,
    &cliShowTcamUsageFeatureInfo::type,
    &cliShowTcamUsageFeaturePrioBucket::type,
    &cliShowTcamUsageGroupInfo::type,
    &cliShowTcamUsageGroupPerCopyInfo::type,
    &cliShowTcamUsageGroupPriorityBucket::type,
    &cliShowTcamUsagePipeInfo::type,
    &cliShowTcamUsageStageInfo::type,
});

constexpr std::array collectionTrackers = std::to_array<Zel::AllocationTracker*>({
    &CliShowTcamSummaryGroupName::QE_TcamSummaryGroupName::memAllocationTracker_,
    &CliShowTcamSummaryOrdered::TN_TcamSummary::memAllocationTracker_,
    &CliShowTcamUsageChipInfo::HN_StageInfo::memAllocationTracker_,
    &CliShowTcamUsageFeatureInfo::TN_EntrySet::memAllocationTracker_,
    &CliShowTcamUsageFeaturePrioBucket::QE_FeatureInfo::memAllocationTracker_,
    &CliShowTcamUsageGroupInfo::TN_GroupPerCopyInfo::memAllocationTracker_,
    &CliShowTcamUsageGroupPerCopyInfo::TN_FeaturePrioBucket::memAllocationTracker_,
    &CliShowTcamUsageGroupPriorityBucket::TN_GroupInfo::memAllocationTracker_,
    &CliShowTcamUsagePipeInfo::TN_GroupPrioBucket::memAllocationTracker_,
    &CliShowTcamUsageStageInfo::TN_PipeInfo::memAllocationTracker_,
});

}  // namespace

constinit const Zel::TypeModule cliTypesModule{"VelmorTcamCliTypes", types, collectionTrackers};

#define VELMOR_NODE_TYPE(CLASS, TABLE)                                                  \
  constinit Zel::AllocationTracker CLASS::memAllocationTracker_{"VelmorTcam::" #CLASS}; \
  const Zel::TypeDescriptor* CLASS::typeData() const { return &TABLE::type; }           \
  ZEL_DEFINE_TYPE(CLASS, TABLE::type)

VELMOR_NODE_TYPE(CliFormat, cliFormat)
VELMOR_NODE_TYPE(EntryRequestCliFormat, entryRequestCliFormat)
VELMOR_NODE_TYPE(IpEntryRequestCliFormat, ipEntryRequestCliFormat)
VELMOR_NODE_TYPE(Ip6EntryRequestCliFormat, ip6EntryRequestCliFormat)
VELMOR_NODE_TYPE(MacEntryRequestCliFormat, macEntryRequestCliFormat)
VELMOR_NODE_TYPE(VelmorTcamCliFormat, velmorTcamCliFormat)
ZEL_DEFINE_TYPE(CliDisplayStrings, cliDisplayStrings::type)
VELMOR_NODE_TYPE(CliShowTcamSummaryGroupName, cliShowTcamSummaryGroupName)
VELMOR_NODE_TYPE(CliShowTcamSummaryOrdered, cliShowTcamSummaryOrdered)
VELMOR_NODE_TYPE(CliShowTcamUsageChipInfo, cliShowTcamUsageChipInfo)
ZEL_DEFINE_TYPE(CliShowTcamUsageEntryInfo, cliShowTcamUsageEntryInfo::type)
VELMOR_NODE_TYPE(CliShowTcamUsageFeatureInfo, cliShowTcamUsageFeatureInfo)
VELMOR_NODE_TYPE(CliShowTcamUsageFeaturePrioBucket, cliShowTcamUsageFeaturePrioBucket)
VELMOR_NODE_TYPE(CliShowTcamUsageGroupInfo, cliShowTcamUsageGroupInfo)
VELMOR_NODE_TYPE(CliShowTcamUsageGroupPerCopyInfo, cliShowTcamUsageGroupPerCopyInfo)
VELMOR_NODE_TYPE(CliShowTcamUsageGroupPriorityBucket, cliShowTcamUsageGroupPriorityBucket)
VELMOR_NODE_TYPE(CliShowTcamUsagePipeInfo, cliShowTcamUsagePipeInfo)
VELMOR_NODE_TYPE(CliShowTcamUsageStageInfo, cliShowTcamUsageStageInfo)

#undef VELMOR_NODE_TYPE

ZEL_DEFINE_ENUM8(CliHeaderType, cliTypesModule, indexCliHeaderType)
ZEL_DEFINE_ENUM8(CliOutputType, cliTypesModule, indexCliOutputType)

}  // namespace VelmorTcam
