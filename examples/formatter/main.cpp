// Prints an entry of an IPv4 access list. The library formats the match; the access list supplies
// the action.
#include <cstdio>

#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

class PermitFormat : public VelmorTcam::IpEntryRequestCliFormat {
 public:
  Halvo::String formatActions(const PtrConst&) const override { return "permit"; }
};
// A class without formatActions would compile too, but stop the process at the first entry.
static_assert(VelmorTcam::CompleteFormatter<PermitFormat>);

int main() {
  VelmorTcam::initializeCliHeaders();
  auto const format = Halvo::makePtr<PermitFormat>();
  format->initializedIs(true);

  auto const shadow = Halvo::makePtr<VelmorTcam::VelmorTcamEntryShadow>(17);  // the entry's id
  shadow->hwQualIs(VelmorTcam::qualifierSrcIp, VelmorTcam::Qualifier(0x0A000000, 0xFF000000));
  shadow->hwQualIs(VelmorTcam::qualifierIpProtocol, VelmorTcam::Qualifier(6, 0xFF));
  shadow->rangeCheckerIs(VelmorTcam::rangeCheckerL4DstPort,
                         VelmorTcam::RangeCheckerStatus(8000, 8099));
  shadow->counterStatusIs(VelmorTcam::hwQualStatusProgrammed);

  int const out = fileno(stdout);
  dprintf(out, "%s", VelmorTcam::getCliHeader(format->headerType()).c_str());
  format->displayEntryRequest(static_cast<Halvo::U32>(out), VelmorTcam::RequestKey("office"),
                              VelmorTcam::RuleId(10), "tcp from 10/8", shadow, 1234, nullptr);
}
