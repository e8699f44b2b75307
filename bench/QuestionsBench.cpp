// lint, explain and diff on tables of 1,000 to 100,000 rules.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <utility>

#include "match/Packet.h"
#include "questions/Diff.h"
#include "questions/Explain.h"
#include "questions/Lint.h"

namespace tcamshow {
namespace {

/// Rules as access lists have them: prefixes of few networks, some services, some port ranges.
class RuleSource final : public Source {
 public:
  RuleSource(std::uint32_t rules, bool isEdited, Complaints& complaints)
      : Source(complaints), rules_(rules), isEdited_(isEdited) {}

  const std::string& fileName() const noexcept override { return name_; }
  std::uint64_t lineNumber() const noexcept override { return 0; }

  Item next() override {
    if (number_ == rules_) return Item::end;
    std::mt19937 random(++number_);
    auto const below = [&random](std::uint32_t limit) {
      return static_cast<std::uint32_t>(random()) % limit;
    };
    entry_.clear();
    entry_.shadowId = number_;
    entry_.sequence = number_;
    entry_.priority = ~number_;
    entry_.action = below(3) == 0 ? "deny" : "permit";
    if (isEdited_ && number_ % 100 == 0) entry_.action = "drop";
    auto const address = [&](std::uint8_t type) {
      unsigned const length = 12 + below(21);
      entry_.qualifiers.push_back(wordQualifier(type, below(64) << 26 | below(1U << 26),
                                                ~std::uint32_t{0} << (32 - length),
                                                QualifierKind::ip));
    };
    address(VelmorTcam::qualifierSrcIp);
    address(VelmorTcam::qualifierDstIp);
    entry_.qualifiers.push_back(
        wordQualifier(VelmorTcam::qualifierIpProtocol, below(4) == 0 ? 17 : 6, 255));
    if (below(8) == 0) {
      entry_.rangeCheckers.push_back(
          {VelmorTcam::rangeCheckerL4DstPort, 1024, 65535, statusProgrammed});
    } else if (below(2) == 0) {
      entry_.qualifiers.push_back(
          wordQualifier(VelmorTcam::qualifierL4DstPort, below(1024), 65535));
    }
    return Item::entry;
  }

 private:
  std::string name_ = "rules";
  std::uint32_t rules_;
  bool isEdited_;
  std::uint32_t number_ = 0;
};

std::unique_ptr<EntryStore> rulesOf(const benchmark::State& state, bool isEdited = false) {
  Complaints complaints;
  RuleSource source(static_cast<std::uint32_t>(state.range(0)), isEdited, complaints);
  return std::make_unique<EntryStore>(source);
}

void BM_OursLint(benchmark::State& state, LintClasses classes) {
  auto const store = rulesOf(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(lintOf(*store, store->places().front(), classes));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_OursExplain(benchmark::State& state, const char* packet) {
  auto const store = rulesOf(state);
  Packets const packets = packetsFromText(packet);
  for (auto _ : state) {
    benchmark::DoNotOptimize(explain(*store, store->places().front(), packets));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_OursDiff(benchmark::State& state, PairBy by) {
  auto const a = rulesOf(state);
  auto const b = rulesOf(state, true);
  auto const places = commonPlaces(*a, *b, PlaceBy::place);
  for (auto _ : state) {
    DiffCounts counts;
    diffPlace(*a, *b, places.front(), by, counts, [](const Difference&) {});
    if (counts.changed == 0 || counts.removed != 0) state.SkipWithError("the edits are missing");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

constexpr const char* onePacket = "tcp src=10.1.2.3 sport=4096 dst=192.0.2.80 dport=443";

// NOLINTBEGIN(misc-use-anonymous-namespace): these are the macros of the benchmark library
BENCHMARK_CAPTURE(BM_OursLint, usual, usualLintClasses)
    ->Name("questions/lint/ours")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_OursLint, redundant, allLintClasses)
    ->Name("questions/lint_redundant/ours")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_OursExplain, one, onePacket)
    ->Name("questions/explain_packet/ours")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_OursExplain, all, "ip")
    ->Name("questions/explain_all/ours")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_OursDiff, match, PairBy::match)
    ->Name("questions/diff/ours")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);
// NOLINTEND(misc-use-anonymous-namespace)

}  // namespace
}  // namespace tcamshow
