// The entry-shadow library's enumerations.
//
// Threads: constants and pure functions; safe from any thread.
#pragma once

#include <span>

#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/Enum8.h"
#include "Zel/Types/TypeModule.h"

namespace VelmorTcam {

using Halvo::S16;
using Halvo::S32;
using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;

/// The fields that an entry can match on. The numbers are fixed, and rise in the alphabetical order
/// of the names. Numbers that are not listed are not used here.
///
/// Each type takes one kind of record: a Qualifier, an Ip6AddrQualifier or an EthAddrQualifier. For
/// a Qualifier, the comment says what its value and mask mean. A type that was given another kind
/// of record reads as not set.
enum QualifierType : U8 {
  qualifierDSCP = 8,          ///< Qualifier: the type-of-service byte
  qualifierDstIp = 15,        ///< Qualifier: IPv4 address, first octet in the most significant byte
  qualifierDstIp6 = 20,       ///< Ip6AddrQualifier
  qualifierDstIp6Alt = 25,    ///< as qualifierDstIp6; used where that one is not programmed
  qualifierDstMac = 28,       ///< EthAddrQualifier
  qualifierEtherType = 36,    ///< Qualifier: ether type, 0x800 for IPv4
  qualifierIp6HopLimit = 92,  ///< Qualifier: hop limit
  qualifierIp6TrafficClass = 95,  ///< Qualifier: traffic class byte
  /// Qualifier: 1 and 2 mean not a fragment, 3 means a fragment. The mask is not shown.
  qualifierIpFrag = 97,
  /// Qualifier: IP protocol number in the low 8 bits. The mask is not shown.
  qualifierIpProtocol = 101,
  /// Qualifier: port, in the low 16 bits of value and mask. For ICMP and ICMPv6 the low byte is the
  /// code.
  qualifierL4DstPort = 116,
  /// As qualifierL4DstPort. For ICMP and ICMPv6 the high byte (bits 8 to 15) is the type.
  qualifierL4SrcPort = 118,
  qualifierOuterVlanId = 132,  ///< Qualifier: VLAN id; all 32 bits are shown
  qualifierSrcIp = 153,        ///< as qualifierDstIp
  qualifierSrcIp6 = 158,       ///< as qualifierDstIp6
  qualifierSrcIp6Alt = 163,    ///< as qualifierSrcIp6; used where that one is not programmed
  qualifierSrcMac = 164,       ///< EthAddrQualifier
  /// Qualifier: TCP flags in the low bits: 1 FIN, 2 SYN, 4 RST, 8 PSH, 16 ACK, 32 URG. The mask is
  /// not shown.
  qualifierTcpControl = 182,
};

/// The range checkers of the hardware.
enum RangeCheckerType : U8 {
  rangeCheckerL4SrcPort = 1,  ///< ports
  rangeCheckerL4DstPort = 2,  ///< ports
  rangeCheckerIpLength = 3,   ///< bytes of the IP packet
};

/// How far the hardware has programmed a qualifier, a range checker or the counters of an entry.
/// Formatters only distinguish hwQualStatusProgrammed from all other values.
enum HwQualStatus : U8 {
  hwQualStatusInvalid = 0,  ///< never requested
  hwQualStatusRequested = 1,
  hwQualStatusAllocated = 2,
  hwQualStatusProgramming = 3,
  hwQualStatusFailed = 4,
  hwQualStatusRemoving = 5,
  hwQualStatusRemoved = 6,
  hwQualStatusProgrammed = 7,  ///< the hardware matches on it
};

/// The pipeline stage that a TCAM belongs to. Shown as "invalid", "lookup", "ingress", "egress".
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

/// All values with their names, by ascending number.
VELMOR_PLATFORM_API std::span<const Zel::EnumValue> qualifierTypeValues() noexcept;
VELMOR_PLATFORM_API std::span<const Zel::EnumValue> rangeCheckerTypeValues() noexcept;

}  // namespace VelmorTcam
