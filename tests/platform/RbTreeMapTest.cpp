#include "Zel/Collections/RbTreeMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "FailingNew.h"
#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"

namespace {

using Halvo::S16;
using Halvo::String;
using Halvo::U32;
using Halvo::U64;
using Zel::RbTreeMap;
using Zel::RbTreeSet;

struct HN_Test {
  static Zel::AllocationTracker memAllocationTracker_;
};
constinit Zel::AllocationTracker HN_Test::memAllocationTracker_{"RbTreeMapTest::HN_Test"};

// Descending priority, then ascending id; the text takes no part. Its hint below says so, and no
// other order is needed.
struct Entry {
  U32 priority = 0;
  U32 id = 0;
  String text;
};

// A key without a hint, whose copies may throw.
struct Plain {
  static bool throws;
  explicit Plain(int n = 0) : number(n) {}
  Plain(const Plain& other) : number(other.number) {
    if (throws) throw std::runtime_error("copy");
  }
  Plain& operator=(const Plain& other) {
    if (throws) throw std::runtime_error("copy");
    number = other.number;
    return *this;
  }
  friend bool operator<(const Plain& a, const Plain& b) { return a.number < b.number; }
  friend bool operator==(const Plain&, const Plain&) = default;
  int number;
};
bool Plain::throws = false;

}  // namespace

template <>
struct Zel::RbTreeOrder<Entry, std::less<Entry>> {
  static constexpr bool exact = true;
  static U64 hint(const Entry& e) noexcept { return U64{~e.priority} << 32 | e.id; }
};

namespace {

template <class K, class V, class Less = std::less<K>>
using Map = RbTreeMap<K, V, HN_Test, Less>;
template <class K, class Less = std::less<K>>
using Set = RbTreeSet<K, HN_Test, Less>;

template <class AnyMap>
std::vector<typename AnyMap::Key> keysOf(const AnyMap& map) {
  std::vector<typename AnyMap::Key> keys;
  for (auto it = map.begin(); it != map.end(); ++it) keys.push_back(it.key());
  return keys;
}

class RbTreeMapTest : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(HN_Test::memAllocationTracker_.liveObjects(), 0U);
    EXPECT_EQ(HN_Test::memAllocationTracker_.liveBytes(), 0U);
    EXPECT_EQ(Zel::impl::RbTree::blockTracker_.liveObjects(), 0U);
    EXPECT_EQ(Zel::impl::RbTree::blockTracker_.liveBytes(), 0U);
  }
};

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
  // Each of these joins a thousand names that begin alike: below them, above them, between them.
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

TEST_F(RbTreeMapTest, StepWithoutMemoryForTheKeyLeavesTheIterator) {
  Map<String, U32> map;
  // Each is longer than the ones before, so that no copy fits the room of an earlier one.
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

TEST_F(RbTreeMapTest, DeletesByIterator) {
  Set<Entry> set;
  for (U32 i = 0; i < 10; ++i) set.insert({1, i, {}});
  auto const atEnd = set.end();
  auto it = set.at({1, 4, {}});
  EXPECT_FALSE(set.del(atEnd));
  EXPECT_TRUE(set.del(it));
  EXPECT_FALSE(set.has({1, 4, {}}));
  // Stale now: goes by the key that it last held.
  EXPECT_FALSE(set.del(it));
  EXPECT_EQ(set.generation(), 3U);
  set.insert({1, 4, "again"});
  EXPECT_TRUE(set.del(it));
  EXPECT_EQ(set.generation(), 5U);
  ++it;
  EXPECT_EQ(it.key().id, 5U);
  // Another's removal.
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
  EXPECT_TRUE(set.del(it));  // by the key it last held
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
      map.insert(it.key() + 1, 0);  // behind it, and not far: stepped over below
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

// A long random life beside std::map, with two iterators that go along.
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
      // The iterator steps; what is behind the key it held is known.
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
  // Names that begin alike, and now and then one that does not, or is nothing but the beginning.
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

// Changes that wander slowly over the ordered keys, so that the tree finds most of them in the leaf
// of the last one, beside it or there again. Now and then one of the others, which are not among
// the keys, comes and goes.
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

// Where removed elements stood, their hints are still in memory.
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

// Among strings, equal hints reach over leaves, and some keys begin otherwise.
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
