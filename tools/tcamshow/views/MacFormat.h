// The row of the MAC table, which is the host's to make.
#pragma once

#include "views/Formats.h"

namespace tcamshow {

/// One line an entry, each cell as wide as the header's and never cut. A MAC address or ether type
/// that is absent is blank, a VLAN "*". The hits end the line where the counters are programmed.
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
