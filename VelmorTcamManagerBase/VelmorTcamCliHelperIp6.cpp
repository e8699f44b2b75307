// The IPv6 table's own cells, and its row.
#include <charconv>
#include <string_view>

#include "VelmorTcamManagerBase/VelmorTcamCliHelperCells.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelperReading.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelperRow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesAssertions.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesTrace.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

namespace {

// Shows the address of `first` or, if that is not programmed, the address of `fallback`.
Halvo::String formatIp6(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType first,
                        QualifierType fallback) {
  Ip6AddrQualifier qual;
  for (QualifierType const type : {first, fallback}) {
    if (!isProgrammed(entryShadow, type)) continue;
    // A record that was never set reads as zero, and so shows as any address.
    qual = hwRecord<&QualifierData::ip6Qual>(entryShadow, type);
    break;
  }
  U8 const length = Trelix::ip6AddrToPrefixLen(qual.mask());
  if (length == 0) return Zel::_fmt("%39s|%13s|", "*", "*");
  // Write the address straight into the cell. A string in between would be one more copy that waits
  // for the store buffer.
  char address[Trelix::Ip6Addr::maxTextSize];
  std::string_view const addressText(address, qual.address().write(address));
  if (length == 128) return Zel::_fmt("%39s|%13s|", addressText, "*");
  char prefix[24];  // larger than a length: short texts are moved as words
  const char* const prefixEnd = std::to_chars(prefix, prefix + sizeof prefix, length).ptr;
  return Zel::_fmt("%39s|%13s|", addressText, std::string_view(prefix, prefixEnd));
}

}  // namespace

Halvo::String Ip6EntryRequestCliFormat::formatEntryRequest(const RequestKey&, const RuleId& ruleId,
                                                           const Halvo::String&,
                                                           const PtrConst& entryShadow,
                                                           U64 hits) const {
  VELMOR_TCAM_TRACE(562, "formatEntryRequest", "formatEntryRequest");
  Halvo::String const first[] = {
      Zel::_fmt("%-5lu|", entryShadow->shadowId()),
      // Not a virtual call: a subclass that changes the cell does not change this row.
      Ip6EntryRequestCliFormat::formatSequenceNum(ruleId.sequenceNum()),
      formatQualifierIpProtocol(entryShadow),
      formatQualifierSrcIp6(entryShadow),
      formatQualifierL4SrcPort(entryShadow),
      formatQualifierOuterVlanId(entryShadow),
      formatHits(entryShadow, hits),
  };
  // From the second cell on, the second and third lines stand one column to the right of the
  // header. Scripts rely on it.
  Halvo::String const second[] = {
      Zel::_fmt("%5s|%10s|", "", ""),     formatQualifierTcpControl(entryShadow),
      formatQualifierDstIp6(entryShadow), formatQualifierL4DstPort(entryShadow),
      formatActions(entryShadow),
  };
  Halvo::String const third[] = {
      Zel::_fmt("%5s|", ""),
      formatQualifierIp6TrafficClass(entryShadow),
      Zel::_fmt("%7s|%39s|", "", ""),
      formatQualifierIpLength(entryShadow, "%13s|"),
      formatQualifierIp6HopLimit(entryShadow),
  };
  return joinLines(first, second, third);
}

Halvo::String Ip6EntryRequestCliFormat::formatSequenceNum(U32 sequenceNum) const {
  if (sequenceNum == RuleId::dropSequenceNum) return Zel::_fmt("%-9s|", "Drop");
  return Zel::_fmt("%-9u|", sequenceNum);
}

Halvo::String Ip6EntryRequestCliFormat::formatQualifierDSCP(const PtrConst& entryShadow) const {
  return formatDscp(entryShadow, assertions::ip6DscpRecord);
}

Halvo::String Ip6EntryRequestCliFormat::formatQualifierSrcIp6(const PtrConst& entryShadow) const {
  return formatIp6(entryShadow, qualifierSrcIp6, qualifierSrcIp6Alt);
}

Halvo::String Ip6EntryRequestCliFormat::formatQualifierDstIp6(const PtrConst& entryShadow) const {
  return formatIp6(entryShadow, qualifierDstIp6, qualifierDstIp6Alt);
}

Halvo::String Ip6EntryRequestCliFormat::formatQualifierIp6TrafficClass(
    const PtrConst& entryShadow) const {
  Halvo::String text;
  if (isProgrammed(entryShadow, qualifierIp6TrafficClass)) {
    ValueAndMask const qual =
        hwQual(entryShadow, qualifierIp6TrafficClass, assertions::ip6TrafficClassRecord);
    if (qual.mask != 0) text = Zel::_fmt("%d/0x%02X", qual.value, qual.mask);
  }
  return Zel::_fmt(" %8s |", text);
}

Halvo::String Ip6EntryRequestCliFormat::formatQualifierIp6HopLimit(
    const PtrConst& entryShadow) const {
  Halvo::String text;
  if (isProgrammed(entryShadow, qualifierIp6HopLimit)) {
    ValueAndMask const qual =
        hwQual(entryShadow, qualifierIp6HopLimit, assertions::ip6HopLimitRecord);
    if (qual.mask != 0) text = Zel::_fmt("%d", qual.value);
  }
  return Zel::_fmt("%11s|", text);
}

}  // namespace VelmorTcam
