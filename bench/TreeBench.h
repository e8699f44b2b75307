// Shared by the benchmarks of the ordered collections: orders of keys, sizes, and the registration
// of our class beside the standard library's.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace velmorbench {

enum Order { sorted, reversed, shuffled };

/// Puts the ascending keys into another order.
template <class Key>
std::vector<Key> inOrder(Order order, std::vector<Key> keys, unsigned seed = 1) {
  if (order == reversed) std::reverse(keys.begin(), keys.end());
  if (order == shuffled) std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
  return keys;
}

/// The numbers from 0 on, in this order.
inline std::vector<std::uint32_t> numbers(Order order, std::int64_t count, unsigned seed = 1) {
  std::vector<std::uint32_t> all(static_cast<std::size_t>(count));
  std::iota(all.begin(), all.end(), 0U);
  return inOrder(order, std::move(all), seed);
}

/// The indexes, among `count` keys, of the keys to look up: each key once, from first to last. If
/// the keys are few and shuffled, all of them come several times, each time in another order. A
/// processor learns the branches of a short sequence that repeats. Real uses do not repeat so.
inline std::vector<std::uint32_t> lookups(Order order, std::size_t count) {
  std::vector<std::uint32_t> round(count);
  std::iota(round.begin(), round.end(), 0);
  std::vector<std::uint32_t> places = round;
  std::mt19937 random(3);
  while (order == shuffled && places.size() < 100'000) {
    std::shuffle(round.begin(), round.end(), random);
    places.insert(places.end(), round.begin(), round.end());
  }
  return places;
}

inline void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(10)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
}

/// Makes and fills one Tree after the other. Their destruction is not counted.
template <class Tree, class Fill>
void timeBuilding(benchmark::State& state, Fill fill) {
  for (auto _ : state) {
    auto tree = std::make_unique<Tree>();
    fill(*tree);
    state.PauseTiming();
    tree.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Tree>
void timeWalking(benchmark::State& state, const Tree& tree) {
  for (auto _ : state) benchmark::DoNotOptimize(tree.walk());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace velmorbench

/// Registers the function template `bench` for the classes Ours`kind` and Alt`kind`. Alt is the
/// standard library's.
#define VELMOR_BENCH_PAIR(group, bench, kind, order, range) \
  BENCHMARK_TEMPLATE(bench, Ours##kind, velmorbench::order) \
      ->Name(group "/" #kind "/" #bench "/" #order "/ours") \
      ->Apply(range);                                       \
  BENCHMARK_TEMPLATE(bench, Alt##kind, velmorbench::order)  \
      ->Name(group "/" #kind "/" #bench "/" #order "/std")  \
      ->Apply(range)
#define VELMOR_BENCH_ORDERS(group, bench, kind, range)    \
  VELMOR_BENCH_PAIR(group, bench, kind, sorted, range);   \
  VELMOR_BENCH_PAIR(group, bench, kind, reversed, range); \
  VELMOR_BENCH_PAIR(group, bench, kind, shuffled, range)
