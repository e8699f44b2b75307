// Hash maps: their elements, and how their tables grow and shrink.
#include <gtest/gtest.h>

#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "HashMap2018Fixture.h"

namespace velmortest {
namespace {

TEST(HashMap2018, IsSixteenBytesAndAllocatesNothingWhileEmpty) {
  HashMap2018<Kind, Halvo::Ptr<Halvo::Node>> map;
  static_assert(sizeof map == 16);
  EXPECT_EQ(map.memoryBytes(), 0U);
  EXPECT_EQ(map.find(kindSome), nullptr);
  EXPECT_FALSE(map.del(kindSome));
  EXPECT_EQ(map.take(kindSome), nullptr);
  EXPECT_TRUE(map.begin() == map.end());
  EXPECT_EQ(map.generation(), 1U);
  EXPECT_EQ(map.memoryBytes(), 0U);
}

TEST(HashMap2018, KeepsSmallTablesSmall) {
  HashMap2018<Kind, void*> one;
  one.insert(kindSome, nullptr);
  EXPECT_EQ(one.memoryBytes(), 0U);
  HashMap2018<Kind, String> oneLarge;
  oneLarge.insert(kindSome, String());
  EXPECT_LE(oneLarge.memoryBytes(), 8 + sizeof(String));
  HashMap2018<U8, void*> ten;
  for (U8 i = 0; i < 10; ++i) ten.insert(i, nullptr);
  EXPECT_LE(ten.memoryBytes(), 96U);
  HashMap2018<U16, U8> ports;
  for (U16 i = 0; i < 10; ++i) ports.insert(i, U8{1});
  EXPECT_LE(ports.memoryBytes(), 48U);
  HashMap2018<U8, void*> exact;
  exact.reserve(7);
  EXPECT_LE(exact.memoryBytes(), 72U);
}

TEST(HashMap2018, InsertKeepsThePresentValue) {
  HashMap2018<U8, int> map;
  auto [first, isNew] = map.insert(3, 30);
  EXPECT_TRUE(isNew);
  EXPECT_EQ(*first, 30);
  auto [second, isNewAgain] = map.insert(3, 31);
  EXPECT_FALSE(isNewAgain);
  EXPECT_EQ(second, first);
  EXPECT_EQ(*second, 30);
  EXPECT_EQ(map.size(), 1U);
  map.getOrCreate(3) = 32;
  EXPECT_EQ(map.get(3), 32);
  EXPECT_EQ(map.getOrCreate(4), 0);
  EXPECT_EQ(map.size(), 2U);
  EXPECT_EQ(map.generation(), 1U);
}

template <class V, class MakeValue>
void holdEveryByteKey(MakeValue makeValue) {
  HashMap2018<U8, V> map;
  for (int i = 0; i < 256; ++i) {
    for (int key = 0; key < 256; ++key) {
      ASSERT_EQ(map.has(static_cast<U8>(key * 37)), key < i) << i << ' ' << key;
    }
    map.insert(static_cast<U8>(i * 37), makeValue(i));
  }
  EXPECT_EQ(map.size(), 256U);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(map.get(static_cast<U8>(i * 37)), makeValue(i));
}

TEST(HashMap2018, HoldsEveryByteKey) {
  holdEveryByteKey<int>([](int i) { return i; });
  holdEveryByteKey<String>([](int i) { return String(std::to_string(i)); });
}

TEST(HashMap2018, GenerationCountsRealRemovals) {
  HashMap2018<U16, int> map;
  map.insert(1, 1);
  EXPECT_FALSE(map.del(2));
  EXPECT_EQ(map.take(2), 0);
  EXPECT_EQ(map.generation(), 1U);
  EXPECT_TRUE(map.del(1));
  EXPECT_EQ(map.generation(), 3U);
  map.clear();
  EXPECT_EQ(map.generation(), 5U);
  map.insert(1, 7);
  EXPECT_EQ(map.take(1), 7);
  EXPECT_EQ(map.generation(), 7U);
  map.insert(2, 7);
  EXPECT_TRUE(map.del(map.begin()) == map.end());
  EXPECT_EQ(map.generation(), 9U);
  EXPECT_TRUE(map.del(map.end()) == map.end());
  EXPECT_EQ(map.generation(), 9U);
}

TEST(HashMap2018, RemovedByteKeysAreNotFoundBehindTheElements) {
  HashMap2018<U8, int> map;
  for (int i = 0; i < 40; ++i) map.insert(static_cast<U8>(100 + i), i);
  for (int i = 39; i >= 0; --i) {
    EXPECT_TRUE(map.del(static_cast<U8>(100 + i)));
    for (int k = 0; k < 256; ++k) {
      EXPECT_EQ(map.has(static_cast<U8>(k)), k >= 100 && k < 100 + i) << k;
    }
  }
}

TEST(HashMap2018, TakesRemovesAndCopiesCountedObjects) {
  ASSERT_EQ(Counted::live, 0);
  for (int count : {1, 10, 16, 17, 500}) {
    HashMap2018<U32, Counted> map;
    for (int i = 0; i < count; ++i) map.insert(static_cast<U32>(i), Counted(i));
    EXPECT_EQ(Counted::live, count);
    HashMap2018<U32, Counted> copy(map);
    EXPECT_EQ(Counted::live, 2 * count);
    EXPECT_EQ(copy.take(0).number, 0);
    EXPECT_EQ(Counted::live, 2 * count - 1);
    EXPECT_TRUE(map.del(0));
    EXPECT_EQ(Counted::live, 2 * count - 2);
    EXPECT_EQ(keysOf(map), keysOf(copy));
    map.clear();
    EXPECT_EQ(Counted::live, count - 1);
    EXPECT_EQ(map.memoryBytes(), 0U);
  }
  EXPECT_EQ(Counted::live, 0);
}

TEST(HashMap2018, ThrowingCopiesLeaveTheMapAsItWas) {
  using Map = HashMap2018<Counted, Counted, CountedHash>;
  {
    Map map;
    for (int i = 0; i < 40; ++i) {
      Counted const key(i);
      Counted::copiesLeft = 0;
      EXPECT_THROW(map.insert(key, Counted(i)), std::runtime_error);
      EXPECT_FALSE(map.has(key));
      EXPECT_EQ(map.size(), static_cast<U32>(i));
      EXPECT_THROW(map.getOrCreate(key), std::runtime_error);
      Counted::copiesLeft = -1;
      map.insert(key, Counted(i));
    }
    int const live = Counted::live;
    for (int copies : {0, 1, 20, 77}) {
      Counted::copiesLeft = copies;
      EXPECT_THROW(Map{map}, std::runtime_error);
      EXPECT_EQ(Counted::live, live);
    }
    Counted::copiesLeft = -1;
    Map other;
    other.insert(Counted(7), Counted(8));
    Counted::copiesLeft = 5;
    EXPECT_THROW(other = map, std::runtime_error);
    Counted::copiesLeft = -1;
    EXPECT_EQ(other.size(), 1U);
    EXPECT_EQ(other.get(Counted(7)).number, 8);
  }
  EXPECT_EQ(Counted::live, 0);
}

TEST(HashMap2018, FailedAllocationLeavesTheMapAsItWas) {
  HashMap2018<U64, Counted> map;
  U64 next = 0;
  for (int failures = 0; failures < 6; ++next) {
    auto const before = keysOf(map);
    auto const bytes = map.memoryBytes();
    memoryIsOut = true;
    bool failed = false;
    try {
      map.insert(next, Counted(1));
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    memoryIsOut = false;
    if (!failed) continue;
    ++failures;
    EXPECT_EQ(keysOf(map), before);
    EXPECT_EQ(map.memoryBytes(), bytes);
    EXPECT_EQ(Counted::live, static_cast<int>(before.size()));
    map.insert(next, Counted(1));
  }
  EXPECT_EQ(map.size(), next);
  EXPECT_THROW(map.reserve(std::size_t{1} << 36), std::length_error);
}

// A single element whose value is no larger than a pointer is held in the map itself. Here maps
// with such an element, with the same element in a block, and with larger values are exchanged in
// all ways.
template <class V, class MakeValue>
void exchangeInAllWays(MakeValue makeValue) {
  using Map = HashMap2018<U8, V>;
  auto const filled = [&](int count, int from) {
    Map map;
    for (int i = 0; i < count; ++i) map.insert(static_cast<U8>(from + i), makeValue(from + i));
    return map;
  };
  auto const expectHolds = [&](const Map& map, int count, int from) {
    ASSERT_EQ(map.size(), static_cast<U32>(count));
    for (int i = 0; i < 256; ++i) {
      const V* const value = map.find(static_cast<U8>(i));
      ASSERT_EQ(value != nullptr, i >= from && i < from + count) << i;
      if (value != nullptr) {
        EXPECT_EQ(*value, makeValue(i));
      }
    }
    int met = 0;
    for (auto [key, value] : map) {
      EXPECT_EQ(value, makeValue(key));
      ++met;
    }
    EXPECT_EQ(met, count);
  };
  for (int const a : {0, 1, 2, 5, 20}) {
    for (int const b : {0, 1, 2, 5, 20}) {
      SCOPED_TRACE(std::to_string(a) + " and " + std::to_string(b));
      Map left = filled(a, 10);
      Map right = filled(b, 100);
      left.swap(right);
      expectHolds(left, b, 100);
      expectHolds(right, a, 10);
      left = right;
      expectHolds(left, a, 10);
      expectHolds(right, a, 10);
      left = filled(b, 100);
      expectHolds(left, b, 100);
      Map const copy(left);
      Map const moved(std::move(left));
      expectHolds(copy, b, 100);
      expectHolds(moved, b, 100);
      expectHolds(left, 0, 0);  // NOLINT(bugprone-use-after-move)
      left.insert(7, makeValue(7));
      expectHolds(left, 1, 7);
      right.reserve(static_cast<std::size_t>(b));
      expectHolds(right, a, 10);
      while (!right.empty()) right.del(right.begin());
      right.insert(7, makeValue(7));
      expectHolds(right, 1, 7);
      right.clear();
      expectHolds(right, 0, 0);
    }
  }
}
TEST(HashMap2018, SinglesAndTablesChangePlaces) {
  exchangeInAllWays<int>([](int n) { return n; });
  exchangeInAllWays<U8>([](int n) { return static_cast<U8>(n); });
  exchangeInAllWays<String>([](int n) { return String(std::to_string(n)); });
  struct Record : Halvo::Node {};
  std::vector<Halvo::Ptr<Record>> nodes(256);
  for (auto& node : nodes) node = Halvo::makePtr<Record>();
  exchangeInAllWays<Halvo::Ptr<Record>>([&](int n) { return nodes[static_cast<std::size_t>(n)]; });
  for (auto const& node : nodes) EXPECT_EQ(node->useCount(), 1U);
}

TEST(HashMap2018, ReservesForByteKeysNoMoreThanThereAre) {
  for (std::size_t const count : {std::size_t{256}, std::size_t{257}, std::size_t{1} << 36}) {
    HashMap2018<U8, String> map;
    map.reserve(count);
    std::size_t const bytes = map.memoryBytes();
    for (U32 key = 0; key < 256; ++key) map.insert(static_cast<U8>(key), std::to_string(key));
    EXPECT_EQ(map.size(), 256U) << count;
    map.reserve(count);
    EXPECT_EQ(map.generation(), 1U) << "nothing had to move";
    EXPECT_EQ(map.memoryBytes(), bytes) << count;
    for (U32 key = 0; key < 256; ++key) {
      EXPECT_EQ(map.get(static_cast<U8>(key)), String(std::to_string(key))) << count;
    }
  }
}

TEST(HashMap2018, GrowsToNoMoreThanAllByteKeysTake) {
  HashMap2018<U8, String> all;
  all.reserve(256);
  for (std::size_t const reserved : {std::size_t{0}, std::size_t{200}, std::size_t{255}}) {
    HashMap2018<U8, String> map;
    map.reserve(reserved);
    for (U32 key = 0; key < 256; ++key) map.insert(static_cast<U8>(key), String());
    EXPECT_EQ(map.memoryBytes(), all.memoryBytes()) << reserved;
  }
}

TEST(HashMap2018, ValueMayLookAtTheMapAsItGoes) {
  struct Looker : Halvo::Node {
    HashMap2018<U8, Halvo::Ptr<Looker>>* map = nullptr;
    U32* seen = nullptr;
    ~Looker() override { *seen = map->size() + (map->has(1) ? 100 : 0); }
  };
  HashMap2018<U8, Halvo::Ptr<Looker>> map;
  U32 seen = 99;
  auto const add = [&](U8 key) {
    auto looker = Halvo::makePtr<Looker>();
    looker->map = &map;
    looker->seen = &seen;
    map.insert(key, std::move(looker));
  };
  add(1);
  add(2);
  map.del(1);
  EXPECT_EQ(seen, 1U);
  map.del(map.begin());
  EXPECT_EQ(seen, 0U);
  for (U8 count = 1; count < 3; ++count) {
    seen = 99;
    for (U8 key = 1; key <= count; ++key) add(key);
    map.clear();
    EXPECT_EQ(seen, 0U);
  }
}

TEST(HashMap2018, KeyOfItsOwnElementMayBeGiven) {
  for (int count : {3, 100}) {
    HashMap2018<String, String> map;
    for (int i = 0; i < count; ++i) map.insert(String(std::to_string(i)), String("v"));
    while (!map.empty()) {
      auto const item = *map.begin();
      ASSERT_TRUE(map.del(item.key));
    }
  }
}

TEST(HashMap2018, EqualHashesWorkAndChurnDoesNotDegradeTheTable) {
  HashMap2018<U64, U64, SameHash> same;
  for (U64 i = 0; i < 2000; ++i) ASSERT_TRUE(same.insert(i, i).second);
  for (U64 i = 0; i < 2000; ++i) ASSERT_EQ(same.get(i), i);
  EXPECT_EQ(same.find(2000), nullptr);
  for (U64 i = 0; i < 2000; i += 2) ASSERT_TRUE(same.del(i));
  for (U64 i = 0; i < 2000; ++i) ASSERT_EQ(same.has(i), i % 2 == 1);

  HashMap2018<U64, U64> churned;
  for (U64 i = 0; i < 100; ++i) churned.insert(i, i);
  auto const bytes = churned.memoryBytes();
  for (U64 i = 0; i < 200'000; ++i) {
    ASSERT_TRUE(churned.del(i));
    ASSERT_TRUE(churned.insert(i + 100, i).second);
  }
  EXPECT_EQ(churned.memoryBytes(), bytes);
}

// A long random life against an oracle. `makeKey` makes a key from a random number.
template <class K, class Hash, class Tag = void, class MakeKey>
void liveRandomly(int steps, U32 keyRange, MakeKey makeKey) {
  using Map = HashMap2018<K, U64, Hash, Tag>;
  std::mt19937 engine(keyRange);
  auto const random = [&engine] { return static_cast<U32>(engine()); };
  Map map;
  std::unordered_map<std::string, U64> oracle;
  U32 generation = 1;
  auto const nameOf = [](U32 n) { return std::to_string(n); };
  U64 value = 0;
  for (int step = 0; step < steps; ++step) {
    U32 const n = random() % keyRange;
    K const key = makeKey(n);
    std::string const name = nameOf(n);
    // Phases of growing and of shrinking take turns.
    U32 const what = random() % 10 + (step / 3000 % 2 == 0 ? 0 : 3);
    if (what < 5) {
      bool const isNew = oracle.emplace(name, ++value).second;
      auto const [at, inserted] = map.insert(key, value);
      ASSERT_EQ(inserted, isNew);
      ASSERT_EQ(*at, oracle[name]);
    } else if (what < 7) {
      auto const at = oracle.find(name);
      const U64* const found = map.find(key);
      ASSERT_EQ(found != nullptr, at != oracle.end());
      ASSERT_TRUE(found == nullptr || *found == at->second);
    } else if (what < 10) {
      bool const was = oracle.erase(name) != 0;
      if (was) generation += 2;
      ASSERT_EQ(map.del(key), was);
    } else if (what == 10) {
      auto const at = oracle.find(name);
      U64 const expected = at == oracle.end() ? 0 : at->second;
      if (at != oracle.end()) {
        oracle.erase(at);
        generation += 2;
      }
      ASSERT_EQ(map.take(key), expected);
    } else if (what == 11) {
      auto const at = map.at(key);
      ASSERT_EQ(at != map.end(), oracle.count(name) != 0);
      if (at == map.end()) continue;
      map.del(at);
      oracle.erase(name);
      generation += 2;
    }
    if (step % 10'000 == 0) {
      Map copy(map);
      U32 met = 0;
      for (auto const& item : copy) {
        ASSERT_EQ(map.get(item.key), item.value);
        ++met;
      }
      ASSERT_EQ(met, oracle.size());
    }
    ASSERT_EQ(map.size(), oracle.size());
    ASSERT_EQ(map.generation(), generation);
    if constexpr (!std::is_void_v<Tag>) {
      ASSERT_EQ(Tag::memAllocationTracker_.liveBytes(), map.memoryBytes());
      ASSERT_GE(map.memoryBytes(), map.size() * sizeof(U64));
    }
  }
}

TEST(HashMap2018, AgreesWithAnOracleForManySteps) {
  liveRandomly<U8, std::hash<U8>>(100'000, 2, [](U32 n) { return static_cast<U8>(n * 200); });
  liveRandomly<U8, std::hash<U8>>(200'000, 12, [](U32 n) { return static_cast<U8>(n * 17); });
  liveRandomly<U8, std::hash<U8>>(200'000, 256, [](U32 n) { return static_cast<U8>(n); });
  liveRandomly<U16, std::hash<U16>>(150'000, 14, [](U32 n) { return static_cast<U16>(n * 999); });
  liveRandomly<U64, std::hash<U64>>(250'000, 5000, [](U32 n) { return U64{n} << 40; });
  liveRandomly<String, std::hash<String>>(100'000, 300, [](U32 n) {
    return String(std::to_string(n)) + (n % 5 == 0 ? String(70, 'x') : String());
  });
  liveRandomly<U64, SameHash>(60'000, 60, [](U32 n) { return U64{n}; });
  liveRandomly<U64, FewHashes>(60'000, 400, [](U32 n) { return U64{n}; });
}

struct HN_Counted {
  static Halvo::MemoryTracker memAllocationTracker_;
};
constinit Halvo::MemoryTracker HN_Counted::memAllocationTracker_{"HashMap2018Test::HN_Counted"};

TEST(HashMap2018, WithATagHasItsTablesCounted) {
  auto const& tracker = HN_Counted::memAllocationTracker_;
  {
    HashMap2018<U8, U8, std::hash<U8>, HN_Counted> map;
    EXPECT_EQ(tracker.liveObjects(), 0U);
    map.insert(1, 1);  // without a tag, the map itself would hold it
    EXPECT_EQ(tracker.liveObjects(), 1U);
    EXPECT_EQ(tracker.liveBytes(), map.memoryBytes());
    auto copy(map);
    EXPECT_EQ(tracker.liveObjects(), 2U);
    map = std::move(copy);
    EXPECT_EQ(tracker.liveObjects(), 1U);
    map.clear();
    EXPECT_EQ(tracker.liveObjects(), 0U);
    map.insert(2, 2);
  }
  EXPECT_EQ(tracker.liveObjects(), 0U);
  liveRandomly<U8, std::hash<U8>, HN_Counted>(50'000, 2,
                                              [](U32 n) { return static_cast<U8>(n * 200); });
  liveRandomly<U8, std::hash<U8>, HN_Counted>(50'000, 256,
                                              [](U32 n) { return static_cast<U8>(n); });
  liveRandomly<U64, std::hash<U64>, HN_Counted>(50'000, 500, [](U32 n) { return U64{n} << 40; });
  EXPECT_EQ(tracker.liveObjects(), 0U);
  EXPECT_EQ(tracker.liveBytes(), 0U);
}

}  // namespace
}  // namespace velmortest
