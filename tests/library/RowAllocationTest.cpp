#include <gtest/gtest.h>

#include "../platform/CountedNew.h"
#include "ShadowFixture.h"

namespace VelmorTcam {
namespace {

using velmortest::ShadowOf;

template <class Format>
std::size_t allocationsOfARow(const ShadowOf& shadow) {
  Format const format;
  RequestKey const key;
  RuleId const rule(10);
  Halvo::String const description;
  velmortest::Ptr<const velmortest::Shadow> const entry = shadow;
  auto const before = CountedNew::allocations;
  Halvo::String const row = format.formatEntryRequest(key, rule, description, entry, 42);
  EXPECT_GT(row.size(), Halvo::String::inlineCapacity);
  return CountedNew::allocations - before;
}

TEST(RowAllocation, IsTheRowsTextAlone) {
  EXPECT_EQ(allocationsOfARow<velmortest::IpFormat>(
                ShadowOf()
                    .qual(qualifierIpProtocol, 6, 255)
                    .qual(qualifierSrcIp, 0xC0A80101, 0xFFFFFF00)
                    .qual(qualifierDstIp, 0xC0A80101, 0xFFFFFF00)
                    .qual(qualifierL4SrcPort, 1024, 64512)
                    .qual(qualifierL4DstPort, 443, 65535)
                    .qual(qualifierOuterVlanId, 4294967295, 4294967295)
                    .qual(qualifierDSCP, 4294967295, 4294967295)
                    .qual(qualifierIpFrag, 2)
                    .qual(qualifierTcpControl, 63, 63)
                    .qual(qualifierEtherType, 0x800)
                    .range(rangeCheckerIpLength, 64, 1500)
                    .counters()),
            1U);
  EXPECT_EQ(allocationsOfARow<velmortest::Ip6Format>(
                ShadowOf()
                    .qual(qualifierIpProtocol, 6, 255)
                    .ip6(qualifierSrcIp6, "2001:db8:1111:2222:3333:4444:5555:6666", "ffff::")
                    .ip6(qualifierDstIp6, "2001:db8:1111:2222:3333:4444:5555:6666", "ffff::")
                    .qual(qualifierIp6TrafficClass, 10, 255)
                    .qual(qualifierIp6HopLimit, 64, 255)
                    .range(rangeCheckerIpLength, 64, 1500)
                    .counters()),
            1U);
}

}  // namespace
}  // namespace VelmorTcam
