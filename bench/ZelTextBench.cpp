// Names of enumerations to values and back; trace sites that are off.
#include <benchmark/benchmark.h>

#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Zel/Trace/Trace.h"
#include "Zel/Types/Enum8.h"

namespace {

using Halvo::U8;

constexpr Zel::EnumValue values[] = {
    {8, "qualifierDSCP"},          {15, "qualifierDstIp"},           {20, "qualifierDstIp6"},
    {25, "qualifierDstIp6Alt"},    {28, "qualifierDstMac"},          {36, "qualifierEtherType"},
    {92, "qualifierIp6HopLimit"},  {95, "qualifierIp6TrafficClass"}, {97, "qualifierIpFrag"},
    {101, "qualifierIpProtocol"},  {116, "qualifierL4DstPort"},      {118, "qualifierL4SrcPort"},
    {132, "qualifierOuterVlanId"}, {153, "qualifierSrcIp"},          {158, "qualifierSrcIp6"},
    {163, "qualifierSrcIp6Alt"},   {164, "qualifierSrcMac"},         {182, "qualifierTcpControl"}};
constexpr std::size_t valueCount = std::size(values);
constexpr Zel::TypeDescriptor type{
    .name = "Bench::Qualifier", .kind = Zel::TypeKind::enumeration, .enumValues = values};
constexpr const Zel::TypeDescriptor* types[] = {&type};
constexpr Zel::TypeModule module{"Bench", types};

template <class Lookup>
void eachName(benchmark::State& state, Lookup&& lookup) {
  std::string names[valueCount];
  for (std::size_t i = 0; i < valueCount; ++i) names[i] = values[i].name;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(lookup(std::string_view(names[i])));
    i = i + 1 == valueCount ? 0 : i + 1;
  }
}

void BM_OursEnumFromName(benchmark::State& state) {
  eachName(state, [](std::string_view name) { return Zel::enum8FromName(module, 0, name); });
}
void BM_AltEnumFromNameLinear(benchmark::State& state) {
  // Hidden from the compiler, as in generic code, so that it does not know the names' sizes.
  std::span<const Zel::EnumValue> hidden = values;
  benchmark::DoNotOptimize(hidden);
  eachName(state, [&](std::string_view name) {
    for (const Zel::EnumValue& value : hidden) {
      if (name == value.name) return value.number;
    }
    return U8{0};
  });
}
void BM_AltEnumFromNameUnorderedMap(benchmark::State& state) {
  std::unordered_map<std::string_view, U8> map;
  for (const Zel::EnumValue& value : values) map.emplace(value.name, value.number);
  eachName(state, [&](std::string_view name) { return map.at(name); });
}
void BM_OursEnumStringValue(benchmark::State& state) {
  std::size_t i = 0;
  for (auto _ : state) {
    Halvo::String text = Zel::enum8StringValue(module, 0, values[i].number);
    benchmark::DoNotOptimize(text.data());
    i = i + 1 == valueCount ? 0 : i + 1;
  }
}
BENCHMARK(BM_OursEnumFromName)->Name("enum_from_name/ours");
BENCHMARK(BM_AltEnumFromNameLinear)->Name("enum_from_name/linear");
BENCHMARK(BM_AltEnumFromNameUnorderedMap)->Name("enum_from_name/unordered_map");
BENCHMARK(BM_OursEnumStringValue)->Name("enum_string_value/ours");

const Zel::TraceHandle& traceHandle() {
  static Zel::TraceHandle const handle("Bench", false);
  return handle;
}

void BM_OursTraceOff(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) {
    ZEL_TRACE(traceHandle(), 8, "bench", 1, "trace", "entry " << i);
    benchmark::DoNotOptimize(++i);
  }
}
void BM_AltNoTrace(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++i);
  }
}
void BM_OursTraceOn(benchmark::State& state) {
  Zel::TraceControl::levelIs("Bench", 7, true);
  Zel::TraceControl::sinkIs(
      [](const Zel::TraceRecord& record, void*) { benchmark::DoNotOptimize(record.line.data()); },
      nullptr);
  int i = 0;
  for (auto _ : state) {
    ZEL_TRACE(traceHandle(), 7, "bench", 1, "trace", "entry " << i);
    benchmark::DoNotOptimize(++i);
  }
  Zel::TraceControl::sinkIs(nullptr, nullptr);
  Zel::TraceControl::levelIs("Bench", 7, false);
}
BENCHMARK(BM_OursTraceOff)->Name("trace_off/ours");
BENCHMARK(BM_AltNoTrace)->Name("trace_off/no_site");
BENCHMARK(BM_OursTraceOn)->Name("trace_on/ours");

}  // namespace
