// RQueue against std::deque, with the same elements.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Zel/Collections/RQueue.h"

namespace {

class Record : public Halvo::Node {};
using NodePtr = Halvo::Ptr<Record>;
using Plain = Record*;

struct QE_Bench {
  static Halvo::MemoryTracker memAllocationTracker_;
};
constinit Halvo::MemoryTracker QE_Bench::memAllocationTracker_{"QE_Bench"};

template <class T>
struct Ours {
  Halvo::RQueue<T, QE_Bench> queue;
  void enq(const T& element) { queue.enq(element); }
  T deq() { return queue.deq(); }
};
template <class T>
struct Alt {
  std::deque<T> queue;
  void enq(const T& element) { queue.push_back(element); }
  T deq() {
    T element(std::move(queue.front()));
    queue.pop_front();
    return element;
  }
};
// The lower bound for a walk: the elements side by side.
template <class T>
struct Array {
  std::vector<T> queue;
  void enq(const T& element) { queue.push_back(element); }
};

// The elements take turns with these records. With a single record each step would wait for the
// count that the previous step wrote.
constexpr std::size_t recordCount = 64;

template <class T>
const std::array<T, recordCount>& elements() {
  static const std::array<T, recordCount> all = [] {
    static std::array<NodePtr, recordCount> records;
    std::array<T, recordCount> made{};
    for (std::size_t i = 0; i < recordCount; ++i) {
      records[i] = Halvo::makePtr<Record>();
      if constexpr (std::is_pointer_v<T>) {
        made[i] = records[i].get();
      } else {
        made[i] = records[i];
      }
    }
    return made;
  }();
  return all;
}

// The number of queues to fill or empty between two pauses of the clock. A pause costs as much as a
// hundred elements, so the number is large. It is small enough that the queues fit into the same
// cache as one of them.
std::int64_t batchOf(std::int64_t size) { return std::clamp<std::int64_t>(4000 / size, 1, 64); }

template <class Queue, class T>
void fill(Queue& queue, std::int64_t size) {
  auto const& all = elements<T>();
  for (std::size_t i = 0; i < static_cast<std::size_t>(size); ++i) queue.enq(all[i % recordCount]);
}

// Makes queues and fills them. Their destruction is not counted.
template <class Queue, class T>
void enqueue(benchmark::State& state) {
  std::int64_t const size = state.range(0);
  std::int64_t const batch = batchOf(size);
  std::vector<std::optional<Queue>> queues(static_cast<std::size_t>(batch));
  while (state.KeepRunningBatch(batch)) {
    for (auto& queue : queues) fill<Queue, T>(queue.emplace(), size);
    state.PauseTiming();
    for (auto& queue : queues) queue.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * size);
}
// Reads each element, but not the object that it points to.
template <class Queue, class T>
void walk(benchmark::State& state) {
  Queue queue;
  fill<Queue, T>(queue, state.range(0));
  for (auto _ : state) {
    for (const T& each : queue.queue) {
      const Record* const record = &*each;
      asm volatile("" : : "r"(record));  // DoNotOptimize would only need the slot's address
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
// Empties queues. The destruction of the empty queues is not counted.
template <class Queue, class T>
void dequeue(benchmark::State& state) {
  std::int64_t const size = state.range(0);
  std::int64_t const batch = batchOf(size);
  std::vector<std::optional<Queue>> queues(static_cast<std::size_t>(batch));
  while (state.KeepRunningBatch(batch)) {
    state.PauseTiming();
    for (auto& queue : queues) fill<Queue, T>(queue.emplace(), size);
    state.ResumeTiming();
    for (auto& queue : queues) {
      for (std::int64_t i = 0; i < size; ++i) benchmark::DoNotOptimize(queue->deq());
    }
  }
  state.SetItemsProcessed(state.iterations() * size);
}
// A queue in balance: one element in, one out.
template <class Queue, class T>
void pass(benchmark::State& state) {
  Queue queue;
  fill<Queue, T>(queue, state.range(0));
  auto const& all = elements<T>();
  std::size_t i = 0;
  for (auto _ : state) {
    queue.enq(all[i++ % recordCount]);
    benchmark::DoNotOptimize(queue.deq());
  }
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(3)->Arg(1000)->Arg(100'000)->Arg(1'000'000);
}

#define PAIR(bench, name, T)                                                                 \
  BENCHMARK_TEMPLATE(bench, Ours<T>, T)->Name("r_queue/" name "/" #T "/ours")->Apply(sizes); \
  BENCHMARK_TEMPLATE(bench, Alt<T>, T)->Name("r_queue/" name "/" #T "/deque")->Apply(sizes)

PAIR(enqueue, "enqueue", NodePtr);
PAIR(enqueue, "enqueue", Plain);
PAIR(walk, "walk", NodePtr);
PAIR(walk, "walk", Plain);
BENCHMARK_TEMPLATE(walk, Array<NodePtr>, NodePtr)->Name("r_queue/walk/NodePtr/array")->Apply(sizes);
BENCHMARK_TEMPLATE(walk, Array<Plain>, Plain)->Name("r_queue/walk/Plain/array")->Apply(sizes);
PAIR(dequeue, "dequeue", NodePtr);
PAIR(dequeue, "dequeue", Plain);
PAIR(pass, "pass", NodePtr);
PAIR(pass, "pass", Plain);

}  // namespace
