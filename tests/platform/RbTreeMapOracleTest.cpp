// Ordered maps and sets against std::map, through long random lives.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "RbTreeMapFixture.h"

namespace velmortest {
namespace {

// A long random life against std::map. One iterator lives through all changes.
template <class K, class MakeKey>
void liveRandomly(int steps, U32 keyRange, U32 seed, MakeKey makeKey) {
  std::mt19937 engine(seed);
  auto const random = [&engine](U32 range) { return static_cast<U32>(engine()) % range; };
  Map<K, U32> map;
  std::map<K, U32> oracle;
  U32 generation = 1;
  auto it = map.begin();
  bool isHeld = false;
  K held{};
  U32 bias = 5;
  for (int step = 0; step < steps; ++step) {
    if (step % 10'000 == 0) bias = 2 + random(7);
    K const key = makeKey(random(keyRange));
    U32 const what = random(12);
    if (what < bias) {
      U32 const value = random(1000);
      bool const isNew = oracle.emplace(key, value).second;
      auto const [at, inserted] = map.insert(key, value);
      ASSERT_EQ(inserted, isNew);
      ASSERT_EQ(*at, oracle[key]);
    } else if (what < 8) {
      bool const was = oracle.erase(key) != 0;
      if (was) generation += 2;
      ASSERT_EQ(map.del(key), was);
    } else if (what == 8) {
      auto const above = oracle.lower_bound(key);
      auto const at = map.lowerBound(key);
      ASSERT_EQ(at == map.end(), above == oracle.end());
      if (above != oracle.end()) {
        ASSERT_EQ(at.key(), above->first);
      }
      auto const behind = oracle.upper_bound(key);
      auto const atBehind = map.upperBound(key);
      ASSERT_EQ(atBehind == map.end(), behind == oracle.end());
      if (behind != oracle.end()) {
        ASSERT_EQ(atBehind.key(), behind->first);
      }
    } else if (what == 9) {
      // Step the iterator. It must go to the first key behind the one that it held.
      auto next = isHeld ? oracle.upper_bound(held) : oracle.begin();
      if (isHeld) {
        ++it;
      } else {
        it = map.begin();
      }
      isHeld = next != oracle.end();
      ASSERT_EQ(it == map.end(), !isHeld);
      if (isHeld) {
        held = next->first;
        ASSERT_EQ(it.key(), held);
        ASSERT_EQ(it.value(), next->second);
      }
    } else if (what == 10 && isHeld) {
      bool const was = oracle.erase(held) != 0;
      if (was) generation += 2;
      ASSERT_EQ(map.del(it), was);
    } else {
      auto const at = oracle.find(key);
      const U32* const found = map.find(key);
      ASSERT_EQ(found != nullptr, at != oracle.end());
      ASSERT_EQ(map.at(key) != map.end(), at != oracle.end());
      if (found != nullptr) {
        ASSERT_EQ(*found, at->second);
      }
    }
    ASSERT_EQ(map.size(), oracle.size());
    ASSERT_EQ(map.generation(), generation);
    if (step % 5'000 == 0) {
      ASSERT_TRUE(map.isSound());
      ASSERT_TRUE(std::equal(
          map.begin(), map.end(), oracle.begin(), oracle.end(),
          [](auto const& a, auto const& b) { return a.key == b.first && a.value == b.second; }));
    }
  }
  ASSERT_TRUE(map.isSound());
  while (!map.empty()) ASSERT_TRUE(map.del(random(2) == 0 ? map.begin() : map.last()));
  ASSERT_TRUE(map.isSound());
}

TEST_F(RbTreeMapTest, AgreesWithAnOracleForAMillionSteps) {
  liveRandomly<U32>(300'000, 100, 1, [](U32 n) { return n * 2'654'435'761U; });
  liveRandomly<U32>(300'000, 20'000, 2, [](U32 n) { return n; });
  liveRandomly<S16>(100'000, 3'000, 3, [](U32 n) { return static_cast<S16>(n * 21); });
  liveRandomly<String>(150'000, 3'000, 4, [](U32 n) {
    return String(n % 3 == 0 ? "acl-ipv4-" : "") + String(std::to_string(n * 7919));
  });
  liveRandomly<Plain>(150'000, 2'000, 5, [](U32 n) { return Plain(static_cast<int>(n)); });
  // Names that begin alike. A few begin in another way, or are only the common beginning.
  for (U32 keyRange : {12U, 40U, 400U, 6'000U}) {
    liveRandomly<String>(100'000, keyRange, 6 + keyRange, [](U32 n) {
      String const beginning = "velmor-access-list-of-the-ingress-pipe-";
      if (n % 39 == 0) return String(beginning.substr(0, n / 39 % 40));
      if (n % 101 == 0)
        return beginning.substr(0, n / 101 % 39) + String(n % 2 == 0 ? "a" : "\x80z");
      return beginning + String(std::to_string(n));
    });
  }
}

TEST_F(RbTreeMapTest, TakesTheLowestStringBeforeAnyNumberOfEqualHints) {
  for (int count = 1; count < 200; ++count) {
    Map<String, int> map;
    map.insert("z", 0);
    std::vector<String> keys{"a"};
    for (int i = count; i > 0; --i) {
      map.insert(String("eight by" + std::to_string(1000 + i)), i);
      keys.emplace_back("eight by" + std::to_string(1000 + count + 1 - i));
    }
    map.insert("a", 0);
    keys.emplace_back("z");
    ASSERT_TRUE(map.isSound());
    ASSERT_EQ(keysOf(map), keys);
  }
}

// Changes at a place that moves slowly over the ordered keys. So the tree finds most of them in the
// same leaf as the last one, or in the next. Sometimes one of `others`, which are not among the
// keys, is added and removed.
template <class K>
void changeWhereKeysRun(const std::vector<K>& keys, const std::vector<K>& others, U32 seed) {
  std::mt19937 engine(seed);
  auto const random = [&engine](U32 range) { return static_cast<U32>(engine()) % range; };
  Map<K, U32> map;
  std::map<K, U32> oracle;
  U32 place = 1000;
  U32 bias = 1;
  U32 reach = 0;
  for (U32 step = 0; step < 40'000; ++step) {
    if (step % 4000 == 0) bias = 4 - bias;
    if (step % 1000 == 0) reach = 1 + random(3);
    U32 const size = static_cast<U32>(keys.size());
    place = random(100) == 0 ? random(size) : (place + size + random(2 * reach + 1) - reach) % size;
    K const& key = keys[place];
    U32 const what = random(6);
    if (what < bias) {
      auto const [value, isNew] = map.insert(key, step);
      auto const [at, isNewThere] = oracle.emplace(key, step);
      ASSERT_EQ(isNew, isNewThere);
      ASSERT_EQ(*value, at->second);
    } else if (what < 4) {
      ASSERT_EQ(map.del(key), oracle.erase(key) != 0);
    } else {
      ASSERT_EQ(map.has(key), oracle.contains(key));
      auto const behind = oracle.upper_bound(key);
      auto const at = map.upperBound(key);
      ASSERT_EQ(at == map.end(), behind == oracle.end());
      if (behind != oracle.end()) {
        ASSERT_EQ(at.key(), behind->first);
      }
    }
    if (step % 5000 == 77) {
      K const other = others[random(static_cast<U32>(others.size()))];
      ASSERT_TRUE(map.insert(other, 0).second);
      ASSERT_TRUE(map.del(other));
    }
    ASSERT_EQ(map.size(), oracle.size());
    if (step % 100 == 0) {
      ASSERT_TRUE(map.isSound());
      ASSERT_TRUE(std::equal(
          map.begin(), map.end(), oracle.begin(), oracle.end(),
          [](auto const& a, auto const& b) { return a.key == b.first && a.value == b.second; }));
    }
  }
}

// The hints of removed elements are still in memory.
TEST_F(RbTreeMapTest, ElementFoundLastMayBeGone) {
  Map<U32, U32> map;
  for (U32 key = 0; key < 10; ++key) map.insert(key, key);
  map.insert(7, 0);
  for (U32 key = 9; key >= 5; --key) ASSERT_TRUE(map.del(key));
  map.insert(20, 20);
  auto const [value, isNew] = map.insert(7, 77);
  EXPECT_TRUE(isNew);
  EXPECT_EQ(*value, 77U);
  EXPECT_EQ(keysOf(map), (std::vector<U32>{0, 1, 2, 3, 4, 7, 20}));
}

TEST_F(RbTreeMapTest, AgreesWithAnOracleWhereNumbersRunInOrder) {
  std::vector<U32> keys;
  for (U32 i = 1; i <= 2000; ++i) keys.push_back(i * 3);
  for (U32 seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE(seed);
    changeWhereKeysRun<U32>(keys, {0, 3001, 7000}, seed);
  }
}

// Strings with equal hints fill several leaves, and some keys begin in another way.
TEST_F(RbTreeMapTest, AgreesWithAnOracleWhereStringsRunInOrder) {
  for (const char* beginning : {"", "acl-ipv4-ingress-"}) {
    for (U32 const alike : {1U, 3U, 40U, 200U}) {
      SCOPED_TRACE(std::string(beginning) + " " + std::to_string(alike));
      std::vector<String> keys;
      for (U32 i = 0; i < 2000; ++i) {
        std::string key = beginning + std::to_string(10'000'000 + i / alike);  // a whole hint
        if (alike > 1) key += std::to_string(i % alike);
        keys.emplace_back(key);
      }
      std::sort(keys.begin(), keys.end());
      changeWhereKeysRun<String>(keys, {"acl", "zz"}, alike);
    }
  }
}

TEST_F(RbTreeMapTest, IsSoundInEveryStateOfOrderedGrowthAndShrinking) {
  enum Way { rising, falling, random };
  for (Way grow : {rising, falling, random}) {
    for (Way shrink : {rising, falling, random}) {
      SCOPED_TRACE(testing::Message() << grow << ' ' << shrink);
      std::mt19937 engine(9);
      constexpr U32 count = 8000;
      auto const keysIn = [&](Way way) {
        std::vector<U32> keys(count);
        for (U32 i = 0; i < count; ++i) keys[i] = way == falling ? count - 1 - i : i;
        if (way == random) std::shuffle(keys.begin(), keys.end(), engine);
        return keys;
      };
      Map<U32, U32> map;
      U32 step = 0;
      auto const check = [&] {
        ASSERT_TRUE(map.isSound()) << step;
        ASSERT_EQ(map.memoryBytes(), HN_Test::memAllocationTracker_.liveBytes() +
                                         Zel::impl::RbTree::blockTracker_.liveBytes());
      };
      for (U32 key : keysIn(grow)) {
        map.insert(key, key);
        if (++step % 97 == 0) check();
      }
      for (U32 key : keysIn(shrink)) {
        ASSERT_TRUE(map.del(key));
        if (++step % 97 == 0 || map.size() < 100) check();
      }
      ASSERT_TRUE(map.empty());
    }
  }
}

}  // namespace
}  // namespace velmortest
