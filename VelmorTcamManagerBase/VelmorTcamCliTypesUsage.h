// The usage tree: chip, stage, pipe, group priority, group, copy, feature priority. Each level is
// declared before the one that holds it. The chip comes last; its comment has the rules of all
// levels.
#pragma once

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesCollections.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFeature.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/RQueue.h"
#include "Zel/Types/NodeType.h"

namespace VelmorTcam {

/// The features of one priority, in order of arrival.
///
/// Invariant: the queue holds one reference for each time that a feature is in it. Duplicates are
/// kept, and null pointers may be queued. Other rules: see CliShowTcamUsageChipInfo.
class VELMOR_TCAM_API CliShowTcamUsageFeaturePrioBucket : public Halvo::Node {
  ZEL_NODE_TYPE;
  /// The tag under which the slots of the queue are counted.
  VELMOR_COLLECTION_TAG(QE_FeatureInfo);
  using FeatureInfoQueue = Halvo::RQueue<Halvo::Ptr<CliShowTcamUsageFeatureInfo>, QE_FeatureInfo>;

  explicit CliShowTcamUsageFeaturePrioBucket(U32 featurePrio) noexcept;
  ~CliShowTcamUsageFeaturePrioBucket() override;

  U32 featurePrio() const noexcept { return featurePrio_; }

  /// The queue from front to back, with its count and iterators.
  const FeatureInfoQueue& featureInfo() const noexcept { return featureInfo_; }
  /// Adds at the back. Aborts the process if the queue cannot allocate a block.
  void featureInfoEnq(const Halvo::Ptr<CliShowTcamUsageFeatureInfo>& feature) {
    featureInfo_.enq(feature);
  }
  /// Removes the front element and returns it with its reference. Null if the queue is empty.
  Halvo::Ptr<CliShowTcamUsageFeatureInfo> featureInfoDeq() { return featureInfo_.deq(); }
  /// Null when the queue is empty.
  Halvo::Ptr<CliShowTcamUsageFeatureInfo> featureInfoFront() const { return featureInfo_.front(); }
  Halvo::Ptr<CliShowTcamUsageFeatureInfo> featureInfoBack() const { return featureInfo_.back(); }
  /// Removes all elements and frees the queue's memory.
  void featureInfoDelAll() noexcept { featureInfo_.delAll(); }

 private:
  U32 const featurePrio_;
  FeatureInfoQueue featureInfo_;
};

/// One copy of a group: its counts, and its features by their priority. Rules: see
/// CliShowTcamUsageChipInfo.
class VELMOR_TCAM_API CliShowTcamUsageGroupPerCopyInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  VELMOR_COLLECTION_TAG(TN_FeaturePrioBucket);
  using FeaturePrioBucketMap = ChildMap<CliShowTcamUsageGroupPerCopyInfo, U32,
                                        CliShowTcamUsageFeaturePrioBucket, TN_FeaturePrioBucket>;

  explicit CliShowTcamUsageGroupPerCopyInfo(U32 copyId) noexcept;
  ~CliShowTcamUsageGroupPerCopyInfo() override;

  U32 copyId() const noexcept { return copyId_; }

  /// The entries that this copy uses. This is one of three counts of hardware entries that the CLI
  /// keeps here, 0 at first. The library does not check one against another.
  U32 usedEntries() const noexcept { return usedEntries_; }
  void usedEntriesIs(U32 usedEntries) noexcept { usedEntries_ = usedEntries; }
  /// The entries of the hardware that are free. No display text prints it.
  U32 freeEntries() const noexcept { return freeEntries_; }
  void freeEntriesIs(U32 freeEntries) noexcept { freeEntries_ = freeEntries; }
  /// How many more entries this copy can use: the last number of groupInfoFmt.
  U32 availableEntries() const noexcept { return availableEntries_; }
  void availableEntriesIs(U32 availableEntries) noexcept { availableEntries_ = availableEntries; }

  /// The children by ascending featurePrio, with their count, generation and iterators.
  const FeaturePrioBucketMap& featurePrioBucket() const noexcept { return featurePrioBucket_; }
  Halvo::Ptr<CliShowTcamUsageFeaturePrioBucket> featurePrioBucket(U32 featurePrio) const {
    return featurePrioBucket_.get(featurePrio);
  }
  Halvo::Ptr<CliShowTcamUsageFeaturePrioBucket> featurePrioBucketIs(U32 featurePrio) {
    return featurePrioBucket_.childIs(featurePrio);
  }
  Halvo::Ptr<CliShowTcamUsageFeaturePrioBucket> featurePrioBucketDel(U32 featurePrio) {
    return featurePrioBucket_.childDel(featurePrio);
  }
  Halvo::Ptr<CliShowTcamUsageFeaturePrioBucket> featurePrioBucketDel(
      const FeaturePrioBucketMap::iterator& at) {
    return featurePrioBucket_.childDel(at);
  }
  void featurePrioBucketDelAll() noexcept { featurePrioBucket_.childDelAll(); }

 private:
  U32 const copyId_;
  U32 usedEntries_ = 0;
  U32 freeEntries_ = 0;
  U32 availableEntries_ = 0;
  FeaturePrioBucketMap featurePrioBucket_;
};

/// One group and its copies. Rules: see CliShowTcamUsageChipInfo.
class VELMOR_TCAM_API CliShowTcamUsageGroupInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  VELMOR_COLLECTION_TAG(TN_GroupPerCopyInfo);
  using GroupPerCopyInfoMap = ChildMap<CliShowTcamUsageGroupInfo, U32,
                                       CliShowTcamUsageGroupPerCopyInfo, TN_GroupPerCopyInfo>;

  explicit CliShowTcamUsageGroupInfo(U32 groupId) noexcept;
  ~CliShowTcamUsageGroupInfo() override;

  U32 groupId() const noexcept { return groupId_; }

  /// The children by ascending copyId, with their count, generation and iterators.
  const GroupPerCopyInfoMap& groupPerCopyInfo() const noexcept { return groupPerCopyInfo_; }
  Halvo::Ptr<CliShowTcamUsageGroupPerCopyInfo> groupPerCopyInfo(U32 copyId) const {
    return groupPerCopyInfo_.get(copyId);
  }
  Halvo::Ptr<CliShowTcamUsageGroupPerCopyInfo> groupPerCopyInfoIs(U32 copyId) {
    return groupPerCopyInfo_.childIs(copyId);
  }
  Halvo::Ptr<CliShowTcamUsageGroupPerCopyInfo> groupPerCopyInfoDel(U32 copyId) {
    return groupPerCopyInfo_.childDel(copyId);
  }
  Halvo::Ptr<CliShowTcamUsageGroupPerCopyInfo> groupPerCopyInfoDel(
      const GroupPerCopyInfoMap::iterator& at) {
    return groupPerCopyInfo_.childDel(at);
  }
  void groupPerCopyInfoDelAll() noexcept { groupPerCopyInfo_.childDelAll(); }

 private:
  U32 const groupId_;
  GroupPerCopyInfoMap groupPerCopyInfo_;
};

/// The groups of one priority. Rules: see CliShowTcamUsageChipInfo.
class VELMOR_TCAM_API CliShowTcamUsageGroupPriorityBucket : public Halvo::Node {
  ZEL_NODE_TYPE;
  VELMOR_COLLECTION_TAG(TN_GroupInfo);
  using GroupInfoMap =
      ChildMap<CliShowTcamUsageGroupPriorityBucket, U32, CliShowTcamUsageGroupInfo, TN_GroupInfo>;

  explicit CliShowTcamUsageGroupPriorityBucket(U32 groupPriority) noexcept;
  ~CliShowTcamUsageGroupPriorityBucket() override;

  U32 groupPriority() const noexcept { return groupPriority_; }

  /// The children by ascending groupId, with their count, generation and iterators.
  const GroupInfoMap& groupInfo() const noexcept { return groupInfo_; }
  Halvo::Ptr<CliShowTcamUsageGroupInfo> groupInfo(U32 groupId) const {
    return groupInfo_.get(groupId);
  }
  Halvo::Ptr<CliShowTcamUsageGroupInfo> groupInfoIs(U32 groupId) {
    return groupInfo_.childIs(groupId);
  }
  Halvo::Ptr<CliShowTcamUsageGroupInfo> groupInfoDel(U32 groupId) {
    return groupInfo_.childDel(groupId);
  }
  Halvo::Ptr<CliShowTcamUsageGroupInfo> groupInfoDel(const GroupInfoMap::iterator& at) {
    return groupInfo_.childDel(at);
  }
  void groupInfoDelAll() noexcept { groupInfo_.childDelAll(); }

 private:
  U32 const groupPriority_;
  GroupInfoMap groupInfo_;
};

/// One pipe and its groups by their priority. Rules: see CliShowTcamUsageChipInfo.
class VELMOR_TCAM_API CliShowTcamUsagePipeInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  VELMOR_COLLECTION_TAG(TN_GroupPrioBucket);
  using GroupPrioBucketMap = ChildMap<CliShowTcamUsagePipeInfo, U32,
                                      CliShowTcamUsageGroupPriorityBucket, TN_GroupPrioBucket>;

  explicit CliShowTcamUsagePipeInfo(S16 pipeId) noexcept;
  ~CliShowTcamUsagePipeInfo() override;

  S16 pipeId() const noexcept { return pipeId_; }

  /// The children by ascending groupPriority, with their count, generation and iterators.
  const GroupPrioBucketMap& groupPrioBucket() const noexcept { return groupPrioBucket_; }
  Halvo::Ptr<CliShowTcamUsageGroupPriorityBucket> groupPrioBucket(U32 groupPriority) const {
    return groupPrioBucket_.get(groupPriority);
  }
  Halvo::Ptr<CliShowTcamUsageGroupPriorityBucket> groupPrioBucketIs(U32 groupPriority) {
    return groupPrioBucket_.childIs(groupPriority);
  }
  Halvo::Ptr<CliShowTcamUsageGroupPriorityBucket> groupPrioBucketDel(U32 groupPriority) {
    return groupPrioBucket_.childDel(groupPriority);
  }
  Halvo::Ptr<CliShowTcamUsageGroupPriorityBucket> groupPrioBucketDel(
      const GroupPrioBucketMap::iterator& at) {
    return groupPrioBucket_.childDel(at);
  }
  void groupPrioBucketDelAll() noexcept { groupPrioBucket_.childDelAll(); }

 private:
  S16 const pipeId_;
  GroupPrioBucketMap groupPrioBucket_;
};

/// One stage of the pipeline and its pipes. Rules: see CliShowTcamUsageChipInfo.
class VELMOR_TCAM_API CliShowTcamUsageStageInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  VELMOR_COLLECTION_TAG(TN_PipeInfo);
  using PipeInfoMap =
      ChildMap<CliShowTcamUsageStageInfo, S16, CliShowTcamUsagePipeInfo, TN_PipeInfo>;

  explicit CliShowTcamUsageStageInfo(StageType stage) noexcept;
  ~CliShowTcamUsageStageInfo() override;

  StageType stage() const noexcept { return stage_; }

  /// The children by ascending pipeId, with their count, generation and iterators. -1 comes before
  /// 0.
  const PipeInfoMap& pipeInfo() const noexcept { return pipeInfo_; }
  Halvo::Ptr<CliShowTcamUsagePipeInfo> pipeInfo(S16 pipeId) const { return pipeInfo_.get(pipeId); }
  Halvo::Ptr<CliShowTcamUsagePipeInfo> pipeInfoIs(S16 pipeId) { return pipeInfo_.childIs(pipeId); }
  Halvo::Ptr<CliShowTcamUsagePipeInfo> pipeInfoDel(S16 pipeId) {
    return pipeInfo_.childDel(pipeId);
  }
  Halvo::Ptr<CliShowTcamUsagePipeInfo> pipeInfoDel(const PipeInfoMap::iterator& at) {
    return pipeInfo_.childDel(at);
  }
  void pipeInfoDelAll() noexcept { pipeInfo_.childDelAll(); }

 private:
  StageType const stage_;
  PipeInfoMap pipeInfo_;
};

/// The root of the usage tree: a chip and its stages. These rules hold for every level.
///
/// Invariant: a child is in its parent's collection once, under its own key, and that key never
/// changes. A parent holds one reference on each child. A child holds none on its parent.
///
/// Each level has the same operations on its collection <c>:
/// - `<c>Is(key)` returns the child with that key. If there is none, it makes one, with every other
///   attribute at its default. A child that is present stays as it is.
/// - `<c>(key)` returns the child with that key, or null. It never makes one.
/// - `<c>Del(key)` and, below the chip, `<c>Del(iterator)` remove a child and return it, or return
///   null if there was none.
/// - `<c>DelAll()` removes all children.
/// - `<c>()` is the collection, to count and to walk.
///
/// Nodes live by reference count. A removed child, or a child of a destroyed parent, stays alive
/// with its subtree as long as someone holds a reference to it. A destructor first sets
/// flagBeingDestroyed, then empties the collection.
///
/// Memory comes from the slab allocator. Each class counts its objects in memAllocationTracker_. On
/// std::bad_alloc nothing has changed. A queue that cannot allocate a block aborts.
///
/// Threads: one thread at a time builds or changes a tree with all its levels. While
/// Halvo::ThreadControl's switch is on, any number of threads may walk a tree that nobody changes,
/// and distinct threads may use distinct trees.
///
///     auto chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
///     auto copy = chip->stageInfoIs(stageTypeIngress)->pipeInfoIs(0)->groupPrioBucketIs(1)
///                     ->groupInfoIs(7)->groupPerCopyInfoIs(0);
///     copy->featurePrioBucketIs(5)->featureInfoEnq(cliShowTcamUsageFeatureInfoFactory("acl"));
///     for (auto [priority, bucket] : copy->featurePrioBucket()) show(*bucket);
class VELMOR_TCAM_API CliShowTcamUsageChipInfo : public Halvo::Node {
  ZEL_NODE_TYPE;
  /// The tag under which the table of stageInfo is counted.
  VELMOR_COLLECTION_TAG(HN_StageInfo);
  using StageInfoMap =
      ChildHashMap<CliShowTcamUsageChipInfo, StageType, CliShowTcamUsageStageInfo, HN_StageInfo>;

  CliShowTcamUsageChipInfo() noexcept;
  ~CliShowTcamUsageChipInfo() override;

  /// The stages, in no particular order.
  const StageInfoMap& stageInfo() const noexcept { return stageInfo_; }
  Halvo::Ptr<CliShowTcamUsageStageInfo> stageInfo(StageType stage) const {
    return stageInfo_.get(stage);
  }
  Halvo::Ptr<CliShowTcamUsageStageInfo> stageInfoIs(StageType stage) {
    return stageInfo_.childIs(stage);
  }
  Halvo::Ptr<CliShowTcamUsageStageInfo> stageInfoDel(StageType stage) {
    return stageInfo_.childDel(stage);
  }
  void stageInfoDelAll() noexcept { stageInfo_.childDelAll(); }

 private:
  StageInfoMap stageInfo_;
};

}  // namespace VelmorTcam
