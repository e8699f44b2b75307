// The cells that the tables of access lists share.
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelperReading.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesAssertions.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

namespace {

constexpr U8 protocolIcmp = 1;
constexpr U8 protocolTcp = 6;
constexpr U8 protocolUdp = 17;
constexpr U8 protocolIcmp6 = 58;

// The differences between the source port's cell and the destination port's.
struct PortCell {
  QualifierType type;
  RangeCheckerType rangeChecker;
  const Zel::AssertionSite& unset;
};
constexpr PortCell srcPortCell{qualifierL4SrcPort, rangeCheckerL4SrcPort,
                               assertions::l4SrcPortRecord};
constexpr PortCell dstPortCell{qualifierL4DstPort, rangeCheckerL4DstPort,
                               assertions::l4DstPortRecord};

/// Whether the port qualifiers may carry an ICMP type and code. Asks for the source port in either
/// case: a code is shown only beside its type.
bool hasIcmp(const VelmorTcamEntryShadow::PtrConst& entryShadow) {
  return isProgrammed(entryShadow, qualifierIpProtocol) &&
         isProgrammed(entryShadow, qualifierL4SrcPort);
}

/// The ICMP type or code in `port`, the record of `portType`. See getQualifierL4PortIfIcmp.
U16 icmpOf(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType portType,
           const ValueAndMask& port, bool& isIcmp) {
  ValueAndMask const protocol =
      hwQual(entryShadow, qualifierIpProtocol, assertions::getQualifierL4PortIfIcmpProtocol);
  U8 const number = static_cast<U8>(protocol.value);
  if (number != protocolIcmp && number != protocolIcmp6) return 0;
  if ((port.mask & 0xFF00) != 0 && portType == qualifierL4SrcPort) {
    isIcmp = true;
    return static_cast<U16>(static_cast<U16>(port.value) >> 8);
  }
  if ((port.mask & 0x00FF) != 0 && portType == qualifierL4DstPort) {
    isIcmp = true;
    return static_cast<U16>(port.value & 0xFF);
  }
  return 0;
}

Halvo::String formatPort(const EntryRequestCliFormat& format,
                         const VelmorTcamEntryShadow::PtrConst& entryShadow, const PortCell& cell) {
  Halvo::String range = format.formatQualifierRangeCheck(entryShadow, cell.rangeChecker);
  if (!range.empty()) return range;
  if (!isProgrammed(entryShadow, cell.type)) return Zel::_fmt("%11s|", "*");

  ValueAndMask const qual = hwQual(entryShadow, cell.type, cell.unset);
  bool isIcmp = false;
  U16 const icmp = hasIcmp(entryShadow) ? icmpOf(entryShadow, cell.type, qual, isIcmp) : U16{0};
  if (isIcmp) return Zel::_fmt("%11d|", icmp);

  U16 const low = static_cast<U16>(qual.value);
  U16 const high = static_cast<U16>(qual.value | ~qual.mask);  // every free bit set
  if (low == 0 && high == 0xFFFF) return Zel::_fmt("%11s|", "*");
  if (low == high) return Zel::_fmt("%11d|", low);
  return Zel::_fmt("%11s|", Zel::_fmt("%d-%d", low, high));
}

}  // namespace

U16 getQualifierL4PortIfIcmp(const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                             QualifierType portType, bool& isIcmp) {
  if (!hasIcmp(entryShadow)) return 0;
  return icmpOf(entryShadow, portType,
                hwQual(entryShadow, portType, assertions::getQualifierL4PortIfIcmp), isIcmp);
}

Halvo::String EntryRequestCliFormat::formatSequenceNum(U32 sequenceNum) const {
  if (sequenceNum == RuleId::dropSequenceNum) return Zel::_fmt("%-7s|", "Drop");
  return Zel::_fmt("%-7u|", sequenceNum);
}

Halvo::String EntryRequestCliFormat::formatQualifierIpProtocol(const PtrConst& entryShadow) const {
  if (!isProgrammed(entryShadow, qualifierIpProtocol)) return Zel::_fmt(" %-6s|", "*");
  U8 const protocol =
      static_cast<U8>(hwQual(entryShadow, qualifierIpProtocol, assertions::ipProtocolRecord).value);
  switch (protocol) {
    case 0:
      return Zel::_fmt(" %-6s|", "*");
    case protocolTcp:
      return Zel::_fmt(" %-6s|", "TCP");
    case protocolUdp:
      return Zel::_fmt(" %-6s|", "UDP");
    case protocolIcmp:
      return Zel::_fmt(" %-6s|", "ICMP");
    case protocolIcmp6:
      return Zel::_fmt(" %-6s|", "ICMPv6");
    default:
      return Zel::_fmt(" %-6s|", Zel::_fmt("0x%02x", protocol));
  }
}

Halvo::String EntryRequestCliFormat::formatQualifierOuterVlanId(const PtrConst& entryShadow) const {
  if (!isProgrammed(entryShadow, qualifierOuterVlanId)) return Zel::_fmt("%11s|%11s|", "*", "*");
  ValueAndMask const vlan =
      hwQual(entryShadow, qualifierOuterVlanId, assertions::outerVlanIdRecord);
  return Zel::_fmt("%11u|%11u|", vlan.value, vlan.mask);
}

Halvo::String EntryRequestCliFormat::formatQualifierL4SrcPort(const PtrConst& entryShadow) const {
  return formatPort(*this, entryShadow, srcPortCell);
}

Halvo::String EntryRequestCliFormat::formatQualifierL4DstPort(const PtrConst& entryShadow) const {
  return formatPort(*this, entryShadow, dstPortCell);
}

Halvo::String EntryRequestCliFormat::formatQualifierTcpControl(const PtrConst& entryShadow) const {
  // Blank when absent; the neighbouring cells show "*".
  if (!isProgrammed(entryShadow, qualifierTcpControl)) return Zel::_fmt(" %-6s|", "");
  ValueAndMask const qual = hwQual(entryShadow, qualifierTcpControl, assertions::tcpControlRecord);
  U16 const flags = Trelix::NetU16(static_cast<U16>(qual.value)).value();
  char text[] = "FSRPAU";
  for (unsigned bit = 0; bit < 6; ++bit) {
    if ((flags >> bit & 1) == 0) text[bit] = ' ';
  }
  return Zel::_fmt(" %-6s|", std::string_view(text, 6));
}

Halvo::String EntryRequestCliFormat::formatQualifierIpLength(const PtrConst& entryShadow,
                                                             const Halvo::String& format) const {
  Zel::assertThat(!format.empty(), assertions::formatQualifierIpLength);
  // The range cell keeps its bar inside the caller's cell. Scripts rely on the two bars.
  Halvo::String range = formatQualifierRangeCheck(entryShadow, rangeCheckerIpLength);
  if (range.empty()) range = "*";
  return Zel::_fmt(Zel::runtimeFormat(format), range);
}

Halvo::String EntryRequestCliFormat::formatQualifierRangeCheck(
    const PtrConst& entryShadow, RangeCheckerType rangeChecker) const {
  RangeCheckerStatus const* const range = entryShadow->rangeChecker().find(rangeChecker);
  if (range == nullptr || range->status() != hwQualStatusProgrammed) return {};
  return Zel::_fmt("%11s|", Zel::_fmt("%d-%d", range->low(), range->high()));
}

}  // namespace VelmorTcam
