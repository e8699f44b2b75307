// RQueue beside std::deque, with the same elements.
#include <benchmark/benchmark.h>

#include <deque>
#include <utility>
#include <vector>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/RQueue.h"

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

template <class T>
const T& element() {
  static const NodePtr node = Halvo::makePtr<Record>();
  static const T one = [] {
    if constexpr (std::is_pointer_v<T>) {
      return node.get();
    } else {
      return node;
    }
  }();
  return one;
}

template <class Queue, class T>
void enqueue(benchmark::State& state) {
  const T& one = element<T>();
  for (auto _ : state) {
    Queue queue;
    for (std::int64_t i = 0; i < state.range(0); ++i) queue.enq(one);
    benchmark::DoNotOptimize(&queue);
    state.PauseTiming();
    { Queue const gone = std::move(queue); }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Queue, class T>
void walk(benchmark::State& state) {
  Queue queue;
  for (std::int64_t i = 0; i < state.range(0); ++i) queue.enq(element<T>());
  for (auto _ : state) {
    for (const T& each : queue.queue) benchmark::DoNotOptimize(&*each);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Queue, class T>
void dequeue(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    Queue queue;
    for (std::int64_t i = 0; i < state.range(0); ++i) queue.enq(element<T>());
    state.ResumeTiming();
    for (std::int64_t i = 0; i < state.range(0); ++i) benchmark::DoNotOptimize(queue.deq());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
// A queue in balance: one in, one out.
template <class Queue, class T>
void pass(benchmark::State& state) {
  Queue queue;
  for (std::int64_t i = 0; i < state.range(0); ++i) queue.enq(element<T>());
  for (auto _ : state) {
    queue.enq(element<T>());
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
PAIR(dequeue, "dequeue", NodePtr);
PAIR(dequeue, "dequeue", Plain);
PAIR(pass, "pass", NodePtr);
PAIR(pass, "pass", Plain);

}  // namespace
