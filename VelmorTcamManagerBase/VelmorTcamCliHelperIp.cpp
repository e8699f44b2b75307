// The IPv4 table's own cells, and its row.
#include "VelmorTcamManagerBase/VelmorTcamCliHelperCells.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelperReading.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelperRow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesAssertions.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesTrace.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

namespace {

Halvo::String dottedQuad(U32 word) { return Trelix::IpAddr::fromHostOrder(word).stringValue(); }

Halvo::String formatIp(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type,
                       const Zel::AssertionSite& unset) {
  if (!isProgrammed(entryShadow, type)) return Zel::_fmt("%15s|%15s|", "*", "*");
  ValueAndMask const qual = hwQual(entryShadow, type, unset);
  if (qual.mask == 0xFFFFFFFF) return Zel::_fmt("%15s|%15s|", dottedQuad(qual.value), "*");
  if (qual.mask == 0) return Zel::_fmt("%15s|%15s|", "*", "*");
  return Zel::_fmt("%15s|%15s|", dottedQuad(qual.value), dottedQuad(qual.mask));
}

}  // namespace

Halvo::String formatDscp(const VelmorTcamEntryShadow::PtrConst& entryShadow,
                         const Zel::AssertionSite& unset) {
  if (!isProgrammed(entryShadow, qualifierDSCP)) return Zel::_fmt("%10s|", "");
  ValueAndMask const qual = hwQual(entryShadow, qualifierDSCP, unset);
  return Zel::_fmt("%10s|", Zel::_fmt("%d/0x%02X", qual.value, qual.mask));
}

Halvo::String IpEntryRequestCliFormat::formatEntryRequest(const RequestKey&, const RuleId& ruleId,
                                                          const Halvo::String&,
                                                          const PtrConst& entryShadow,
                                                          U64 hits) const {
  VELMOR_TCAM_TRACE(497, "formatEntryRequest", "formatEntryRequest");
  Halvo::String const first[] = {
      Zel::_fmt("%-10lu|", entryShadow->shadowId()),
      formatSequenceNum(ruleId.sequenceNum()),
      formatQualifierIpProtocol(entryShadow),
      formatQualifierSrcIp(entryShadow),
      formatQualifierL4SrcPort(entryShadow),
      formatQualifierOuterVlanId(entryShadow),
      formatHits(entryShadow, hits),
  };
  Halvo::String const second[] = {
      formatQualifierDSCP(entryShadow),
      formatQualifierIpFrag(entryShadow),
      formatQualifierTcpControl(entryShadow),
      formatQualifierDstIp(entryShadow),
      formatQualifierL4DstPort(entryShadow),
      formatQualifierIpLength(entryShadow, "%11s|"),
      formatActions(entryShadow),
  };
  return joinLines(first, second);
}

Halvo::String IpEntryRequestCliFormat::formatQualifierSrcIp(const PtrConst& entryShadow) const {
  return formatIp(entryShadow, qualifierSrcIp, assertions::srcIpRecord);
}

Halvo::String IpEntryRequestCliFormat::formatQualifierDstIp(const PtrConst& entryShadow) const {
  return formatIp(entryShadow, qualifierDstIp, assertions::dstIpRecord);
}

Halvo::String IpEntryRequestCliFormat::formatQualifierDSCP(const PtrConst& entryShadow) const {
  return formatDscp(entryShadow, assertions::dscpRecord);
}

Halvo::String IpEntryRequestCliFormat::formatQualifierIpFrag(const PtrConst& entryShadow) const {
  const char* text = "*";
  if (isProgrammed(entryShadow, qualifierIpFrag)) {
    switch (hwQual(entryShadow, qualifierIpFrag, assertions::ipFragRecord).value) {
      case 1:
      case 2:
        text = "N";
        break;
      case 3:
        text = "Y";
        break;
      default:
        break;
    }
  }
  return Zel::_fmt(" %3s   |", text);
}

}  // namespace VelmorTcam
