// The ordered summary.
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "DestroyedFlags.h"
#include "Random.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace VelmorTcam {
namespace {

using Halvo::makePtr;
using Halvo::Ptr;
using Halvo::String;
using Summary = CliShowTcamSummaryOrdered;
using GroupName = CliShowTcamSummaryGroupName;

class SummaryTest : public testing::Test {
 protected:
  void TearDown() override {
    for (auto* tracker = Halvo::MemoryTracker::first(); tracker; tracker = tracker->next()) {
      EXPECT_EQ(tracker->liveObjects(), 0U) << tracker->typeName();
      EXPECT_EQ(tracker->liveBytes(), 0U) << tracker->typeName();
    }
  }
};

std::vector<std::string> namesOf(const Summary& summary) {
  std::vector<std::string> names;
  for (auto const& [name, group] : summary.tcamSummary()) {
    EXPECT_EQ(group->groupName(), name);
    names.push_back(name.str());
  }
  return names;
}

TEST_F(SummaryTest, WalksInTheOrderOfBytes) {
  auto const summary = makePtr<Summary>();
  EXPECT_EQ(summary->tcamSummary().size(), 0U);
  EXPECT_EQ(summary->tcamSummary().generation(), 1U);
  for (const char* const name : {"b", "a", "c", "B", "", "aa", "\xff"}) {
    summary->tcamSummaryIs(name);
  }
  EXPECT_EQ(namesOf(*summary), (std::vector<std::string>{"", "B", "a", "aa", "b", "c", "\xff"}));
}

TEST_F(SummaryTest, GivesTheRecordThatIsThere) {
  auto const summary = makePtr<Summary>();
  auto const group = summary->tcamSummaryIs("a");
  group->pipeFinishedIs(true);
  group->tcamSummaryGroupNameEnq("x");
  EXPECT_EQ(summary->tcamSummaryIs("a"), group);
  EXPECT_EQ(summary->tcamSummary("a"), group);
  EXPECT_EQ(summary->tcamSummary("b"), nullptr);
  EXPECT_EQ(summary->tcamSummary()["a"], group);
  EXPECT_EQ(summary->tcamSummary()["b"], nullptr);
  EXPECT_EQ(summary->tcamSummary().size(), 1U);
  EXPECT_EQ(Summary::TN_TcamSummary::memAllocationTracker_.liveObjects(), 1U);
  EXPECT_TRUE(group->pipeFinished());
  EXPECT_EQ(group->tcamSummaryGroupName().size(), 1U);
  EXPECT_EQ(group->useCount(), 2U);
}

TEST_F(SummaryTest, GivesWhatItRemoves) {
  auto const summary = makePtr<Summary>();
  for (const char* const name : {"a", "b", "c", "d"}) summary->tcamSummaryIs(name);
  EXPECT_EQ(summary->tcamSummaryDel("x"), nullptr);
  auto const removed = summary->tcamSummaryDel("a");
  EXPECT_EQ(removed->groupName(), "a");
  EXPECT_EQ(removed->useCount(), 1U);
  auto at = summary->tcamSummary().begin();
  EXPECT_EQ(summary->tcamSummaryDel(summary->tcamSummary().end()), nullptr);
  EXPECT_EQ(summary->tcamSummaryDel(at)->groupName(), "b");
  EXPECT_EQ(summary->tcamSummaryDel(at), nullptr);
  // Stale: it removes by the key that it last held.
  ++at;
  EXPECT_EQ(at.key(), "c");
  summary->tcamSummaryDel("d");
  EXPECT_EQ(summary->tcamSummaryDel(at)->groupName(), "c");
  EXPECT_EQ(summary->tcamSummary().generation(), 9U);
  summary->tcamSummaryDelAll();
  EXPECT_EQ(summary->tcamSummary().generation(), 11U);
  auto const held = summary->tcamSummaryIs("b");
  for (const char* const name : {"a", "c"}) summary->tcamSummaryIs(name);
  EXPECT_EQ(held->useCount(), 2U);
  summary->tcamSummaryDelAll();
  EXPECT_EQ(held->useCount(), 1U);
  EXPECT_TRUE(summary->tcamSummary().empty());
}

TEST_F(SummaryTest, RecordsOutliveTheSummary) {
  auto summary = makePtr<Summary>();
  auto const group = summary->tcamSummaryIs("a");
  group->tcamSummaryGroupNameEnq(String(100, 'n'));
  summary.reset();
  EXPECT_EQ(group->useCount(), 1U);
  EXPECT_EQ(group->tcamSummaryGroupNameFront(), String(100, 'n'));
}

TEST_F(SummaryTest, IsMarkedAsItGoes) {
  velmortest::expectFlagsLeft<Summary>(0, Summary::flagBeingDestroyed);
  velmortest::expectFlagsLeft<Summary>(~Summary::flagBeingDestroyed, 0xFFFFFFFF);
  velmortest::expectFlagsLeft<GroupName>(0, GroupName::flagBeingDestroyed, "acl");
  velmortest::expectFlagsLeft<GroupName>(~GroupName::flagBeingDestroyed, 0xFFFFFFFF, "acl");
}

TEST_F(SummaryTest, QueueKeepsTheOrderOfArrival) {
  auto const group = makePtr<GroupName>("acl");
  EXPECT_EQ(group->groupName(), "acl");
  EXPECT_EQ(group->tcamSummaryGroupNameDeq(), "");
  EXPECT_EQ(group->tcamSummaryGroupNameFront(), "");
  EXPECT_EQ(group->tcamSummaryGroupNameBack(), "");
  for (const char* const name : {"c", "a", "a", "b", "d"}) group->tcamSummaryGroupNameEnq(name);
  EXPECT_EQ(group->tcamSummaryGroupName().size(), 5U);
  EXPECT_EQ(group->tcamSummaryGroupName().firstBlock()->capacity(), 4U);
  EXPECT_EQ(group->tcamSummaryGroupName().firstBlock()->next()->capacity(), 8U);
  auto const& slots = GroupName::QE_TcamSummaryGroupName::memAllocationTracker_;
  EXPECT_EQ(slots.liveObjects(), 2U);
  EXPECT_EQ(slots.liveBytes(), 12 * sizeof(String));
  EXPECT_EQ(group->tcamSummaryGroupNameFront(), "c");
  EXPECT_EQ(group->tcamSummaryGroupNameBack(), "d");
  for (const char* const name : {"c", "a", "a"}) {
    EXPECT_EQ(group->tcamSummaryGroupNameDeq(), name);
  }
  group->tcamSummaryGroupNameDelAll();
  EXPECT_EQ(group->tcamSummaryGroupName().size(), 0U);
  EXPECT_EQ(group->tcamSummaryGroupName().firstBlock(), nullptr);
}

TEST_F(SummaryTest, KnowsARecordedNameOnceThePipeIsFinished) {
  struct Row {
    bool pipeFinished;
    std::vector<std::string> names;
    std::string name;
    bool isDuplicate;
  };
  Row const rows[] = {
      {false, {"a"}, "a", false},
      {true, {"a", "b"}, "b", true},
      {true, {"a", "b"}, "B", false},
      {true, {}, "a", false},
      {true, {}, "", false},
      {true, {""}, "", true},
      {true, {"ab"}, "a", false},
      {true, {"a"}, "ab", false},
      {true, {std::string("a\0b", 3)}, std::string("a\0c", 3), false},
      {true, {std::string("a\0b", 3)}, std::string("a\0b", 3), true},
      {true, {"1", "2", "3", "4", "5", "6"}, "6", true},
      {true, {std::string(100, 'n')}, std::string(100, 'n'), true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.names) + " " + row.name);
    auto const group = makePtr<GroupName>("acl");
    EXPECT_FALSE(group->pipeFinished());
    for (auto const& name : row.names) group->tcamSummaryGroupNameEnq(String(name));
    group->pipeFinishedIs(row.pipeFinished);
    EXPECT_EQ(group->isGroupPipeDuplicate(String(row.name)), row.isDuplicate);
    // The question records nothing.
    EXPECT_EQ(group->tcamSummaryGroupName().size(), row.names.size());
    group->pipeFinishedIs(false);
    EXPECT_FALSE(group->isGroupPipeDuplicate(String(row.name)));
  }
}

TEST_F(SummaryTest, DoesAsTheModel) {
  struct ModelGroup {
    Ptr<GroupName> group;
    std::deque<std::string> names;
  };
  auto const summary = makePtr<Summary>();
  std::map<std::string, ModelGroup> model;
  velmortest::Random random(9);
  for (int step = 0; step < velmortest::manySteps / 4; ++step) {
    std::string const name = "a-group-of-acls-" + std::to_string(random() % 40);
    auto const present = model.find(name);
    switch (random() % 8) {
      case 0: {
        auto const group = summary->tcamSummaryIs(String(name));
        if (present != model.end()) {
          ASSERT_EQ(group, present->second.group);
        } else {
          model[name].group = group;
        }
        break;
      }
      case 1: {
        if (random() % 16 != 0) break;
        auto const removed = summary->tcamSummaryDel(String(name));
        ASSERT_EQ(removed, present == model.end() ? nullptr : present->second.group);
        if (removed != nullptr) model.erase(present);
        break;
      }
      case 2:
      case 3:
      case 4: {
        if (present == model.end()) break;
        std::string const recorded(random() % 90, static_cast<char>('a' + random() % 3));
        present->second.group->tcamSummaryGroupNameEnq(String(recorded));
        present->second.names.push_back(recorded);
        break;
      }
      case 5:
      case 6: {
        if (present == model.end()) break;
        std::string expected;
        if (!present->second.names.empty()) {
          expected = present->second.names.front();
          present->second.names.pop_front();
        }
        ASSERT_EQ(present->second.group->tcamSummaryGroupNameDeq(), expected.c_str());
        break;
      }
      default: {
        auto const group = summary->tcamSummary(String(name));
        ASSERT_EQ(group, present == model.end() ? nullptr : present->second.group);
        if (group == nullptr) break;
        ASSERT_EQ(group->tcamSummaryGroupName().size(), present->second.names.size());
        auto expected = present->second.names.begin();
        for (const String& recorded : group->tcamSummaryGroupName()) {
          ASSERT_EQ(recorded.view(), *expected++);
        }
      }
    }
    ASSERT_EQ(summary->tcamSummary().size(), model.size());
    if (step % 512 != 0) continue;
    auto expected = model.begin();
    for (auto const& [walked, group] : summary->tcamSummary()) {
      ASSERT_EQ(walked.view(), expected->first);
      ++expected;
    }
  }
}

}  // namespace
}  // namespace VelmorTcam
