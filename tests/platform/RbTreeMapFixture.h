// Shared by the tests of ordered maps and sets.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

#include "Halvo/String.h"
#include "Zel/Collections/RbTreeMap.h"

namespace velmortest {

using Halvo::S16;
using Halvo::String;
using Halvo::U32;
using Halvo::U64;
using Zel::RbTreeMap;
using Zel::RbTreeSet;

struct HN_Test {
  static Zel::AllocationTracker memAllocationTracker_;
};
inline constinit Zel::AllocationTracker HN_Test::memAllocationTracker_{"RbTreeMapTest::HN_Test"};

// Ordered by descending priority, then ascending id; the text does not count. The hint below is the
// whole order, so the type needs no operator<.
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
inline bool Plain::throws = false;

}  // namespace velmortest

template <>
struct Zel::RbTreeOrder<velmortest::Entry, std::less<velmortest::Entry>> {
  static constexpr bool exact = true;
  static Halvo::U64 hint(const velmortest::Entry& e) noexcept {
    return Halvo::U64{~e.priority} << 32 | e.id;
  }
};

namespace velmortest {

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

}  // namespace velmortest
