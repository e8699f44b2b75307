// Each level of the usage tree alone: its children by key, by iterator, and when their parent is
// gone.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <map>
#include <utility>
#include <vector>

#include "Random.h"
#include "UsageLevels.h"

namespace VelmorTcam {
namespace {

template <class Level>
class UsageLevel : public testing::Test {
 protected:
  void TearDown() override { expectNothingLeft(); }
};
using Levels =
    testing::Types<PipeLevel, GroupBucketLevel, GroupLevel, CopyLevel, FeatureBucketLevel>;
TYPED_TEST_SUITE(UsageLevel, Levels);

TYPED_TEST(UsageLevel, BeginsEmpty) {
  auto const parent = TypeParam::make();
  EXPECT_EQ(parent->useCount(), 1U);
  EXPECT_EQ(TypeParam::all(*parent).size(), 0U);
  EXPECT_TRUE(TypeParam::all(*parent).empty());
  EXPECT_EQ(TypeParam::all(*parent).generation(), 1U);
  EXPECT_EQ(TypeParam::get(*parent, 7), nullptr);
  EXPECT_EQ(TypeParam::del(*parent, 7), nullptr);
  EXPECT_EQ(TypeParam::delAt(*parent, TypeParam::all(*parent).begin()), nullptr);
  EXPECT_EQ(TypeParam::all(*parent).generation(), 1U);
  TypeParam::delAll(*parent);
  EXPECT_EQ(TypeParam::all(*parent).generation(), 3U);
}

TYPED_TEST(UsageLevel, GivesTheChildThatIsThere) {
  auto const parent = TypeParam::make();
  auto const child = TypeParam::is(*parent, 3);
  EXPECT_EQ(TypeParam::keyOf(*child), 3);
  EXPECT_EQ(child->useCount(), 2U);
  EXPECT_EQ(TypeParam::is(*parent, 3), child);
  EXPECT_EQ(TypeParam::get(*parent, 3), child);
  EXPECT_EQ(child->useCount(), 2U);
  EXPECT_EQ(TypeParam::all(*parent).size(), 1U);
  EXPECT_TRUE(TypeParam::all(*parent).has(3));
  EXPECT_FALSE(TypeParam::all(*parent).has(4));
  EXPECT_EQ(TypeParam::Child::memAllocationTracker_.liveObjects(), 1U);
  EXPECT_EQ(TypeParam::Child::memAllocationTracker_.liveBytes(), sizeof(typename TypeParam::Child));
  EXPECT_EQ(TypeParam::Tag::memAllocationTracker_.liveObjects(), 1U);
}

TYPED_TEST(UsageLevel, GivesWhatItRemoves) {
  auto const parent = TypeParam::make();
  TypeParam::is(*parent, 3);
  TypeParam::is(*parent, 4);
  EXPECT_EQ(TypeParam::del(*parent, 7), nullptr);
  EXPECT_EQ(TypeParam::all(*parent).size(), 2U);
  auto const removed = TypeParam::del(*parent, 3);
  ASSERT_NE(removed, nullptr);
  EXPECT_EQ(TypeParam::keyOf(*removed), 3);
  EXPECT_EQ(removed->useCount(), 1U);
  EXPECT_EQ(TypeParam::get(*parent, 3), nullptr);
  EXPECT_NE(TypeParam::is(*parent, 3), removed);
  EXPECT_EQ(TypeParam::all(*parent).generation(), 3U);
}

TYPED_TEST(UsageLevel, DeletesByIterator) {
  using Key = typename TypeParam::Key;
  auto const parent = TypeParam::make();
  for (int key = 1; key <= 5; ++key) TypeParam::is(*parent, static_cast<Key>(key));
  auto const& all = TypeParam::all(*parent);
  EXPECT_EQ(TypeParam::delAt(*parent, all.end()), nullptr);
  auto at = all.at(2);
  EXPECT_EQ(at.generation(), 1U);
  EXPECT_EQ(TypeParam::keyOf(*TypeParam::delAt(*parent, at)), 2);
  ++at;
  EXPECT_EQ(at.key(), 3);
  EXPECT_EQ(at.value(), TypeParam::get(*parent, 3));
  // A step does not change the generation at which the iterator was made.
  EXPECT_EQ(at.generation(), 1U);
  // Stale: it removes by the key that it last held.
  TypeParam::del(*parent, 1);
  EXPECT_EQ(TypeParam::keyOf(*TypeParam::delAt(*parent, at)), 3);
  EXPECT_EQ(TypeParam::delAt(*parent, at), nullptr);
  EXPECT_EQ(all.generation(), 7U);
  TypeParam::is(*parent, 3);
  EXPECT_EQ(TypeParam::keyOf(*TypeParam::delAt(*parent, at)), 3);
  EXPECT_EQ(keysOf<TypeParam>(*parent), (std::vector<Key>{4, 5}));
  // At the end it removes nothing.
  at = all.at(5);
  ++at;
  EXPECT_TRUE(at == all.end());
  EXPECT_EQ(TypeParam::delAt(*parent, at), nullptr);
}

TYPED_TEST(UsageLevel, IteratorKeepsItsKeyWhenTheChildIsGone) {
  using Key = typename TypeParam::Key;
  auto const parent = TypeParam::make();
  for (int key = 1; key <= 3; ++key) TypeParam::is(*parent, static_cast<Key>(key));
  auto at = TypeParam::all(*parent).at(2);
  TypeParam::del(*parent, 2);
  EXPECT_EQ(at.key(), 2);
  TypeParam::delAll(*parent);
  EXPECT_EQ(at.key(), 2);
  // A walk goes on when each child is removed as it is met.
  for (int key = 1; key <= 3; ++key) TypeParam::is(*parent, static_cast<Key>(key));
  std::vector<Key> met;
  for (auto const [key, child] : TypeParam::all(*parent)) {
    TypeParam::del(*parent, key);
    met.push_back(key);
  }
  EXPECT_EQ(met, (std::vector<Key>{1, 2, 3}));
}

TYPED_TEST(UsageLevel, ChildrenOutliveTheirParent) {
  auto parent = TypeParam::make();
  auto const held = TypeParam::is(*parent, 1);
  TypeParam::is(*parent, 2);
  EXPECT_EQ(TypeParam::Child::memAllocationTracker_.liveObjects(), 2U);
  parent.reset();
  EXPECT_EQ(TypeParam::Child::memAllocationTracker_.liveObjects(), 1U);
  EXPECT_EQ(held->useCount(), 1U);
  EXPECT_EQ(TypeParam::keyOf(*held), 1);
  EXPECT_FALSE(held->flag(Node::flagBeingDestroyed));
}

TYPED_TEST(UsageLevel, DoesAsTheModel) {
  using Key = typename TypeParam::Key;
  using Child = typename TypeParam::Child;
  struct ModelIterator {
    typename std::remove_cvref_t<decltype(TypeParam::all(*TypeParam::make()))>::iterator at;
    Key key;
    bool isAtEnd;
  };
  auto const parent = TypeParam::make();
  auto const& all = TypeParam::all(*parent);
  std::map<Key, Ptr<Child>> model;
  std::vector<ModelIterator> iterators;
  U32 generation = 1;
  velmortest::Random random(3);
  for (int step = 0; step < velmortest::manySteps / 2; ++step) {
    // Keys on both sides of zero: negative ones for signed types, the highest for unsigned types.
    Key const key = static_cast<Key>(random() % 64 - 32);
    switch (random() % 8) {
      case 0:
      case 1:
      case 2: {
        auto const child = TypeParam::is(*parent, key);
        auto const [present, isNew] = model.emplace(key, child);
        ASSERT_EQ(present->second, child);
        break;
      }
      case 3: {
        auto const present = model.find(key);
        auto const removed = TypeParam::del(*parent, key);
        ASSERT_EQ(removed, present == model.end() ? Ptr<Child>() : present->second);
        if (removed == nullptr) break;
        model.erase(present);
        generation += 2;
        break;
      }
      case 4: {
        if (iterators.size() > 8) iterators.erase(iterators.begin());
        auto const present = model.find(key);
        iterators.push_back({all.at(key), key, present == model.end()});
        ASSERT_EQ(iterators.back().at == all.end(), present == model.end());
        break;
      }
      case 5: {
        if (iterators.empty()) break;
        ModelIterator& it = iterators[random() % iterators.size()];
        Ptr<Child> expected;
        auto const present = model.find(it.key);
        if (!it.isAtEnd && present != model.end()) {
          expected = present->second;
          model.erase(present);
          generation += 2;
        }
        ASSERT_EQ(TypeParam::delAt(*parent, it.at), expected);
        break;
      }
      case 6: {
        if (iterators.empty()) break;
        ModelIterator& it = iterators[random() % iterators.size()];
        if (it.isAtEnd) break;
        ++it.at;
        auto const next = model.upper_bound(it.key);
        it.isAtEnd = next == model.end();
        ASSERT_EQ(it.at == all.end(), it.isAtEnd);
        if (it.isAtEnd) break;
        it.key = next->first;
        ASSERT_EQ(it.at.key(), next->first);
        ASSERT_EQ(it.at.value(), next->second);
        break;
      }
      default: {
        if (random() % 2048 == 0) {
          TypeParam::delAll(*parent);
          model.clear();
          generation += 2;
        }
        auto const present = model.find(key);
        ASSERT_EQ(TypeParam::get(*parent, key),
                  present == model.end() ? Ptr<Child>() : present->second);
      }
    }
    ASSERT_EQ(all.size(), model.size());
    ASSERT_EQ(all.generation(), generation);
    ASSERT_EQ(Child::memAllocationTracker_.liveObjects(), model.size());
    if (step % 256 != 0) continue;
    auto expected = model.begin();
    for (auto const& [walked, child] : all) {
      ASSERT_EQ(walked, expected->first);
      ASSERT_EQ(child, expected->second);
      ++expected;
    }
    ASSERT_TRUE(expected == model.end());
  }
}

}  // namespace
}  // namespace VelmorTcam
