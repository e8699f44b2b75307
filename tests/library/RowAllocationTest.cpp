#include <gtest/gtest.h>

#include "../platform/CountedNew.h"
#include "ShadowFixture.h"

namespace VelmorTcam {
namespace {

template <class Format>
std::size_t allocationsOfARow(const VelmorTcamEntryShadow::PtrConst& entry) {
  Format const format;
  RequestKey const key;
  RuleId const rule(10);
  Halvo::String const description;
  auto const before = CountedNew::allocations;
  Halvo::String const row = format.formatEntryRequest(key, rule, description, entry, 42);
  EXPECT_GT(row.size(), Halvo::String::inlineCapacity);
  return CountedNew::allocations - before;
}

TEST(RowAllocation, IsTheRowsTextAlone) {
  for (auto const& shadow : {velmortest::fullShadow(), velmortest::icmpShadow()}) {
    EXPECT_EQ(allocationsOfARow<velmortest::IpFormat>(shadow), 1U);
    EXPECT_EQ(allocationsOfARow<velmortest::Ip6Format>(shadow), 1U);
  }
}

}  // namespace
}  // namespace VelmorTcam
