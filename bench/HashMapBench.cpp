// HashMap2018 against std::unordered_map, with the same keys and values.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <unordered_map>
#include <vector>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Zel/Collections/HashMap2018.h"

namespace {

using Halvo::U64;
using Halvo::U8;
class Record : public Halvo::Node {};
using NodePtr = Halvo::Ptr<Record>;

enum Kind : U8 {};

template <class K, class V>
struct Ours {
  Zel::HashMap2018<K, V> map;
  void add(K key, V value) { map.insert(key, std::move(value)); }
  const V* find(K key) const { return map.find(key); }
  void del(K key) { map.del(key); }
  template <class Visit>
  void walk(Visit visit) const {
    for (auto [key, value] : map) visit(key, value);
  }
};
template <class K, class V>
struct Alt {
  std::unordered_map<K, V> map;
  void add(K key, V value) { map.emplace(key, std::move(value)); }
  const V* find(K key) const {
    auto const at = map.find(key);
    return at == map.end() ? nullptr : &at->second;
  }
  void del(K key) { map.erase(key); }
  template <class Visit>
  void walk(Visit visit) const {
    for (auto const& [key, value] : map) visit(key, value);
  }
};

// The lower bound for a walk: the elements as a plain array, which allows no change during a walk.
template <class K, class V>
struct Plain {
  std::vector<std::pair<K, V>> elements;
  void add(K key, V value) { elements.emplace_back(key, std::move(value)); }
  template <class Visit>
  void walk(Visit visit) const {
    for (auto const& [key, value] : elements) visit(key, value);
  }
};

constexpr Kind kinds[] = {Kind{8},   Kind{15},  Kind{28},  Kind{36},  Kind{97},
                          Kind{101}, Kind{116}, Kind{118}, Kind{132}, Kind{153}};

template <class Map>
Map smallMap(std::size_t count) {
  Map map;
  for (std::size_t i = 0; i < count; ++i) map.add(kinds[i], Halvo::makePtr<Record>());
  return map;
}

// Independent lookups of random keys, present or absent.
template <class Map, bool hit>
void smallFind(benchmark::State& state) {
  auto const count = static_cast<std::size_t>(state.range(0));
  Map const map = smallMap<Map>(count);
  std::mt19937 random(1);
  std::vector<Kind> keys(256);
  for (auto& key : keys) {
    Kind const kind = kinds[random() % count];
    key = hit ? kind : static_cast<Kind>(kind + 1 + (kind == 28 || kind == 116));
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(map.find(keys[next++ & 255]));
  }
}
// Each lookup's key depends on the previous result: measures the latency of one lookup.
template <class Map, bool hit>
void smallFindChain(benchmark::State& state) {
  auto const count = static_cast<std::size_t>(state.range(0));
  Map const map = smallMap<Map>(count);
  std::size_t next = 0;
  for (auto _ : state) {
    Kind const kind = static_cast<Kind>(kinds[next] + (hit ? 0 : 2));
    const NodePtr* const found = map.find(kind);
    benchmark::DoNotOptimize(found);
    next = next + 1 + ((found != nullptr) != hit);
    if (next == count) next = 0;
  }
}
template <class Map>
void smallBuild(benchmark::State& state) {
  auto const count = static_cast<std::size_t>(state.range(0));
  NodePtr const node = Halvo::makePtr<Record>();
  // Other maps stay alive, as in a process that holds many.
  std::vector<Map> others;
  for (std::size_t n = 1; n <= 10; ++n) others.push_back(smallMap<Map>(n));
  for (auto _ : state) {
    Map map;
    for (std::size_t i = 0; i < count; ++i) map.add(kinds[i], node);
    benchmark::DoNotOptimize(&map);
  }
}
// Sums up the elements of a walk. A walk that reads no element would only follow the links of a
// list.
template <class Map>
U64 sumOf(const Map& map) {
  U64 sum = 0;
  map.walk([&sum](Kind key, const NodePtr& value) {
    sum += key;
    sum += reinterpret_cast<std::uintptr_t>(value.get());
    // As after any call in the body: the map may have changed.
    benchmark::ClobberMemory();
  });
  return sum;
}
// Walks of one map that do not depend on each other.
template <class Map>
void smallWalk(benchmark::State& state) {
  Map const map = smallMap<Map>(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(sumOf(map));
}
// Each walk depends on the result of the previous one: measures the latency of one walk.
template <class Map>
void smallWalkChain(benchmark::State& state) {
  Map const map = smallMap<Map>(static_cast<std::size_t>(state.range(0)));
  const Map* at = &map;
  for (auto _ : state) {
    U64 const sum = sumOf(*at);
    // The addresses of the nodes add up to less than 2^63, so `at` stays the same map.
    at = &map + (sum >> 63);
  }
  benchmark::DoNotOptimize(at);
}

// Makes state.range(0) elements in maps of state.range(1) elements each, for a pass over all of
// them, as over all shadows of a process. Their memory was in use before and was allocated in
// another order.
template <class Map>
std::vector<Map> manyMaps(const benchmark::State& state) {
  auto const each = static_cast<std::size_t>(state.range(1));
  std::vector<Map> maps(static_cast<std::size_t>(state.range(0)) / each);
  std::vector<Map> apart;
  std::mt19937 random(5);
  for (auto& map : maps) {
    map = smallMap<Map>(each);
    if (random() % 2 == 0) apart.push_back(smallMap<Map>(each));
  }
  std::shuffle(maps.begin(), maps.end(), random);
  return maps;
}
template <class Map>
void manyBuild(benchmark::State& state) {
  auto const each = static_cast<std::size_t>(state.range(1));
  NodePtr const node = Halvo::makePtr<Record>();
  for (auto _ : state) {
    std::vector<Map> maps(static_cast<std::size_t>(state.range(0)) / each);
    for (Map& map : maps) {
      for (std::size_t i = 0; i < each; ++i) map.add(kinds[i], node);
    }
    benchmark::DoNotOptimize(maps.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Map>
void manyFind(benchmark::State& state) {
  std::vector<Map> const maps = manyMaps<Map>(state);
  Kind const kind = kinds[state.range(1) / 2];
  for (auto _ : state) {
    for (const Map& map : maps) benchmark::DoNotOptimize(map.find(kind));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(maps.size()));
}
template <class Map>
void manyWalk(benchmark::State& state) {
  std::vector<Map> const maps = manyMaps<Map>(state);
  for (auto _ : state) {
    for (const Map& map : maps) benchmark::DoNotOptimize(sumOf(map));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

std::vector<U64> randomKeys(std::int64_t count, U64 seed) {
  std::mt19937_64 random(seed);
  std::vector<U64> keys(static_cast<std::size_t>(count));
  for (auto& key : keys) key = random();
  return keys;
}

template <class Map>
void bigInsert(benchmark::State& state) {
  auto const keys = randomKeys(state.range(0), 1);
  for (auto _ : state) {
    Map map;
    for (U64 key : keys) map.add(key, key);
    benchmark::DoNotOptimize(&map);
    state.PauseTiming();
    { Map const gone = std::move(map); }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Map, bool hit>
void bigFind(benchmark::State& state) {
  auto keys = randomKeys(state.range(0), 1);
  Map map;
  for (U64 key : keys) map.add(key, key);
  if (!hit) keys = randomKeys(state.range(0), 2);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
  for (auto _ : state) {
    for (U64 key : keys) benchmark::DoNotOptimize(map.find(key));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Map>
void bigWalk(benchmark::State& state) {
  Map map;
  for (U64 key : randomKeys(state.range(0), 1)) map.add(key, key);
  for (auto _ : state) {
    U64 sum = 0;
    map.walk([&sum](U64 key, U64 value) { sum += key ^ (value << 1); });
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Map>
void bigDel(benchmark::State& state) {
  auto keys = randomKeys(state.range(0), 1);
  for (auto _ : state) {
    state.PauseTiming();
    Map map;
    for (U64 key : keys) map.add(key, key);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
    state.ResumeTiming();
    for (U64 key : keys) map.del(key);
    benchmark::DoNotOptimize(&map);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

using OursSmall = Ours<Kind, NodePtr>;
using AltSmall = Alt<Kind, NodePtr>;
using OursBig = Ours<U64, U64>;
using PlainSmall = Plain<Kind, NodePtr>;
using AltBig = Alt<U64, U64>;

void small(benchmark::internal::Benchmark* b) { b->Arg(1)->Arg(3)->Arg(10); }
void many(benchmark::internal::Benchmark* b) {
  b->ArgsProduct({{1000, 100'000, 1'000'000}, {1, 3, 10}})->Unit(benchmark::kMicrosecond);
}
void big(benchmark::internal::Benchmark* b) {
  b->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
}

#define PAIR(bench, name, sizes, ...)                                                         \
  BENCHMARK_TEMPLATE(bench, Ours##__VA_ARGS__)->Name("hash_map/" name "/ours")->Apply(sizes); \
  BENCHMARK_TEMPLATE(bench, Alt##__VA_ARGS__)->Name("hash_map/" name "/unordered_map")->Apply(sizes)

PAIR(smallFind, "small_find_hit", small, Small, true);
PAIR(smallFind, "small_find_miss", small, Small, false);
PAIR(smallFindChain, "small_find_chain_hit", small, Small, true);
PAIR(smallFindChain, "small_find_chain_miss", small, Small, false);
PAIR(smallBuild, "small_build_destroy", small, Small);
PAIR(smallWalk, "small_walk", small, Small);
PAIR(smallWalkChain, "small_walk_chain", small, Small);
BENCHMARK_TEMPLATE(smallWalk, PlainSmall)->Name("hash_map/small_walk/array")->Apply(small);
BENCHMARK_TEMPLATE(smallWalkChain, PlainSmall)
    ->Name("hash_map/small_walk_chain/array")
    ->Apply(small);
PAIR(manyBuild, "many_build_destroy", many, Small);
PAIR(manyFind, "many_find", many, Small);
PAIR(manyWalk, "many_walk", many, Small);
BENCHMARK_TEMPLATE(manyWalk, PlainSmall)->Name("hash_map/many_walk/array")->Apply(many);
PAIR(bigInsert, "big_insert", big, Big);
PAIR(bigFind, "big_find_hit", big, Big, true);
PAIR(bigFind, "big_find_miss", big, Big, false);
PAIR(bigWalk, "big_walk", big, Big);
PAIR(bigDel, "big_del", big, Big);

}  // namespace
