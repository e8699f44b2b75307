// Reading and invoking attributes by reflection, against the direct call.
#include <benchmark/benchmark.h>

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Types/Reflect.h"

namespace {

using Zel::Op;
using Zel::U32;
using Zel::Value;

auto groupCopy() {
  auto const copy = Halvo::makePtr<VelmorTcam::CliShowTcamUsageGroupPerCopyInfo>(U32{4});
  copy->usedEntriesIs(17);
  return copy;
}

// The object as a Node: the compiler must not see its class.
template <class T>
Halvo::Node& asNode(const T& object) {
  Halvo::Node* node = object.get();
  benchmark::DoNotOptimize(node);
  return *node;
}

void BM_Read_U32_Direct(benchmark::State& state) {
  auto const copy = groupCopy();
  for (auto _ : state) {
    auto* object = copy.get();
    benchmark::DoNotOptimize(object);
    benchmark::DoNotOptimize(object->usedEntries());
  }
}
BENCHMARK(BM_Read_U32_Direct);

void BM_Read_U32_ByNumber(benchmark::State& state) {
  auto const copy = groupCopy();
  Halvo::Node& node = asNode(copy);
  Value value;
  for (auto _ : state) {
    static_cast<void>(Zel::attributeOp(node, 131, Op::read, {}, value));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_Read_U32_ByNumber);

void BM_Read_U32_ByDescriptor(benchmark::State& state) {
  auto const copy = groupCopy();
  Halvo::Node& node = asNode(copy);
  const Zel::Attribute& attribute = *Zel::findAttribute(*node.typeData(), 131);
  Value value;
  for (auto _ : state) {
    static_cast<void>(Zel::attributeOp(node, attribute, Op::read, {}, value));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_Read_U32_ByDescriptor);

// The last attribute of the most derived class, found through two bases.
void BM_Read_Enumeration_ByNumberInBase(benchmark::State& state) {
  auto const format = Halvo::makePtr<VelmorTcam::IpEntryRequestCliFormat>();
  Halvo::Node& node = asNode(format);
  Value value;
  for (auto _ : state) {
    static_cast<void>(Zel::attributeOp(node, 130, Op::read, {}, value));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_Read_Enumeration_ByNumberInBase);

void stringDirect(benchmark::State& state) {
  auto const feature = VelmorTcam::cliShowTcamUsageFeatureInfoFactory(
      Halvo::String(static_cast<std::size_t>(state.range(0)), 'n'));
  for (auto _ : state) {
    auto* object = feature.get();
    benchmark::DoNotOptimize(object);
    Halvo::String text = object->cliFeatureName();
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(stringDirect)->Name("BM_Read_String_Direct")->Arg(10)->Arg(200);

void stringByNumber(benchmark::State& state) {
  auto const feature = VelmorTcam::cliShowTcamUsageFeatureInfoFactory(
      Halvo::String(static_cast<std::size_t>(state.range(0)), 'n'));
  Halvo::Node& node = asNode(feature);
  Value value;
  for (auto _ : state) {
    static_cast<void>(Zel::attributeOp(node, 130, Op::read, {}, value));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(stringByNumber)->Name("BM_Read_String_ByNumber")->Arg(10)->Arg(200);

}  // namespace
