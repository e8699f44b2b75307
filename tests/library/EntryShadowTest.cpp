#include <gtest/gtest.h>

#include <map>
#include <random>

#include "ShadowFixture.h"
#include "Sobrel.h"

namespace VelmorTcam {
namespace {

using velmortest::makePtr;
using velmortest::Ptr;
using velmortest::Shadow;
using velmortest::ShadowOf;

TEST(EntryShadow, IsBornEmpty) {
  Ptr<Shadow> const shadow = makePtr<Shadow>(0x123456789ABCDEF0U);
  EXPECT_EQ(shadow->shadowId(), 0x123456789ABCDEF0U);
  EXPECT_EQ(shadow->counterStatus(), 0);
  EXPECT_EQ(shadow->counters(), CounterSet());
  EXPECT_EQ(shadow->qualifier(qualifierSrcIp), nullptr);
  EXPECT_FALSE(shadow->rangeChecker(rangeCheckerIpLength).has_value());
  EXPECT_EQ(shadow->getHwQualStatus(qualifierSrcIp, qualifierSrcIp), hwQualStatusInvalid);
  EXPECT_STREQ(shadow->typeData()->name, "VelmorTcam::VelmorTcamEntryShadow");
}

TEST(EntryShadow, TellsARecordThatWasGivenFromOneThatWasNot) {
  EXPECT_FALSE(Qualifier());
  EXPECT_TRUE(Qualifier(0, 0));
  EXPECT_FALSE(Qualifier().isEq(Qualifier(0, 0)));
  EXPECT_TRUE(Qualifier(1, 2).isEq(Qualifier(1, 2)));
  EXPECT_FALSE(Qualifier(1, 2).isEq(Qualifier(1, 3)));
  EXPECT_FALSE(Qualifier(1, 2).isEq(Qualifier(2, 2)));
  EXPECT_FALSE(EthAddrQualifier());
  EXPECT_TRUE(EthAddrQualifier(Trelix::EthAddr(), Trelix::EthAddr()));
  auto const mac = Trelix::EthAddr::parse("00:00:00:00:00:01");
  EXPECT_TRUE(EthAddrQualifier(mac, mac).isEq(EthAddrQualifier(mac, mac)));
  EXPECT_FALSE(EthAddrQualifier(mac, mac).isEq(EthAddrQualifier(mac, Trelix::EthAddr())));
  EXPECT_FALSE(Ip6AddrQualifier());
}

TEST(EntryShadow, DataHoldsOneRecordAndReadsTheOthersAsUnset) {
  QualifierData data;
  EXPECT_FALSE(data.qual());
  EXPECT_FALSE(data.ethQual());
  EXPECT_FALSE(data.ip6Qual());
  data.qualIs(Qualifier(5, 6));
  EXPECT_EQ(data.qual(), Qualifier(5, 6));
  EXPECT_FALSE(data.ethQual());
  data.ip6QualIs(Ip6AddrQualifier(Trelix::Ip6Addr::parse("::1"), Trelix::Ip6Addr::parse("::1")));
  EXPECT_FALSE(data.qual());
  EXPECT_EQ(data.ip6Qual().address().stringValue(), "::1");
}

TEST(EntryShadow, CreatesOnceAndRemoves) {
  Ptr<Shadow> const shadow = makePtr<Shadow>(U64{1});
  Ptr<QualifierStatus> const status = shadow->qualifierIs(qualifierSrcIp);
  EXPECT_EQ(shadow->qualifierIs(qualifierSrcIp), status);
  EXPECT_EQ(shadow->qualifier(qualifierSrcIp), status);
  Ptr<QualifierData> const data = status->hwQualDataIs(qualifierSrcIp);
  EXPECT_EQ(status->hwQualDataIs(qualifierSrcIp), data);
  EXPECT_EQ(status->hwQualData(qualifierSrcIp), data);
  EXPECT_EQ(status->hwQualData(qualifierDstIp), nullptr);

  shadow->hwQualStatusIs(qualifierSrcIp, qualifierSrcIp, hwQualStatusProgrammed);
  shadow->hwQualStatusIs(qualifierSrcIp, qualifierDstIp, hwQualStatusFailed);
  shadow->hwQualStatusIs(qualifierDstIp, qualifierSrcIp, hwQualStatusRequested);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierSrcIp, qualifierSrcIp), 7);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierSrcIp, qualifierDstIp), hwQualStatusFailed);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierDstIp, qualifierSrcIp), hwQualStatusRequested);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierDstIp, qualifierDstIp), hwQualStatusInvalid);

  EXPECT_EQ(shadow->qualifierDel(qualifierSrcIp), status);
  EXPECT_EQ(shadow->qualifierDel(qualifierSrcIp), nullptr);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierSrcIp, qualifierSrcIp), 0);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierSrcIp, qualifierDstIp), 0);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierDstIp, qualifierSrcIp), hwQualStatusRequested);
  // A removed object lives on in the caller's pointer.
  EXPECT_EQ(status->hwQualDataDel(qualifierSrcIp), data);
  EXPECT_EQ(status->hwQualDataDel(qualifierSrcIp), nullptr);

  shadow->hwQualStatusIs(qualifierDstIp, qualifierDstIp, hwQualStatusProgrammed);
  shadow->qualifierDelAll();
  EXPECT_EQ(shadow->getHwQualStatus(qualifierDstIp, qualifierDstIp), hwQualStatusInvalid);
  EXPECT_EQ(shadow->getHwQualStatus(qualifierDstIp, qualifierSrcIp), hwQualStatusInvalid);

  shadow->rangeCheckerIs(rangeCheckerIpLength, RangeCheckerStatus(1, 2));
  EXPECT_EQ(shadow->rangeChecker(rangeCheckerIpLength), RangeCheckerStatus(1, 2));
  EXPECT_TRUE(shadow->rangeCheckerDel(rangeCheckerIpLength));
  EXPECT_FALSE(shadow->rangeCheckerDel(rangeCheckerIpLength));
}

TEST(EntryShadow, AgreesWithAMapUnderRandomChanges) {
  std::mt19937 random(11);
  Ptr<Shadow> const shadow = makePtr<Shadow>(U64{1});
  std::map<U32, Qualifier> model;
  auto const values = qualifierTypeValues();
  for (int step = 0; step < 20'000; ++step) {
    auto const type = static_cast<QualifierType>(values[random() % values.size()].number);
    if (random() % 3 != 0) {
      Qualifier const record(static_cast<U32>(random()), static_cast<U32>(random()));
      shadow->hwQualIs(type, record);
      model[type] = record;
    } else if (random() % 100 == 0) {
      shadow->qualifierDelAll();
      model.clear();
    } else {
      EXPECT_EQ(shadow->qualifierDel(type) != nullptr, model.erase(type) == 1);
    }
    EXPECT_EQ(shadow->qualifier().size(), model.size());
    for (auto const& value : values) {
      auto const t = static_cast<QualifierType>(value.number);
      auto const found = model.find(t);
      ASSERT_EQ(shadow->getHwQualStatus(t, t) == 7, found != model.end());
      if (found != model.end()) {
        ASSERT_EQ(shadow->qualifier(t)->hwQualData(t)->qual(), found->second);
      }
    }
  }
}

TEST(EntryShadow, GivesBackAllItsMemory) {
  auto const live = [] {
    return std::array{Shadow::memAllocationTracker_.liveObjects(),
                      QualifierStatus::memAllocationTracker_.liveObjects(),
                      QualifierData::memAllocationTracker_.liveObjects()};
  };
  auto const before = live();
  {
    ShadowOf const shadow = ShadowOf()
                                .qual(qualifierSrcIp, 1)
                                .qual(qualifierDstIp, 2)
                                .mac(qualifierSrcMac, "00:00:00:00:00:01", "ff:ff:ff:ff:ff:ff");
    EXPECT_EQ(live()[0], before[0] + 1);
    EXPECT_EQ(live()[1], before[1] + 3);
    EXPECT_EQ(live()[2], before[2] + 3);
  }
  EXPECT_EQ(live(), before);
}

#if !defined(__SANITIZE_ADDRESS__)  // under ASan, nodes and tables do not come from slabs
TEST(EntryShadow, WithTenQualifiersTakesAtMost1600Bytes) {
  auto const before = Sobrel::slabUsage().liveBytes;
  ShadowOf const shadow = [] {
    ShadowOf s;
    auto const values = qualifierTypeValues();
    for (std::size_t i = 0; i < 10; ++i) {
      s.qual(static_cast<QualifierType>(values[i].number), 1);
    }
    return s;
  }();
  auto const bytes = Sobrel::slabUsage().liveBytes - before;
  RecordProperty("bytes", static_cast<int>(bytes));
  EXPECT_LE(bytes, 1638U);
  EXPECT_GE(bytes, 10 * (sizeof(QualifierStatus) + sizeof(QualifierData)));
}
#endif

}  // namespace
}  // namespace VelmorTcam
