#include <gtest/gtest.h>

#include "ShadowFixture.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"

namespace VelmorTcam {
namespace {

using velmortest::IpFormat;
using velmortest::Ptr;
using velmortest::Shadow;
using velmortest::ShadowOf;
using velmortest::String;

IpFormat const format;

// Every status that is not 7.
constexpr U8 absentStatuses[] = {0, 1, 2, 3, 4, 5, 6, 8, 255};

TEST(SequenceCell, IsSevenWideAndNamesTheDropRule) {
  struct Row {
    U32 number;
    const char* cell;
  };
  Row const rows[] = {
      {0, "0      |"},
      {10, "10     |"},
      {9999999, "9999999|"},
      {10000000, "10000000|"},
      {4294967294, "4294967294|"},
      {4294967295, "Drop   |"},
  };
  for (auto const& row : rows) EXPECT_EQ(format.formatSequenceNum(row.number), row.cell);
}

TEST(ProtocolCell, NamesTheProtocolsItKnows) {
  struct Row {
    U32 value;
    const char* cell;
  };
  Row const rows[] = {
      {0, " *     |"},     {6, " TCP   |"},   {17, " UDP   |"},
      {1, " ICMP  |"},     {58, " ICMPv6|"},  {47, " 0x2f  |"},
      {2, " 0x02  |"},     {255, " 0xff  |"}, {0xABCD06, " TCP   |"},  // only the low 8 bits count
      {0x100, " *     |"},
  };
  for (auto const& row : rows) {
    for (U32 const mask : {0U, 0xFFU, 0xFFFFFFFFU}) {  // the mask is not read
      EXPECT_EQ(
          format.formatQualifierIpProtocol(ShadowOf().qual(qualifierIpProtocol, row.value, mask)),
          row.cell);
    }
  }
  EXPECT_EQ(format.formatQualifierIpProtocol(ShadowOf()), " *     |");
}

TEST(TcpControlCell, ShowsALetterForEachFlagAndIsBlankWhenAbsent) {
  struct Row {
    U32 value;
    const char* cell;
  };
  Row const rows[] = {
      {0, "       |"},      {1, " F     |"},      {2, "  S    |"},
      {4, "   R   |"},      {8, "    P  |"},      {16, "     A |"},
      {32, "      U|"},     {18, "  S  A |"},     {63, " FSRPAU|"},
      {0xFFC0, "       |"}, {0xFFFF, " FSRPAU|"}, {0x30000, "       |"},  // only the low 16 bits
  };
  for (auto const& row : rows) {
    for (U32 const mask : {0U, 63U}) {
      EXPECT_EQ(
          format.formatQualifierTcpControl(ShadowOf().qual(qualifierTcpControl, row.value, mask)),
          row.cell);
    }
  }
  EXPECT_EQ(format.formatQualifierTcpControl(ShadowOf()), "       |");
}

TEST(VlanCells, PrintIdAndMaskWhateverTheyAre) {
  struct Row {
    U32 value;
    U32 mask;
    const char* cells;
  };
  Row const rows[] = {
      {100, 4095, "        100|       4095|"},
      {0, 0, "          0|          0|"},
      {4294967295, 4294967295, " 4294967295| 4294967295|"},
      {2147483648, 1, " 2147483648|          1|"},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(format.formatQualifierOuterVlanId(
                  ShadowOf().qual(qualifierOuterVlanId, row.value, row.mask)),
              row.cells);
  }
  EXPECT_EQ(format.formatQualifierOuterVlanId(ShadowOf()), "          *|          *|");
}

TEST(RangeCheckCell, IsThereOnlyWhereProgrammed) {
  EXPECT_EQ(format.formatQualifierRangeCheck(ShadowOf(), rangeCheckerL4SrcPort), "");
  for (U8 const status : absentStatuses) {
    EXPECT_EQ(format.formatQualifierRangeCheck(ShadowOf().range(rangeCheckerIpLength, 1, 2, status),
                                               rangeCheckerIpLength),
              "");
  }
  struct Row {
    S32 low;
    S32 high;
    const char* cell;
  };
  Row const rows[] = {
      {64, 1500, "    64-1500|"},
      {0, 0, "        0-0|"},
      {-1, 65535, "   -1-65535|"},
      {-2147483647 - 1, 2147483647, "-2147483648-2147483647|"},
  };
  for (auto const& row : rows) {
    for (auto type : {rangeCheckerL4SrcPort, rangeCheckerL4DstPort, rangeCheckerIpLength}) {
      EXPECT_EQ(format.formatQualifierRangeCheck(ShadowOf().range(type, row.low, row.high), type),
                row.cell);
    }
  }
}

TEST(IpLengthCell, PutsTheRangeCellBarAndAllIntoTheCallersFormat) {
  ShadowOf const with = ShadowOf().range(rangeCheckerIpLength, 64, 1500);
  EXPECT_EQ(format.formatQualifierIpLength(with, "%11s|"), "    64-1500||");
  EXPECT_EQ(format.formatQualifierIpLength(with, "%13s|"), "     64-1500||");
  EXPECT_EQ(format.formatQualifierIpLength(with, "%s"), "    64-1500|");
  EXPECT_EQ(format.formatQualifierIpLength(ShadowOf(), "%11s|"), "          *|");
  EXPECT_EQ(format.formatQualifierIpLength(ShadowOf(), "%13s|"), "            *|");
}

TEST(IpLengthCellDeathTest, StopsOnAnEmptyFormatAndOnOneThatDoesNotFit) {
  EXPECT_DEATH((void)format.formatQualifierIpLength(ShadowOf(), ""),
               "^assertion failed: !formatStr.empty\\(\\) at "
               "VelmorTcamManagerBase/VelmorTcamCliTypes:422 in virtual Zel::String "
               "VelmorTcam::EntryRequestCliFormat::formatQualifierIpLength\\(const PtrConst&, "
               "const String&\\) const\n$");
  for (const char* bad : {"%d|", "%s%s", "none", "%", "%n"}) {
    EXPECT_DEATH((void)format.formatQualifierIpLength(ShadowOf(), bad),
                 "^assertion failed: the format's conversions fit its arguments at "
                 "platform/Zel/Format:0 in Halvo::String Zel::_fmt\\(RuntimeFormat, "
                 "const Args&\\.\\.\\.\\)\n$");
  }
}

// Both port cells use one algorithm: each row runs for both, with each one's own range checker.
TEST(PortCells, PrintPortsRangesAndAny) {
  struct Row {
    U32 value;
    U32 mask;
    const char* cell;
  };
  Row const rows[] = {
      {80, 65535, "         80|"},
      {0, 0, "          *|"},
      {80, 0, "   80-65535|"},
      {0, 65280, "      0-255|"},
      {0, 65535, "          0|"},
      {65535, 65535, "      65535|"},
      {65535, 0, "      65535|"},
      {1024, 64512, "  1024-2047|"},
      {3, 255, "    3-65283|"},
      {1, 0xFF0F, "      1-241|"},          // free bits in the middle
      {0xABC0050, 0xFFFF, "         80|"},  // low 16 bits of value and mask only
      {80, 0xABCFFFF, "         80|"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.cell);
    EXPECT_EQ(
        format.formatQualifierL4SrcPort(ShadowOf().qual(qualifierL4SrcPort, row.value, row.mask)),
        row.cell);
    EXPECT_EQ(
        format.formatQualifierL4DstPort(ShadowOf().qual(qualifierL4DstPort, row.value, row.mask)),
        row.cell);
  }
  EXPECT_EQ(format.formatQualifierL4SrcPort(ShadowOf()), "          *|");
  EXPECT_EQ(format.formatQualifierL4DstPort(ShadowOf()), "          *|");
}

TEST(PortCells, ProgrammedRangeCheckerWinsOverTheQualifier) {
  ShadowOf const shadow = ShadowOf()
                              .qual(qualifierL4SrcPort, 80, 65535)
                              .qual(qualifierL4DstPort, 81, 65535)
                              .range(rangeCheckerL4SrcPort, 1000, 2000)
                              .range(rangeCheckerL4DstPort, 3000, 4000);
  EXPECT_EQ(format.formatQualifierL4SrcPort(shadow), "  1000-2000|");
  EXPECT_EQ(format.formatQualifierL4DstPort(shadow), "  3000-4000|");
  EXPECT_EQ(
      format.formatQualifierL4SrcPort(
          ShadowOf().qual(qualifierL4SrcPort, 80, 65535).range(rangeCheckerL4SrcPort, 1, 2, 6)),
      "         80|");
}

struct IcmpRow {
  const char* name;
  U32 protocol;
  bool withSrc;
  U32 srcValue;
  U32 srcMask;
  bool withDst;
  U32 dstValue;
  U32 dstMask;
  const char* srcCell;
  const char* dstCell;
};

TEST(PortCells, ShowIcmpTypeAndCode) {
  IcmpRow const rows[] = {
      {"type", 1, true, 2048, 65280, false, 0, 0, "          8|", "          *|"},
      {"type and code", 1, true, 0x0300, 0xFF00, true, 3, 255, "          3|", "          3|"},
      {"ICMPv6", 58, true, 0x8700, 0xFF00, true, 1, 255, "        135|", "          1|"},
      {"type 0", 1, true, 0, 0xFF00, false, 0, 0, "          0|", "          *|"},
      {"type with a partial mask", 1, true, 0x0800, 0x0100, false, 0, 0, "          8|",
       "          *|"},
      // If the source port is not programmed, the code shows as a port.
      {"code alone, full mask", 1, false, 0, 0, true, 3, 65535, "          *|", "          3|"},
      {"code alone, byte mask", 1, false, 0, 0, true, 3, 255, "          *|", "    3-65283|"},
      {"code beside an any-port source", 1, true, 0, 0, true, 3, 255, "          *|",
       "          3|"},
      {"code in a full-mask qualifier", 1, true, 0x0800, 0xFF00, true, 0x0103, 65535,
       "          8|", "          3|"},
      // If the mask leaves the byte free, the cell shows a port.
      {"type byte free", 1, true, 5, 0x00FF, true, 0x0300, 0xFF00, "    5-65285|", "   768-1023|"},
      {"not ICMP", 6, true, 2048, 65280, true, 3, 255, "  2048-2303|", "    3-65283|"},
      {"protocol beyond 8 bits", 0x101, true, 2048, 65280, false, 0, 0, "          8|",
       "          *|"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    ShadowOf shadow;
    shadow.qual(qualifierIpProtocol, row.protocol, 255);
    if (row.withSrc) shadow.qual(qualifierL4SrcPort, row.srcValue, row.srcMask);
    if (row.withDst) shadow.qual(qualifierL4DstPort, row.dstValue, row.dstMask);
    EXPECT_EQ(format.formatQualifierL4SrcPort(shadow), row.srcCell);
    EXPECT_EQ(format.formatQualifierL4DstPort(shadow), row.dstCell);
  }
}

TEST(L4PortIfIcmp, LeavesTheFlagAloneUnlessThereIsATypeOrCode) {
  struct Row {
    const char* name;
    ShadowOf shadow;
    QualifierType port;
    U16 number;
    bool isIcmp;
  };
  auto const icmp = [] { return ShadowOf().qual(qualifierIpProtocol, 1, 255); };
  Row const rows[] = {
      {"no protocol", ShadowOf().qual(qualifierL4SrcPort, 2048, 65280), qualifierL4SrcPort, 0,
       false},
      {"no source port, asked about the destination", icmp().qual(qualifierL4DstPort, 3, 65535),
       qualifierL4DstPort, 0, false},
      {"protocol not programmed",
       ShadowOf().qual(qualifierIpProtocol, 1, 255, 6).qual(qualifierL4SrcPort, 2048, 65280),
       qualifierL4SrcPort, 0, false},
      {"source port not programmed",
       icmp().qual(qualifierL4SrcPort, 2048, 65280, 0).qual(qualifierL4DstPort, 3, 255),
       qualifierL4DstPort, 0, false},
      {"TCP", ShadowOf().qual(qualifierIpProtocol, 6, 255).qual(qualifierL4SrcPort, 2048, 65280),
       qualifierL4SrcPort, 0, false},
      {"type", icmp().qual(qualifierL4SrcPort, 0x08FF, 65280), qualifierL4SrcPort, 8, true},
      {"code", icmp().qual(qualifierL4SrcPort, 0, 0).qual(qualifierL4DstPort, 0xFF03, 255),
       qualifierL4DstPort, 3, true},
      {"type byte free", icmp().qual(qualifierL4SrcPort, 0x0800, 255), qualifierL4SrcPort, 0,
       false},
      {"code byte free",
       icmp().qual(qualifierL4SrcPort, 0x0800, 65280).qual(qualifierL4DstPort, 3, 65280),
       qualifierL4DstPort, 0, false},
      {"mask beyond 16 bits", icmp().qual(qualifierL4SrcPort, 0x0800, 0xFF0000), qualifierL4SrcPort,
       0, false},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    for (bool const before : {false, true}) {
      bool isIcmp = before;
      EXPECT_EQ(getQualifierL4PortIfIcmp(row.shadow, row.port, isIcmp), row.number);
      EXPECT_EQ(isIcmp, row.isIcmp || before);
    }
  }
}

// Every cell takes each status but 7 for absent.
TEST(CommonCells, TakeEveryOtherStatusForAbsent) {
  for (U8 const status : absentStatuses) {
    SCOPED_TRACE(int{status});
    ShadowOf const shadow = ShadowOf()
                                .qual(qualifierIpProtocol, 6, 255, status)
                                .qual(qualifierTcpControl, 63, 63, status)
                                .qual(qualifierOuterVlanId, 5, 4095, status)
                                .qual(qualifierL4SrcPort, 80, 65535, status)
                                .qual(qualifierL4DstPort, 80, 65535, status);
    EXPECT_EQ(format.formatQualifierIpProtocol(shadow), " *     |");
    EXPECT_EQ(format.formatQualifierTcpControl(shadow), "       |");
    EXPECT_EQ(format.formatQualifierOuterVlanId(shadow), "          *|          *|");
    EXPECT_EQ(format.formatQualifierL4SrcPort(shadow), "          *|");
    EXPECT_EQ(format.formatQualifierL4DstPort(shadow), "          *|");
  }
}

// The port cells call the virtual range check, which a subclass may override.
class OwnRangeCheck : public IpFormat {
 public:
  String formatQualifierRangeCheck(const Ptr<const Shadow>&, RangeCheckerType type) const override {
    return type == rangeCheckerL4SrcPort ? "src|" : type == rangeCheckerL4DstPort ? "dst|" : "len|";
  }
};

TEST(CommonCells, AskTheVirtualRangeCheck) {
  OwnRangeCheck const own;
  EXPECT_EQ(own.formatQualifierL4SrcPort(ShadowOf()), "src|");
  EXPECT_EQ(own.formatQualifierL4DstPort(ShadowOf()), "dst|");
  EXPECT_EQ(own.formatQualifierIpLength(ShadowOf(), "%5s|"), " len||");
}

TEST(CommonCells, LeaveNoReferenceBehind) {
  ShadowOf const shadow = ShadowOf().qual(qualifierIpProtocol, 6, 255);
  auto const status = shadow->qualifier(qualifierIpProtocol);
  auto const data = status->hwQualData(qualifierIpProtocol);
  (void)format.formatQualifierIpProtocol(shadow);
  EXPECT_EQ(status->useCount(), 2U);
  EXPECT_EQ(data->useCount(), 2U);
}

#define CELL_SITE(OPERATION)                                                                    \
  "^assertion failed: !!qualData->qual\\(\\) at VelmorTcamManagerBase/VelmorTcamCliTypes:0 in " \
  "virtual Zel::String VelmorTcam::EntryRequestCliFormat::" OPERATION                           \
  "\\(const PtrConst&\\) const\n$"

TEST(CommonCellsDeathTest, StopOnARecordThatIsNotSet) {
  EXPECT_DEATH((void)format.formatQualifierIpProtocol(ShadowOf().unset(qualifierIpProtocol)),
               CELL_SITE("formatQualifierIpProtocol"));
  EXPECT_DEATH((void)format.formatQualifierTcpControl(ShadowOf().unset(qualifierTcpControl)),
               CELL_SITE("formatQualifierTcpControl"));
  EXPECT_DEATH((void)format.formatQualifierOuterVlanId(ShadowOf().unset(qualifierOuterVlanId)),
               CELL_SITE("formatQualifierOuterVlanId"));
  EXPECT_DEATH((void)format.formatQualifierL4SrcPort(ShadowOf().unset(qualifierL4SrcPort)),
               CELL_SITE("formatQualifierL4SrcPort"));
  EXPECT_DEATH((void)format.formatQualifierL4DstPort(ShadowOf().unset(qualifierL4DstPort)),
               CELL_SITE("formatQualifierL4DstPort"));
}

TEST(L4PortIfIcmpDeathTest, StopsOnARecordThatIsNotSet) {
  bool isIcmp = false;
#define ICMP_SITE(LINE)                                                                         \
  "^assertion failed: !!qualData->qual\\(\\) at VelmorTcamManagerBase/VelmorTcamCliTypes:" LINE \
  " in U16 VelmorTcam::getQualifierL4PortIfIcmp\\(const PtrConst&, "                            \
  "VelmorTcam::QualifierType, bool&\\)\n$"
  EXPECT_DEATH((void)getQualifierL4PortIfIcmp(
                   ShadowOf().qual(qualifierIpProtocol, 1).unset(qualifierL4SrcPort),
                   qualifierL4SrcPort, isIcmp),
               ICMP_SITE("27"));
  EXPECT_DEATH((void)getQualifierL4PortIfIcmp(
                   ShadowOf().unset(qualifierIpProtocol).qual(qualifierL4SrcPort, 1),
                   qualifierL4SrcPort, isIcmp),
               ICMP_SITE("0"));
}

TEST(CommonCellsDeathTest, StopOnTheSpotWhereTheShadowLacksTheData) {
  EXPECT_EXIT((void)format.formatQualifierIpProtocol(ShadowOf().statusOnly(qualifierIpProtocol)),
              velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
  EXPECT_EXIT((void)format.formatQualifierIpProtocol(
                  ShadowOf().statusAndQualifierOnly(qualifierIpProtocol)),
              velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
}

}  // namespace
}  // namespace VelmorTcam
