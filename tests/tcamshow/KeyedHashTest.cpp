#include "io/KeyedHash.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "io/KeyedTable.h"

namespace tcamshow {
namespace {

TEST(KeyedHash, IsOfTheBytesAndTheirNumber) {
  std::set<std::uint64_t> hashes;
  std::string const text = "the bytes of a text that is longer than a few words";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    std::string_view const part = std::string_view(text).substr(0, size);
    EXPECT_EQ(keyedHash(part), keyedHash(std::string(part)));
    hashes.insert(keyedHash(part));
    // Zeros at the end are bytes too.
    hashes.insert(keyedHash(std::string(part) + std::string(1, '\0')));
    hashes.insert(keyedHash(1, part));
    hashes.insert(keyedHash(2, part));
  }
  EXPECT_EQ(hashes.size(), 4 * (text.size() + 1));
  EXPECT_EQ(keyedHash(3, 4), keyedHash(3, 4));
  EXPECT_NE(keyedHash(3, 4), keyedHash(4, 3));
}

TEST(KeyedHash, ChangesHalfOfItsBitsWithAnyBit) {
  std::mt19937_64 random(1);
  double changed = 0;
  int count = 0;
  for (int round = 0; round < 200; ++round) {
    std::uint64_t const first = random();
    std::uint64_t const second = random();
    for (unsigned bit = 0; bit < 64; ++bit) {
      std::uint64_t const flipped = std::uint64_t{1} << bit;
      changed += std::popcount(keyedHash(first, second) ^ keyedHash(first ^ flipped, second));
      changed += std::popcount(keyedHash(first, second) ^ keyedHash(first, second ^ flipped));
      count += 2;
    }
  }
  EXPECT_NEAR(changed / count, 32, 0.5);
}

/// Half of the items have the same hash.
struct Item {
  std::uint64_t key = 0;
  std::uint64_t value = 0;

  bool isEmpty() const noexcept { return key == 0; }
  std::uint64_t hash() const noexcept { return key % 2 == 0 ? 5 : keyedHash(key, 0); }
  bool hasKeyOf(const Item& other) const noexcept { return key == other.key; }
};

TEST(KeyedTable, KeepsOneItemAKey) {
  std::mt19937 random(2);
  KeyedTable<Item> table;
  std::unordered_set<std::uint64_t> model;
  for (int i = 0; i < 3000; ++i) {
    std::uint64_t const key = 1 + random() % 2000;
    auto const [item, isNew] = table.insert({key, 7 * key});
    EXPECT_EQ(isNew, model.insert(key).second);
    EXPECT_EQ(item->key, key);
    EXPECT_EQ(item->value, 7 * key);
    EXPECT_EQ(table.size(), model.size());
  }
}

TEST(KeyedTable, GivesTheItemToBeChanged) {
  KeyedTable<Item> table;
  for (std::uint64_t key = 1; key <= 100; ++key) table.insert({key, 0}).first->value = key;
  for (std::uint64_t key = 1; key <= 100; ++key) {
    auto const [item, isNew] = table.insert({key, 0});
    EXPECT_FALSE(isNew);
    EXPECT_EQ(item->value, key);
  }
}

}  // namespace
}  // namespace tcamshow
