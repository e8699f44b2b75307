// The entry-shadow library's enumerations.
#pragma once

#include <span>

#include "Halvo/Types.h"
#include "VelmorPlatformExport.h"
#include "Zel/Enum8.h"

namespace VelmorTcam {

using Halvo::S16;
using Halvo::S32;
using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;

/// What an entry can match on. The numbers are fixed; they rise in the alphabetical order of the
/// names, and those that are not listed are not used here.
enum QualifierType : U8 {
  qualifierDSCP = 8,
  qualifierDstIp = 15,
  qualifierDstIp6 = 20,
  qualifierDstIp6Alt = 25,  ///< stands in for qualifierDstIp6 where that one is not programmed
  qualifierDstMac = 28,
  qualifierEtherType = 36,
  qualifierIp6HopLimit = 92,
  qualifierIp6TrafficClass = 95,
  qualifierIpFrag = 97,
  qualifierIpProtocol = 101,
  qualifierL4DstPort = 116,
  qualifierL4SrcPort = 118,
  qualifierOuterVlanId = 132,
  qualifierSrcIp = 153,
  qualifierSrcIp6 = 158,
  qualifierSrcIp6Alt = 163,  ///< stands in for qualifierSrcIp6 where that one is not programmed
  qualifierSrcMac = 164,
  qualifierTcpControl = 182,
};

/// The hardware's range checkers.
enum RangeCheckerType : U8 {
  rangeCheckerL4SrcPort = 1,
  rangeCheckerL4DstPort = 2,
  rangeCheckerIpLength = 3,
};

/// How far hardware has got with a qualifier, a range checker or an entry's counters. Formatters
/// tell only programmed from the others.
enum HwQualStatus : U8 {
  hwQualStatusInvalid = 0,  ///< never asked for
  hwQualStatusRequested = 1,
  hwQualStatusAllocated = 2,
  hwQualStatusProgramming = 3,
  hwQualStatusFailed = 4,
  hwQualStatusRemoving = 5,
  hwQualStatusRemoved = 6,
  hwQualStatusProgrammed = 7,  ///< hardware matches on it
};

/// The stage of the pipeline that a TCAM belongs to. Shown as "invalid", "lookup", "ingress",
/// "egress".
enum StageType : U8 {
  stageTypeInvalid = 0,
  stageTypeLookup = 1,
  stageTypeIngress = 2,
  stageTypeEgress = 3,
};

ZEL_DECLARE_ENUM8(VELMOR_PLATFORM_API, QualifierType);
ZEL_DECLARE_ENUM8(VELMOR_PLATFORM_API, RangeCheckerType);
ZEL_DECLARE_ENUM8(VELMOR_PLATFORM_API, HwQualStatus);
ZEL_DECLARE_ENUM8(VELMOR_PLATFORM_API, StageType);

/// All values with their names, ascending by number.
VELMOR_PLATFORM_API std::span<const Zel::EnumValue> qualifierTypeValues() noexcept;
VELMOR_PLATFORM_API std::span<const Zel::EnumValue> rangeCheckerTypeValues() noexcept;

}  // namespace VelmorTcam
