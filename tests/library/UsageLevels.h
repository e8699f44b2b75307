// The levels of the usage tree, for its tests.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "Sobrel.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace VelmorTcam {

using Halvo::makePtr;
using Halvo::Node;
using Halvo::Ptr;
using Chip = CliShowTcamUsageChipInfo;
using Stage = CliShowTcamUsageStageInfo;
using Pipe = CliShowTcamUsagePipeInfo;
using GroupBucket = CliShowTcamUsageGroupPriorityBucket;
using Group = CliShowTcamUsageGroupInfo;
using Copy = CliShowTcamUsageGroupPerCopyInfo;
using Bucket = CliShowTcamUsageFeaturePrioBucket;
using Feature = CliShowTcamUsageFeatureInfo;

inline void expectNothingLeft() {
  for (auto* tracker = Halvo::MemoryTracker::first(); tracker; tracker = tracker->next()) {
    EXPECT_EQ(tracker->liveObjects(), 0U) << tracker->typeName();
    EXPECT_EQ(tracker->liveBytes(), 0U) << tracker->typeName();
  }
}

// Describes one level with ordered children.
#define LEVEL(NAME, PARENT, PARENT_KEY, CHILD, CHILD_KEY, KEY, COLLECTION, TAG)   \
  struct NAME {                                                                   \
    using Parent = PARENT;                                                        \
    using Child = CHILD;                                                          \
    using Tag = PARENT::TAG;                                                      \
    using Key = KEY;                                                              \
    static Ptr<Parent> make() { return makePtr<Parent>(PARENT_KEY); }             \
    static Ptr<Child> is(Parent& p, Key key) { return p.COLLECTION##Is(key); }    \
    static Ptr<Child> get(const Parent& p, Key key) { return p.COLLECTION(key); } \
    static Ptr<Child> del(Parent& p, Key key) { return p.COLLECTION##Del(key); }  \
    template <class It>                                                           \
    static Ptr<Child> delAt(Parent& p, const It& at) {                            \
      return p.COLLECTION##Del(at);                                               \
    }                                                                             \
    static void delAll(Parent& p) { p.COLLECTION##DelAll(); }                     \
    static auto& all(const Parent& p) { return p.COLLECTION(); }                  \
    static Key keyOf(const Child& child) { return child.CHILD_KEY(); }            \
  }
LEVEL(PipeLevel, Stage, stageTypeEgress, Pipe, pipeId, S16, pipeInfo, TN_PipeInfo);
LEVEL(GroupBucketLevel, Pipe, S16{3}, GroupBucket, groupPriority, U32, groupPrioBucket,
      TN_GroupPrioBucket);
LEVEL(GroupLevel, GroupBucket, 3U, Group, groupId, U32, groupInfo, TN_GroupInfo);
LEVEL(CopyLevel, Group, 3U, Copy, copyId, U32, groupPerCopyInfo, TN_GroupPerCopyInfo);
LEVEL(FeatureBucketLevel, Copy, 3U, Bucket, featurePrio, U32, featurePrioBucket,
      TN_FeaturePrioBucket);
#undef LEVEL

template <class Level>
std::vector<typename Level::Key> keysOf(const typename Level::Parent& parent) {
  std::vector<typename Level::Key> keys;
  for (auto const& [key, child] : Level::all(parent)) {
    EXPECT_EQ(Level::keyOf(*child), key);
    keys.push_back(key);
  }
  return keys;
}

}  // namespace VelmorTcam
