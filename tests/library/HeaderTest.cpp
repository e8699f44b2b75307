#include <gtest/gtest.h>

#include <sstream>

#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Base/Error.h"

namespace VelmorTcam {
namespace {

using Halvo::String;

constexpr const char* ipHeader =
    "Id        | Seq   | Proto | Src IP        | Src Mask      | Src Port  | VlanId | VlanMask "
    "|Hits\n"
    "TOS/Mask  | Frag  | Flags | Dest IP       | Dest Mask     | Dest Port | IP Length |Action\n";
constexpr const char* ip6Header =
    "Id   | Seq     | Proto | Src IP                                | Src Prefix  | Src Port  | "
    "VlanId | VlanMask |Hits\n"
    "     | Flags   |       | Dest IP                               | Dest Prefix | Dest Port "
    "|Action\n"
    "     | TC/Mask |       |                                       |  IP Length  | Hop Limit |\n";
constexpr const char* macHeader =
    "Id   | Seq | Src Mac         | Src Mask        | Dest Mac        | Dest Mask       "
    "|EType|VlanId|VlanMask|Action|Hits\n";

// Each death test runs its statement in a process that has not filled the table yet.
TEST(CliHeaderDeathTest, StopsBeforeTheTableIsFilled) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (U32 type = 0; type < 5; ++type) {
    EXPECT_DEATH(
        (void)getCliHeader(static_cast<CliHeaderType>(type)),
        "^assertion failed: cliHeaderMap.find\\( cliHeaderType \\) != cliHeaderMap.end\\(\\) at "
        "VelmorTcamManagerBase/VelmorTcamCliHelper:18 in "
        "Zel::String VelmorTcam::getCliHeader\\(VelmorTcam::CliHeaderType\\)\n$");
  }
}

TEST(CliHeaderDeathTest, StopsForTypesWithoutATableAlsoAfterwards) {
  initializeCliHeaders();
  for (auto type : {cliHeaderTypeInvalid, cliHeaderTypeTcam, static_cast<CliHeaderType>(9)}) {
    EXPECT_DEATH(
        (void)getCliHeader(type),
        "^assertion failed: cliHeaderMap.find\\( cliHeaderType \\) != cliHeaderMap.end\\(\\) at "
        "VelmorTcamManagerBase/VelmorTcamCliHelper:18 in "
        "Zel::String VelmorTcam::getCliHeader\\(VelmorTcam::CliHeaderType\\)\n$");
  }
}

TEST(CliHeader, HoldsThreeTextsAfterOneOrTwoCalls) {
  for (int call = 0; call < 2; ++call) {
    initializeCliHeaders();
    EXPECT_EQ(getCliHeader(cliHeaderTypeIp).view(), ipHeader);
    EXPECT_EQ(getCliHeader(cliHeaderTypeIp6).view(), ip6Header);
    EXPECT_EQ(getCliHeader(cliHeaderTypeMac).view(), macHeader);
  }
  EXPECT_EQ(getCliHeader(cliHeaderTypeIp).size(), 186U);
  EXPECT_EQ(getCliHeader(cliHeaderTypeIp6).size(), 303U);
  EXPECT_EQ(getCliHeader(cliHeaderTypeMac).size(), 118U);
}

TEST(CliHeader, KeepsTheBlankAddressColumnOfTheThirdIp6Line) {
  initializeCliHeaders();
  String const header = getCliHeader(cliHeaderTypeIp6);
  std::string const blanks = "|" + std::string(39, ' ') + "|";
  EXPECT_NE(header.view().rfind(blanks), std::string_view::npos);
  EXPECT_TRUE(header.endsWith("|\n"));
}

TEST(CliHeader, IsACopy) {
  initializeCliHeaders();
  String mine = getCliHeader(cliHeaderTypeMac);
  mine += "changed";
  EXPECT_EQ(getCliHeader(cliHeaderTypeMac).view(), macHeader);
}

template <class E>
struct EnumRow {
  U32 number;
  const char* name;
  E value;
};

template <class E, class FromNumber, class FromName, std::size_t N>
void expectConversions(const EnumRow<E> (&rows)[N], FromNumber fromNumber, FromName fromName) {
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(static_cast<U32>(row.value), row.number);
    EXPECT_EQ(fromNumber(row.number), row.value);
    EXPECT_EQ(fromName(String(row.name)), row.value);
    EXPECT_EQ(stringValue(row.value), row.name);
    std::ostringstream out;
    out << row.value;
    EXPECT_EQ(out.str(), row.name);
    std::string const text = std::string(row.name) + ",rest";
    Zel::CharRange range(text);
    E read{};
    sequenceToValue(range, &read);
    EXPECT_EQ(read, row.value);
    EXPECT_EQ(range.view(), ",rest");
  }
  for (U32 const number : {U32{N}, U32{255}, U32{256}, U32{0xFFFFFFFF}}) {
    EXPECT_THROW((void)fromNumber(number), Zel::RangeError);
  }
  for (const char* name : {"", "cliHeader", "CLIHEADERTYPEIP", "cliHeaderTypeIp "}) {
    EXPECT_THROW((void)fromName(String(name)), Zel::ParseError);
    Zel::CharRange range(std::string_view{"nobody=1"});
    E read{};
    EXPECT_THROW(sequenceToValue(range, &read), Zel::ParseError);
    EXPECT_EQ(range.view(), "nobody=1");
  }
}

TEST(CliHeaderType, ConvertsToAndFromNumbersAndNames) {
  EnumRow<CliHeaderType> const rows[] = {
      {0, "cliHeaderTypeInvalid", cliHeaderTypeInvalid}, {1, "cliHeaderTypeIp", cliHeaderTypeIp},
      {2, "cliHeaderTypeIp6", cliHeaderTypeIp6},         {3, "cliHeaderTypeMac", cliHeaderTypeMac},
      {4, "cliHeaderTypeTcam", cliHeaderTypeTcam},
  };
  expectConversions(
      rows, [](U32 n) { return CliHeaderTypeInstance(n); },
      [](const String& s) { return CliHeaderTypeInstance(s); });
  EXPECT_EQ(stringValue(static_cast<CliHeaderType>(9)), "CliHeaderType(9)");
}

TEST(CliOutputType, ConvertsToAndFromNumbersAndNames) {
  EnumRow<CliOutputType> const rows[] = {
      {0, "cliOutputTypeInvalid", cliOutputTypeInvalid},
      {1, "cliOutputTypeTcam", cliOutputTypeTcam},
      {2, "cliOutputTypeTcamAcl", cliOutputTypeTcamAcl},
      {3, "cliOutputTypeTcamCopp", cliOutputTypeTcamCopp},
      {4, "cliOutputTypeTcamDetail", cliOutputTypeTcamDetail},
      {5, "cliOutputTypeTcamDirectedBroadcast", cliOutputTypeTcamDirectedBroadcast},
      {6, "cliOutputTypeTcamNat", cliOutputTypeTcamNat},
      {7, "cliOutputTypeTcamPbr", cliOutputTypeTcamPbr},
      {8, "cliOutputTypeTcamPolicyQos", cliOutputTypeTcamPolicyQos},
      {9, "cliOutputTypeTcamUrpf", cliOutputTypeTcamUrpf},
  };
  expectConversions(
      rows, [](U32 n) { return CliOutputTypeInstance(n); },
      [](const String& s) { return CliOutputTypeInstance(s); });
  EXPECT_EQ(stringValue(static_cast<CliOutputType>(200)), "CliOutputType(200)");
}

TEST(EntryShadowEnums, HaveTheirFixedNumbersAndNames) {
  EXPECT_EQ(stringValue(qualifierDSCP), "qualifierDSCP");
  struct Row {
    U32 number;
    const char* name;
  };
  Row const qualifiers[] = {
      {8, "qualifierDSCP"},          {15, "qualifierDstIp"},           {20, "qualifierDstIp6"},
      {25, "qualifierDstIp6Alt"},    {28, "qualifierDstMac"},          {36, "qualifierEtherType"},
      {92, "qualifierIp6HopLimit"},  {95, "qualifierIp6TrafficClass"}, {97, "qualifierIpFrag"},
      {101, "qualifierIpProtocol"},  {116, "qualifierL4DstPort"},      {118, "qualifierL4SrcPort"},
      {132, "qualifierOuterVlanId"}, {153, "qualifierSrcIp"},          {158, "qualifierSrcIp6"},
      {163, "qualifierSrcIp6Alt"},   {164, "qualifierSrcMac"},         {182, "qualifierTcpControl"},
  };
  EXPECT_EQ(qualifierTypeValues().size(), std::size(qualifiers));
  for (auto const& row : qualifiers) EXPECT_EQ(QualifierTypeInstance(String(row.name)), row.number);
  Row const checkers[] = {
      {1, "rangeCheckerL4SrcPort"}, {2, "rangeCheckerL4DstPort"}, {3, "rangeCheckerIpLength"}};
  EXPECT_EQ(rangeCheckerTypeValues().size(), std::size(checkers));
  for (auto const& row : checkers) {
    EXPECT_EQ(RangeCheckerTypeInstance(String(row.name)), row.number);
  }
  Row const stages[] = {{0, "invalid"}, {1, "lookup"}, {2, "ingress"}, {3, "egress"}};
  for (auto const& row : stages) {
    EXPECT_EQ(stringValue(StageTypeInstance(row.number)), row.name);
    EXPECT_EQ(StageTypeInstance(String(row.name)), row.number);
  }
  EXPECT_EQ(HwQualStatusInstance(String("hwQualStatusProgrammed")), 7);
}

}  // namespace
}  // namespace VelmorTcam
