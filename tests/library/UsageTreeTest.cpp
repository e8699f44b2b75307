// The usage tree: what its levels have beside children, the queue of features, and the lifetime of
// the whole tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <ranges>
#include <type_traits>
#include <utility>
#include <vector>

#include "Random.h"
#include "Sobrel.h"
#include "UsageLevels.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "VirtualSlots.h"

namespace VelmorTcam {
namespace {

class UsageTree : public testing::Test {
 protected:
  void TearDown() override { expectNothingLeft(); }
};

TEST_F(UsageTree, PipesOrderAsSignedNumbersGroupsAsUnsigned) {
  auto const stage = makePtr<Stage>(stageTypeLookup);
  EXPECT_EQ(stage->stage(), stageTypeLookup);
  for (S16 const id : {S16{2}, S16{-1}, S16{0}, S16{32767}, S16{-32768}}) stage->pipeInfoIs(id);
  EXPECT_EQ(keysOf<PipeLevel>(*stage), (std::vector<S16>{-32768, -1, 0, 2, 32767}));
  auto const bucket = makePtr<GroupBucket>(9U);
  for (U32 const id : {0xFFFFFFFFU, 0U, 0x80000000U, 0x7FFFFFFFU}) bucket->groupInfoIs(id);
  EXPECT_EQ(keysOf<GroupLevel>(*bucket), (std::vector<U32>{0, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF}));
}

TEST_F(UsageTree, ChipKeepsItsStages) {
  auto const chip = makePtr<Chip>();
  EXPECT_EQ(chip->stageInfo().size(), 0U);
  chip->stageInfoDelAll();
  EXPECT_EQ(chip->stageInfo(stageTypeIngress), nullptr);
  EXPECT_EQ(chip->stageInfoDel(stageTypeIngress), nullptr);
  auto const ingress = chip->stageInfoIs(stageTypeIngress);
  EXPECT_EQ(ingress->stage(), stageTypeIngress);
  EXPECT_EQ(ingress->useCount(), 2U);
  EXPECT_EQ(chip->stageInfoIs(stageTypeIngress), ingress);
  EXPECT_EQ(chip->stageInfo(stageTypeIngress), ingress);
  EXPECT_EQ(chip->stageInfo()[stageTypeIngress], ingress);
  EXPECT_EQ(chip->stageInfo()[stageTypeEgress], nullptr);
  EXPECT_EQ(chip->stageInfo().size(), 1U);
  chip->stageInfoIs(stageTypeEgress);
  EXPECT_EQ(chip->stageInfo().size(), 2U);
  std::vector<StageType> met;
  for (auto const [key, stage] : chip->stageInfo()) {
    EXPECT_EQ(stage->stage(), key);
    met.push_back(key);
  }
  std::sort(met.begin(), met.end());
  EXPECT_EQ(met, (std::vector<StageType>{stageTypeIngress, stageTypeEgress}));
  EXPECT_EQ(chip->stageInfoDel(stageTypeIngress), ingress);
  EXPECT_EQ(ingress->useCount(), 1U);
  EXPECT_EQ(chip->stageInfo().size(), 1U);
}

TEST_F(UsageTree, TableOfStagesIsCounted) {
  auto const& tracker = Chip::HN_StageInfo::memAllocationTracker_;
  EXPECT_STREQ(tracker.typeName(), "VelmorTcam::CliShowTcamUsageChipInfo::HN_StageInfo");
  EXPECT_EQ(tracker.liveObjects(), 0U);
  auto const chip = makePtr<Chip>();
  EXPECT_EQ(tracker.liveObjects(), 0U);
  chip->stageInfoIs(stageTypeIngress);
  EXPECT_EQ(tracker.liveObjects(), 1U);
  auto const bytesOfOne = tracker.liveBytes();
  EXPECT_GE(bytesOfOne, sizeof(Ptr<Stage>));
  for (unsigned stage = 0; stage < 256; ++stage) chip->stageInfoIs(static_cast<StageType>(stage));
  EXPECT_EQ(tracker.liveObjects(), 1U);
  EXPECT_GE(tracker.liveBytes(), 256 * sizeof(Ptr<Stage>));
  chip->stageInfoDelAll();
  EXPECT_EQ(tracker.liveObjects(), 0U);
  EXPECT_EQ(tracker.liveBytes(), 0U);
}

TEST_F(UsageTree, CollectionsAreRanges) {
  static_assert(std::ranges::input_range<const Chip::StageInfoMap>);
  static_assert(std::ranges::input_range<const Stage::PipeInfoMap>);
  static_assert(std::ranges::input_range<const Pipe::GroupPrioBucketMap>);
  static_assert(std::ranges::input_range<const GroupBucket::GroupInfoMap>);
  static_assert(std::ranges::input_range<const Group::GroupPerCopyInfoMap>);
  static_assert(std::ranges::input_range<const Copy::FeaturePrioBucketMap>);
  static_assert(std::ranges::forward_range<const Bucket::FeatureInfoQueue>);
  static_assert(std::ranges::forward_range<const Feature::EntrySet>);
  auto const chip = makePtr<Chip>();
  chip->stageInfoIs(stageTypeEgress);
  EXPECT_EQ(std::ranges::distance(chip->stageInfo()), 1);
}

// A copy would share its children with the original, or lose the members of a derived class.
TEST_F(UsageTree, NodesAreNotCopied) {
  auto const expectNotCopied = []<class... Class> {
    static_assert(
        ((!std::is_copy_constructible_v<Class> && !std::is_copy_assignable_v<Class> &&
          !std::is_move_constructible_v<Class> && !std::is_move_assignable_v<Class>)&&...));
  };
  expectNotCopied.operator()<Chip, Stage, Pipe, GroupBucket, Group, Copy, Bucket, Feature>();
  expectNotCopied.operator()<CliShowTcamSummaryOrdered, CliShowTcamSummaryGroupName>();
  expectNotCopied.
  operator()<CliFormat, EntryRequestCliFormat, IpEntryRequestCliFormat, Ip6EntryRequestCliFormat,
             MacEntryRequestCliFormat, VelmorTcamCliFormat>();
  expectNotCopied.operator()<VelmorTcamEntryShadow, QualifierStatus, QualifierData>();
  expectNotCopied.operator()<Chip::StageInfoMap, Stage::PipeInfoMap, Feature::EntrySet,
                             Bucket::FeatureInfoQueue const>();
}

TEST_F(UsageTree, ChipDoesAsTheModel) {
  auto const chip = makePtr<Chip>();
  std::map<StageType, Ptr<Stage>> model;
  velmortest::Random random(3);
  for (int step = 0; step < velmortest::manySteps / 4; ++step) {
    auto const key = static_cast<StageType>(random() % 256);
    auto const present = model.find(key);
    auto expected = present == model.end() ? Ptr<Stage>() : present->second;
    switch (random() % 4) {
      case 0: {
        auto const stage = chip->stageInfoIs(key);
        if (expected != nullptr) {
          ASSERT_EQ(stage, expected);
        } else {
          model[key] = stage;
        }
        break;
      }
      case 1:
        ASSERT_EQ(chip->stageInfoDel(key), expected);
        if (expected != nullptr) model.erase(present);
        break;
      case 2:
        ASSERT_EQ(chip->stageInfo(key), expected);
        break;
      default:
        if (random() % 4096 != 0) break;
        chip->stageInfoDelAll();
        model.clear();
    }
    expected.reset();
    ASSERT_EQ(chip->stageInfo().size(), model.size());
    ASSERT_EQ(Stage::memAllocationTracker_.liveObjects(), model.size());
    if (step % 256 != 0) continue;
    std::size_t met = 0;
    for (auto const& [walked, stage] : chip->stageInfo()) {
      ASSERT_EQ(model.at(walked), stage);
      ++met;
    }
    ASSERT_EQ(met, model.size());
  }
}

TEST_F(UsageTree, CopyKeepsThreeCounts) {
  auto const copy = makePtr<Copy>(4U);
  EXPECT_EQ(copy->copyId(), 4U);
  EXPECT_EQ(copy->usedEntries(), 0U);
  EXPECT_EQ(copy->freeEntries(), 0U);
  EXPECT_EQ(copy->availableEntries(), 0U);
  copy->usedEntriesIs(1);
  copy->freeEntriesIs(2);
  copy->availableEntriesIs(0xFFFFFFFF);
  EXPECT_EQ(copy->usedEntries(), 1U);
  EXPECT_EQ(copy->freeEntries(), 2U);
  EXPECT_EQ(copy->availableEntries(), 0xFFFFFFFFU);
}

TEST_F(UsageTree, GettingAChildAgainResetsNothing) {
  auto const group = makePtr<Group>(1U);
  group->groupPerCopyInfoIs(0)->usedEntriesIs(5);
  group->groupPerCopyInfoIs(0)->featurePrioBucketIs(9);
  EXPECT_EQ(group->groupPerCopyInfoIs(0)->usedEntries(), 5U);
  EXPECT_EQ(group->groupPerCopyInfoIs(0)->featurePrioBucket().size(), 1U);
}

TEST_F(UsageTree, QueueKeepsTheOrderOfArrival) {
  auto const bucket = makePtr<Bucket>(7U);
  EXPECT_EQ(bucket->featurePrio(), 7U);
  EXPECT_EQ(bucket->featureInfoFront(), nullptr);
  EXPECT_EQ(bucket->featureInfoBack(), nullptr);
  EXPECT_EQ(bucket->featureInfoDeq(), nullptr);
  Ptr<Feature> const features[] = {cliShowTcamUsageFeatureInfoFactory("c"),
                                   cliShowTcamUsageFeatureInfoFactory("a"),
                                   cliShowTcamUsageFeatureInfoFactory("b")};
  for (auto const& feature : features) bucket->featureInfoEnq(feature);
  EXPECT_EQ(features[0]->useCount(), 2U);
  EXPECT_EQ(bucket->featureInfoFront(), features[0]);
  EXPECT_EQ(bucket->featureInfoBack(), features[2]);
  EXPECT_EQ(features[0]->useCount(), 2U);
  for (auto const& feature : features) EXPECT_EQ(bucket->featureInfoDeq(), feature);
  EXPECT_EQ(features[0]->useCount(), 1U);
  EXPECT_EQ(bucket->featureInfoDeq(), nullptr);
}

TEST_F(UsageTree, QueueGrowsByBlocks) {
  auto const bucket = makePtr<Bucket>(7U);
  auto const feature = cliShowTcamUsageFeatureInfoFactory("a");
  for (int i = 0; i < 5; ++i) bucket->featureInfoEnq(feature);
  EXPECT_EQ(bucket->featureInfo().firstBlock()->capacity(), 4U);
  EXPECT_EQ(bucket->featureInfo().firstBlock()->next()->capacity(), 8U);
  EXPECT_EQ(bucket->featureInfo().size(), 5U);
  EXPECT_EQ(Bucket::QE_FeatureInfo::memAllocationTracker_.liveObjects(), 2U);
  EXPECT_EQ(Bucket::QE_FeatureInfo::memAllocationTracker_.liveBytes(), 12 * sizeof(Ptr<Feature>));
  EXPECT_EQ(feature->useCount(), 6U);
  bucket->featureInfoDelAll();
  EXPECT_EQ(feature->useCount(), 1U);
  EXPECT_EQ(bucket->featureInfo().size(), 0U);
  EXPECT_EQ(bucket->featureInfo().firstBlock(), nullptr);
  EXPECT_EQ(Bucket::QE_FeatureInfo::memAllocationTracker_.liveObjects(), 0U);
  bucket->featureInfoEnq(feature);
  EXPECT_EQ(bucket->featureInfo().firstBlock()->capacity(), 4U);
}

TEST_F(UsageTree, QueueDoesAsTheModel) {
  auto const bucket = makePtr<Bucket>(7U);
  std::vector<Ptr<Feature>> features;
  for (int i = 0; i < 50; ++i) features.push_back(cliShowTcamUsageFeatureInfoFactory("f"));
  std::deque<Ptr<Feature>> model;
  velmortest::Random random(5);
  for (int step = 0; step < velmortest::manySteps; ++step) {
    // Grows for a while, then shrinks for a while.
    if (random() % 100 < (step / 20'000 % 2 == 0 ? 60U : 40U)) {
      auto const& feature = features[random() % features.size()];
      bucket->featureInfoEnq(feature);
      model.push_back(feature);
    } else {
      Ptr<Feature> expected;
      if (!model.empty()) {
        expected = model.front();
        model.pop_front();
      }
      ASSERT_EQ(bucket->featureInfoDeq(), expected);
    }
    if (random() % 200'000 == 0) {
      bucket->featureInfoDelAll();
      model.clear();
    }
    ASSERT_EQ(bucket->featureInfo().size(), model.size());
    ASSERT_EQ(bucket->featureInfoFront(), model.empty() ? Ptr<Feature>() : model.front());
    ASSERT_EQ(bucket->featureInfoBack(), model.empty() ? Ptr<Feature>() : model.back());
    if (step % 4096 == 0) {
      ASSERT_TRUE(std::equal(bucket->featureInfo().begin(), bucket->featureInfo().end(),
                             model.begin(), model.end()));
    }
  }
  std::map<Feature*, U32> queued;
  for (auto const& feature : model) ++queued[feature.get()];
  model.clear();
  for (auto const& feature : features) {
    EXPECT_EQ(feature->useCount(), 1 + queued[feature.get()]);
  }
}

// Calls a function when it is destroyed.
class Watcher : public Feature {
 public:
  using Feature::Feature;
  ~Watcher() override { onGone(); }
  std::function<void()> onGone;
};

TEST_F(UsageTree, IsMarkedAndEmptiedFromTheTop) {
  auto chip = makePtr<Chip>();
  auto const stage = chip->stageInfoIs(stageTypeIngress).get();
  auto const pipe = stage->pipeInfoIs(1).get();
  auto const groupBucket = pipe->groupPrioBucketIs(2).get();
  auto const group = groupBucket->groupInfoIs(3).get();
  auto const copy = group->groupPerCopyInfoIs(4).get();
  auto const bucket = copy->featurePrioBucketIs(5).get();
  auto watcher = makePtr<Watcher>("watcher");
  int gone = 0;
  Chip* const root = chip.get();
  watcher->onGone = [&] {
    ++gone;
    for (const Node* node :
         std::initializer_list<const Node*>{root, stage, pipe, groupBucket, group, copy, bucket}) {
      EXPECT_TRUE(node->flag(Node::flagBeingDestroyed));
    }
    EXPECT_TRUE(root->stageInfo().empty());
    EXPECT_TRUE(stage->pipeInfo().empty());
    EXPECT_TRUE(pipe->groupPrioBucket().empty());
    EXPECT_TRUE(groupBucket->groupInfo().empty());
    EXPECT_TRUE(group->groupPerCopyInfo().empty());
    EXPECT_TRUE(copy->featurePrioBucket().empty());
    EXPECT_TRUE(bucket->featureInfo().empty());
  };
  bucket->featureInfoEnq(watcher);
  watcher.reset();
  EXPECT_EQ(gone, 0);
  chip.reset();
  EXPECT_EQ(gone, 1);
}

TEST_F(UsageTree, StagesOutliveTheirChip) {
  auto chip = makePtr<Chip>();
  auto const held = chip->stageInfoIs(stageTypeIngress);
  chip->stageInfoIs(stageTypeEgress)->pipeInfoIs(1);
  held->pipeInfoIs(2);
  EXPECT_EQ(Stage::memAllocationTracker_.liveObjects(), 2U);
  chip.reset();
  EXPECT_EQ(Stage::memAllocationTracker_.liveObjects(), 1U);
  EXPECT_EQ(Pipe::memAllocationTracker_.liveObjects(), 1U);
  EXPECT_EQ(held->useCount(), 1U);
  EXPECT_FALSE(held->flag(Node::flagBeingDestroyed));
  EXPECT_EQ(held->stage(), stageTypeIngress);
  EXPECT_EQ(keysOf<PipeLevel>(*held), (std::vector<S16>{2}));
}

TEST_F(UsageTree, RemovedGroupStaysUsable) {
  auto const bucket = makePtr<GroupBucket>(1U);
  auto feature = cliShowTcamUsageFeatureInfoFactory("acl");
  bucket->groupInfoIs(7)->groupPerCopyInfoIs(0)->featurePrioBucketIs(1)->featureInfoEnq(feature);
  auto group = bucket->groupInfoDel(7);
  group->groupPerCopyInfoIs(1);
  EXPECT_EQ(group->groupPerCopyInfo().size(), 2U);
  EXPECT_EQ(feature->useCount(), 2U);
  group.reset();
  EXPECT_EQ(feature->useCount(), 1U);
  EXPECT_EQ(Copy::memAllocationTracker_.liveObjects(), 0U);
}

template <class Class, class... Args>
void expectDescribed(const char* name, Args... args) {
  SCOPED_TRACE(name);
  auto const slabBytes = Sobrel::slabUsage().liveBytes;
  auto const node = makePtr<Class>(args...);
#if !defined(__SANITIZE_ADDRESS__)  // under ASan, nodes do not come from slabs
  EXPECT_GE(Sobrel::slabUsage().liveBytes, slabBytes + sizeof(Class));
#else
  static_cast<void>(slabBytes);
#endif
  ASSERT_NE(node->typeData(), nullptr);
  EXPECT_STREQ(node->typeData()->name, name);
  EXPECT_EQ(node->typeData()->kind, Zel::TypeKind::node);
  EXPECT_EQ(node->typeData()->base, nullptr);
  EXPECT_EQ(node->typeData()->tracker, &Class::memAllocationTracker_);
  EXPECT_EQ(Class::memAllocationTracker_.liveObjects(), 1U);
  EXPECT_EQ(Class::memAllocationTracker_.liveBytes(), sizeof(Class));
  EXPECT_STREQ(Class::memAllocationTracker_.typeName(), name);
}

TEST_F(UsageTree, EveryClassIsDescribedAndCounted) {
  expectDescribed<Chip>("VelmorTcam::CliShowTcamUsageChipInfo");
  expectDescribed<Stage>("VelmorTcam::CliShowTcamUsageStageInfo", stageTypeLookup);
  expectDescribed<Pipe>("VelmorTcam::CliShowTcamUsagePipeInfo", S16{1});
  expectDescribed<GroupBucket>("VelmorTcam::CliShowTcamUsageGroupPriorityBucket", 1U);
  expectDescribed<Group>("VelmorTcam::CliShowTcamUsageGroupInfo", 1U);
  expectDescribed<Copy>("VelmorTcam::CliShowTcamUsageGroupPerCopyInfo", 1U);
  expectDescribed<Bucket>("VelmorTcam::CliShowTcamUsageFeaturePrioBucket", 1U);
  expectDescribed<Feature>("VelmorTcam::CliShowTcamUsageFeatureInfo", "acl");
  expectDescribed<CliShowTcamSummaryOrdered>("VelmorTcam::CliShowTcamSummaryOrdered");
  expectDescribed<CliShowTcamSummaryGroupName>("VelmorTcam::CliShowTcamSummaryGroupName", "acl");
}

template <class Class>
void expectNodeSlots() {
  using velmortest::slotOf;
  // The destructor takes the slots 0 and 1.
  EXPECT_EQ(slotOf(&Class::lastUserGone), 2U);
  EXPECT_EQ(slotOf(&Class::publisher), 3U);
  EXPECT_EQ(slotOf(&Class::typeData), 4U);
  EXPECT_EQ(velmortest::slotCount<Class>(), 5U) << "the class adds virtual operations";
}

TEST_F(UsageTree, VirtualOperationsAreTheNodes) {
  expectNodeSlots<Chip>();
  expectNodeSlots<Stage>();
  expectNodeSlots<Pipe>();
  expectNodeSlots<GroupBucket>();
  expectNodeSlots<Group>();
  expectNodeSlots<Copy>();
  expectNodeSlots<Bucket>();
  expectNodeSlots<Feature>();
  expectNodeSlots<CliShowTcamSummaryOrdered>();
  expectNodeSlots<CliShowTcamSummaryGroupName>();
}

}  // namespace
}  // namespace VelmorTcam
