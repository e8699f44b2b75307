// The match and the action of entries and rules.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SonicFiles.h"

namespace tcamshow {
namespace {

using Texts = std::vector<std::string>;

/// The match of an entry with these attributes, or the error.
std::string matchOfEntry(const Texts& attributes, const Texts& otherRows = {}) {
  SonicFiles const files;
  Texts rows = otherRows;
  rows.push_back(asicTable("0x7"));
  rows.push_back(asicEntry("0x8", "0x7", attributes));
  files.writeRows("ASIC_DB.json", rows);
  Texts const entries = readSonic(files, matchText);
  return entries.size() == 1 ? entries[0] : "not one entry";
}

TEST(SonicMatch, MakesTheMatch) {
  struct Row {
    Texts attributes;
    const char* match;
  };
  Row const rows[] = {
      {{}, "mac"},
      // Values and masks; masks need not be prefixes.
      {{"FIELD_SRC_IP=10.0.0.2&mask:255.255.255.255"}, "ip SrcIp=10.0.0.2/255.255.255.255"},
      {{"FIELD_DST_IP=192.168.1.1&mask:255.0.255.0"}, "ip DstIp=192.168.1.1/255.0.255.0"},
      {{"FIELD_SRC_IP=0.0.0.0&mask:0.0.0.0"}, "ip SrcIp=0.0.0.0/0.0.0.0"},
      {{"FIELD_SRC_IPV6=2001:db8::1&mask:ffff::ffff"}, "ip6 SrcIp6=2001:db8::1/ffff::ffff"},
      {{"FIELD_DST_IPV6=::1&mask:ffff:ffff::"}, "ip6 DstIp6=::1/ffff:ffff::"},
      {{"FIELD_SRC_MAC=01:80:C2:00:00:03&mask:FF:FF:FF:FF:FF:FF"},
       "mac SrcMac=01:80:c2:00:00:03/ff:ff:ff:ff:ff:ff"},
      {{"FIELD_DST_MAC=01:80:c2:00:00:03&mask:ff:00:00:00:00:00"},
       "mac DstMac=01:80:c2:00:00:03/ff:00:00:00:00:00"},
      {{"FIELD_ETHER_TYPE=2054&mask:0xffff"}, "mac EtherType=2054/65535"},
      {{"FIELD_ETHER_TYPE=0x806&mask:65535"}, "mac EtherType=2054/65535"},
      {{"FIELD_OUTER_VLAN_ID=100&mask:0xfff"}, "mac OuterVlanId=100/4095"},
      {{"FIELD_IP_PROTOCOL=6&mask:0xff"}, "mac IpProtocol=6/255"},
      {{"FIELD_L4_SRC_PORT=443&mask:0xffff", "FIELD_L4_DST_PORT=16&mask:0xfff0"},
       "mac L4DstPort=16/65520 L4SrcPort=443/65535"},
      {{"FIELD_TCP_FLAGS=18&mask:0x3f"}, "mac TcpControl=18/63"},
      {{"FIELD_DSCP=8&mask:0x3f"}, "mac DSCP=8/63"},
      {{"FIELD_TOS=184&mask:0xfc"}, "mac Ip6TrafficClass=184/252"},
      // A field has no bits beyond its own.
      {{"FIELD_DSCP=8&mask:0xff"}, "mac DSCP=8/63"},
      {{"FIELD_OUTER_VLAN_ID=100&mask:0xffff"}, "mac OuterVlanId=100/4095"},
      {{"FIELD_IP_PROTOCOL=6"}, "mac IpProtocol=6/255"},
      {{"FIELD_SRC_IP=disabled", "FIELD_DSCP=disabled"}, "mac"},
      // The table is that of the family that a field names.
      {{"FIELD_SRC_IP=1.2.3.4&mask:255.255.255.255", "FIELD_L4_SRC_PORT=1&mask:0xffff"},
       "ip L4SrcPort=1/65535 SrcIp=1.2.3.4/255.255.255.255"},
      {{"FIELD_IPV6_NEXT_HEADER=17&mask:0xff"}, "ip6 IpProtocol=17/255"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY&mask:0xffffffffffffffff"}, "ip"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV6ANY&mask:0xffffffffffffffff"}, "ip6"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY"}, "ip"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_ANY&mask:0xffffffffffffffff"}, "mac"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_ANY&mask:0"}, "mac"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_ARP&mask:0xffffffffffffffff"},
       "mac EtherType=2054/65535"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_ARP", "FIELD_ETHER_TYPE=2054&mask:0xffff"},
       "mac EtherType=2054/65535"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_ARP", "FIELD_ETHER_TYPE=2048&mask:0xffff"},
       "mac EtherType=2054/65535 {ETHER_TYPE=2048&mask:0xffff}"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IP&mask:0xffffffffffffffff"},
       "mac {ACL_IP_TYPE=SAI_ACL_IP_TYPE_IP&mask:0xffffffffffffffff}"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_NON_IPV4"},
       "mac {ACL_IP_TYPE=SAI_ACL_IP_TYPE_NON_IPV4}"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_ARP_REQUEST"},
       "mac {ACL_IP_TYPE=SAI_ACL_IP_TYPE_ARP_REQUEST}"},
      {{"FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY&mask:0x1"},
       "mac {ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY&mask:0x1}"},
      // No packet is of both families.
      {{"FIELD_SRC_IP=1.2.3.4&mask:255.0.0.0", "FIELD_DST_IPV6=::1&mask:ffff::"},
       "mac DstIp6=::1/ffff:: SrcIp=1.2.3.4/255.0.0.0"},
      {{"FIELD_DST_IPV6=::1&mask:ffff::", "FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY"},
       "mac DstIp6=::1/ffff:: {ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY}"},
      {{"FIELD_DST_IPV6=::1&mask:ffff::", "FIELD_IP_PROTOCOL=1&mask:0xff",
        "FIELD_ICMP_TYPE=8&mask:0xff"},
       "mac DstIp6=::1/ffff:: IpProtocol=1/255 {ICMP_TYPE=8&mask:0xff}"},
      {{"FIELD_SRC_IP=1.2.3.4&mask:255.0.0.0", "FIELD_IPV6_NEXT_HEADER=6&mask:0xff"},
       "mac IpProtocol=6/255 SrcIp=1.2.3.4/255.0.0.0 {IPV6_NEXT_HEADER=6&mask:0xff}"},
      // Fragments.
      {{"FIELD_ACL_IP_FRAG=SAI_ACL_IP_FRAG_NON_FRAG"}, "mac IpFrag=1/3"},
      {{"FIELD_ACL_IP_FRAG=SAI_ACL_IP_FRAG_ANY"}, "mac IpFrag=3/3"},
      {{"FIELD_ACL_IP_FRAG=SAI_ACL_IP_FRAG_ANY&mask:0xffffffffffffffff"}, "mac IpFrag=3/3"},
      {{"FIELD_ACL_IP_FRAG=SAI_ACL_IP_FRAG_HEAD"}, "mac {ACL_IP_FRAG=SAI_ACL_IP_FRAG_HEAD}"},
      {{"FIELD_ACL_IP_FRAG=SAI_ACL_IP_FRAG_NON_HEAD"},
       "mac {ACL_IP_FRAG=SAI_ACL_IP_FRAG_NON_HEAD}"},
      {{"FIELD_ACL_IP_FRAG=SAI_ACL_IP_FRAG_NON_FRAG_OR_HEAD"},
       "mac {ACL_IP_FRAG=SAI_ACL_IP_FRAG_NON_FRAG_OR_HEAD}"},
      // ICMP: the type in the high byte of the source port, the code in the low byte of the other.
      {{"FIELD_IP_PROTOCOL=1&mask:0xff", "FIELD_ICMP_TYPE=8&mask:0xff",
        "FIELD_ICMP_CODE=3&mask:0xf"},
       "ip IpProtocol=1/255 L4DstPort=3/15 L4SrcPort=2048/65280"},
      {{"FIELD_ICMPV6_TYPE=135&mask:0xff", "FIELD_IPV6_NEXT_HEADER=58&mask:0xff",
        "FIELD_ICMPV6_CODE=0&mask:0xff"},
       "ip6 IpProtocol=58/255 L4DstPort=0/255 L4SrcPort=34560/65280"},
      {{"FIELD_ICMP_TYPE=8&mask:0xff"}, "ip {ICMP_TYPE=8&mask:0xff}"},
      {{"FIELD_ICMPV6_CODE=8&mask:0xff", "FIELD_IP_PROTOCOL=1&mask:0xff"},
       "ip6 IpProtocol=1/255 {ICMPV6_CODE=8&mask:0xff}"},
      {{"FIELD_ICMP_TYPE=8&mask:0xff", "FIELD_IP_PROTOCOL=1&mask:0x7f"},
       "ip IpProtocol=1/127 {ICMP_TYPE=8&mask:0xff}"},
      {{"FIELD_ICMP_TYPE=8&mask:0xff", "FIELD_IP_PROTOCOL=1&mask:0xff",
        "FIELD_L4_SRC_PORT=5&mask:0xffff"},
       "ip IpProtocol=1/255 L4SrcPort=5/65535 {ICMP_TYPE=8&mask:0xff}"},
      // Two fields of one qualifier.
      {{"FIELD_IP_PROTOCOL=6&mask:0xff", "FIELD_IPV6_NEXT_HEADER=6&mask:0xff"},
       "ip6 IpProtocol=6/255"},
      {{"FIELD_IP_PROTOCOL=6&mask:0xff", "FIELD_IPV6_NEXT_HEADER=17&mask:0xff"},
       "ip6 IpProtocol=6/255 {IPV6_NEXT_HEADER=17&mask:0xff}"},
      // Ranges: several of one kind must all hold.
      {{"FIELD_ACL_RANGE_TYPE=1:oid:0xa1"}, "mac L4SrcPort:90-95"},
      {{"FIELD_ACL_RANGE_TYPE=2:oid:0xa2,oid:0xa1"}, "mac L4SrcPort:90-95 L4DstPort:80-80"},
      {{"FIELD_ACL_RANGE_TYPE=2:oid:0xa1,oid:0xa3"}, "mac L4SrcPort:93-95"},
      {{"FIELD_ACL_RANGE_TYPE=2:oid:0xa1,oid:0xa4"}, "mac L4SrcPort:1000-95"},
      {{"FIELD_ACL_RANGE_TYPE=1:oid:0xa5"}, "mac {OUTER_VLAN=10-20}"},
      {{"FIELD_ACL_RANGE_TYPE=1:oid:0xa6"}, "mac {PACKET_LENGTH=64-1500}"},
      {{"FIELD_ACL_RANGE_TYPE=1:oid:0xa7"}, "mac IpLength:20-40"},
      {{"FIELD_ACL_RANGE_TYPE=1:oid:0xff"}, "mac {ACL_RANGE_TYPE=oid:0xff}"},
      {{"FIELD_ACL_RANGE_TYPE=0:null"}, "mac"},
      {{"FIELD_ACL_RANGE_TYPE=disabled"}, "mac"},
      // Fields that a snapshot does not have, in the order of their names.
      {{"FIELD_TC=3&mask:0xff", "FIELD_IN_PORTS=2:oid:0x1,oid:0x2", "FIELD_ECN=0&mask:0x3"},
       "mac {ECN=0&mask:0x3 IN_PORTS=2:oid:0x1,oid:0x2 TC=3&mask:0xff}"},
      {{"FIELD_INNER_SRC_IP=15.15.15.15&mask:255.255.240.0"},
       "mac {INNER_SRC_IP=15.15.15.15&mask:255.255.240.0}"},
      {{"FIELD_TUNNEL_VNI=111&mask:0xffffffff"}, "mac {TUNNEL_VNI=111&mask:0xffffffff}"},
      {{"USER_DEFINED_FIELD_GROUP_MIN=1,2&mask:0xff"},
       "mac {USER_DEFINED_FIELD_GROUP_MIN=1,2&mask:0xff}"},
      {{"FIELD_TCP_FLAGS=18&mask:0xff"}, "mac {TCP_FLAGS=18&mask:0xff}"},
      {{"FIELD_TTL=1&mask:0xff"}, "mac {TTL=1&mask:0xff}"},
      // No match at all.
      {{"LABEL=my rule", "ACTION_SET_TC=3"}, "mac"},
  };
  Texts const ranges = {
      asicRange("0xa1", "L4_SRC_PORT_RANGE", "90,95"),
      asicRange("0xa2", "L4_DST_PORT_RANGE", "80,80"),
      asicRange("0xa3", "L4_SRC_PORT_RANGE", "93,100"),
      asicRange("0xa4", "L4_SRC_PORT_RANGE", "1000,4294967295"),
      asicRange("0xa5", "OUTER_VLAN", "10,20"),
      asicRange("0xa6", "PACKET_LENGTH", "64,1500"),
      asicRange("0xa7", "IP_LENGTH", "20,40"),
  };
  for (const Row& each : rows) {
    SCOPED_TRACE(each.match);
    EXPECT_EQ(matchOfEntry(each.attributes, ranges), each.match);
  }
}

TEST(SonicMatch, MakesTheMatchOfARule) {
  struct Row {
    Texts fields;
    const char* match;
  };
  Row const rows[] = {
      {{"SRC_IP=10.0.0.2/32"}, "ip SrcIp=10.0.0.2/255.255.255.255"},
      {{"DST_IP=10.0.0.0/8"}, "ip DstIp=10.0.0.0/255.0.0.0"},
      {{"DST_IP=10.0.0.0/255.0.255.0"}, "ip DstIp=10.0.0.0/255.0.255.0"},
      {{"SRC_IP=10.0.0.2"}, "ip SrcIp=10.0.0.2/255.255.255.255"},
      {{"SRC_IPV6=2001:db8::/32", "DST_IPV6=::1/128"},
       "ip6 DstIp6=::1/ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff SrcIp6=2001:db8::/ffff:ffff::"},
      {{"IP_PROTOCOL=6", "L4_SRC_PORT=443", "L4_DST_PORT_RANGE=90-95"},
       "mac IpProtocol=6/255 L4SrcPort=443/65535 L4DstPort:90-95"},
      {{"NEXT_HEADER=58", "ICMPV6_TYPE=135", "ICMPV6_CODE=0"},
       "ip6 IpProtocol=58/255 L4DstPort=0/255 L4SrcPort=34560/65280"},
      {{"TCP_FLAGS=0x12/0x12", "ETHER_TYPE=0x0800", "DSCP=8", "VLAN_ID=100"},
       "mac DSCP=8/63 EtherType=2048/65535 OuterVlanId=100/4095 TcpControl=18/18"},
      {{"TCP_FLAGS=0x12"}, "mac TcpControl=18/63"},
      {{"TCP_FLAGS=0x80/0x80"}, "mac {TCP_FLAGS=0x80/0x80}"},
      {{"IP_TYPE=IPV6ANY"}, "ip6"},
      {{"IP_TYPE=NON_IP"}, "mac {IP_TYPE=NON_IP}"},
      {{"SRC_MAC=00:00:5e:00:53:01/ff:ff:ff:00:00:00"},
       "mac SrcMac=00:00:5e:00:53:01/ff:ff:ff:00:00:00"},
      {{"IN_PORTS=Ethernet0,Ethernet4"}, "mac {IN_PORTS=Ethernet0,Ethernet4}"},
      {{"L4_SRC_PORT_RANGE =90-95", "l4_dst_port=80"}, "mac L4DstPort=80/65535 L4SrcPort:90-95"},
      // The switch did not understand it either.
      {{"SRC_IP=10.0.0.300/32", "L4_SRC_PORT=http", "L4_DST_PORT_RANGE=95", "NEW_FIELD=1"},
       "mac {L4_DST_PORT_RANGE=95 L4_SRC_PORT=http NEW_FIELD=1 SRC_IP=10.0.0.300/32}"},
  };
  for (const Row& each : rows) {
    SCOPED_TRACE(each.match);
    SonicFiles const files;
    files.writeRows("ASIC_DB.json", {asicTable("0x7")});
    files.writeRows("CONFIG_DB.json", {row("ACL_RULE|T|R", each.fields)});
    EXPECT_EQ(readSonic(files, matchText), Texts{each.match});
  }
}

TEST(SonicMatch, SaysWhatAnEntryDoes) {
  struct Row {
    Texts attributes;
    const char* action;
  };
  Row const rows[] = {
      {{"ACTION_PACKET_ACTION=SAI_PACKET_ACTION_FORWARD"}, "permit"},
      {{"ACTION_PACKET_ACTION=SAI_PACKET_ACTION_DROP"}, "deny"},
      {{"ACTION_PACKET_ACTION=SAI_PACKET_ACTION_TRAP"}, "TRAP"},
      {{"ACTION_PACKET_ACTION=SAI_PACKET_ACTION_COPY"}, "COPY"},
      {{"ACTION_PACKET_ACTION=disabled"}, ""},
      {{"ACTION_MIRROR_INGRESS=1:oid:0xe0000000008f9"}, "MIRROR_INGRESS=1:oid:0xe0000000008f9"},
      {{"ACTION_SET_TC=3", "ACTION_REDIRECT=oid:0x1",
        "ACTION_PACKET_ACTION=SAI_PACKET_ACTION_FORWARD"},
       "permit REDIRECT=oid:0x1 SET_TC=3"},
      {{"ACTION_COUNTER=oid:0x9"}, ""},
      {{}, ""},
  };
  for (const Row& each : rows) {
    SonicFiles const files;
    files.writeRows("ASIC_DB.json", {asicTable("0x7"), asicEntry("0x8", "0x7", each.attributes)});
    EXPECT_EQ(readSonic(files, [](const Entry& entry) { return std::string(entry.action); }),
              Texts{each.action});
  }
  SonicFiles const files;
  files.writeRows("ASIC_DB.json", {asicTable("0x7")});
  files.writeRows("CONFIG_DB.json", {row("ACL_RULE|T|A", {"PACKET_ACTION=ACCEPT"}),
                                     row("ACL_RULE|T|B", {"PACKET_ACTION=REDIRECT:Ethernet0"}),
                                     row("ACL_RULE|T|C", {"MIRROR_INGRESS_ACTION=everflow0"})});
  EXPECT_EQ(readSonic(files, [](const Entry& entry) { return std::string(entry.action); }),
            (Texts{"permit", "REDIRECT:Ethernet0", "MIRROR_INGRESS=everflow0"}));
}

}  // namespace
}  // namespace tcamshow
