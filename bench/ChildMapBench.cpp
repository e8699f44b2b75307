// The child maps of the usage tree and the summary against a std::map to std::shared_ptr. The
// children are made too.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "TreeBench.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace {

using Halvo::String;
using VelmorTcam::U32;
using VelmorTcam::U64;

using velmorbench::Order;

template <class Key>
std::vector<Key> keysIn(Order order, std::int64_t count) {
  std::vector<Key> keys;
  for (std::int64_t i = 0; i < count; ++i) {
    if constexpr (std::is_same_v<Key, U32>) {
      keys.push_back(static_cast<U32>(i));
    } else {
      keys.push_back(String("acl-ipv4-" + std::to_string(i)));
    }
  }
  std::sort(keys.begin(), keys.end());
  return velmorbench::inOrder(order, std::move(keys));
}

struct OursGroups {
  using Key = U32;
  auto childIs(U32 key) { return parent->groupInfoIs(key); }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [key, child] : parent->groupInfo()) sum += key ^ child->groupId();
    return sum;
  }
  Halvo::Ptr<VelmorTcam::CliShowTcamUsageGroupPriorityBucket> parent =
      Halvo::makePtr<VelmorTcam::CliShowTcamUsageGroupPriorityBucket>(1U);
};
struct OursNames {
  using Key = String;
  auto childIs(const String& key) { return parent->tcamSummaryIs(key); }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [key, child] : parent->tcamSummary()) {
      sum += key.size() ^ child->groupName().size();
    }
    return sum;
  }
  Halvo::Ptr<VelmorTcam::CliShowTcamSummaryOrdered> parent =
      Halvo::makePtr<VelmorTcam::CliShowTcamSummaryOrdered>();
};

// The same parents and children, with no member that they do not need.
template <class K, class Child>
struct AltParent {
  using Key = K;
  std::shared_ptr<Child> childIs(const K& key) {
    auto const at = children.lower_bound(key);
    if (at != children.end() && at->first == key) return at->second;
    return children.emplace_hint(at, key, std::make_shared<Child>(key))->second;
  }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [key, child] : children) {
      if constexpr (std::is_same_v<K, U32>) {
        sum += key ^ child->id;
      } else {
        sum += key.size() ^ child->name.size();
      }
    }
    return sum;
  }
  std::map<K, std::shared_ptr<Child>> children;
};
struct AltCopy;
struct AltGroup {
  explicit AltGroup(U32 key) : id(key) {}
  U32 id;
  std::map<U32, std::shared_ptr<AltCopy>> copies;
};
struct AltName {
  explicit AltName(String key) : name(std::move(key)) {}
  String name;
  std::vector<String> names;
  bool pipeFinished = false;
};
using AltGroups = AltParent<U32, AltGroup>;
using AltNames = AltParent<String, AltName>;

template <class Parent>
void fill(Parent& parent, const std::vector<typename Parent::Key>& keys) {
  for (auto const& key : keys) benchmark::DoNotOptimize(parent.childIs(key));
}

template <class Parent, Order order>
void create(benchmark::State& state) {
  auto const keys = keysIn<typename Parent::Key>(order, state.range(0));
  velmorbench::timeBuilding<Parent>(state, [&](Parent& parent) { fill(parent, keys); });
}
// All children are present. They are looked up in another order than they were added.
template <class Parent, Order order>
void get(benchmark::State& state) {
  auto keys = keysIn<typename Parent::Key>(order, state.range(0));
  Parent parent;
  fill(parent, keys);
  if (order == velmorbench::shuffled) keys = velmorbench::inOrder(order, std::move(keys), 2);
  auto const places = velmorbench::lookups(order, keys.size());
  for (auto _ : state) {
    for (U32 const place : places) benchmark::DoNotOptimize(parent.childIs(keys[place]));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(places.size()));
}
template <class Parent, Order order>
void walk(benchmark::State& state) {
  Parent parent;
  fill(parent, keysIn<typename Parent::Key>(order, state.range(0)));
  velmorbench::timeWalking(state, parent);
}

#define ORDERS(bench, kind) VELMOR_BENCH_ORDERS("child_map", bench, kind, velmorbench::sizes)

ORDERS(create, Groups);
ORDERS(get, Groups);
ORDERS(walk, Groups);
ORDERS(create, Names);
ORDERS(get, Names);
ORDERS(walk, Names);

}  // namespace
