// Iterators of hash maps: steps, removals, and changes in between.
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "HashMap2018Fixture.h"

namespace velmortest {
namespace {

TEST(HashMap2018, DeletesThroughIteratorsMeetingEachElementOnce) {
  struct Row {
    int count;
    int keepEvery;
  } rows[] = {{1, 1}, {3, 2}, {10, 3}, {16, 2}, {17, 2}, {400, 1}, {400, 5}, {400, 1000}};
  for (auto const& row : rows) {
    SCOPED_TRACE(testing::Message() << row.count << '/' << row.keepEvery);
    HashMap2018<U64, int> map;
    for (int i = 1; i <= row.count; ++i) map.insert(static_cast<U64>(i), i);
    std::map<U64, int> met;
    int kept = 0;
    for (auto it = map.begin(); it != map.end();) {
      ++met[it.key()];
      if (it.key() % static_cast<U64>(row.keepEvery) == 0) {
        ++kept;
        ++it;
      } else {
        it = map.del(it);
      }
    }
    EXPECT_EQ(met.size(), static_cast<std::size_t>(row.count));
    for (auto [key, times] : met) EXPECT_EQ(times, 1) << key;
    EXPECT_EQ(map.size(), static_cast<U32>(kept));
  }
}

TEST(HashMap2018, StaleIteratorGoesByItsKey) {
  for (int count : {5, 200}) {
    SCOPED_TRACE(count);
    HashMap2018<U64, int> map;
    for (int i = 0; i < count; ++i) map.insert(static_cast<U64>(i), i);
    auto it = map.at(3);
    auto const gone = map.at(2);
    map.del(0);
    EXPECT_FALSE(it.isFresh());
    EXPECT_EQ(it.key(), 3U);
    map.del(it);
    EXPECT_FALSE(map.has(3));
    EXPECT_EQ(map.size(), static_cast<U32>(count - 2));
    map.del(2);
    auto const generation = map.generation();
    EXPECT_TRUE(map.del(gone) == map.end());
    EXPECT_EQ(map.generation(), generation);
  }
}

TEST(HashMap2018, IteratorIsStaleOnceTheTableGrew) {
  HashMap2018<String, int> map;
  map.insert("a", 1);
  auto it = map.begin();
  for (int i = 0; i < 100; ++i) map.insert(String(std::to_string(i)), i);
  EXPECT_FALSE(it.isFresh());
  map.del(it);
  EXPECT_FALSE(map.has("a"));
  EXPECT_EQ(map.size(), 100U);
  it = map.at("50");
  map.reserve(10'000);
  EXPECT_FALSE(it.isFresh());
  std::size_t behind = 0;
  for (++it; it != map.end(); ++it) ++behind;
  EXPECT_LT(behind, 100U);
  EXPECT_TRUE(it.isFresh());
}

TEST(HashMap2018, WalkMeetsEachElementOnceAtEverySize) {
  HashMap2018<U8, int> bytes;
  HashMap2018<U64, int> words;
  for (int count = 0; count <= 256; ++count) {
    SCOPED_TRACE(count);
    std::vector<int> met(256);
    for (auto it = bytes.begin(); it != bytes.end(); ++it) {
      EXPECT_EQ(it.key(), it.value());
      EXPECT_EQ((*it).key, it.key());
      EXPECT_TRUE(it.isFresh());
      ++met[static_cast<std::size_t>(it.value())];
    }
    for (auto it = words.begin(); it != words.end(); ++it) {
      EXPECT_EQ(it.key(), static_cast<U64>(it.value()) << 40);
      EXPECT_EQ((*it).key, it.key());
      met[static_cast<std::size_t>(it.value())] += 2;
    }
    for (int i = 0; i < 256; ++i) EXPECT_EQ(met[static_cast<std::size_t>(i)], i < count ? 3 : 0);
    if (count == 256) break;
    bytes.insert(static_cast<U8>(count), count);
    words.insert(static_cast<U64>(count) << 40, count);
  }
}

template <class Key>
void walkPastAnInsertion(int room, int count) {
  SCOPED_TRACE(room);
  HashMap2018<Key, int> map;
  map.reserve(static_cast<std::size_t>(room));
  for (int i = 0; i < count; ++i) map.insert(static_cast<Key>(i), i);
  auto it = map.begin();
  std::vector<int> met(static_cast<std::size_t>(count) + 1);
  ++met[static_cast<std::size_t>(it.value())];
  map.insert(static_cast<Key>(count), count);
  EXPECT_TRUE(it.isFresh());
  EXPECT_EQ(it.value(), static_cast<int>(it.key()));
  for (++it; it != map.end(); ++it) ++met[static_cast<std::size_t>(it.value())];
  for (int i = 0; i < count; ++i) EXPECT_EQ(met[static_cast<std::size_t>(i)], 1) << i;
}
TEST(HashMap2018, InsertionThatFitsLeavesIteratorsFresh) {
  walkPastAnInsertion<U8>(4, 2);
  walkPastAnInsertion<U8>(256, 200);
  walkPastAnInsertion<U64>(10, 5);
  walkPastAnInsertion<U64>(1000, 300);
}

TEST(HashMap2018, ReserveThatMovesElementsMakesIteratorsStale) {
  HashMap2018<U8, int> map;
  map.reserve(1);
  EXPECT_EQ(map.generation(), 1U);
  for (int i = 0; i < 4; ++i) map.insert(static_cast<U8>(i), i);
  EXPECT_EQ(map.generation(), 1U);
  auto it = map.at(1);
  map.reserve(4);
  EXPECT_EQ(map.generation(), 1U);
  EXPECT_TRUE(it.isFresh());
  map.reserve(10);
  map.reserve(200);
  EXPECT_EQ(map.generation(), 5U);
  EXPECT_FALSE(it.isFresh());
  ++it;
  EXPECT_EQ(it.key(), 2);
  EXPECT_EQ(it.value(), 2);
  EXPECT_TRUE(it.isFresh());
}

TEST(HashMap2018, IteratorGoesOnAfterAnInsertionThatThrewOnceTheTableHadGrown) {
  struct Key {
    Key() = default;
    explicit Key(int n) : number(n) {}
    Key(const Key& other) : number(other.number) {
      if (number < 0) throw std::runtime_error("copy");
    }
    Key(Key&& other) noexcept = default;
    Key& operator=(const Key&) = default;
    bool operator==(const Key&) const = default;
    int number = 0;
  };
  struct Hash {
    std::size_t operator()(const Key& key) const { return static_cast<std::size_t>(key.number); }
  };
  for (int count : {4, 10, 16}) {
    SCOPED_TRACE(count);
    HashMap2018<Key, int, Hash> map;
    map.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) map.insert(Key(i), i);
    auto it = map.begin();
    Key const bad(-1);
    EXPECT_THROW(map.insert(bad, 0), std::runtime_error);
    EXPECT_EQ(map.size(), static_cast<U32>(count));
    EXPECT_FALSE(it.isFresh());
    int met = 1;
    for (++it; it != map.end() && met < 100; ++it) {
      EXPECT_EQ(it.key().number, it.value());
      ++met;
    }
    EXPECT_LE(met, count);
  }
}

TEST(HashMap2018, SwapAndAssignmentMakeIteratorsStale) {
  HashMap2018<U8, int> a;
  HashMap2018<U8, int> b;
  a.insert(1, 10);
  b.insert(2, 20);
  auto const at = a.begin();
  swap(a, b);
  EXPECT_FALSE(at.isFresh());
  EXPECT_EQ(a.generation(), 3U);
  EXPECT_EQ(a.get(2), 20);
  a = b;
  EXPECT_EQ(a.generation(), 5U);
  EXPECT_EQ(a.get(1), 10);
  EXPECT_EQ(a.size(), 1U);
  HashMap2018<U8, int> c(std::move(a));
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(a.generation(), 7U);
  EXPECT_EQ(c.get(1), 10);
  b = std::move(c);
  EXPECT_EQ(b.get(1), 10);
  HashMap2018<U8, int>& same = b;
  b = same;
  EXPECT_EQ(b.size(), 1U);
}

TEST(HashMap2018, IteratorOfASingleElementGoesOnWhenOthersCome) {
  HashMap2018<U8, int> map;
  map.insert(9, 90);
  auto it = map.begin();
  EXPECT_EQ(it.key(), 9);
  EXPECT_EQ((*it).key, 9);
  EXPECT_EQ(it.value(), 90);
  it.value() = 91;
  map.insert(8, 80);
  EXPECT_FALSE(it.isFresh());
  EXPECT_EQ(it.key(), 9);
  ++it;
  EXPECT_EQ(it.key(), 8);
  EXPECT_EQ(map.get(9), 91);
  map.del(map.at(9));
  map.del(it);
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.generation(), 5U);
}

TEST(HashMap2018, StepBeyondTheEndStaysAtTheEnd) {
  Zel::HashMap2018<U8, int> bytes;
  Zel::HashMap2018<U32, int> words;
  for (U8 key = 0; key < 3; ++key) {
    bytes.insert(key, key);
    words.insert(key, key);
  }
  auto const stays = [](auto& map) {
    auto end = map.end();
    EXPECT_TRUE(++end == map.end());
    auto walked = map.begin();
    while (walked != map.end()) ++walked;
    EXPECT_TRUE(++walked == map.end());
    auto stale = map.begin();
    map.clear();
    EXPECT_TRUE(++stale == map.end());
    EXPECT_TRUE(++stale == map.end());
    map.insert(0, 0);
    EXPECT_TRUE(++stale == map.end());
  };
  stays(bytes);
  stays(words);
}

TEST(HashMap2018, StepWithoutMemoryForTheKeyLeavesTheIterator) {
  U32 thrown = 0;
  for (U32 const size : {U32{4}, U32{40}}) {
    Zel::HashMap2018<String, U32> map;
    for (U32 i = 0; i < size; ++i) map.insert(String(std::string(70 + 10 * i, 'a')), i);
    for (auto at = map.begin(); at != map.end();) {
      String const key = at.key();
      U32 const value = at.value();
      memoryIsOut = true;
      try {
        ++at;
        memoryIsOut = false;
        continue;  // the old key's memory was large enough
      } catch (const std::bad_alloc&) {
        memoryIsOut = false;
      }
      ++thrown;
      EXPECT_EQ(at.key(), key);
      EXPECT_EQ(at.value(), value);
      EXPECT_TRUE(at.isFresh());
      ++at;
      if (at != map.end()) {
        EXPECT_NE(at.key(), key);
      }
    }
  }
  EXPECT_GT(thrown, 2U);
}

}  // namespace
}  // namespace velmortest
