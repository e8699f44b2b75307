#include "views/FillShadow.h"

namespace tcamshow {

namespace {

using VelmorTcam::HwQualStatus;

void fill(VelmorTcam::VelmorTcamEntryShadow& shadow, const Qualifier& qualifier) {
  auto const type = static_cast<VelmorTcam::QualifierType>(qualifier.type);
  auto const status = static_cast<HwQualStatus>(qualifier.status);
  switch (qualifier.kind) {
    case QualifierKind::word:
    case QualifierKind::ip:
      shadow.hwQualIs(type, VelmorTcam::Qualifier(qualifier.value, qualifier.mask), status);
      return;
    case QualifierKind::ip6:
      shadow.hwQualIs(type,
                      VelmorTcam::Ip6AddrQualifier(Trelix::Ip6Addr::fromBytes(qualifier.ip6.value),
                                                   Trelix::Ip6Addr::fromBytes(qualifier.ip6.mask)),
                      status);
      return;
    case QualifierKind::mac:
      shadow.hwQualIs(type,
                      VelmorTcam::EthAddrQualifier(Trelix::EthAddr::fromBytes(qualifier.mac.value),
                                                   Trelix::EthAddr::fromBytes(qualifier.mac.mask)),
                      status);
      return;
  }
}

}  // namespace

Halvo::Ptr<const VelmorTcam::VelmorTcamEntryShadow> shadowOf(const Entry& entry) {
  auto shadow = Halvo::makePtr<VelmorTcam::VelmorTcamEntryShadow>(entry.shadowId);
  shadow->counterStatusIs(entry.counterStatus);
  for (const Qualifier& qualifier : entry.qualifiers) fill(*shadow, qualifier);
  for (const RangeChecker& range : entry.rangeCheckers) {
    shadow->rangeCheckerIs(static_cast<VelmorTcam::RangeCheckerType>(range.type),
                           VelmorTcam::RangeCheckerStatus(range.low, range.high,
                                                          static_cast<HwQualStatus>(range.status)));
  }
  return shadow;
}

}  // namespace tcamshow
