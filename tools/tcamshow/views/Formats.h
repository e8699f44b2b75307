// The host's own formatters: what the library leaves to its user.
#pragma once

#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "snapshot/Snapshot.h"
#include "views/EntryJson.h"

namespace tcamshow {

/// A formatter of the library that also has a JSON form.
///
/// It shows the entry that it was given last: what the library's operations do not take, it looks
/// up there. The entry and its texts must live until the entry is shown.
template <class Base>
class EntryFormat : public Base {
 public:
  void entryIs(const Entry& entry) noexcept { entry_ = &entry; }
  const Entry& entry() const noexcept { return *entry_; }

  void formatEntryRequestJson(const VelmorTcam::RequestKey&, const VelmorTcam::RuleId&,
                              const Halvo::String&,
                              const VelmorTcam::VelmorTcamEntryShadow::PtrConst& entryShadow,
                              VelmorTcam::U64, pravo::Printer* printer) const override {
    printEntry(entry(), *entryShadow, *printer);
  }

 private:
  const Entry* entry_ = nullptr;
};

/// A formatter of access lists whose action cell is the entry's action, as it stands, with no bar.
template <class Base>
class ActionFormat : public EntryFormat<Base> {
 public:
  Halvo::String formatActions(const VelmorTcam::VelmorTcamEntryShadow::PtrConst&) const override {
    return Halvo::String(this->entry().action);
  }
};

using IpFormat = ActionFormat<VelmorTcam::IpEntryRequestCliFormat>;
using Ip6Format = ActionFormat<VelmorTcam::Ip6EntryRequestCliFormat>;
using TcamFormat = EntryFormat<VelmorTcam::VelmorTcamCliFormat>;

}  // namespace tcamshow
