// One entry, in the forms that the row benchmarks compare.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "Halvo/Ptr.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace velmorbench {

/// The fields of an entry, with no shadow, no collections and no counts.
struct PlainEntry {
  std::uint64_t id = 123456;
  std::uint32_t sequence = 120;
  std::uint32_t protocol = 6;
  std::uint32_t srcIp = 0xC0A80A00, srcIpMask = 0xFFFFFF00;
  std::uint32_t dstIp = 0x0A141E00, dstIpMask = 0xFFFFFE00;
  std::uint32_t srcPort = 1024, srcPortMask = 64512;
  std::uint32_t dstPort = 443, dstPortMask = 65535;
  std::uint32_t vlan = 100, vlanMask = 4095;
  std::uint32_t dscp = 46, dscpMask = 63;
  std::uint32_t fragment = 1;
  std::uint32_t tcpControl = 18, tcpControlMask = 63;
  std::uint32_t etherType = 0x800, etherTypeMask = 0xFFFF;
  std::int32_t lengthLow = 64, lengthHigh = 1500;
  std::uint64_t hits = 987654321;
  const char* action = "permit";
};

/// The same entry as a shadow: ten programmed qualifiers, a range checker, counters.
inline Halvo::Ptr<VelmorTcam::VelmorTcamEntryShadow> shadowOf(const PlainEntry& e) {
  using namespace VelmorTcam;
  auto shadow = Halvo::makePtr<VelmorTcamEntryShadow>(e.id);
  shadow->hwQualIs(qualifierIpProtocol, Qualifier(e.protocol, 0xFF));
  shadow->hwQualIs(qualifierSrcIp, Qualifier(e.srcIp, e.srcIpMask));
  shadow->hwQualIs(qualifierDstIp, Qualifier(e.dstIp, e.dstIpMask));
  shadow->hwQualIs(qualifierL4SrcPort, Qualifier(e.srcPort, e.srcPortMask));
  shadow->hwQualIs(qualifierL4DstPort, Qualifier(e.dstPort, e.dstPortMask));
  shadow->hwQualIs(qualifierOuterVlanId, Qualifier(e.vlan, e.vlanMask));
  shadow->hwQualIs(qualifierDSCP, Qualifier(e.dscp, e.dscpMask));
  shadow->hwQualIs(qualifierIpFrag, Qualifier(e.fragment, 3));
  shadow->hwQualIs(qualifierTcpControl, Qualifier(e.tcpControl, e.tcpControlMask));
  shadow->hwQualIs(qualifierEtherType, Qualifier(e.etherType, e.etherTypeMask));
  shadow->rangeCheckerIs(rangeCheckerIpLength, RangeCheckerStatus(e.lengthLow, e.lengthHigh));
  shadow->counterStatusIs(hwQualStatusProgrammed);
  return shadow;
}

/// The library's formatter with an action cell.
template <class Base>
class WithAction : public Base {
 public:
  Halvo::String formatActions(const VelmorTcam::VelmorTcamEntryShadow::PtrConst&) const override {
    return "permit";
  }
};

}  // namespace velmorbench
