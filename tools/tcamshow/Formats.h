// The host's own formatters: what the library leaves to its user.
#pragma once

#include <string_view>

#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace tcamshow {

/// A formatter of the library whose action cell is the text that it was given last, as it stands.
template <class Base>
class ActionFormat : public Base {
 public:
  void actionIs(std::string_view action) { action_ = action; }
  Halvo::String formatActions(const VelmorTcam::VelmorTcamEntryShadow::PtrConst&) const override {
    return action_;
  }

 private:
  Halvo::String action_;
};

using IpFormat = ActionFormat<VelmorTcam::IpEntryRequestCliFormat>;

}  // namespace tcamshow
