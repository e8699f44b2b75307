// The matches of entries, as sets of packets.
#include "match/Match.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "match/FieldText.h"

namespace tcamshow {
namespace {

using namespace VelmorTcam;

Entry entryOf(Table table, std::vector<tcamshow::Qualifier> qualifiers,
              std::vector<RangeChecker> rangeCheckers = {}) {
  Entry entry;
  entry.table = table;
  entry.qualifiers = std::move(qualifiers);
  entry.rangeCheckers = std::move(rangeCheckers);
  return entry;
}

tcamshow::Qualifier word(unsigned type, std::uint32_t value, std::uint32_t mask,
                         std::uint8_t status = statusProgrammed) {
  auto qualifier = wordQualifier(static_cast<std::uint8_t>(type), value, mask);
  qualifier.status = status;
  return qualifier;
}

tcamshow::Qualifier ip6(unsigned type, const char* value, unsigned length,
                        std::uint8_t status = statusProgrammed) {
  Ip6Octets octets{};
  EXPECT_TRUE(ip6FromText(value, octets));
  auto qualifier = ip6Qualifier(static_cast<std::uint8_t>(type), octets, ip6Mask(length));
  qualifier.status = status;
  return qualifier;
}

tcamshow::Qualifier mac(unsigned type, const char* value, const char* mask) {
  MacOctets octets{};
  MacOctets maskOctets{};
  EXPECT_TRUE(macFromText(value, octets) && macFromText(mask, maskOctets));
  return macQualifier(static_cast<std::uint8_t>(type), octets, maskOctets);
}

/// The match in words: "src=10.0.0.0/8 dport=80", "nothing" where it is empty. Fields that are
/// named and may be anything show as "*".
std::string textOf(const Match& match) {
  if (match.isEmpty()) return "nothing";
  std::string text;
  for (const FieldName& name : fieldNames().first(fieldCount)) {
    FieldMask const bit = bitOf(name.field);
    if (((match.limited() | match.named()) & bit) == 0) continue;
    if (!text.empty()) text += ' ';
    text += name.name;
    text += '=';
    valuesAppend(text, name, match[name.field]);
  }
  return text;
}

struct Row {
  const char* name;
  Entry entry;
  const char* match;
};

TEST(Match, IsWhatTheQualifiersSay) {
  const Row rows[] = {
      {"nothing but the table", entryOf(Table::ip, {}), "ethertype=0x800"},
      {"IPv6 table", entryOf(Table::ip6, {}), "ethertype=0x86dd"},
      {"tables of any packet", entryOf(Table::mac, {}), ""},
      {"tables of any packet", entryOf(Table::tcam, {}), ""},
      {"addresses",
       entryOf(Table::ip, {word(qualifierSrcIp, 0x0A000000, 0xFF000000),
                           word(qualifierDstIp, 0xC0000250, 0xFFFFFFFF)}),
       "src=10.0.0.0/8 dst=192.0.2.80 ethertype=0x800"},
      {"a mask that is no prefix",
       entryOf(Table::ip, {word(qualifierSrcIp, 0x0A000001, 0xFF0000FF)}),
       "src=10.0.0.1/255.0.0.255 ethertype=0x800"},
      {"bits outside of the mask do not count",
       entryOf(Table::ip, {word(qualifierSrcIp, 0x0AFFFFFF, 0xFF000000)}),
       "src=10.0.0.0/8 ethertype=0x800"},
      {"mask 0", entryOf(Table::ip, {word(qualifierSrcIp, 0x0AFFFFFF, 0)}),
       "src=* ethertype=0x800"},
      {"IPv4 addresses make other tables IPv4",
       entryOf(Table::mac, {word(qualifierDstIp, 0x0A000000, 0xFF000000)}),
       "dst=10.0.0.0/8 ethertype=0x800"},
      {"also where they may be anything", entryOf(Table::tcam, {word(qualifierSrcIp, 0, 0)}),
       "src=* ethertype=0x800"},
      {"IPv6 addresses make other tables IPv6",
       entryOf(Table::tcam, {ip6(qualifierSrcIp6, "2001:db8::", 32)}),
       "src6=2001:db8::/32 ethertype=0x86dd"},
      {"a hop limit too", entryOf(Table::mac, {word(qualifierIp6HopLimit, 64, 255)}),
       "ethertype=0x86dd hoplimit=64"},
      {"both kinds at once",
       entryOf(Table::tcam,
               {ip6(qualifierSrcIp6, "::", 0), word(qualifierDstIp, 0x0A000000, 0xFF000000)}),
       "nothing"},
      {"the first IPv6 address where it is programmed",
       entryOf(Table::ip6, {ip6(qualifierSrcIp6Alt, "2::", 16), ip6(qualifierSrcIp6, "1::", 16)}),
       "src6=1::/16 ethertype=0x86dd"},
      {"the alternative where the first is not",
       entryOf(Table::ip6,
               {ip6(qualifierDstIp6, "1::", 16, 4), ip6(qualifierDstIp6Alt, "2::", 16)}),
       "dst6=2::/16 ethertype=0x86dd"},
      {"the first where neither is",
       entryOf(Table::ip6,
               {ip6(qualifierDstIp6, "1::", 16, 4), ip6(qualifierDstIp6Alt, "2::", 16, 0)}),
       "dst6=1::/16 ethertype=0x86dd"},
      {"the alternative alone", entryOf(Table::ip6, {ip6(qualifierDstIp6Alt, "2::", 16, 4)}),
       "dst6=2::/16 ethertype=0x86dd"},
      {"a qualifier counts whatever its status",
       entryOf(Table::ip, {word(qualifierIpProtocol, 6, 255, 4)}), "ethertype=0x800 proto=tcp"},
      {"MAC addresses",
       entryOf(Table::mac, {mac(qualifierSrcMac, "00:1c:73:00:00:00", "ff:ff:ff:00:00:00"),
                            mac(qualifierDstMac, "00:00:00:00:00:01", "00:00:00:00:00:0f")}),
       "smac=00:1c:73:00:00:00/24 dmac=00:00:00:00:00:01/00:00:00:00:00:0f"},
      {"an ether type", entryOf(Table::mac, {word(qualifierEtherType, 0x0806, 0xFFFF)}),
       "ethertype=0x806"},
      {"an ether type that is not the table's",
       entryOf(Table::ip, {word(qualifierEtherType, 0x86DD, 0xFFFF)}), "nothing"},
      {"VLAN", entryOf(Table::mac, {word(qualifierOuterVlanId, 100, 0xFFF)}), "vlan=100"},
      {"bits beyond the field are compared with 0",
       entryOf(Table::mac, {word(qualifierOuterVlanId, 100, 0xFFFFFFFF)}), "vlan=100"},
      {"and match nothing where they are to be 1",
       entryOf(Table::mac, {word(qualifierOuterVlanId, 0x1064, 0xFFFF)}), "nothing"},
      {"traffic class", entryOf(Table::ip6, {word(qualifierIp6TrafficClass, 184, 255)}),
       "ethertype=0x86dd tc=184"},
      {"the DSCP is the upper six bits", entryOf(Table::ip, {word(qualifierDSCP, 46, 63)}),
       "ethertype=0x800 tc=184-187"},
      {"DSCP and traffic class together",
       entryOf(Table::ip, {word(qualifierDSCP, 46, 63), word(qualifierIp6TrafficClass, 1, 3)}),
       "ethertype=0x800 tc=185"},
      {"a DSCP of more than six bits", entryOf(Table::ip, {word(qualifierDSCP, 64, 127)}),
       "nothing"},
      {"fragment state 1", entryOf(Table::ip, {word(qualifierIpFrag, 1, 3)}),
       "ethertype=0x800 frag=no"},
      {"fragment state 2", entryOf(Table::ip, {word(qualifierIpFrag, 2, 1)}),
       "ethertype=0x800 frag=no"},
      {"fragment state 3", entryOf(Table::ip, {word(qualifierIpFrag, 3, 3)}),
       "ethertype=0x800 frag=yes"},
      {"fragment state 0", entryOf(Table::ip, {word(qualifierIpFrag, 0, 3)}),
       "ethertype=0x800 frag=*"},
      {"fragment state 4", entryOf(Table::ip, {word(qualifierIpFrag, 4, 7)}),
       "ethertype=0x800 frag=*"},
      {"fragment state without a mask", entryOf(Table::ip, {word(qualifierIpFrag, 3, 0)}),
       "ethertype=0x800 frag=*"},
      {"TCP flags", entryOf(Table::ip, {word(qualifierTcpControl, 0x02, 0x12)}),
       "ethertype=0x800 flags=+S-A"},
      {"ports",
       entryOf(Table::ip,
               {word(qualifierL4SrcPort, 1024, 0xFC00), word(qualifierL4DstPort, 80, 0xFFFF)}),
       "ethertype=0x800 sport=1024-2047 dport=80"},
      {"a port's range", entryOf(Table::ip, {}, {{rangeCheckerL4DstPort, 100, 200, 7}}),
       "ethertype=0x800 dport=100-200"},
      {"a range counts whatever its status",
       entryOf(Table::ip, {}, {{rangeCheckerL4SrcPort, 100, 200, 0}}),
       "ethertype=0x800 sport=100-200"},
      {"a port's qualifier and range hold both",
       entryOf(Table::ip, {word(qualifierL4DstPort, 1, 1)}, {{rangeCheckerL4DstPort, 100, 200, 7}}),
       "ethertype=0x800 dport=1/0xff01&101-199"},
      {"and match nothing where they do not meet",
       entryOf(Table::ip, {word(qualifierL4DstPort, 80, 0xFFFF)},
               {{rangeCheckerL4DstPort, 100, 200, 7}}),
       "nothing"},
      {"a length", entryOf(Table::ip, {}, {{rangeCheckerIpLength, 64, 1500, 7}}),
       "ethertype=0x800 length=64-1500"},
      {"a range that begins below 0", entryOf(Table::ip, {}, {{rangeCheckerIpLength, -5, 10, 7}}),
       "ethertype=0x800 length=0-10"},
      {"a range that ends beyond the field",
       entryOf(Table::ip, {}, {{rangeCheckerIpLength, 65000, 70000, 7}}),
       "ethertype=0x800 length=65000-65535"},
      {"a range beyond the field",
       entryOf(Table::ip, {}, {{rangeCheckerIpLength, 70000, 80000, 7}}), "nothing"},
      {"a range of negative numbers", entryOf(Table::ip, {}, {{rangeCheckerIpLength, -9, -1, 7}}),
       "nothing"},
      {"a range whose low is above its high",
       entryOf(Table::ip, {}, {{rangeCheckerIpLength, 9, 5, 7}}), "nothing"},
      {"hop limit", entryOf(Table::ip6, {word(qualifierIp6HopLimit, 1, 255)}),
       "ethertype=0x86dd hoplimit=1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(textOf(matchOf(row.entry)), row.match);
  }
}

TEST(Match, ComparesWhatItHoldsAndNotWhatItNames) {
  Match const any;
  Match named;
  named.restrict(Field::src, FieldSet::any(32));
  EXPECT_TRUE(any == named);
  EXPECT_NE(any.named(), named.named());
  Match cube;
  cube.restrict(Field::dport, FieldSet::cube(1024, 0xFC00, 16));
  Match range;
  range.restrict(Field::dport, FieldSet::range(1024, 2047, 16));
  EXPECT_TRUE(cube == range);
  std::string cubeKey;
  std::string rangeKey;
  cube.keyAppend(cubeKey);
  range.keyAppend(rangeKey);
  EXPECT_EQ(cubeKey, rangeKey);
  Match nothing = range;
  nothing.restrict(Field::dport, FieldSet::exactly(80));
  EXPECT_TRUE(nothing.isEmpty());
  Match other;
  other.restrict(Field::src, std::nullopt);
  EXPECT_TRUE(nothing == other);
  EXPECT_FALSE(nothing == range);
  EXPECT_FALSE(nothing.overlaps(any));
  EXPECT_TRUE(any.contains(nothing));
  EXPECT_FALSE(nothing.contains(any));
  EXPECT_TRUE(any.contains(cube));
  EXPECT_FALSE(cube.contains(any));
}

TEST(Match, KindIsTheEtherTypes) {
  EXPECT_EQ(kindOf(matchOf(entryOf(Table::ip, {}))), PacketKind::ip);
  EXPECT_EQ(kindOf(matchOf(entryOf(Table::ip6, {}))), PacketKind::ip6);
  EXPECT_EQ(kindOf(matchOf(entryOf(Table::mac, {}))), PacketKind::any);
  EXPECT_EQ(kindOf(matchOf(entryOf(Table::mac, {word(qualifierEtherType, 0x86DD, 0xFFFF)}))),
            PacketKind::ip6);
  EXPECT_EQ(kindOf(matchOf(entryOf(Table::mac, {word(qualifierEtherType, 0x0806, 0xFFFF)}))),
            PacketKind::any);
}

}  // namespace
}  // namespace tcamshow
