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
});

constexpr Zel::TypeModule cliTypesModule{"VelmorTcamCliTypes", types};

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

#undef VELMOR_NODE_TYPE

ZEL_DEFINE_ENUM8(CliHeaderType, cliTypesModule, indexCliHeaderType)
ZEL_DEFINE_ENUM8(CliOutputType, cliTypesModule, indexCliOutputType)

}  // namespace VelmorTcam
