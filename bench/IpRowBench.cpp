// An IPv4 row with ten programmed qualifiers and counters: ours against one flat snprintf of the
// same bytes from a plain struct, and against the straightforward way.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "AllocationCount.h"
#include "RowFixtures.h"
#include "StraightforwardIpRow.h"

namespace {

using namespace velmorbench;

const char* quad(std::uint32_t word, char (&text)[INET_ADDRSTRLEN]) {
  std::uint32_t const network = htonl(word);
  return inet_ntop(AF_INET, &network, text, sizeof text);
}

// Formats the row with one call. All decisions are made beforehand; only the numbers vary.
std::string flatRow(const PlainEntry& e) {
  char srcIp[INET_ADDRSTRLEN];
  char srcMask[INET_ADDRSTRLEN];
  char dstIp[INET_ADDRSTRLEN];
  char dstMask[INET_ADDRSTRLEN];
  char buffer[512];
  int const size = std::snprintf(
      buffer, sizeof buffer,
      "%-10lu|%-7u| %-6s|%15s|%15s|%6d-%d|%11u|%11u|%11lu\n"
      "%5d/0x%02X| %3s   | %-6s|%15s|%15s|%11d|%6d-%d||%s\n",
      e.id, e.sequence, "TCP", quad(e.srcIp, srcIp), quad(e.srcIpMask, srcMask),
      static_cast<int>(e.srcPort), static_cast<int>((e.srcPort | ~e.srcPortMask) & 0xFFFF), e.vlan,
      e.vlanMask, e.hits, static_cast<int>(e.dscp), e.dscpMask, "N", " S  A ", quad(e.dstIp, dstIp),
      quad(e.dstIpMask, dstMask), static_cast<int>(e.dstPort), e.lengthLow, e.lengthHigh, e.action);
  return std::string(buffer, static_cast<std::size_t>(size));
}

void checkSame(const std::string& a, const std::string& b) {
  if (a != b) {
    std::fprintf(stderr, "the rows differ:\n%s%s", a.c_str(), b.c_str());
    std::abort();
  }
}

void ours(benchmark::State& state) {
  PlainEntry const entry;
  VelmorTcam::VelmorTcamEntryShadow::PtrConst const shadow = shadowOf(entry);
  Halvo::Ptr<VelmorTcam::CliFormat> const format =
      Halvo::makePtr<WithAction<VelmorTcam::IpEntryRequestCliFormat>>();
  VelmorTcam::RequestKey const key;
  VelmorTcam::RuleId const rule(entry.sequence);
  Halvo::String const description;
  checkSame(format->formatEntryRequest(key, rule, description, shadow, entry.hits).str(),
            flatRow(entry));
  AllocationCount const allocations;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        format->formatEntryRequest(key, rule, description, shadow, entry.hits));
  }
  state.counters["allocations"] = allocations.perIteration(state);
}
BENCHMARK(ours)->Name("ip_row/ours");

void flat(benchmark::State& state) {
  PlainEntry entry;
  for (auto _ : state) {
    benchmark::DoNotOptimize(entry);
    benchmark::DoNotOptimize(flatRow(entry));
  }
}
BENCHMARK(flat)->Name("ip_row/flat_snprintf");

void straight(benchmark::State& state) {
  PlainEntry const entry;
  std::shared_ptr<const straightforward::Shadow> const shadow = straightforward::shadowOf(entry);
  straightforward::Formatter const format;
  checkSame(format.row(shadow, entry.sequence, entry.hits), flatRow(entry));
  for (auto _ : state) {
    benchmark::DoNotOptimize(format.row(shadow, entry.sequence, entry.hits));
  }
}
BENCHMARK(straight)->Name("ip_row/straightforward");

}  // namespace
