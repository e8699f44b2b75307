// Declares the module's classes and value types as described types, for Zel::typeOf and Zel::Value.
//
// Threads: descriptors are constant data; safe from any thread.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamCliTypesDisplayStrings.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFeature.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesSummary.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesUsage.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Types/TypeModule.h"

namespace VelmorTcam {

/// The descriptor of each type. Zel/Types/Reflect.h finds the same descriptors by name, and their
/// attributes by number:
///
///     Zel::typeOf<CliFormat>().attributes
///     Zel::findType("VelmorTcam::CliFormat")
///
/// Attributes are numbered in declared order, from 2 in value types and from 130 in node types. A
/// derived class continues after the last number of its base. A queue takes two numbers: the first
/// belongs to its element type. So featureInfo and tcamSummaryGroupName are both 132.
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliFormat);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, EntryRequestCliFormat);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, IpEntryRequestCliFormat);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, Ip6EntryRequestCliFormat);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, MacEntryRequestCliFormat);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, VelmorTcamCliFormat);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliDisplayStrings);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamSummaryGroupName);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamSummaryOrdered);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageChipInfo);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageEntryInfo);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageFeatureInfo);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageFeaturePrioBucket);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageGroupInfo);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageGroupPerCopyInfo);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageGroupPriorityBucket);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsagePipeInfo);
ZEL_DECLARE_TYPE(VELMOR_TCAM_API, CliShowTcamUsageStageInfo);

}  // namespace VelmorTcam
