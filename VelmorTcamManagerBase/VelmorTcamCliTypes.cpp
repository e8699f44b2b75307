// The type module: what it declares, and what it does as the library is loaded.
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

#include <array>
#include <iostream>  // the streams live before the handles do

#include "Halvo/ModuleInspectData.h"
#include "Zel/Enum8.h"
#include "Zel/Log.h"
#include "Zel/TypeModule.h"

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

template <class Class>
constexpr Zel::TypeDescriptor nodeType(const char* name,
                                       const Zel::TypeDescriptor* base = nullptr) {
  return {.name = name,
          .kind = Zel::TypeKind::node,
          .base = base,
          .tracker = &Class::memAllocationTracker_};
}

constexpr Zel::TypeDescriptor cliFormatType = nodeType<CliFormat>("VelmorTcam::CliFormat");
constexpr Zel::TypeDescriptor entryRequestCliFormatType =
    nodeType<EntryRequestCliFormat>("VelmorTcam::EntryRequestCliFormat", &cliFormatType);
constexpr Zel::TypeDescriptor ipEntryRequestCliFormatType = nodeType<IpEntryRequestCliFormat>(
    "VelmorTcam::IpEntryRequestCliFormat", &entryRequestCliFormatType);
constexpr Zel::TypeDescriptor ip6EntryRequestCliFormatType = nodeType<Ip6EntryRequestCliFormat>(
    "VelmorTcam::Ip6EntryRequestCliFormat", &entryRequestCliFormatType);
constexpr Zel::TypeDescriptor macEntryRequestCliFormatType = nodeType<MacEntryRequestCliFormat>(
    "VelmorTcam::MacEntryRequestCliFormat", &entryRequestCliFormatType);
constexpr Zel::TypeDescriptor velmorTcamCliFormatType =
    nodeType<VelmorTcamCliFormat>("VelmorTcam::VelmorTcamCliFormat", &cliFormatType);

constexpr Zel::TypeDescriptor cliDisplayStringsType{.name = "VelmorTcam::CliDisplayStrings",
                                                    .kind = Zel::TypeKind::value};
constexpr Zel::TypeDescriptor cliShowTcamSummaryGroupNameType =
    nodeType<CliShowTcamSummaryGroupName>("VelmorTcam::CliShowTcamSummaryGroupName");
constexpr Zel::TypeDescriptor cliShowTcamSummaryOrderedType =
    nodeType<CliShowTcamSummaryOrdered>("VelmorTcam::CliShowTcamSummaryOrdered");
constexpr Zel::TypeDescriptor cliShowTcamUsageChipInfoType =
    nodeType<CliShowTcamUsageChipInfo>("VelmorTcam::CliShowTcamUsageChipInfo");
constexpr Zel::TypeDescriptor cliShowTcamUsageEntryInfoType{
    .name = "VelmorTcam::CliShowTcamUsageEntryInfo", .kind = Zel::TypeKind::value};
constexpr Zel::TypeDescriptor cliShowTcamUsageFeatureInfoType =
    nodeType<CliShowTcamUsageFeatureInfo>("VelmorTcam::CliShowTcamUsageFeatureInfo");
constexpr Zel::TypeDescriptor cliShowTcamUsageFeaturePrioBucketType =
    nodeType<CliShowTcamUsageFeaturePrioBucket>("VelmorTcam::CliShowTcamUsageFeaturePrioBucket");
constexpr Zel::TypeDescriptor cliShowTcamUsageGroupInfoType =
    nodeType<CliShowTcamUsageGroupInfo>("VelmorTcam::CliShowTcamUsageGroupInfo");
constexpr Zel::TypeDescriptor cliShowTcamUsageGroupPerCopyInfoType =
    nodeType<CliShowTcamUsageGroupPerCopyInfo>("VelmorTcam::CliShowTcamUsageGroupPerCopyInfo");
constexpr Zel::TypeDescriptor cliShowTcamUsageGroupPriorityBucketType =
    nodeType<CliShowTcamUsageGroupPriorityBucket>(
        "VelmorTcam::CliShowTcamUsageGroupPriorityBucket");
constexpr Zel::TypeDescriptor cliShowTcamUsagePipeInfoType =
    nodeType<CliShowTcamUsagePipeInfo>("VelmorTcam::CliShowTcamUsagePipeInfo");
constexpr Zel::TypeDescriptor cliShowTcamUsageStageInfoType =
    nodeType<CliShowTcamUsageStageInfo>("VelmorTcam::CliShowTcamUsageStageInfo");

enum TypeIndex : U32 { indexCliHeaderType = 0, indexCliOutputType = 1 };

constexpr std::array types = std::to_array<const Zel::TypeDescriptor*>({
    &cliHeaderTypeType,
    &cliOutputTypeType,
    &cliFormatType,
    &entryRequestCliFormatType,
    &ipEntryRequestCliFormatType,
    &ip6EntryRequestCliFormatType,
    &macEntryRequestCliFormatType,
    &velmorTcamCliFormatType,
    &cliDisplayStringsType,
    &cliShowTcamSummaryGroupNameType,
    &cliShowTcamSummaryOrderedType,
    &cliShowTcamUsageChipInfoType,
    &cliShowTcamUsageEntryInfoType,
    &cliShowTcamUsageFeatureInfoType,
    &cliShowTcamUsageFeaturePrioBucketType,
    &cliShowTcamUsageGroupInfoType,
    &cliShowTcamUsageGroupPerCopyInfoType,
    &cliShowTcamUsageGroupPriorityBucketType,
    &cliShowTcamUsagePipeInfoType,
    &cliShowTcamUsageStageInfoType,
});

constexpr std::array collectionTrackers = std::to_array<Zel::AllocationTracker*>({
    &CliShowTcamSummaryGroupName::QE_TcamSummaryGroupName::memAllocationTracker_,
    &CliShowTcamSummaryOrdered::TN_TcamSummary::memAllocationTracker_,
    &CliShowTcamUsageFeatureInfo::TN_EntrySet::memAllocationTracker_,
    &CliShowTcamUsageFeaturePrioBucket::QE_FeatureInfo::memAllocationTracker_,
    &CliShowTcamUsageGroupInfo::TN_GroupPerCopyInfo::memAllocationTracker_,
    &CliShowTcamUsageGroupPerCopyInfo::TN_FeaturePrioBucket::memAllocationTracker_,
    &CliShowTcamUsageGroupPriorityBucket::TN_GroupInfo::memAllocationTracker_,
    &CliShowTcamUsagePipeInfo::TN_GroupPrioBucket::memAllocationTracker_,
    &CliShowTcamUsageStageInfo::TN_PipeInfo::memAllocationTracker_,
});

constexpr Zel::TypeModule cliTypesModule{"VelmorTcamCliTypes", types, collectionTrackers};

// The agent's log messages. Nothing in this library emits them: the platform's log tooling finds
// them in the library's file, and the agent takes a handle. Each format takes the agent's name.
ZEL_LOG_DESCRIPTORS(
    logDescriptors,
    {"VELMOR_UNEXPECTED_RESTART", "Unexpected restart of Velmor agent %s occurred",
     "Unexpected restart of the Velmor agent occurred.", "\x02", 3},
    {"VELMOR_CONFIG_CHANGE", "Configuration change requires the Velmor agent %s to restart",
     "Configuration change requires the switch ASIC to be reconfigured, requiring the Velmor agent "
     "to restart.",
     "\x01", 6});
constexpr const Zel::LogDescriptor& unexpectedRestart = logDescriptors[0];
constexpr const Zel::LogDescriptor& configChange = logDescriptors[1];

// What runs at load, in this order: the module becomes known, then the two log handles are made.
Halvo::ModuleInspectData inspectData{cliTypesModule};
[[maybe_unused]] bool const isLoaded = (inspectData.loaded(), true);
Zel::LogHandle configChangeLog(configChange, Halvo::Duration(0), 1.0, 0, 0);
Zel::LogHandle unexpectedRestartLog(unexpectedRestart, Halvo::Duration(0), 1.0, 0, 0);

}  // namespace

#define VELMOR_NODE_TYPE(CLASS, DESCRIPTOR)                                             \
  constinit Zel::AllocationTracker CLASS::memAllocationTracker_{"VelmorTcam::" #CLASS}; \
  const Zel::TypeDescriptor* CLASS::typeData() const { return &(DESCRIPTOR); }

VELMOR_NODE_TYPE(CliFormat, cliFormatType)
VELMOR_NODE_TYPE(EntryRequestCliFormat, entryRequestCliFormatType)
VELMOR_NODE_TYPE(IpEntryRequestCliFormat, ipEntryRequestCliFormatType)
VELMOR_NODE_TYPE(Ip6EntryRequestCliFormat, ip6EntryRequestCliFormatType)
VELMOR_NODE_TYPE(MacEntryRequestCliFormat, macEntryRequestCliFormatType)
VELMOR_NODE_TYPE(VelmorTcamCliFormat, velmorTcamCliFormatType)
VELMOR_NODE_TYPE(CliShowTcamSummaryGroupName, cliShowTcamSummaryGroupNameType)
VELMOR_NODE_TYPE(CliShowTcamSummaryOrdered, cliShowTcamSummaryOrderedType)
VELMOR_NODE_TYPE(CliShowTcamUsageChipInfo, cliShowTcamUsageChipInfoType)
VELMOR_NODE_TYPE(CliShowTcamUsageFeatureInfo, cliShowTcamUsageFeatureInfoType)
VELMOR_NODE_TYPE(CliShowTcamUsageFeaturePrioBucket, cliShowTcamUsageFeaturePrioBucketType)
VELMOR_NODE_TYPE(CliShowTcamUsageGroupInfo, cliShowTcamUsageGroupInfoType)
VELMOR_NODE_TYPE(CliShowTcamUsageGroupPerCopyInfo, cliShowTcamUsageGroupPerCopyInfoType)
VELMOR_NODE_TYPE(CliShowTcamUsageGroupPriorityBucket, cliShowTcamUsageGroupPriorityBucketType)
VELMOR_NODE_TYPE(CliShowTcamUsagePipeInfo, cliShowTcamUsagePipeInfoType)
VELMOR_NODE_TYPE(CliShowTcamUsageStageInfo, cliShowTcamUsageStageInfoType)

#undef VELMOR_NODE_TYPE

ZEL_DEFINE_ENUM8(CliHeaderType, cliTypesModule, indexCliHeaderType)
ZEL_DEFINE_ENUM8(CliOutputType, cliTypesModule, indexCliOutputType)

}  // namespace VelmorTcam
