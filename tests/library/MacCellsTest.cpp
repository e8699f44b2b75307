#include <gtest/gtest.h>

#include "ShadowFixture.h"

namespace VelmorTcam {
namespace {

using velmortest::Ptr;
using velmortest::Shadow;
using velmortest::ShadowOf;
using velmortest::String;

MacEntryRequestCliFormat const format;
constexpr QualifierType macTypes[] = {qualifierSrcMac, qualifierDstMac};
constexpr U8 absentStatuses[] = {0, 1, 2, 3, 4, 5, 6, 8, 255};

TEST(MacAddressCells, PrintAddressAndMask) {
  struct Row {
    const char* name;
    const char* address;
    const char* mask;
    const char* cells;
  };
  Row const rows[] = {
      {"host", "00:00:5e:00:53:01", "ff:ff:ff:ff:ff:ff", "00:00:5e:00:53:01|ff:ff:ff:ff:ff:ff|"},
      {"lower case", "AB:CD:EF:00:00:0A", "FF:FF:FF:00:00:00",
       "ab:cd:ef:00:00:0a|ff:ff:ff:00:00:00|"},
      {"not masked", "00:00:5e:00:53:01", "ff:ff:00:00:00:00",
       "00:00:5e:00:53:01|ff:ff:00:00:00:00|"},
      {"not contiguous", "01:00:00:00:00:01", "01:00:00:00:00:ff",
       "01:00:00:00:00:01|01:00:00:00:00:ff|"},
      // No mask counts as a wildcard here.
      {"mask 0", "00:00:5e:00:53:01", "00:00:00:00:00:00", "00:00:5e:00:53:01|00:00:00:00:00:00|"},
      {"all 0, but set", "00:00:00:00:00:00", "00:00:00:00:00:00",
       "00:00:00:00:00:00|00:00:00:00:00:00|"},
      {"broadcast", "ff:ff:ff:ff:ff:ff", "ff:ff:ff:ff:ff:ff",
       "ff:ff:ff:ff:ff:ff|ff:ff:ff:ff:ff:ff|"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    for (QualifierType const type : macTypes) {
      EXPECT_EQ(format.formatQualifierMacAddr(ShadowOf().mac(type, row.address, row.mask), type),
                row.cells);
      for (U8 const status : absentStatuses) {
        EXPECT_EQ(format.formatQualifierMacAddr(ShadowOf().mac(type, row.address, row.mask, status),
                                                type),
                  "||");
      }
    }
  }
}

TEST(MacAddressCells, AreTwoBarsWhenAbsent) {
  EXPECT_EQ(format.formatQualifierMacAddr(ShadowOf(), qualifierSrcMac), "||");
  EXPECT_EQ(format.formatQualifierMacAddr(ShadowOf(), qualifierDstMac), "||");
}

TEST(MacAddressCells, TellSourceFromDestination) {
  ShadowOf const shadow = ShadowOf()
                              .mac(qualifierSrcMac, "00:00:5e:00:53:01", "ff:ff:ff:ff:ff:ff")
                              .mac(qualifierDstMac, "00:00:5e:00:53:02", "ff:ff:ff:ff:ff:00");
  EXPECT_EQ(format.formatQualifierMacAddr(shadow, qualifierSrcMac),
            "00:00:5e:00:53:01|ff:ff:ff:ff:ff:ff|");
  EXPECT_EQ(format.formatQualifierMacAddr(shadow, qualifierDstMac),
            "00:00:5e:00:53:02|ff:ff:ff:ff:ff:00|");
}

TEST(MacAddressCells, LeaveNoReferenceBehind) {
  ShadowOf const shadow = ShadowOf().mac(qualifierSrcMac, "00:00:5e:00:53:01", "ff:ff:ff:ff:ff:ff");
  auto const status = shadow->qualifier(qualifierSrcMac);
  auto const data = status->hwQualData(qualifierSrcMac);
  (void)format.formatQualifierMacAddr(shadow, qualifierSrcMac);
  EXPECT_EQ(status->useCount(), 2U);
  EXPECT_EQ(data->useCount(), 2U);
}

TEST(EtherTypeCell, HasThreeForms) {
  struct Row {
    const char* name;
    U32 value;
    U32 mask;
    const char* cell;
  };
  Row const rows[] = {
      {"IPv4", 0x800, 0xFFFF, "800h|"},
      {"IPv6", 0x86DD, 0xFFFF, "86ddh|"},
      {"value 0", 0, 0xFFFF, "0h|"},
      {"the mask is not shown", 0x86DD, 1, "86ddh|"},
      {"the mask's high bits count", 0x86DD, 0x80000000, "86ddh|"},
      {"beyond 16 bits", 0xFFFFFFFF, 0xFFFF, "ffffffffh|"},
      {"any, value left over", 0x800, 0, "*|"},
      {"any", 0, 0, "*|"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(
        format.formatQualifierEtherType(ShadowOf().qual(qualifierEtherType, row.value, row.mask)),
        row.cell);
    for (U8 const status : absentStatuses) {
      EXPECT_EQ(format.formatQualifierEtherType(
                    ShadowOf().qual(qualifierEtherType, row.value, row.mask, status)),
                "|");
    }
  }
  EXPECT_EQ(format.formatQualifierEtherType(ShadowOf()), "|");
}

TEST(MacFormat, HasTheCommonSequenceCell) {
  EXPECT_EQ(format.formatSequenceNum(0), "0      |");
  EXPECT_EQ(format.formatSequenceNum(4294967295), "Drop   |");
}

#define SITE(EXPRESSION, LINE, OPERATION, ARGUMENTS)                                         \
  "^assertion failed: " EXPRESSION " at VelmorTcamManagerBase/VelmorTcamCliTypes:" LINE      \
  " in virtual Zel::String VelmorTcam::MacEntryRequestCliFormat::" OPERATION "\\(" ARGUMENTS \
  "\\) const\n$"
#define MAC_ARGUMENTS "const PtrConst&, VelmorTcam::QualifierType"
#define MAC_TYPE_SITE                                                         \
  SITE(                                                                       \
      "qualifierMacAddr == qualifierSrcMac\\(\\) \\|\\| qualifierMacAddr == " \
      "qualifierDstMac\\(\\)",                                                \
      "603", "formatQualifierMacAddr", MAC_ARGUMENTS)

TEST(MacCellsDeathTest, StopOnAQualifierThatIsNoMacAddress) {
  EXPECT_DEATH((void)format.formatQualifierMacAddr(ShadowOf(), qualifierEtherType), MAC_TYPE_SITE);
  // Checked before any lookup: the missing data is not noticed.
  EXPECT_DEATH((void)format.formatQualifierMacAddr(ShadowOf().statusOnly(qualifierEtherType),
                                                   qualifierEtherType),
               MAC_TYPE_SITE);
  EXPECT_DEATH((void)format.formatQualifierMacAddr(ShadowOf(), QualifierType{}), MAC_TYPE_SITE);
  EXPECT_DEATH((void)format.formatQualifierMacAddr(ShadowOf(), static_cast<QualifierType>(255)),
               MAC_TYPE_SITE);
}

TEST(MacCellsDeathTest, StopOnARecordThatIsNotSet) {
  for (QualifierType const type : macTypes) {
    EXPECT_DEATH((void)format.formatQualifierMacAddr(ShadowOf().unset(type), type),
                 SITE("!!qualData->ethQual\\(\\)", "610", "formatQualifierMacAddr", MAC_ARGUMENTS));
    // A record of another kind counts as a MAC address that is not set.
    EXPECT_DEATH((void)format.formatQualifierMacAddr(ShadowOf().qual(type, 1, 1), type),
                 SITE("!!qualData->ethQual\\(\\)", "610", "formatQualifierMacAddr", MAC_ARGUMENTS));
  }
  EXPECT_DEATH(
      (void)format.formatQualifierEtherType(ShadowOf().unset(qualifierEtherType)),
      SITE("!!qualData->qual\\(\\)", "626", "formatQualifierEtherType", "const PtrConst&"));
}

TEST(MacCellsDeathTest, StopOnTheSpotWhereTheShadowLacksTheData) {
  EXPECT_EXIT(
      (void)format.formatQualifierMacAddr(ShadowOf().statusOnly(qualifierSrcMac), qualifierSrcMac),
      velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
  EXPECT_EXIT((void)format.formatQualifierMacAddr(
                  ShadowOf().statusAndQualifierOnly(qualifierDstMac), qualifierDstMac),
              velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
  EXPECT_EXIT((void)format.formatQualifierEtherType(ShadowOf().statusOnly(qualifierEtherType)),
              velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
}

TEST(MacFormatDeathTest, HasNoRowOfItsOwn) {
  EXPECT_DEATH((void)velmortest::rowOf(format, ShadowOf()),
               SITE("false && \" Call to abstract interface format\"", "596", "formatEntryRequest",
                    "const VelmorTcam::RequestKey&, const VelmorTcam::RuleId&, const String&, "
                    "const PtrConst&, U64"));
}

// A subclass makes its own row.
TEST(MacFormat, LetsASubclassSupplyTheRow) {
  class Own : public MacEntryRequestCliFormat {
   public:
    String formatEntryRequest(const RequestKey&, const RuleId& rule, const String&,
                              const Ptr<const Shadow>& shadow, U64) const override {
      return formatSequenceNum(rule.sequenceNum()) +
             formatQualifierMacAddr(shadow, qualifierSrcMac) + formatQualifierEtherType(shadow) +
             "\n";
    }
  };
  EXPECT_EQ(velmortest::rowOf(Own(), ShadowOf().qual(qualifierEtherType, 0x806, 0xFFFF)),
            "10     |||806h|\n");
}

}  // namespace
}  // namespace VelmorTcam
