// The usage tree against the same tree made of std::map, std::set, std::deque and std::shared_ptr.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

#include "Sobrel.h"
#include "TreeBench.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace {

using VelmorTcam::CliShowTcamUsageEntryInfo;
using VelmorTcam::S16;
using VelmorTcam::StageType;
using VelmorTcam::U32;
using VelmorTcam::U64;

// The place of entry n: there are 1024 features, filled in turn.
struct Where {
  explicit Where(U32 n) : slot(n % 1024) {}
  StageType stage() const { return static_cast<StageType>(1 + slot % 2); }
  S16 pipe() const { return static_cast<S16>(slot / 2 % 2); }
  U32 groupPriority() const { return slot / 4 % 4; }
  U32 group() const { return slot / 16 % 8; }
  U32 copy() const { return slot / 128 % 2; }
  U32 featurePriority() const { return slot / 256; }
  U32 slot;
};

CliShowTcamUsageEntryInfo entryOf(U32 n) {
  CliShowTcamUsageEntryInfo entry(1'000'000 - n / 4096, n);
  entry.descriptionIs("permit tcp any host 192.0.2.80 eq 443");
  entry.hitsIs(n);
  return entry;
}

struct Ours {
  void add(U32 n) {
    Where const at(n);
    auto const bucket = chip->stageInfoIs(at.stage())
                            ->pipeInfoIs(at.pipe())
                            ->groupPrioBucketIs(at.groupPriority())
                            ->groupInfoIs(at.group())
                            ->groupPerCopyInfoIs(at.copy())
                            ->featurePrioBucketIs(at.featurePriority());
    auto feature = bucket->featureInfoFront();
    if (feature == nullptr) {
      feature = VelmorTcam::cliShowTcamUsageFeatureInfoFactory("acl");
      bucket->featureInfoEnq(feature);
    }
    feature->entrySetIs(entryOf(n));
  }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [stageKey, stage] : chip->stageInfo()) {
      for (auto const& [pipeKey, pipe] : stage->pipeInfo()) {
        for (auto const& [priorityKey, priority] : pipe->groupPrioBucket()) {
          for (auto const& [groupKey, group] : priority->groupInfo()) {
            for (auto const& [copyKey, copy] : group->groupPerCopyInfo()) {
              for (auto const& [bucketKey, bucket] : copy->featurePrioBucket()) {
                for (auto const& feature : bucket->featureInfo()) {
                  for (auto const& entry : feature->entrySet()) sum += entry.hits();
                }
              }
            }
          }
        }
      }
    }
    return sum;
  }
  Halvo::Ptr<VelmorTcam::CliShowTcamUsageChipInfo> chip =
      Halvo::makePtr<VelmorTcam::CliShowTcamUsageChipInfo>();
};

template <class Key, class Child>
struct AltLevel {
  explicit AltLevel(U32 k = 0) : key(k) {}
  const std::shared_ptr<Child>& childIs(Key k) {
    auto const at = children.lower_bound(k);
    if (at != children.end() && at->first == k) return at->second;
    return children.emplace_hint(at, k, std::make_shared<Child>(static_cast<U32>(k)))->second;
  }
  U32 key;
  std::map<Key, std::shared_ptr<Child>> children;
};
struct AltFeature {
  Halvo::String name = "acl";
  U32 usedEntries = 0;
  U32 reservedEntries = 0;
  std::set<CliShowTcamUsageEntryInfo> entries;
};
struct AltBucket {
  explicit AltBucket(U32 k) : key(k) {}
  U32 key;
  std::deque<std::shared_ptr<AltFeature>> features;
};
struct AltCopy : AltLevel<U32, AltBucket> {
  using AltLevel::AltLevel;
  U32 counts[3] = {};
};
using AltGroup = AltLevel<U32, AltCopy>;
using AltPriority = AltLevel<U32, AltGroup>;
using AltPipe = AltLevel<U32, AltPriority>;
using AltStage = AltLevel<S16, AltPipe>;

struct Alt {
  void add(U32 n) {
    Where const at(n);
    auto& stage = stages[at.stage()];
    if (stage == nullptr) stage = std::make_shared<AltStage>(at.stage());
    AltBucket& bucket = *stage->childIs(at.pipe())
                             ->childIs(at.groupPriority())
                             ->childIs(at.group())
                             ->childIs(at.copy())
                             ->childIs(at.featurePriority());
    if (bucket.features.empty()) bucket.features.push_back(std::make_shared<AltFeature>());
    bucket.features.front()->entries.insert(entryOf(n));
  }
  U64 walk() const {
    U64 sum = 0;
    for (auto const& [stageKey, stage] : stages) {
      for (auto const& [pipeKey, pipe] : stage->children) {
        for (auto const& [priorityKey, priority] : pipe->children) {
          for (auto const& [groupKey, group] : priority->children) {
            for (auto const& [copyKey, copy] : group->children) {
              for (auto const& [bucketKey, bucket] : copy->children) {
                for (auto const& feature : bucket->features) {
                  for (auto const& entry : feature->entries) sum += entry.hits();
                }
              }
            }
          }
        }
      }
    }
    return sum;
  }
  std::unordered_map<StageType, std::shared_ptr<AltStage>> stages;
};

using velmorbench::numbers;
using velmorbench::Order;

template <class Tree>
void fill(Tree& tree, const std::vector<U32>& all) {
  for (U32 const n : all) tree.add(n);
}

// The work of a command: fill, print, drop.
template <class Tree, Order order>
void life(benchmark::State& state) {
  auto const all = numbers(order, state.range(0));
  for (auto _ : state) {
    Tree tree;
    fill(tree, all);
    benchmark::DoNotOptimize(tree.walk());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class Tree, Order order>
void build(benchmark::State& state) {
  auto const all = numbers(order, state.range(0));
  velmorbench::timeBuilding<Tree>(state, [&](Tree& tree) { fill(tree, all); });
}
template <class Tree, Order order>
void walk(benchmark::State& state) {
  Tree tree;
  fill(tree, numbers(order, state.range(0)));
  velmorbench::timeWalking(state, tree);
}
template <class Tree, Order order>
void destroy(benchmark::State& state) {
  auto const all = numbers(order, state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto tree = std::make_unique<Tree>();
    fill(*tree, all);
    state.ResumeTiming();
    tree.reset();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
// The counter holds the result: bytes for each entry, by both allocators. The time means nothing.
template <class Tree, Order order>
void memory(benchmark::State& state) {
  auto const all = numbers(order, state.range(0));
  auto const held = [] {
    return static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd) +
           static_cast<double>(Sobrel::slabUsage().liveBytes) -
           static_cast<double>(Sobrel::slabUsage().slabBytes);
  };
  double bytes = 0;
  for (auto _ : state) {
    double const before = held();
    auto tree = std::make_unique<Tree>();
    fill(*tree, all);
    bytes = held() - before;
  }
  state.counters["bytesEach"] = bytes / static_cast<double>(all.size());
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
}
void once(benchmark::internal::Benchmark* b) {
  b->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Iterations(1);
}

#define PAIR(bench, order, range)                     \
  BENCHMARK_TEMPLATE(bench, Ours, velmorbench::order) \
      ->Name("usage/" #bench "/" #order "/ours")      \
      ->Apply(range);                                 \
  BENCHMARK_TEMPLATE(bench, Alt, velmorbench::order)  \
      ->Name("usage/" #bench "/" #order "/std")       \
      ->Apply(range)
#define ORDERS(bench, range)    \
  PAIR(bench, sorted, range);   \
  PAIR(bench, reversed, range); \
  PAIR(bench, shuffled, range)

ORDERS(life, sizes);
ORDERS(build, sizes);
ORDERS(walk, sizes);
ORDERS(destroy, sizes);
ORDERS(memory, once);

}  // namespace
