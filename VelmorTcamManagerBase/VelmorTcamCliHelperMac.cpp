// The MAC table's own cells. They have no width: a subclass supplies the row and its widths.
#include "VelmorTcamManagerBase/VelmorTcamCliHelperReading.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesAssertions.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

Halvo::String MacEntryRequestCliFormat::formatQualifierMacAddr(
    const PtrConst& entryShadow, QualifierType qualifierMacAddr) const {
  Zel::assertThat(qualifierMacAddr == qualifierSrcMac || qualifierMacAddr == qualifierDstMac,
                  assertions::macAddrQualifier);
  Halvo::String address;
  Halvo::String mask;
  if (isProgrammed(entryShadow, qualifierMacAddr)) {
    EthAddrQualifier const qual = hwRecord<&QualifierData::ethQual>(entryShadow, qualifierMacAddr);
    Zel::assertThat(static_cast<bool>(qual), assertions::macAddrRecord);
    address = qual.address().stringValue();
    mask = qual.mask().stringValue();
  }
  return Zel::_fmt("%s|%s|", address, mask);
}

Halvo::String MacEntryRequestCliFormat::formatQualifierEtherType(
    const PtrConst& entryShadow) const {
  // Blank when absent, "*" for any type. The mask is never shown.
  Halvo::String text;
  if (isProgrammed(entryShadow, qualifierEtherType)) {
    ValueAndMask const qual = hwQual(entryShadow, qualifierEtherType, assertions::etherTypeRecord);
    text = qual.mask != 0 ? Zel::_fmt("%xh", qual.value) : Halvo::String("*");
  }
  return Zel::_fmt("%s|", text);
}

}  // namespace VelmorTcam
