// An IPv6 row with ten programmed qualifiers and counters: ours against one flat snprintf of the
// same bytes, from a plain struct and with inet_ntop for the addresses.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "AllocationCount.h"
#include "RowFixtures.h"

namespace {

using namespace velmorbench;

struct PlainIp6Entry {
  std::uint64_t id = 123456;
  std::uint32_t sequence = 120;
  std::uint32_t protocol = 6;
  in6_addr src = address("2001:db8:10:20:30:40:50:60");
  unsigned srcLength = 64;
  in6_addr dst = address("2001:db8:0:1::a:80");
  unsigned dstLength = 112;
  std::uint32_t srcPort = 1024, srcPortMask = 64512;
  std::uint32_t dstPort = 443, dstPortMask = 65535;
  std::uint32_t vlan = 100, vlanMask = 4095;
  std::uint32_t trafficClass = 184, trafficClassMask = 252;
  std::uint32_t hopLimit = 255, hopLimitMask = 255;
  std::uint32_t tcpControl = 18, tcpControlMask = 63;
  std::uint32_t etherType = 0x86DD, etherTypeMask = 0xFFFF;
  std::int32_t lengthLow = 64, lengthHigh = 1500;
  std::uint64_t hits = 987654321;
  const char* action = "permit";

  static in6_addr address(const char* text) {
    in6_addr result;
    if (inet_pton(AF_INET6, text, &result) != 1) std::abort();
    return result;
  }
};

Halvo::Ptr<VelmorTcam::VelmorTcamEntryShadow> shadowOf(const PlainIp6Entry& e) {
  using namespace VelmorTcam;
  auto const qual = [](const in6_addr& address, unsigned length) {
    return Ip6AddrQualifier(Trelix::Ip6Addr::fromBytes(std::to_array(address.s6_addr)),
                            Trelix::Ip6Addr::prefixMask(length));
  };
  auto shadow = Halvo::makePtr<VelmorTcamEntryShadow>(e.id);
  shadow->hwQualIs(qualifierIpProtocol, Qualifier(e.protocol, 0xFF));
  shadow->hwQualIs(qualifierSrcIp6, qual(e.src, e.srcLength));
  shadow->hwQualIs(qualifierDstIp6, qual(e.dst, e.dstLength));
  shadow->hwQualIs(qualifierL4SrcPort, Qualifier(e.srcPort, e.srcPortMask));
  shadow->hwQualIs(qualifierL4DstPort, Qualifier(e.dstPort, e.dstPortMask));
  shadow->hwQualIs(qualifierOuterVlanId, Qualifier(e.vlan, e.vlanMask));
  shadow->hwQualIs(qualifierIp6TrafficClass, Qualifier(e.trafficClass, e.trafficClassMask));
  shadow->hwQualIs(qualifierIp6HopLimit, Qualifier(e.hopLimit, e.hopLimitMask));
  shadow->hwQualIs(qualifierTcpControl, Qualifier(e.tcpControl, e.tcpControlMask));
  shadow->hwQualIs(qualifierEtherType, Qualifier(e.etherType, e.etherTypeMask));
  shadow->rangeCheckerIs(rangeCheckerIpLength, RangeCheckerStatus(e.lengthLow, e.lengthHigh));
  shadow->counterStatusIs(hwQualStatusProgrammed);
  return shadow;
}

// Formats the row with one call. All decisions are made beforehand; only the numbers vary.
std::string flatRow(const PlainIp6Entry& e) {
  char src[INET6_ADDRSTRLEN];
  char dst[INET6_ADDRSTRLEN];
  char buffer[512];
  int const size = std::snprintf(
      buffer, sizeof buffer,
      "%-5lu|%-9u| %-6s|%39s|%13d|%6d-%d|%11u|%11u|%11lu\n"
      "%5s|%10s| %-6s|%39s|%13d|%11d|%s\n"
      "%5s| %d/0x%02X |%7s|%39s|%7d-%d||%11d|\n",
      e.id, e.sequence, "TCP", inet_ntop(AF_INET6, &e.src, src, sizeof src),
      static_cast<int>(e.srcLength), static_cast<int>(e.srcPort),
      static_cast<int>((e.srcPort | ~e.srcPortMask) & 0xFFFF), e.vlan, e.vlanMask, e.hits, "", "",
      " S  A ", inet_ntop(AF_INET6, &e.dst, dst, sizeof dst), static_cast<int>(e.dstLength),
      static_cast<int>(e.dstPort), e.action, "", static_cast<int>(e.trafficClass),
      e.trafficClassMask, "", "", e.lengthLow, e.lengthHigh, static_cast<int>(e.hopLimit));
  return std::string(buffer, static_cast<std::size_t>(size));
}

void ours(benchmark::State& state) {
  PlainIp6Entry const entry;
  VelmorTcam::VelmorTcamEntryShadow::PtrConst const shadow = shadowOf(entry);
  Halvo::Ptr<VelmorTcam::CliFormat> const format =
      Halvo::makePtr<WithAction<VelmorTcam::Ip6EntryRequestCliFormat>>();
  VelmorTcam::RequestKey const key;
  VelmorTcam::RuleId const rule(entry.sequence);
  Halvo::String const description;
  std::string const row =
      format->formatEntryRequest(key, rule, description, shadow, entry.hits).str();
  if (row != flatRow(entry)) {
    std::fprintf(stderr, "the rows differ:\n%s%s", row.c_str(), flatRow(entry).c_str());
    std::abort();
  }
  AllocationCount const allocations;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        format->formatEntryRequest(key, rule, description, shadow, entry.hits));
  }
  state.counters["allocations"] = allocations.perIteration(state);
}
BENCHMARK(ours)->Name("ip6_row/ours");

void flat(benchmark::State& state) {
  PlainIp6Entry entry;
  for (auto _ : state) {
    benchmark::DoNotOptimize(entry);
    benchmark::DoNotOptimize(flatRow(entry));
  }
}
BENCHMARK(flat)->Name("ip6_row/flat_snprintf");

}  // namespace
