// RbTreeSet and RbTreeMap against std::set and std::map with the standard allocator.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "Sobrel.h"
#include "TreeBench.h"
#include "Zel/Collections/RbTreeMap.h"

namespace {

using Halvo::U32;
using Halvo::U64;

struct HN_Bench {
  static Zel::AllocationTracker memAllocationTracker_;
};
constinit Zel::AllocationTracker HN_Bench::memAllocationTracker_{"HN_Bench"};

// As large as the entries of a feature: 80 bytes.
struct Entry {
  U32 priority = 0;
  U32 id = 0;
  Halvo::String description;
  U64 hits = 0;
  friend bool operator<(const Entry& a, const Entry& b) {
    return a.priority != b.priority ? a.priority > b.priority : a.id < b.id;
  }
};
static_assert(sizeof(Entry) == 80);

class Record : public Halvo::Node {};
struct PlainRecord {
  U64 payload[2] = {};
};

}  // namespace

template <>
struct Zel::RbTreeOrder<Entry, std::less<Entry>> {
  static constexpr bool exact = true;
  static U64 hint(const Entry& e) noexcept { return U64{~e.priority} << 32 | e.id; }
};

namespace {

Entry entryOf(U32 n) { return {1'000'000 - n / 8, n % 8, {}, n}; }

struct OursSet {
  Zel::RbTreeSet<Entry, HN_Bench> all;
  void add(U32 n) { all.insert(entryOf(n)); }
  bool has(U32 n) const { return all.has(entryOf(n)); }
  void del(U32 n) { all.del(entryOf(n)); }
  U64 walk() const {
    U64 sum = 0;
    for (const Entry& entry : all) sum += entry.hits;
    return sum;
  }
};
struct AltSet {
  std::set<Entry> all;
  void add(U32 n) { all.insert(entryOf(n)); }
  bool has(U32 n) const { return all.find(entryOf(n)) != all.end(); }
  void del(U32 n) { all.erase(entryOf(n)); }
  U64 walk() const {
    U64 sum = 0;
    for (const Entry& entry : all) sum += entry.hits;
    return sum;
  }
};
struct OursMap {
  Zel::RbTreeMap<U32, Halvo::Ptr<Record>, HN_Bench> all;
  Halvo::Ptr<Record> record = Halvo::makePtr<Record>();
  void add(U32 n) { all.insert(n, record); }
  bool has(U32 n) const { return all.find(n) != nullptr; }
  void del(U32 n) { all.del(n); }
  U64 walk() const {
    U64 sum = 0;
    for (auto [key, value] : all) sum += key ^ reinterpret_cast<std::uintptr_t>(value.get());
    return sum;
  }
};
struct AltMap {
  std::map<U32, std::shared_ptr<PlainRecord>> all;
  std::shared_ptr<PlainRecord> record = std::make_shared<PlainRecord>();
  void add(U32 n) { all.emplace(n, record); }
  bool has(U32 n) const { return all.find(n) != all.end(); }
  void del(U32 n) { all.erase(n); }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [key, value] : all) sum += key ^ reinterpret_cast<std::uintptr_t>(value.get());
    return sum;
  }
};
Halvo::String nameOf(U32 n) {
  return Halvo::String("acl-ipv4-" + std::to_string(n * 2'654'435'761U));
}
struct OursNames {
  Zel::RbTreeMap<Halvo::String, Halvo::Ptr<Record>, HN_Bench> all;
  Halvo::Ptr<Record> record = Halvo::makePtr<Record>();
  void add(U32 n) { all.insert(nameOf(n), record); }
  bool has(U32 n) const { return all.find(nameOf(n)) != nullptr; }
  void del(U32 n) { all.del(nameOf(n)); }
  U64 walk() const {
    U64 sum = 0;
    for (auto [key, value] : all) sum += key.size() ^ reinterpret_cast<std::uintptr_t>(value.get());
    return sum;
  }
};
struct AltNames {
  std::map<Halvo::String, std::shared_ptr<PlainRecord>> all;
  std::shared_ptr<PlainRecord> record = std::make_shared<PlainRecord>();
  void add(U32 n) { all.emplace(nameOf(n), record); }
  bool has(U32 n) const { return all.find(nameOf(n)) != all.end(); }
  void del(U32 n) { all.erase(nameOf(n)); }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [key, value] : all) {
      sum += key.size() ^ reinterpret_cast<std::uintptr_t>(value.get());
    }
    return sum;
  }
};

using velmorbench::Order;
using velmorbench::shuffled;

// Uses another order each time: a processor learns the branches of an order that repeats.
void shuffleAgain(Order order, std::vector<U32>& keys, std::mt19937& random) {
  if (order == shuffled) std::shuffle(keys.begin(), keys.end(), random);
}

template <class Tree, Order order>
void insert(benchmark::State& state) {
  auto keys = velmorbench::numbers(order, state.range(0));
  std::mt19937 random(2);
  for (auto _ : state) {
    Tree tree;
    for (U32 key : keys) tree.add(key);
    benchmark::DoNotOptimize(&tree);
    state.PauseTiming();
    { Tree const gone = std::move(tree); }
    shuffleAgain(order, keys, random);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Tree, Order order>
void lookup(benchmark::State& state) {
  Tree tree;
  for (U32 key : velmorbench::numbers(order, state.range(0))) tree.add(key);
  auto const keys = velmorbench::numbers(order, state.range(0), 2);
  auto const places = velmorbench::lookups(order, keys.size());
  for (auto _ : state) {
    for (U32 const place : places) benchmark::DoNotOptimize(tree.has(keys[place]));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(places.size()));
}
template <class Tree, Order order>
void walk(benchmark::State& state) {
  Tree tree;
  for (U32 key : velmorbench::numbers(order, state.range(0))) tree.add(key);
  velmorbench::timeWalking(state, tree);
}
template <class Tree, Order order>
void del(benchmark::State& state) {
  auto keys = velmorbench::numbers(order, state.range(0), 2);
  std::mt19937 random(2);
  for (auto _ : state) {
    state.PauseTiming();
    shuffleAgain(order, keys, random);
    Tree tree;
    for (U32 key : velmorbench::numbers(order, state.range(0))) tree.add(key);
    state.ResumeTiming();
    for (U32 key : keys) tree.del(key);
    benchmark::DoNotOptimize(&tree);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
// The counter holds the result: bytes for each element, by both allocators. The time means nothing.
template <class Tree, Order order>
void memory(benchmark::State& state) {
  auto const keys = velmorbench::numbers(order, state.range(0));
  auto const held = [] {
    return static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd) +
           static_cast<double>(Sobrel::slabUsage().liveBytes) -
           static_cast<double>(Sobrel::slabUsage().slabBytes);
  };
  double bytes = 0;
  for (auto _ : state) {
    double const before = held();
    auto tree = std::make_unique<Tree>();
    for (U32 key : keys) tree->add(key);
    bytes = held() - before;
  }
  state.counters["bytesEach"] = bytes / static_cast<double>(keys.size());
}

void fewSizes(benchmark::internal::Benchmark* b) {
  b->Arg(10)->Arg(1000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
}
void once(benchmark::internal::Benchmark* b) { b->Arg(1000)->Arg(1'000'000)->Iterations(1); }

#define PAIR(bench, kind, order, range) VELMOR_BENCH_PAIR("rb_tree", bench, kind, order, range)
#define ORDERS(bench, kind, range) VELMOR_BENCH_ORDERS("rb_tree", bench, kind, range)
#define ALL(kind, range)            \
  ORDERS(insert, kind, range);      \
  ORDERS(lookup, kind, range);      \
  ORDERS(walk, kind, range);        \
  ORDERS(del, kind, range);         \
  PAIR(memory, kind, sorted, once); \
  PAIR(memory, kind, shuffled, once)

ALL(Set, velmorbench::sizes);
ALL(Map, velmorbench::sizes);
ALL(Names, fewSizes);

}  // namespace
