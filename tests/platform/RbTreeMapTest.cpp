// Ordered maps and sets: their elements and the order.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "RbTreeMapFixture.h"

namespace velmortest {
namespace {

TEST_F(RbTreeMapTest, EmptyMapHasNoMemory) {
  Map<U32, Halvo::Ptr<Halvo::Node>> map;
  EXPECT_EQ(sizeof map, 32U);
  EXPECT_EQ(map.memoryBytes(), 0U);
  EXPECT_EQ(map.find(1), nullptr);
  EXPECT_EQ(map.take(1), nullptr);
  EXPECT_FALSE(map.del(1));
  EXPECT_FALSE(map.del(map.begin()));
  EXPECT_TRUE(map.begin() == map.end());
  EXPECT_TRUE(map.last() == map.end());
  EXPECT_TRUE(map.lowerBound(0) == map.end());
  EXPECT_EQ(map.generation(), 1U);
}

TEST_F(RbTreeMapTest, OneElementTakesLittle) {
  Map<U32, Halvo::Ptr<Halvo::Node>> map;
  map.insert(1, nullptr);
  EXPECT_LE(sizeof map + map.memoryBytes(), 88U);
}

TEST_F(RbTreeMapTest, IteratesInAscendingOrder) {
  Map<S16, int> pipes;
  for (int key : {2, -1, 0, 32767, -32768}) pipes.insert(static_cast<S16>(key), key);
  EXPECT_EQ(keysOf(pipes), (std::vector<S16>{-32768, -1, 0, 2, 32767}));
  Map<U32, int> groups;
  for (U32 key : {7U, 0xFFFFFFFFU, 0U}) groups.insert(key, 0);
  EXPECT_EQ(keysOf(groups), (std::vector<U32>{0, 7, 0xFFFFFFFF}));
  Map<U64, int> wide;
  for (U64 key : {~U64{0}, ~U64{0} - 1, U64{0}}) wide.insert(key, 0);
  EXPECT_EQ(keysOf(wide), (std::vector<U64>{0, ~U64{0} - 1, ~U64{0}}));
  EXPECT_TRUE(wide.has(~U64{0}));
  Map<int, int, std::greater<int>> falling;
  for (int key : {1, 3, 2}) falling.insert(key, 0);
  EXPECT_EQ(keysOf(falling), (std::vector<int>{3, 2, 1}));
}

TEST_F(RbTreeMapTest, OrdersStringsByTheirBytes) {
  std::vector<std::string> texts{
      "",         "a",           "b",      "A",    "acl-ipv4-1",          "acl-ipv4-2",
      "acl-ipv4", "acl-ipv4-10", "\xff",   "\x80", std::string("a\0", 2), std::string("a\0b", 3),
      "aaaaaaaa", "aaaaaaaab",   "aaaaaaa"};
  Map<String, int> map;
  for (auto const& text : texts) map.insert(String(text), 0);
  std::sort(texts.begin(), texts.end());
  std::vector<std::string> met;
  for (auto [key, value] : map) met.push_back(key.str());
  EXPECT_EQ(met, texts);
  for (auto const& text : texts) EXPECT_TRUE(map.has(String(text)));
  EXPECT_FALSE(map.has("acl-ipv4-"));
}

TEST_F(RbTreeMapTest, OrdersStringsThatBeginAlike) {
  String const beginning = "acl-ipv4-ingress-";
  // Each of these is added to a thousand names that begin alike: below, above and between them.
  for (const String& other :
       {String(), String("acl-ipv4"), String("acl-ipv4-ingress-"), String("acl-ipv4-ingress-5000"),
        String("acl-ipv4-ingress-", 18), String("acl-ipv4-ingrest"), String("acl-ipv4-ingrese"),
        String("acl-ipv6-ingress-500"), String("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),
        String("\x01")}) {
    SCOPED_TRACE(other.view());
    Map<String, U32> map;
    std::map<String, U32> oracle;
    for (U32 i = 0; i < 1000; ++i) {
      String const name = beginning + String(std::to_string(i * 7 % 1000));
      map.insert(name, i);
      oracle.emplace(name, i);
    }
    EXPECT_FALSE(map.has(other));
    EXPECT_FALSE(map.del(other));
    auto const behind = oracle.upper_bound(other);
    auto const at = map.upperBound(other);
    EXPECT_EQ(at == map.end(), behind == oracle.end());
    EXPECT_EQ(map.lowerBound(other) == map.end(), behind == oracle.end());
    if (behind != oracle.end()) {
      EXPECT_EQ(at.key(), behind->first);
      EXPECT_EQ(map.lowerBound(other).key(), behind->first);
    }
    map.insert(other, 5);
    oracle.emplace(other, 5U);
    EXPECT_TRUE(map.isSound());
    EXPECT_TRUE(map.has(other));
    EXPECT_TRUE(std::equal(
        map.begin(), map.end(), oracle.begin(), oracle.end(),
        [](auto const& a, auto const& b) { return a.key == b.first && a.value == b.second; }));
    for (auto const& [name, value] : oracle) EXPECT_EQ(map.get(name), value);
    EXPECT_TRUE(map.del(other));
    EXPECT_FALSE(map.has(other));
    EXPECT_TRUE(map.isSound());
  }
}

TEST_F(RbTreeMapTest, FirstElementIsFoundWhereALowerOneWasRemoved) {
  Set<U32> set;
  for (U32 key = 0; key < 400; key += 2) set.insert(key);
  set.del(0);
  set.insert(3);  // the first leaf is full again
  set.insert(1);
  EXPECT_TRUE(set.has(1));
  EXPECT_TRUE(set.isSound());
}

TEST_F(RbTreeMapTest, SetKeepsTheElementThatIsThere) {
  Set<Entry> set;
  EXPECT_TRUE(set.insert({10, 5, "a"}).second);
  auto const [kept, isNew] = set.insert({10, 5, "b"});
  EXPECT_FALSE(isNew);
  EXPECT_EQ(kept->text, "a");
  EXPECT_EQ(set.size(), 1U);
  EXPECT_TRUE(set.has({10, 5, "other"}));
  EXPECT_FALSE(set.has({5, 10, "a"}));
  for (auto [priority, id] : {std::pair{5U, 1U}, {20U, 1U}, {7U, 3U}, {7U, 1U}}) {
    set.insert({priority, id, {}});
  }
  std::vector<std::pair<U32, U32>> met;
  for (const Entry& entry : set) met.emplace_back(entry.priority, entry.id);
  EXPECT_EQ(met, (std::vector<std::pair<U32, U32>>{{20, 1}, {10, 5}, {7, 1}, {7, 3}, {5, 1}}));
}

TEST_F(RbTreeMapTest, MapInsertsGetsAndTakes) {
  Map<U32, String> map;
  auto const [first, isNew] = map.insert(1, "one");
  EXPECT_TRUE(isNew);
  auto const [second, isNewAgain] = map.insert(1, "other");
  EXPECT_FALSE(isNewAgain);
  EXPECT_EQ(first, second);
  EXPECT_EQ(map.get(1), "one");
  EXPECT_EQ(map.get(2), "");
  map.getOrCreate(2) = "two";
  EXPECT_EQ(map.getOrMake(2, [] { return String("not called"); }), "two");
  EXPECT_EQ(map.getOrMake(3, [] { return String("three"); }), "three");
  EXPECT_EQ(map.take(2), "two");
  EXPECT_EQ(map.take(2), "");
  EXPECT_EQ(map.size(), 2U);
}

TEST_F(RbTreeMapTest, GenerationCountsRemovalsAlone) {
  Map<U32, int> map;
  for (U32 i = 0; i < 1000; ++i) map.insert(i, 0);
  EXPECT_EQ(map.generation(), 1U);
  EXPECT_FALSE(map.del(5000));
  EXPECT_EQ(map.take(5000), 0);
  EXPECT_EQ(map.generation(), 1U);
  EXPECT_TRUE(map.del(5));
  EXPECT_EQ(map.generation(), 3U);
  map.take(6);
  EXPECT_EQ(map.generation(), 5U);
  EXPECT_TRUE(map.del(map.begin()));
  EXPECT_EQ(map.generation(), 7U);
  map.clear();
  EXPECT_EQ(map.generation(), 9U);
  map.clear();
  EXPECT_EQ(map.generation(), 11U);
}

TEST_F(RbTreeMapTest, ElementsNeverMove) {
  std::mt19937 random(7);
  Map<U32, U32> map;
  std::map<U32, U32*> places;
  for (int step = 0; step < 100'000; ++step) {
    U32 const key = static_cast<U32>(random() % 3000);
    if (random() % 2 == 0) {
      places[key] = map.insert(key, key).first;
    } else {
      map.del(key);
      places.erase(key);
    }
  }
  for (auto [key, place] : places) ASSERT_EQ(map.find(key), place);
}

TEST_F(RbTreeMapTest, OrderedInputFillsItsBlocks) {
  Map<U32, U32> rising;
  Map<U32, U32> falling;
  constexpr U32 count = 100'000;
  for (U32 i = 0; i < count; ++i) {
    rising.insert(i, i);
    falling.insert(count - i, i);
  }
  EXPECT_TRUE(rising.isSound());
  EXPECT_TRUE(falling.isSound());
  EXPECT_LE(rising.memoryBytes(), count * (8 + 18));
  EXPECT_LE(falling.memoryBytes(), count * (8 + 18));
}

TEST_F(RbTreeMapTest, MovesAndSwaps) {
  Map<U32, int> a;
  for (U32 i = 0; i < 100; ++i) a.insert(i, 0);
  Map<U32, int> b(std::move(a));
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(a.generation(), 3U);
  EXPECT_EQ(b.size(), 100U);
  a.insert(7, 7);
  a.swap(b);
  EXPECT_EQ(a.size(), 100U);
  EXPECT_EQ(b.get(7), 7);
  b = std::move(a);
  EXPECT_EQ(b.size(), 100U);
  EXPECT_TRUE(a.empty());
}

TEST_F(RbTreeMapTest, ThrowingCopiesLeaveTheMapAsItWas) {
  Map<Plain, int> map;
  for (int i = 0; i < 200; ++i) {
    Plain const key(i * 37 % 200);
    Plain::throws = true;
    EXPECT_THROW(map.insert(key, i), std::runtime_error);
    Plain::throws = false;
    EXPECT_EQ(map.size(), static_cast<U32>(i));
    EXPECT_THROW(map.getOrMake(key, []() -> int { throw std::runtime_error("make"); }),
                 std::runtime_error);
    EXPECT_TRUE(map.isSound());
    EXPECT_TRUE(map.insert(key, i).second);
  }
  EXPECT_EQ(HN_Test::memAllocationTracker_.liveObjects(), 200U);
}

TEST_F(RbTreeMapTest, ElementMayLookAtTheMapAsItGoes) {
  struct Looker : Halvo::Node {
    Map<U32, Halvo::Ptr<Looker>>* map = nullptr;
    U32 key = 0;
    bool* sawItself = nullptr;
    ~Looker() override { *sawItself |= map->has(key) || !map->isSound(); }
  };
  Map<U32, Halvo::Ptr<Looker>> map;
  bool sawItself = false;
  for (U32 i = 0; i < 200; ++i) {
    auto looker = Halvo::makePtr<Looker>();
    looker->map = &map;
    looker->key = i;
    looker->sawItself = &sawItself;
    map.insert(i, std::move(looker));
  }
  for (U32 i = 0; i < 150; ++i) map.del(i);
  map.take(170);
  map.clear();
  EXPECT_FALSE(sawItself);
}

}  // namespace
}  // namespace velmortest
