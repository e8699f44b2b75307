// The module's classes and value types as described types: what Zel::typeOf and Zel::Value need.
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

/// Each type's descriptor. By name, and by number for attributes, Zel/Types/Reflect.h reaches the
/// same:
///
///     Zel::typeOf<CliFormat>().attributes
///     Zel::findType("VelmorTcam::CliFormat")
///
/// Value types number their attributes from 2, node types from 130, both in declared order; a
/// derived class goes on from its base's last. The number before a queue belongs to its element
/// type: featureInfo is 132, as tcamSummaryGroupName is.
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
