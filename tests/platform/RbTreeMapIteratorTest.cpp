// Iterators of ordered maps and sets: steps, removals, and changes in between.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "FailingNew.h"
#include "RbTreeMapFixture.h"

namespace velmortest {
namespace {

TEST_F(RbTreeMapTest, StepWithoutMemoryForTheKeyLeavesTheIterator) {
  Map<String, U32> map;
  // Each key is longer than those before, so that no copy fits into the memory of an earlier one.
  for (U32 i = 0; i < 100; ++i) map.insert(String(std::string(70 + 10 * i, 'a')), i);
  auto at = map.begin();
  for (U32 i = 0; i + 1 < 100; ++i) {
    if (i % 10 == 5) map.insert(String("b" + std::to_string(i)), i);  // the next step searches
    memoryIsOut = true;
    EXPECT_THROW(++at, std::bad_alloc);
    memoryIsOut = false;
    ASSERT_EQ(at.value(), i);
    ++at;
    ASSERT_EQ(at.value(), i + 1);
  }
  memoryIsOut = false;
  String const last = at.key();
  EXPECT_EQ(map.take(at), 99U);
  EXPECT_FALSE(map.has(last));
}

TEST_F(RbTreeMapTest, StepWhoseKeyCopyThrowsLeavesTheIterator) {
  Map<Plain, int> map;
  for (int i = 0; i < 400; i += 2) map.insert(Plain(i), i);
  auto at = map.begin();
  for (int i = 0; i < 398; i += 2) {
    bool const isStale = i % 20 == 10;
    if (isStale) map.insert(Plain(i + 1), i + 1);
    Plain::throws = true;
    EXPECT_THROW(++at, std::runtime_error);
    EXPECT_THROW(at++, std::runtime_error);
    Plain::throws = false;
    ASSERT_EQ(at.key().number, i);
    ASSERT_EQ(at.value(), i);
    if (isStale) {
      ++at;
      ASSERT_EQ(at.value(), i + 1);
    }
    ++at;
    ASSERT_EQ(at.value(), i + 2);
  }
  ++at;
  EXPECT_TRUE(at == map.end());
  map.del(Plain(0));
  EXPECT_TRUE(map.del(at));  // the key that it last held
  EXPECT_FALSE(map.has(Plain(398)));
}

TEST_F(RbTreeMapTest, DeletesByIterator) {
  Set<Entry> set;
  for (U32 i = 0; i < 10; ++i) set.insert({1, i, {}});
  auto const atEnd = set.end();
  auto it = set.at({1, 4, {}});
  EXPECT_FALSE(set.del(atEnd));
  EXPECT_TRUE(set.del(it));
  EXPECT_FALSE(set.has({1, 4, {}}));
  // Stale now: it removes by the key that it last held.
  EXPECT_FALSE(set.del(it));
  EXPECT_EQ(set.generation(), 3U);
  set.insert({1, 4, "again"});
  EXPECT_TRUE(set.del(it));
  EXPECT_EQ(set.generation(), 5U);
  ++it;
  EXPECT_EQ(it.key().id, 5U);
  // Another element is removed.
  EXPECT_TRUE(set.del({1, 0, {}}));
  EXPECT_TRUE(set.del(it));
  EXPECT_FALSE(set.has({1, 5, {}}));
  EXPECT_FALSE(set.del(atEnd));
}

TEST_F(RbTreeMapTest, IteratorAtTheEndRemovesOnlyWhenStale) {
  Set<Entry> set;
  set.insert({1, 1, {}});
  set.insert({1, 2, {}});
  auto it = set.begin();
  ++it;
  ++it;
  ASSERT_TRUE(it == set.end());
  EXPECT_FALSE(set.del(it));
  set.del({1, 1, {}});
  EXPECT_TRUE(set.del(it));  // by the key that it last held
  EXPECT_TRUE(set.empty());

  Map<U32, int> map;
  map.insert(1, 10);
  map.insert(2, 20);
  auto at = map.at(2);
  ++at;
  map.del(1);
  EXPECT_EQ(map.take(at), 0);  // stands at no element
  EXPECT_EQ(map.take(map.begin()), 20);
}

TEST_F(RbTreeMapTest, WalkWithstandsChanges) {
  for (int count : {5, 60, 63, 2000}) {
    SCOPED_TRACE(count);
    Map<U32, int> map;
    for (int i = 0; i < count; ++i) map.insert(static_cast<U32>(2 * i), i);
    U32 expected = 0;
    for (auto it = map.begin(); it != map.end(); ++it) {
      ASSERT_EQ(it.key(), expected);
      expected += 2;
      map.insert(it.key() + 1, 0);  // just behind it; removed again below
      if (it.key() % 4 == 0) {
        ASSERT_TRUE(map.del(it));
      }
      ASSERT_TRUE(map.del(expected - 1));
    }
    EXPECT_EQ(expected, static_cast<U32>(2 * count));
    EXPECT_EQ(map.size(), static_cast<U32>(count / 2));
  }
  Map<String, int> names;
  for (int i = 0; i < 300; ++i) names.insert(String("acl-ipv4-") + String(std::to_string(i)), i);
  int met = 0;
  for (auto it = names.begin(); it != names.end(); ++it, ++met) names.del(it);
  EXPECT_EQ(met, 300);
  EXPECT_TRUE(names.empty());
}

TEST_F(RbTreeMapTest, ConstWalkOverStringsEndsAfterARemoval) {
  Map<String, int> map;
  for (const char* key : {"a", "b", "c", "d"}) map.insert(key, 0);
  auto it = std::as_const(map).begin();
  map.insert("ab", 0);
  ++it;
  ASSERT_TRUE(it != std::as_const(map).end());
  EXPECT_EQ(it.key(), "ab");
  map.del("ab");
  ++it;
  EXPECT_TRUE(it == std::as_const(map).end());
}

}  // namespace
}  // namespace velmortest
