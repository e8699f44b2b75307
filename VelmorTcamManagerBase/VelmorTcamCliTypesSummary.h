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

/// One group of the summary and the names recorded for it, in order of arrival.
///
/// Invariant: the group's name is fixed; the queue owns copies of the names, duplicates included.
/// Rules as the summary's.
class VELMOR_TCAM_API CliShowTcamSummaryGroupName : public Halvo::Node {
  ZEL_NODE_TYPE;
  /// What the slots of the queue are counted under.
  VELMOR_COLLECTION_TAG(QE_TcamSummaryGroupName);
  using TcamSummaryGroupNameQueue = Halvo::RQueue<Halvo::String, QE_TcamSummaryGroupName>;

  explicit CliShowTcamSummaryGroupName(Halvo::String groupName) noexcept;
  ~CliShowTcamSummaryGroupName() override;

  const Halvo::String& groupName() const noexcept { return groupName_; }

  /// The names from front to back: count, iteration.
  const TcamSummaryGroupNameQueue& tcamSummaryGroupName() const noexcept {
    return tcamSummaryGroupName_;
  }
  /// Adds a copy at the back. Stops the process when there is no memory for a block.
  void tcamSummaryGroupNameEnq(const Halvo::String& name) { tcamSummaryGroupName_.enq(name); }
  /// Takes the front name; an empty string, and nothing changes, when there is none.
  Halvo::String tcamSummaryGroupNameDeq() { return tcamSummaryGroupName_.deq(); }
  /// Empty when the queue is.
  Halvo::String tcamSummaryGroupNameFront() const { return tcamSummaryGroupName_.front(); }
  Halvo::String tcamSummaryGroupNameBack() const { return tcamSummaryGroupName_.back(); }
  void tcamSummaryGroupNameDelAll() noexcept { tcamSummaryGroupName_.delAll(); }

  /// Set by the caller when its pass over a pipe is finished; false at first.
  bool pipeFinished() const noexcept { return pipeFinished_; }
  void pipeFinishedIs(bool pipeFinished) noexcept { pipeFinished_ = pipeFinished; }

  /// Whether `name` is recorded already, to the byte; always false until pipeFinished is set.
  /// Records nothing. Takes time by the number of names.
  bool isGroupPipeDuplicate(const Halvo::String& name) const noexcept;

 private:
  Halvo::String const groupName_;
  TcamSummaryGroupNameQueue tcamSummaryGroupName_;
  bool pipeFinished_ = false;
};

/// The summary: one record for each group name, in ascending order of the names' bytes.
///
/// Invariant: each record stands once, under its own name. Operations and life are those of
/// CliShowTcamUsageChipInfo and its levels.
///
/// Threads: as CliShowTcamUsageChipInfo.
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
