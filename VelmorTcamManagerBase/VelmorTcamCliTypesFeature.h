// The leaves of the usage tree: the record of one TCAM entry, and the feature that owns the
// entries.
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

/// One TCAM entry of the usage display. A plain value.
///
/// Invariant: priority and id identify the record. Only assigning a whole record changes them.
/// Description and hits take no part in comparisons.
///
/// Threads: distinct entries may be used by distinct threads. Any number of threads may read an
/// entry that nobody changes.
///
///     CliShowTcamUsageEntryInfo entry(10, 5);
///     entry.descriptionIs("permit ip any any");
///     entry.hitsIs(3);
class VELMOR_TCAM_API CliShowTcamUsageEntryInfo {
 public:
  /// The description is empty and the hits are 0.
  CliShowTcamUsageEntryInfo(U32 entryPriority, U32 entryId) noexcept
      : entryPriority_(entryPriority), entryId_(entryId) {}
  /// Reads the text form (see valueToSequence) from the front of `in` and moves `in` past it.
  /// Throws Zel::ParseError, which names the attribute and quotes the text. `in` then stands at the
  /// fault.
  explicit CliShowTcamUsageEntryInfo(Zel::CharRange& in);

  U32 entryPriority() const noexcept { return entryPriority_; }
  U32 entryId() const noexcept { return entryId_; }
  /// Free text, of any bytes.
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

/// The order as one number. A search in a tree of entries compares numbers and reads no record.
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
/// Invariant: entrySet holds each pair of priority and id once. It owns copies of the entries. The
/// name never changes.
///
/// A feature lives by reference count. Its memory comes from the slab allocator, and
/// memAllocationTracker_ counts each object. The destructor sets flagBeingDestroyed, then empties
/// the set.
///
/// Threads: same as CliShowTcamUsageChipInfo.
///
///     auto feature = cliShowTcamUsageFeatureInfoFactory("acl");
///     feature->entrySetIs(entry);
///     for (auto const& e : feature->entrySet()) std::cout << e.description();
class VELMOR_TCAM_API CliShowTcamUsageFeatureInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  /// The tag under which the elements of entrySet are counted.
  VELMOR_COLLECTION_TAG(TN_EntrySet);
  using EntrySet = RecordSet<CliShowTcamUsageFeatureInfo, CliShowTcamUsageEntryInfo, TN_EntrySet>;

  explicit CliShowTcamUsageFeatureInfo(Halvo::String cliFeatureName) noexcept;
  ~CliShowTcamUsageFeatureInfo() override;
  /// Same as cliShowTcamUsageFeatureInfoFactory.
  static Halvo::Ptr<CliShowTcamUsageFeatureInfo> CliShowTcamUsageFeatureInfoIs(
      Halvo::String cliFeatureName);

  /// The feature's name as the CLI shows it.
  const Halvo::String& cliFeatureName() const noexcept { return cliFeatureName_; }
  /// Two counts that the CLI keeps here, 0 at first. The library does not derive them from
  /// entrySet.
  U32 usedEntries() const noexcept { return usedEntries_; }
  void usedEntriesIs(U32 usedEntries) noexcept { usedEntries_ = usedEntries; }
  U32 reservedEntries() const noexcept { return reservedEntries_; }
  void reservedEntriesIs(U32 reservedEntries) noexcept { reservedEntries_ = reservedEntries; }

  /// The entries by descending priority, then ascending id, with their count, generations and
  /// iterators.
  const EntrySet& entrySet() const noexcept { return entrySet_; }
  /// Adds a copy of the entry. Does nothing if an entry with its priority and id is present.
  void entrySetIs(const CliShowTcamUsageEntryInfo& entry) { entrySet_.recordIs(entry); }
  /// Whether an entry with its priority and id is present.
  bool entrySetHas(const CliShowTcamUsageEntryInfo& entry) const noexcept {
    return entrySet_.has(entry);
  }
  /// Removes the entry with its priority and id. False if there is none.
  bool entrySetDel(const CliShowTcamUsageEntryInfo& entry) { return entrySet_.recordDel(entry); }
  /// Removes the entry under the iterator. False at the end.
  ///
  /// If an entry was removed since the iterator was made (its generation() is not the set's), this
  /// removes the entry with the key that the iterator last held. That holds at the end too. False
  /// if that entry is gone.
  ///
  /// The iterator must be this set's. Where debugging is on (no NDEBUG), another set's stops the
  /// process (assertion "at.owner == this").
  bool entrySetDel(const EntrySet::iterator& at) { return entrySet_.recordDel(at); }
  void entrySetDelAll() noexcept { entrySet_.recordDelAll(); }

 private:
  // Members are destroyed in reverse order: the entries before the name.
  Halvo::String const cliFeatureName_;
  U32 usedEntries_ = 0;
  U32 reservedEntries_ = 0;
  EntrySet entrySet_;
};

/// A new feature with this name and without entries. The pointer holds the only reference.
VELMOR_TCAM_API Halvo::Ptr<CliShowTcamUsageFeatureInfo> cliShowTcamUsageFeatureInfoFactory(
    Halvo::String cliFeatureName);

}  // namespace VelmorTcam
