#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ShadowFixture.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"

namespace VelmorTcam {
namespace {

using velmortest::Ip6Format;
using velmortest::Ptr;
using velmortest::rowOf;
using velmortest::Shadow;
using velmortest::ShadowOf;
using velmortest::String;

constexpr const char* anyAddress = "                                      *|            *|";
constexpr const char* allOnes = "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff";

constexpr const char* emptyFirst =
    "5    |10       | *     |                                      *|            *|          *|"
    "          *|          *|";
constexpr const char* emptySecond =
    "     |          |       |                                      *|            *|          *|";
constexpr const char* emptyThird =
    "     |          |       |                                       |            *|           |";

std::string emptyRow(const std::string& hits = "", const std::string& action = "permit") {
  return emptyFirst + hits + "\n" + emptySecond + action + "\n" + emptyThird + "\n";
}

TEST(Ip6Row, ShowsAnEntryThatMatchesEverything) {
  EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5)), emptyRow());
}

TEST(Ip6Row, ShowsHitsOnlyWhereTheCountersAreProgrammed) {
  EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5).counters(), 10, 42), emptyRow("         42"));
  EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5).counters(), 10, 0), emptyRow("          0"));
  EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5).counters(), 10, 0xFFFFFFFFFFFFFFFF),
            emptyRow("18446744073709551615"));
  for (U8 const status : std::initializer_list<U8>{0, 1, 6, 8, 255}) {
    SCOPED_TRACE(int{status});
    EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5).counters(status), 10, 42), emptyRow());
  }
}

TEST(Ip6Row, PrintsTheCallersHitsNotTheCounters) {
  ShadowOf const shadow = ShadowOf(5).counters();
  shadow->countersIs(CounterSet(777, 888));
  EXPECT_EQ(rowOf(Ip6Format(), shadow, 10, 42), emptyRow("         42"));
}

TEST(Ip6Row, ShowsEveryCell) {
  ShadowOf const shadow =
      ShadowOf(18446744073709551615U)
          .qual(qualifierIpProtocol, 6, 255)
          .ip6(qualifierSrcIp6, "2001:db8:1234:5678::1", "ffff:ffff:ffff:ffff::")
          .ip6(qualifierDstIp6, "2001:db8:ffff:ffff:ffff:ffff:ffff:fffe", allOnes)
          .qual(qualifierL4SrcPort, 1024, 64512)
          .qual(qualifierL4DstPort, 443, 65535)
          .qual(qualifierOuterVlanId, 100, 4095)
          .qual(qualifierTcpControl, 18, 63)
          .qual(qualifierIp6TrafficClass, 10, 255)
          .qual(qualifierIp6HopLimit, 64, 255)
          .range(rangeCheckerIpLength, 64, 1500)
          .counters();
  EXPECT_EQ(rowOf(Ip6Format("permit|"), shadow, 4294967295, 1234567),
            "18446744073709551615|Drop     | TCP   |                  2001:db8:1234:5678::1|"
            "           64|  1024-2047|        100|       4095|    1234567\n"
            "     |          |  S  A | 2001:db8:ffff:ffff:ffff:ffff:ffff:fffe|            *|"
            "        443|permit|\n"
            "     |  10/0xFF |       |                                       |     64-1500||"
            "         64|\n");
}

TEST(Ip6Row, DoesNotShowTheDscp) {
  EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5).qual(qualifierDSCP, 46, 63)), emptyRow());
  // The row does not even read it: a record that is not set does not stop the process.
  EXPECT_EQ(rowOf(Ip6Format(), ShadowOf(5).unset(qualifierDSCP)), emptyRow());
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    std::size_t const to = text.find('\n', from);
    lines.push_back(text.substr(from, to - from));
    from = to + 1;
  }
  return lines;
}

std::vector<std::size_t> barsOf(const std::string& line) {
  std::vector<std::size_t> at;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '|') at.push_back(i);
  }
  return at;
}

TEST(Ip6Row, EndsEachOfItsThreeLines) {
  std::string const row = rowOf(Ip6Format(), ShadowOf(5).counters());
  EXPECT_EQ(std::count(row.begin(), row.end(), '\n'), 3);
  EXPECT_EQ(row.back(), '\n');
}

// Up to the VLAN cells, the first line stands under its header. From their second cell on, the
// other two lines stand one column to the right of theirs.
TEST(Ip6Row, StandsBesideTheHeaderAsScriptsKnowIt) {
  initializeCliHeaders();
  std::vector<std::string> const header = linesOf(getCliHeader(cliHeaderTypeIp6).str());
  std::vector<std::string> const row = linesOf(rowOf(Ip6Format(), ShadowOf(5)));
  ASSERT_EQ(header.size(), 3u);
  ASSERT_EQ(row.size(), 3u);

  std::vector<std::size_t> const headerFirst = barsOf(header[0]);
  std::vector<std::size_t> const rowFirst = barsOf(row[0]);
  ASSERT_EQ(headerFirst.size(), 8u);
  ASSERT_EQ(rowFirst.size(), 8u);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(rowFirst[i], headerFirst[i]);
  EXPECT_EQ(rowFirst[6], headerFirst[6] + 3);
  EXPECT_EQ(rowFirst[7], headerFirst[7] + 4);

  for (std::size_t line = 1; line < 3; ++line) {
    SCOPED_TRACE(line);
    std::vector<std::size_t> const headerBars = barsOf(header[line]);
    std::vector<std::size_t> const rowBars = barsOf(row[line]);
    ASSERT_EQ(rowBars.size(), headerBars.size());
    EXPECT_EQ(rowBars[0], headerBars[0]);
    for (std::size_t i = 1; i < rowBars.size(); ++i) EXPECT_EQ(rowBars[i], headerBars[i] + 1);
  }
  // The flags stand under a blank header; the header "Flags" stands over a blank cell.
  std::string const flags =
      linesOf(rowOf(Ip6Format(), ShadowOf(5).qual(qualifierTcpControl, 2, 63)))[1];
  EXPECT_EQ(header[1].find("Flags"), 7u);
  EXPECT_EQ(flags.find('S'), 19u);
}

class OwnCells : public Ip6Format {
 public:
  String formatSequenceNum(U32) const override { return "seq|"; }
  String formatQualifierIpProtocol(const Ptr<const Shadow>&) const override { return "proto|"; }
  String formatQualifierSrcIp6(const Ptr<const Shadow>&) const override { return "sip|"; }
  String formatQualifierL4SrcPort(const Ptr<const Shadow>&) const override { return "sport|"; }
  String formatQualifierOuterVlanId(const Ptr<const Shadow>&) const override { return "vlan|"; }
  String formatQualifierDSCP(const Ptr<const Shadow>&) const override { return "dscp|"; }
  String formatQualifierTcpControl(const Ptr<const Shadow>&) const override { return "flags|"; }
  String formatQualifierDstIp6(const Ptr<const Shadow>&) const override { return "dip|"; }
  String formatQualifierL4DstPort(const Ptr<const Shadow>&) const override { return "dport|"; }
  String formatQualifierIp6TrafficClass(const Ptr<const Shadow>&) const override { return "tc|"; }
  String formatQualifierIpLength(const Ptr<const Shadow>&, const String& text) const override {
    return text + "len|";
  }
  String formatQualifierIp6HopLimit(const Ptr<const Shadow>&) const override { return "hop|"; }
  String formatActions(const Ptr<const Shadow>&) const override { return "action"; }
};

// A subclass can change every cell but the sequence: the row always uses its own.
TEST(Ip6Row, TakesTheCellsOfASubclassButForTheSequence) {
  EXPECT_EQ(rowOf(OwnCells(), ShadowOf(1)),
            "1    |10       |proto|sip|sport|vlan|\n"
            "     |          |flags|dip|dport|action\n"
            "     |tc|       |                                       |%13s|len|hop|\n");
}

// A subclass that overrides the range check changes the port cells and the length.
TEST(Ip6Row, AsksTheVirtualRangeCheck) {
  class Own : public Ip6Format {
   public:
    String formatQualifierRangeCheck(const Ptr<const Shadow>&,
                                     RangeCheckerType type) const override {
      return type == rangeCheckerL4SrcPort   ? "src|"
             : type == rangeCheckerL4DstPort ? "dst|"
                                             : "len|";
    }
  };
  EXPECT_EQ(rowOf(Own(), ShadowOf(5)),
            std::string("5    |10       | *     |") + anyAddress +
                "src|          *|          *|\n     |          |       |" + anyAddress +
                "dst|permit\n"
                "     |          |       |                                       |         len||"
                "           |\n");
}

TEST(Ip6Row, KeepsALongActionAndNulBytes) {
  std::string const action(3000, 'a');
  EXPECT_EQ(rowOf(Ip6Format(action), ShadowOf(5)), emptyRow("", action));
  EXPECT_EQ(rowOf(Ip6Format(String("a\0b", 3)), ShadowOf(5)), emptyRow("", std::string("a\0b", 3)));
  EXPECT_EQ(rowOf(Ip6Format(""), ShadowOf(5)), emptyRow("", ""));
}

TEST(Ip6SequenceCell, IsNineWide) {
  struct Row {
    U32 number;
    const char* cell;
  };
  Row const rows[] = {
      {0, "0        |"},           {10, "10       |"},          {999999999, "999999999|"},
      {1000000000, "1000000000|"}, {4294967294, "4294967294|"}, {4294967295, "Drop     |"},
  };
  Ip6Format const format;
  const EntryRequestCliFormat& base = format;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.number);
    EXPECT_EQ(base.formatSequenceNum(row.number), row.cell);
    std::string const text = rowOf(format, ShadowOf(5), row.number);
    EXPECT_EQ(text.substr(0, text.find(" *     |")), std::string("5    |") + row.cell);
  }
}

struct AddressRow {
  const char* name;
  const char* address;
  const char* mask;
  const char* cells;
};

TEST(Ip6AddressCells, PrintAddressAndPrefixLength) {
  AddressRow const rows[] = {
      {"any", "::", "::", anyAddress},
      {"any, address left over", "2001:db8::1", "::", anyAddress},
      {"host", "2001:db8::1", allOnes, "                            2001:db8::1|            *|"},
      {"host ::", "::", allOnes, "                                     ::|            *|"},
      {"prefix, address not masked", "2001:db8::1:2:3:4",
       "ffff:ffff:ffff:ffff::", "                      2001:db8::1:2:3:4|           64|"},
      {"shortest prefix",
       "8000::", "8000::", "                                 8000::|            1|"},
      {"longest prefix", "2001:db8::1", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffe",
       "                            2001:db8::1|          127|"},
      {"prefix at a word's end",
       "2001:db8::", "ffff:ffff::", "                             2001:db8::|           32|"},
      {"default of one family", "::", "ffff:ffff:ffff:ffff:ffff:ffff::",
       "                                     ::|           96|"},
      {"widest", allOnes, allOnes, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff|            *|"},
      {"mapped", "::ffff:192.0.2.1", allOnes,
       "                       ::ffff:192.0.2.1|            *|"},
      // Only the leading ones count as the prefix length.
      {"not contiguous", "2001:db8::1",
       "ffff:0:ffff::", "                            2001:db8::1|           16|"},
      {"not contiguous, to the last bit", "::1", "fffe:ffff:ffff:ffff:ffff:ffff:ffff:ffff",
       "                                    ::1|           15|"},
      {"no leading one", "::1", "7fff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", anyAddress},
      {"lowest bit alone", "::1", "::1", anyAddress},
  };
  Ip6Format const format;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    for (QualifierType const type : {qualifierSrcIp6, qualifierSrcIp6Alt}) {
      EXPECT_EQ(format.formatQualifierSrcIp6(ShadowOf().ip6(type, row.address, row.mask)),
                row.cells);
    }
    for (QualifierType const type : {qualifierDstIp6, qualifierDstIp6Alt}) {
      EXPECT_EQ(format.formatQualifierDstIp6(ShadowOf().ip6(type, row.address, row.mask)),
                row.cells);
    }
    for (U8 const status : std::initializer_list<U8>{0, 1, 6, 8, 255}) {
      SCOPED_TRACE(int{status});
      ShadowOf const absent = ShadowOf()
                                  .ip6(qualifierSrcIp6, row.address, row.mask, status)
                                  .ip6(qualifierSrcIp6Alt, row.address, row.mask, status)
                                  .ip6(qualifierDstIp6, row.address, row.mask, status)
                                  .ip6(qualifierDstIp6Alt, row.address, row.mask, status);
      EXPECT_EQ(format.formatQualifierSrcIp6(absent), anyAddress);
      EXPECT_EQ(format.formatQualifierDstIp6(absent), anyAddress);
    }
  }
  EXPECT_EQ(format.formatQualifierSrcIp6(ShadowOf()), anyAddress);
  EXPECT_EQ(format.formatQualifierDstIp6(ShadowOf()), anyAddress);
}

TEST(Ip6AddressCells, ShowEveryPrefixLength) {
  Ip6Format const format;
  for (unsigned length = 0; length <= 128; ++length) {
    SCOPED_TRACE(length);
    String const mask = Trelix::Ip6Addr::prefixMask(length).stringValue();
    std::string expected = anyAddress;
    if (length != 0) {
      std::string const prefix = length == 128 ? "*" : std::to_string(length);
      expected = std::string(39 - 11, ' ') + "2001:db8::7|" + std::string(13 - prefix.size(), ' ') +
                 prefix + "|";
    }
    EXPECT_EQ(
        format.formatQualifierSrcIp6(ShadowOf().ip6(qualifierSrcIp6, "2001:db8::7", mask.c_str()))
            .str(),
        expected);
  }
}

TEST(Ip6AddressCells, FallBackToTheAlternative) {
  constexpr const char* first = "                                    ::1|            *|";
  constexpr const char* alternative = "                                    ::2|            *|";
  struct Row {
    const char* name;
    U8 firstStatus;
    U8 alternativeStatus;
    const char* cells;
  };
  Row const rows[] = {
      {"both", 7, 7, first},
      {"first alone", 7, 0, first},
      {"alternative alone", 0, 7, alternative},
      {"alternative, the first was removed", 6, 7, alternative},
      {"neither", 6, 6, anyAddress},
  };
  Ip6Format const format;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    ShadowOf const shadow = ShadowOf()
                                .ip6(qualifierSrcIp6, "::1", allOnes, row.firstStatus)
                                .ip6(qualifierSrcIp6Alt, "::2", allOnes, row.alternativeStatus)
                                .ip6(qualifierDstIp6, "::1", allOnes, row.firstStatus)
                                .ip6(qualifierDstIp6Alt, "::2", allOnes, row.alternativeStatus);
    EXPECT_EQ(format.formatQualifierSrcIp6(shadow), row.cells);
    EXPECT_EQ(format.formatQualifierDstIp6(shadow), row.cells);
  }
  // The first qualifier wins also when it matches any address.
  EXPECT_EQ(
      format.formatQualifierSrcIp6(
          ShadowOf().ip6(qualifierSrcIp6, "::1", "::").ip6(qualifierSrcIp6Alt, "::2", allOnes)),
      anyAddress);
  // Source and destination have separate alternatives.
  ShadowOf const source = ShadowOf().ip6(qualifierSrcIp6Alt, "::2", allOnes);
  EXPECT_EQ(format.formatQualifierDstIp6(source), anyAddress);
}

// An IPv6 record that was never set looks like one that matches any address.
TEST(Ip6AddressCells, ReadARecordThatIsNotSetAsZero) {
  Ip6Format const format;
  EXPECT_EQ(format.formatQualifierSrcIp6(ShadowOf().unset(qualifierSrcIp6)), anyAddress);
  EXPECT_EQ(format.formatQualifierSrcIp6(ShadowOf().unset(qualifierSrcIp6Alt)), anyAddress);
  EXPECT_EQ(format.formatQualifierDstIp6(ShadowOf().unset(qualifierDstIp6)), anyAddress);
  EXPECT_EQ(format.formatQualifierDstIp6(ShadowOf().unset(qualifierDstIp6Alt)), anyAddress);
  // A record of another kind counts as an address that is not set.
  EXPECT_EQ(format.formatQualifierSrcIp6(ShadowOf().qual(qualifierSrcIp6, 1, 0xFFFFFFFF)),
            anyAddress);
}

TEST(Ip6AddressCells, LeaveNoReferenceBehind) {
  ShadowOf const shadow = ShadowOf().ip6(qualifierSrcIp6Alt, "::1", allOnes);
  auto const status = shadow->qualifier(qualifierSrcIp6Alt);
  auto const data = status->hwQualData(qualifierSrcIp6Alt);
  (void)Ip6Format().formatQualifierSrcIp6(shadow);
  EXPECT_EQ(status->useCount(), 2U);
  EXPECT_EQ(data->useCount(), 2U);
}

struct NumberRow {
  const char* name;
  U32 value;
  U32 mask;
  const char* cell;
};

TEST(TrafficClassCell, PrintsValueAndMaskAndIsBlankWithoutAMask) {
  NumberRow const rows[] = {
      {"all bits", 10, 255, "  10/0xFF |"},
      {"two digits of mask at least", 10, 5, "  10/0x05 |"},
      {"three digits of mask", 1, 0xABC, "  1/0xABC |"},
      {"value 0", 0, 252, "   0/0xFC |"},
      {"mask 0", 10, 0, "          |"},
      {"both 0", 0, 0, "          |"},
      {"wider than the cell", 4294967295, 4294967295, " -1/0xFFFFFFFF |"},
      {"lowest", 2147483648, 1, " -2147483648/0x01 |"},
  };
  Ip6Format const format;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(format.formatQualifierIp6TrafficClass(
                  ShadowOf().qual(qualifierIp6TrafficClass, row.value, row.mask)),
              row.cell);
    for (U8 const status : std::initializer_list<U8>{0, 1, 6, 8, 255}) {
      EXPECT_EQ(format.formatQualifierIp6TrafficClass(
                    ShadowOf().qual(qualifierIp6TrafficClass, row.value, row.mask, status)),
                "          |");
    }
  }
  EXPECT_EQ(format.formatQualifierIp6TrafficClass(ShadowOf()), "          |");
}

TEST(HopLimitCell, PrintsTheValueAndIsBlankWithoutAMask) {
  NumberRow const rows[] = {
      {"all bits", 64, 255, "         64|"},
      {"some bits", 64, 1, "         64|"},
      {"value 0", 0, 255, "          0|"},
      {"mask 0", 64, 0, "           |"},
      {"both 0", 0, 0, "           |"},
      {"highest", 4294967295, 4294967295, "         -1|"},
      {"fills the cell", 2147483648, 255, "-2147483648|"},
  };
  Ip6Format const format;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(format.formatQualifierIp6HopLimit(
                  ShadowOf().qual(qualifierIp6HopLimit, row.value, row.mask)),
              row.cell);
    for (U8 const status : std::initializer_list<U8>{0, 1, 6, 8, 255}) {
      EXPECT_EQ(format.formatQualifierIp6HopLimit(
                    ShadowOf().qual(qualifierIp6HopLimit, row.value, row.mask, status)),
                "           |");
    }
  }
  EXPECT_EQ(format.formatQualifierIp6HopLimit(ShadowOf()), "           |");
}

#define RECORD_SITE(OPERATION)                                                                  \
  "^assertion failed: !!qualData->qual\\(\\) at VelmorTcamManagerBase/VelmorTcamCliTypes:0 in " \
  "virtual Zel::String VelmorTcam::Ip6EntryRequestCliFormat::" OPERATION                        \
  "\\(const PtrConst&\\) const\n$"

TEST(Ip6CellsDeathTest, StopOnARecordThatIsNotSet) {
  Ip6Format const format;
  EXPECT_DEATH(
      (void)format.formatQualifierIp6TrafficClass(ShadowOf().unset(qualifierIp6TrafficClass)),
      RECORD_SITE("formatQualifierIp6TrafficClass"));
  EXPECT_DEATH((void)format.formatQualifierIp6HopLimit(ShadowOf().unset(qualifierIp6HopLimit)),
               RECORD_SITE("formatQualifierIp6HopLimit"));
}

TEST(Ip6CellsDeathTest, StopOnTheSpotWhereTheShadowLacksTheData) {
  Ip6Format const format;
  for (QualifierType const type : {qualifierSrcIp6, qualifierSrcIp6Alt}) {
    EXPECT_EXIT((void)format.formatQualifierSrcIp6(ShadowOf().statusOnly(type)),
                velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
    EXPECT_EXIT((void)format.formatQualifierSrcIp6(ShadowOf().statusAndQualifierOnly(type)),
                velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
  }
  EXPECT_EXIT((void)format.formatQualifierIp6HopLimit(ShadowOf().statusOnly(qualifierIp6HopLimit)),
              velmortest::stoppedOnTheSpot, velmortest::nothingPrinted);
}

TEST(Ip6RowDeathTest, NeedsAnActionCell) {
  Ip6EntryRequestCliFormat const format;
  EXPECT_DEATH((void)rowOf(format, ShadowOf(5)),
               "^assertion failed: false && \"Call to abstract interface formatActions\" at "
               "VelmorTcamManagerBase/VelmorTcamCliTypes:435 in virtual Zel::String "
               "VelmorTcam::EntryRequestCliFormat::formatActions\\(const PtrConst&\\) const\n$");
}

}  // namespace
}  // namespace VelmorTcam
