// The ordered summary: groups by name, and the names recorded for each.
#pragma once

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesCollections.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Collections/RQueue.h"
#include "Zel/Types/NodeType.h"

namespace VelmorTcam {

/// One group of the summary, and the names recorded for it in order of arrival.
///
/// Invariant: the group's name never changes. The queue owns copies of the names and keeps
/// duplicates. Other rules: see CliShowTcamSummaryOrdered.
class VELMOR_TCAM_API CliShowTcamSummaryGroupName : public Halvo::Node {
  ZEL_NODE_TYPE;
  /// The tag under which the slots of the queue are counted.
  VELMOR_COLLECTION_TAG(QE_TcamSummaryGroupName);
  using TcamSummaryGroupNameQueue = Halvo::RQueue<Halvo::String, QE_TcamSummaryGroupName>;

  explicit CliShowTcamSummaryGroupName(Halvo::String groupName) noexcept;
  ~CliShowTcamSummaryGroupName() override;

  const Halvo::String& groupName() const noexcept { return groupName_; }

  /// The names from front to back, with their count and iterators.
  const TcamSummaryGroupNameQueue& tcamSummaryGroupName() const noexcept {
    return tcamSummaryGroupName_;
  }
  /// Adds a copy at the back. Aborts the process if the queue cannot allocate a block.
  void tcamSummaryGroupNameEnq(const Halvo::String& name) { tcamSummaryGroupName_.enq(name); }
  /// Removes the front name and returns it. If the queue is empty, returns an empty string.
  Halvo::String tcamSummaryGroupNameDeq() { return tcamSummaryGroupName_.deq(); }
  /// An empty string if the queue is empty.
  Halvo::String tcamSummaryGroupNameFront() const { return tcamSummaryGroupName_.front(); }
  Halvo::String tcamSummaryGroupNameBack() const { return tcamSummaryGroupName_.back(); }
  void tcamSummaryGroupNameDelAll() noexcept { tcamSummaryGroupName_.delAll(); }

  /// The caller sets it when its pass over a pipe is finished. False at first.
  bool pipeFinished() const noexcept { return pipeFinished_; }
  void pipeFinishedIs(bool pipeFinished) noexcept { pipeFinished_ = pipeFinished; }

  /// Whether `name` is recorded already, compared byte by byte. Always false until pipeFinished is
  /// set. Does not record the name. The time grows with the number of names.
  bool isGroupPipeDuplicate(const Halvo::String& name) const noexcept;

 private:
  Halvo::String const groupName_;
  TcamSummaryGroupNameQueue tcamSummaryGroupName_;
  bool pipeFinished_ = false;
};

/// The summary: one record for each group name, in ascending order of the names' bytes.
///
/// Invariant: each record is in the map once, under its own name. The operations, ownership and
/// memory rules are the same as for CliShowTcamUsageChipInfo and its levels.
///
/// Threads: same as CliShowTcamUsageChipInfo.
///
///     auto summary = Halvo::makePtr<CliShowTcamSummaryOrdered>();
///     auto group = summary->tcamSummaryIs("acl");
///     if (!group->isGroupPipeDuplicate("feature")) group->tcamSummaryGroupNameEnq("feature");
class VELMOR_TCAM_API CliShowTcamSummaryOrdered : public Halvo::Node {
  ZEL_NODE_TYPE;
  VELMOR_COLLECTION_TAG(TN_TcamSummary);
  using TcamSummaryMap = ChildMap<CliShowTcamSummaryOrdered, Halvo::String,
                                  CliShowTcamSummaryGroupName, TN_TcamSummary>;

  CliShowTcamSummaryOrdered() noexcept;
  ~CliShowTcamSummaryOrdered() override;

  const TcamSummaryMap& tcamSummary() const noexcept { return tcamSummary_; }
  Halvo::Ptr<CliShowTcamSummaryGroupName> tcamSummary(const Halvo::String& groupName) const {
    return tcamSummary_.get(groupName);
  }
  Halvo::Ptr<CliShowTcamSummaryGroupName> tcamSummaryIs(const Halvo::String& groupName) {
    return tcamSummary_.childIs(groupName);
  }
  Halvo::Ptr<CliShowTcamSummaryGroupName> tcamSummaryDel(const Halvo::String& groupName) {
    return tcamSummary_.childDel(groupName);
  }
  Halvo::Ptr<CliShowTcamSummaryGroupName> tcamSummaryDel(const TcamSummaryMap::iterator& at) {
    return tcamSummary_.childDel(at);
  }
  void tcamSummaryDelAll() noexcept { tcamSummary_.childDelAll(); }

 private:
  TcamSummaryMap tcamSummary_;
};

}  // namespace VelmorTcam
