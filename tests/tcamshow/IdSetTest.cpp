#include "views/IdSet.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <set>

namespace tcamshow {
namespace {

constexpr std::uint64_t largest = ~std::uint64_t{0};

TEST(IdSet, TakesEachIdOnce) {
  std::mt19937_64 random(4);
  struct Row {
    const char* ids;
    std::function<std::uint64_t(std::uint64_t)> id;
  };
  Row const rows[] = {
      {"ascending", [](std::uint64_t i) { return i; }},
      {"falling", [](std::uint64_t i) { return largest - i; }},
      {"with gaps", [](std::uint64_t i) { return i / 3 * 15 + i % 3; }},
      {"of three places in turn", [](std::uint64_t i) { return i * 3; }},
      {"each alone", [](std::uint64_t i) { return i * 1000; }},
      {"few of a block", [](std::uint64_t i) { return i / 4 * 256 + i % 4 * 60; }},
      {"as many as a block takes single", [](std::uint64_t i) { return i / 5 * 256 + i % 5 * 50; }},
      {"far apart", [&](std::uint64_t) { return random(); }},
      {"of a small range", [&](std::uint64_t) { return random() % 3000; }},
      {"at both ends", [&](std::uint64_t) { return random() % 400 - 200; }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.ids);
    IdSet ids;
    std::set<std::uint64_t> model;
    for (std::uint64_t i = 0; i < 5000; ++i) {
      std::uint64_t const id = row.id(i);
      ASSERT_EQ(ids.insert(id), model.insert(id).second) << id;
      if (random() % 4 != 0) continue;
      // Once more, of those before.
      auto const known = model.lower_bound(random() % (id + (id != largest ? 1 : 0)));
      ASSERT_FALSE(ids.insert(*known)) << *known;
    }
    for (std::uint64_t const id : model) ASSERT_FALSE(ids.insert(id)) << id;
  }
}

TEST(IdSet, TakesTheEnds) {
  for (std::uint64_t const first : {std::uint64_t{0}, largest, std::uint64_t{255}}) {
    IdSet ids;
    EXPECT_TRUE(ids.insert(first));
    std::set<std::uint64_t> model = {first};
    for (std::uint64_t const id : {largest, std::uint64_t{0}, largest - 1, std::uint64_t{1},
                                   largest, std::uint64_t{256}, std::uint64_t{255}}) {
      EXPECT_EQ(ids.insert(id), model.insert(id).second) << id;
    }
  }
}

}  // namespace
}  // namespace tcamshow
