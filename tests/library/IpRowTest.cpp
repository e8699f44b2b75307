#include <gtest/gtest.h>

#include "ShadowFixture.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"

namespace VelmorTcam {
namespace {

using velmortest::IpFormat;
using velmortest::Ptr;
using velmortest::rowOf;
using velmortest::Shadow;
using velmortest::ShadowOf;
using velmortest::String;

constexpr const char* emptyFirst =
    "5         |10     | *     |              *|              *|          *|          *|          "
    "*|";
constexpr const char* emptySecond =
    "          |   *   |       |              *|              *|          *|          *|";

TEST(IpRow, ShowsAnEntryThatMatchesEverything) {
  EXPECT_EQ(rowOf(IpFormat(), ShadowOf(5)),
            std::string(emptyFirst) + "\n" + emptySecond + "permit\n");
}

TEST(IpRow, ShowsHitsOnlyWhereTheCountersAreProgrammed) {
  EXPECT_EQ(rowOf(IpFormat(), ShadowOf(5).counters(), 10, 42),
            std::string(emptyFirst) + "         42\n" + emptySecond + "permit\n");
  EXPECT_EQ(rowOf(IpFormat(), ShadowOf(5).counters(), 10, 0xFFFFFFFFFFFFFFFF),
            std::string(emptyFirst) + "18446744073709551615\n" + emptySecond + "permit\n");
  for (U8 const status : std::initializer_list<U8>{0, 1, 6, 8, 255}) {
    EXPECT_EQ(rowOf(IpFormat(), ShadowOf(5).counters(status), 10, 42),
              std::string(emptyFirst) + "\n" + emptySecond + "permit\n");
  }
}

TEST(IpRow, PrintsTheCallersHitsNotTheCounters) {
  ShadowOf const shadow = ShadowOf(5).counters();
  shadow->countersIs(CounterSet(777, 888));
  EXPECT_NE(rowOf(IpFormat(), shadow, 10, 42).find("         42\n"), std::string::npos);
}

TEST(IpRow, ShowsEveryCell) {
  ShadowOf const shadow = ShadowOf(18446744073709551615U)
                              .qual(qualifierIpProtocol, 6, 255)
                              .qual(qualifierSrcIp, 0xC0A80000, 0xFFFF0000)
                              .qual(qualifierDstIp, 0x0A000001, 0xFFFFFFFF)
                              .qual(qualifierL4SrcPort, 1024, 64512)
                              .qual(qualifierL4DstPort, 443, 65535)
                              .qual(qualifierOuterVlanId, 100, 4095)
                              .qual(qualifierDSCP, 46, 63)
                              .qual(qualifierIpFrag, 2)
                              .qual(qualifierTcpControl, 18, 63)
                              .range(rangeCheckerIpLength, 64, 1500)
                              .counters();
  EXPECT_EQ(rowOf(IpFormat("permit|"), shadow, 4294967295, 1234567),
            "18446744073709551615|Drop   | TCP   |    192.168.0.0|    255.255.0.0|  1024-2047|"
            "        100|       4095|    1234567\n"
            "   46/0x3F|   N   |  S  A |       10.0.0.1|              *|        443|    64-1500||"
            "permit|\n");
}

TEST(IpRow, LinesUpWithTheHeaderUpToTheVlanCells) {
  initializeCliHeaders();
  std::string const header = getCliHeader(cliHeaderTypeIp).str();
  std::string const row = rowOf(IpFormat(), ShadowOf(5));
  auto const bars = [](const std::string& text, std::size_t line) {
    std::size_t const from = line == 0 ? 0 : text.find('\n') + 1;
    std::size_t const to = text.find('\n', from);
    std::vector<std::size_t> at;
    for (std::size_t i = from; i < to; ++i) {
      if (text[i] == '|') at.push_back(i - from);
    }
    return at;
  };
  auto const headerFirst = bars(header, 0);
  auto const rowFirst = bars(row, 0);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(rowFirst[i], headerFirst[i]);
  EXPECT_EQ(rowFirst[7], headerFirst[7] + 4);
  EXPECT_EQ(bars(row, 1), bars(header, 1));
}

TEST(IpRow, TakesTheCellsOfASubclass) {
  class Own : public IpFormat {
   public:
    String formatSequenceNum(U32) const override { return "seq|"; }
    String formatQualifierIpProtocol(const Ptr<const Shadow>&) const override { return "proto|"; }
    String formatQualifierSrcIp(const Ptr<const Shadow>&) const override { return "sip|"; }
    String formatQualifierL4SrcPort(const Ptr<const Shadow>&) const override { return "sport|"; }
    String formatQualifierOuterVlanId(const Ptr<const Shadow>&) const override { return "vlan|"; }
    String formatQualifierDSCP(const Ptr<const Shadow>&) const override { return "tos|"; }
    String formatQualifierIpFrag(const Ptr<const Shadow>&) const override { return "frag|"; }
    String formatQualifierTcpControl(const Ptr<const Shadow>&) const override { return "flags|"; }
    String formatQualifierDstIp(const Ptr<const Shadow>&) const override { return "dip|"; }
    String formatQualifierL4DstPort(const Ptr<const Shadow>&) const override { return "dport|"; }
    String formatQualifierIpLength(const Ptr<const Shadow>&, const String& text) const override {
      return text + "len|";
    }
    String formatActions(const Ptr<const Shadow>&) const override { return "action"; }
  };
  EXPECT_EQ(rowOf(Own(), ShadowOf(1)),
            "1         |seq|proto|sip|sport|vlan|\ntos|frag|flags|dip|dport|%11s|len|action\n");
}

TEST(IpRow, KeepsALongActionAndNulBytes) {
  std::string const action(3000, 'a');
  std::string const row = rowOf(IpFormat(action), ShadowOf(5));
  EXPECT_EQ(row, std::string(emptyFirst) + "\n" + emptySecond + action + "\n");
  EXPECT_EQ(rowOf(IpFormat(String("a\0b", 3)), ShadowOf(5)),
            std::string(emptyFirst) + "\n" + emptySecond + std::string("a\0b\n", 4));
}

TEST(IpRow, LeavesNoReferenceBehind) {
  std::vector<Ptr<const Shadow>> shadows;
  shadows.push_back(velmortest::fullShadow());
  shadows.push_back(velmortest::icmpShadow());
  for (auto const& shadow : shadows) {
    (void)rowOf(IpFormat(), shadow);
    std::vector<U32> const after = velmortest::useCounts(*shadow);
    EXPECT_EQ(after, std::vector<U32>(after.size(), 1));
  }
}

struct AddressRow {
  const char* name;
  U32 value;
  U32 mask;
  const char* cells;
};

TEST(IpAddressCells, PrintAddressAndMask) {
  AddressRow const rows[] = {
      {"host", 0x0A000001, 0xFFFFFFFF, "       10.0.0.1|              *|"},
      {"prefix", 0xC0A80000, 0xFFFF0000, "    192.168.0.0|    255.255.0.0|"},
      {"any, value left over", 0x0A000001, 0, "              *|              *|"},
      {"any", 0, 0, "              *|              *|"},
      {"host 0.0.0.0", 0, 0xFFFFFFFF, "        0.0.0.0|              *|"},
      {"widest", 0xFFFFFFFF, 0xFFFFFFFE, "255.255.255.255|255.255.255.254|"},
      {"not contiguous", 0x0A0B0C0D, 0xFF00FF00, "    10.11.12.13|    255.0.255.0|"},
      {"not masked", 0x0A0B0C0D, 0xFF000000, "    10.11.12.13|      255.0.0.0|"},
      {"lowest bit", 1, 1, "        0.0.0.1|        0.0.0.1|"},
  };
  IpFormat const format;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(format.formatQualifierSrcIp(ShadowOf().qual(qualifierSrcIp, row.value, row.mask)),
              row.cells);
    EXPECT_EQ(format.formatQualifierDstIp(ShadowOf().qual(qualifierDstIp, row.value, row.mask)),
              row.cells);
    for (U8 const status : std::initializer_list<U8>{0, 6, 8, 255}) {
      ShadowOf const absent = ShadowOf()
                                  .qual(qualifierSrcIp, row.value, row.mask, status)
                                  .qual(qualifierDstIp, row.value, row.mask, status);
      EXPECT_EQ(format.formatQualifierSrcIp(absent), "              *|              *|");
      EXPECT_EQ(format.formatQualifierDstIp(absent), "              *|              *|");
    }
  }
  EXPECT_EQ(format.formatQualifierSrcIp(ShadowOf()), "              *|              *|");
  EXPECT_EQ(format.formatQualifierDstIp(ShadowOf()), "              *|              *|");
}

TEST(DscpCell, PrintsValueAndMaskAndIsBlankWhenAbsent) {
  struct Row {
    U32 value;
    U32 mask;
    const char* cell;
  };
  Row const rows[] = {
      {46, 63, "   46/0x3F|"},
      {0, 0, "    0/0x00|"},
      {10, 0xFF, "   10/0xFF|"},
      {1, 0xABC, "   1/0xABC|"},
      {4294967295, 4294967295, "-1/0xFFFFFFFF|"},
      {2147483648, 1, "-2147483648/0x01|"},
  };
  IpFormat const format;
  velmortest::Ip6Format const format6;
  for (auto const& row : rows) {
    ShadowOf const shadow = ShadowOf().qual(qualifierDSCP, row.value, row.mask);
    EXPECT_EQ(format.formatQualifierDSCP(shadow), row.cell);
    EXPECT_EQ(format6.formatQualifierDSCP(shadow), row.cell);
  }
  EXPECT_EQ(format.formatQualifierDSCP(ShadowOf()), "          |");
  EXPECT_EQ(format6.formatQualifierDSCP(ShadowOf()), "          |");
  EXPECT_EQ(format.formatQualifierDSCP(ShadowOf().qual(qualifierDSCP, 46, 63, 6)), "          |");
}

TEST(FragmentCell, KnowsThreeStates) {
  struct Row {
    U32 value;
    const char* cell;
  };
  Row const rows[] = {{0, "   *   |"}, {1, "   N   |"}, {2, "   N   |"},
                      {3, "   Y   |"}, {4, "   *   |"}, {0x101, "   *   |"}};
  IpFormat const format;
  for (auto const& row : rows) {
    EXPECT_EQ(format.formatQualifierIpFrag(ShadowOf().qual(qualifierIpFrag, row.value)), row.cell);
    EXPECT_EQ(format.formatQualifierIpFrag(ShadowOf().qual(qualifierIpFrag, row.value, 0)),
              row.cell);
  }
  EXPECT_EQ(format.formatQualifierIpFrag(ShadowOf()), "   *   |");
  EXPECT_EQ(format.formatQualifierIpFrag(ShadowOf().qual(qualifierIpFrag, 3, 0, 0)), "   *   |");
}

#define CELL_SITE(CLASS, OPERATION)                                                             \
  "^assertion failed: !!qualData->qual\\(\\) at VelmorTcamManagerBase/VelmorTcamCliTypes:0 in " \
  "virtual Zel::String VelmorTcam::" CLASS "::" OPERATION "\\(const PtrConst&\\) const\n$"

TEST(IpCellsDeathTest, StopOnARecordThatIsNotSet) {
  IpFormat const format;
  velmortest::Ip6Format const format6;
  EXPECT_DEATH((void)format.formatQualifierSrcIp(ShadowOf().unset(qualifierSrcIp)),
               CELL_SITE("IpEntryRequestCliFormat", "formatQualifierSrcIp"));
  EXPECT_DEATH((void)format.formatQualifierDstIp(ShadowOf().unset(qualifierDstIp)),
               CELL_SITE("IpEntryRequestCliFormat", "formatQualifierDstIp"));
  EXPECT_DEATH((void)format.formatQualifierDSCP(ShadowOf().unset(qualifierDSCP)),
               CELL_SITE("IpEntryRequestCliFormat", "formatQualifierDSCP"));
  EXPECT_DEATH((void)format6.formatQualifierDSCP(ShadowOf().unset(qualifierDSCP)),
               CELL_SITE("Ip6EntryRequestCliFormat", "formatQualifierDSCP"));
  EXPECT_DEATH((void)format.formatQualifierIpFrag(ShadowOf().unset(qualifierIpFrag)),
               CELL_SITE("IpEntryRequestCliFormat", "formatQualifierIpFrag"));
}

}  // namespace
}  // namespace VelmorTcam
