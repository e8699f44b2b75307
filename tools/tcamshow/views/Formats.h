// The host's formatters: they add the parts that the library leaves to its user.
#pragma once

#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "snapshot/Snapshot.h"
#include "views/EntryJson.h"

namespace tcamshow {

/// A formatter of the library that also has a JSON form.
///
/// Set the entry before each row: the formatter takes from it what the library's operations do not
/// pass on. The entry and its texts must live until the entry is shown.
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

/// A formatter of access lists. Its action cell is the entry's action, unchanged and without a bar.
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
