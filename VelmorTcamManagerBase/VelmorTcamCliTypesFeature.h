// The leaves of the usage tree: the record of one TCAM entry, and the feature that owns entries.
#pragma once

#include <functional>
#include <utility>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesCollections.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/CharRange.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/RbTree.h"
#include "Zel/Types/NodeType.h"

namespace VelmorTcam {

using Halvo::S16;
using Halvo::U32;
using Halvo::U64;

/// One TCAM entry of the usage display.
///
/// Invariant: priority and id are the record's identity and do not change but by assignment of a
/// whole record. Description and hits take no part in equality or order. A plain value.
///
/// Threads: distinct entries may be used from distinct threads, and one that nobody changes from
/// any.
///
///     CliShowTcamUsageEntryInfo entry(10, 5);
///     entry.descriptionIs("permit ip any any");
///     entry.hitsIs(3);
class VELMOR_TCAM_API CliShowTcamUsageEntryInfo {
 public:
  /// No description, no hits.
  CliShowTcamUsageEntryInfo(U32 entryPriority, U32 entryId) noexcept
      : entryPriority_(entryPriority), entryId_(entryId) {}
  /// Reads the text form (see valueToSequence) off the front of `in` and advances past it. Throws
  /// Zel::ParseError, which names the attribute and the text; `in` then stands where the fault is.
  explicit CliShowTcamUsageEntryInfo(Zel::CharRange& in);

  U32 entryPriority() const noexcept { return entryPriority_; }
  U32 entryId() const noexcept { return entryId_; }
  /// Free text; any bytes.
  const Halvo::String& description() const noexcept { return description_; }
  void descriptionIs(Halvo::String description) { description_ = std::move(description); }
  U64 hits() const noexcept { return hits_; }
  void hitsIs(U64 hits) noexcept { hits_ = hits; }

  friend bool operator==(const CliShowTcamUsageEntryInfo& a,
                         const CliShowTcamUsageEntryInfo& b) noexcept {
    return a.entryPriority_ == b.entryPriority_ && a.entryId_ == b.entryId_;
  }
  /// Higher priority first, then lower id.
  friend bool operator<(const CliShowTcamUsageEntryInfo& a,
                        const CliShowTcamUsageEntryInfo& b) noexcept {
    return a.entryPriority_ != b.entryPriority_ ? a.entryPriority_ > b.entryPriority_
                                                : a.entryId_ < b.entryId_;
  }

 private:
  U32 entryPriority_ = 0;
  U32 entryId_ = 0;
  Halvo::String description_;
  U64 hits_ = 0;
};

/// Appends the record's text form:
///
///     VelmorTcam::CliShowTcamUsageEntryInfo{entryPriority=10,entryId=5,description="a",hits=3}
///
/// See Zel/Types/Record.h for the notation.
VELMOR_TCAM_API void valueToSequence(Halvo::String& out, const CliShowTcamUsageEntryInfo& entry);

}  // namespace VelmorTcam

/// The whole order in one number: the trees of entries never look at a record to find another.
template <>
struct Zel::RbTreeOrder<VelmorTcam::CliShowTcamUsageEntryInfo,
                        std::less<VelmorTcam::CliShowTcamUsageEntryInfo>> {
  static constexpr bool exact = true;
  static Halvo::U64 hint(const VelmorTcam::CliShowTcamUsageEntryInfo& entry) noexcept {
    return Halvo::U64{~entry.entryPriority()} << 32 | entry.entryId();
  }
};

namespace VelmorTcam {

/// One feature that uses TCAM entries, and those entries.
///
/// Invariant: entrySet holds each priority and id once, and owns copies of what was put in. The
/// name is fixed at construction.
///
/// Lives by reference count; its memory is the slab allocator's, and each object is counted in
/// memAllocationTracker_. Its destructor sets flagBeingDestroyed, then empties the set.
///
/// Threads: as CliShowTcamUsageChipInfo.
///
///     auto feature = cliShowTcamUsageFeatureInfoFactory("acl");
///     feature->entrySetIs(entry);
///     for (auto const& e : feature->entrySet()) std::cout << e.description();
class VELMOR_TCAM_API CliShowTcamUsageFeatureInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  /// What the elements of entrySet are counted under.
  VELMOR_COLLECTION_TAG(TN_EntrySet);
  using EntrySet = RecordSet<CliShowTcamUsageFeatureInfo, CliShowTcamUsageEntryInfo, TN_EntrySet>;

  explicit CliShowTcamUsageFeatureInfo(Halvo::String cliFeatureName) noexcept;
  ~CliShowTcamUsageFeatureInfo() override;
  /// As cliShowTcamUsageFeatureInfoFactory.
  static Halvo::Ptr<CliShowTcamUsageFeatureInfo> CliShowTcamUsageFeatureInfoIs(
      Halvo::String cliFeatureName);

  /// The feature's name as the CLI shows it.
  const Halvo::String& cliFeatureName() const noexcept { return cliFeatureName_; }
  /// Two numbers that the CLI keeps here, 0 at first. Nothing relates them to entrySet.
  U32 usedEntries() const noexcept { return usedEntries_; }
  void usedEntriesIs(U32 usedEntries) noexcept { usedEntries_ = usedEntries; }
  U32 reservedEntries() const noexcept { return reservedEntries_; }
  void reservedEntriesIs(U32 reservedEntries) noexcept { reservedEntries_ = reservedEntries; }

  /// The entries by descending priority, then ascending id: count, generations, iteration.
  const EntrySet& entrySet() const noexcept { return entrySet_; }
  /// Adds a copy of the entry; does nothing where one of its priority and id is present.
  void entrySetIs(const CliShowTcamUsageEntryInfo& entry) { entrySet_.recordIs(entry); }
  /// Whether an entry of its priority and id is present.
  bool entrySetHas(const CliShowTcamUsageEntryInfo& entry) const noexcept {
    return entrySet_.has(entry);
  }
  /// Removes the entry of its priority and id; false when there is none.
  bool entrySetDel(const CliShowTcamUsageEntryInfo& entry) { return entrySet_.recordDel(entry); }
  /// Removes the entry under the iterator; false at the end. Once an entry was removed since the
  /// iterator was made (its generation() is not the set's), it means the key that it last held
  /// instead, also one passed on the way to the end: false when that is gone. Where debugging is
  /// on, another set's iterator stops the process (assertion "at.owner == this").
  bool entrySetDel(const EntrySet::iterator& at) { return entrySet_.recordDel(at); }
  void entrySetDelAll() noexcept { entrySet_.recordDelAll(); }

 private:
  // Destroyed in the reverse order: the entries go before the name.
  Halvo::String const cliFeatureName_;
  U32 usedEntries_ = 0;
  U32 reservedEntries_ = 0;
  EntrySet entrySet_;
};

/// A new feature of that name, without entries, held by the pointer alone.
VELMOR_TCAM_API Halvo::Ptr<CliShowTcamUsageFeatureInfo> cliShowTcamUsageFeatureInfoFactory(
    Halvo::String cliFeatureName);

}  // namespace VelmorTcam
