// Text of addresses: ours against the C library.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "Trelix.h"

namespace {

using Halvo::U32;
using Halvo::U64;

constexpr std::size_t addressCount = 1024;

struct Random {
  explicit Random(U32 seed) : engine(seed) {}
  U32 operator()() { return static_cast<U32>(engine()); }
  std::mt19937 engine;
};

std::vector<Trelix::IpAddr> ip4Addresses() {
  Random random(4);
  std::vector<Trelix::IpAddr> addresses;
  for (std::size_t i = 0; i < addressCount; ++i) {
    addresses.push_back(Trelix::IpAddr::fromHostOrder(random()));
  }
  return addresses;
}

// Addresses as in configurations: a documentation prefix, a subnet, zeros, an interface.
std::vector<Trelix::Ip6Addr> ip6Addresses() {
  Random random(6);
  std::vector<Trelix::Ip6Addr> addresses;
  for (std::size_t i = 0; i < addressCount; ++i) {
    U32 const low = random();
    addresses.push_back(i % 2 == 0
                            ? Trelix::Ip6Addr::fromHostOrder(0x20010DB8, low >> 16, 0, low & 0xFFF)
                            : Trelix::Ip6Addr::fromHostOrder(0x20010DB8, low, random(), random()));
  }
  return addresses;
}

std::vector<Trelix::EthAddr> ethAddresses() {
  std::mt19937_64 random(48);
  std::vector<Trelix::EthAddr> addresses;
  for (std::size_t i = 0; i < addressCount; ++i) {
    addresses.push_back(Trelix::EthAddr::fromHostOrder(random()));
  }
  return addresses;
}

template <class Address, class Print>
void print(benchmark::State& state, const std::vector<Address>& addresses, Print&& one) {
  std::size_t i = 0;
  for (auto _ : state) {
    one(addresses[i++ % addressCount]);
  }
}

template <class Address>
void writeOne(const Address& address) {
  char text[Address::maxTextSize];
  benchmark::DoNotOptimize(address.write(text));
  benchmark::ClobberMemory();
}

template <class Address>
void stringOne(const Address& address) {
  Halvo::String text = address.stringValue();
  benchmark::DoNotOptimize(text.data());
}

template <int family, class Address>
void ntopOne(const Address& address) {
  char text[INET6_ADDRSTRLEN];
  auto const bytes = address.bytes();
  benchmark::DoNotOptimize(inet_ntop(family, bytes.data(), text, sizeof text));
  benchmark::ClobberMemory();
}

void BM_OursIp4Write(benchmark::State& s) { print(s, ip4Addresses(), writeOne<Trelix::IpAddr>); }
void BM_OursIp4String(benchmark::State& s) { print(s, ip4Addresses(), stringOne<Trelix::IpAddr>); }
void BM_AltIp4Ntop(benchmark::State& s) {
  print(s, ip4Addresses(), ntopOne<AF_INET, Trelix::IpAddr>);
}
void BM_AltIp4Snprintf(benchmark::State& s) {
  print(s, ip4Addresses(), [](const Trelix::IpAddr& address) {
    char text[16];
    auto const b = address.bytes();
    benchmark::DoNotOptimize(
        std::snprintf(text, sizeof text, "%d.%d.%d.%d", b[0], b[1], b[2], b[3]));
    benchmark::ClobberMemory();
  });
}
BENCHMARK(BM_OursIp4Write)->Name("ip4_text/ours");
BENCHMARK(BM_OursIp4String)->Name("ip4_text/ours_string");
BENCHMARK(BM_AltIp4Ntop)->Name("ip4_text/inet_ntop");
BENCHMARK(BM_AltIp4Snprintf)->Name("ip4_text/snprintf");

void BM_OursIp6Write(benchmark::State& s) { print(s, ip6Addresses(), writeOne<Trelix::Ip6Addr>); }
void BM_OursIp6String(benchmark::State& s) { print(s, ip6Addresses(), stringOne<Trelix::Ip6Addr>); }
void BM_AltIp6Ntop(benchmark::State& s) {
  print(s, ip6Addresses(), ntopOne<AF_INET6, Trelix::Ip6Addr>);
}
BENCHMARK(BM_OursIp6Write)->Name("ip6_text/ours");
BENCHMARK(BM_OursIp6String)->Name("ip6_text/ours_string");
BENCHMARK(BM_AltIp6Ntop)->Name("ip6_text/inet_ntop");

void BM_OursEthWrite(benchmark::State& s) { print(s, ethAddresses(), writeOne<Trelix::EthAddr>); }
void BM_OursEthString(benchmark::State& s) { print(s, ethAddresses(), stringOne<Trelix::EthAddr>); }
void BM_AltEthSnprintf(benchmark::State& s) {
  print(s, ethAddresses(), [](const Trelix::EthAddr& address) {
    char text[18];
    auto const& b = address.bytes();
    benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", b[0],
                                           b[1], b[2], b[3], b[4], b[5]));
    benchmark::ClobberMemory();
  });
}
BENCHMARK(BM_OursEthWrite)->Name("mac_text/ours");
BENCHMARK(BM_OursEthString)->Name("mac_text/ours_string");
BENCHMARK(BM_AltEthSnprintf)->Name("mac_text/snprintf");

template <class Address>
std::vector<Halvo::String> texts(const std::vector<Address>& addresses) {
  std::vector<Halvo::String> all;
  for (const Address& address : addresses) all.push_back(address.stringValue());
  return all;
}

template <class Address>
void parseOne(const Halvo::String& text) {
  benchmark::DoNotOptimize(Address::tryParse(text));
}

template <int family>
void ptonOne(const Halvo::String& text) {
  unsigned char bytes[16];
  benchmark::DoNotOptimize(inet_pton(family, text.c_str(), bytes));
  benchmark::ClobberMemory();
}

void BM_OursIp4Parse(benchmark::State& s) {
  print(s, texts(ip4Addresses()), parseOne<Trelix::IpAddr>);
}
void BM_AltIp4Pton(benchmark::State& s) { print(s, texts(ip4Addresses()), ptonOne<AF_INET>); }
void BM_OursIp6Parse(benchmark::State& s) {
  print(s, texts(ip6Addresses()), parseOne<Trelix::Ip6Addr>);
}
void BM_AltIp6Pton(benchmark::State& s) { print(s, texts(ip6Addresses()), ptonOne<AF_INET6>); }
BENCHMARK(BM_OursIp4Parse)->Name("ip4_parse/ours");
BENCHMARK(BM_AltIp4Pton)->Name("ip4_parse/inet_pton");
BENCHMARK(BM_OursIp6Parse)->Name("ip6_parse/ours");
BENCHMARK(BM_AltIp6Pton)->Name("ip6_parse/inet_pton");

}  // namespace
