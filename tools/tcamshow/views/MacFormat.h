// The row of the MAC table. The library leaves it to the host.
#pragma once

#include "views/Formats.h"

namespace tcamshow {

/// One line for each entry. Each cell is as wide as its header, and is never cut. An absent MAC
/// address or ether type is blank, an absent VLAN is "*". The hits come last, if the counters are
/// programmed.
class MacFormat : public ActionFormat<VelmorTcam::MacEntryRequestCliFormat> {
 public:
  Halvo::String formatEntryRequest(const VelmorTcam::RequestKey& requestKey,
                                   const VelmorTcam::RuleId& ruleId,
                                   const Halvo::String& description,
                                   const VelmorTcam::VelmorTcamEntryShadow::PtrConst& entryShadow,
                                   VelmorTcam::U64 hits) const override;
  /// "%-5u|"; "Drop" for 4294967295.
  Halvo::String formatSequenceNum(VelmorTcam::U32 sequenceNum) const override;
};

}  // namespace tcamshow
