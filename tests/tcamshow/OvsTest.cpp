#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Process.h"
#include "SourceEntries.h"
#include "TemporaryFile.h"
#include "io/InputError.h"
#include "sources/Ovs.h"

namespace tcamshow {
namespace {

/// The entries of a list of flows, in matchText()'s form or as `show` says; an error's text last.
std::vector<std::string> read(
    const std::string& text, const std::function<std::string(const Entry&)>& show =
                                 [](const Entry& entry) { return matchText(entry); }) {
  TemporaryFile const file(text);
  std::vector<std::string> entries;
  Complaints complaints;
  try {
    auto const source = openOvs(InputFile(file.path()), complaints);
    eachEntry(*source, [&](const Entry& entry) { entries.push_back(show(entry)); });
  } catch (const InputError& error) {
    entries.push_back("line " + std::to_string(error.line()) + ": " + error.message());
  }
  return entries;
}

std::string matchOfFlow(const std::string& match) {
  std::vector<std::string> const entries =
      read(" cookie=0x0, duration=1.2s, table=0, n_packets=0, n_bytes=0, idle_age=1, priority=7" +
           (match.empty() ? "" : "," + match) + " actions=drop\n");
  return entries.size() == 1 ? entries[0] : "not one entry";
}

TEST(Ovs, WritesTheWholeEntry) {
  ProcessResult const result = runTcamshow(
      {"import", "ovs"},
      {.input = "NXST_FLOW reply (xid=0x4):\n"
                " cookie=0x0, duration=1.235s, table=0, n_packets=3, n_bytes=162, idle_age=1, "
                "priority=500,tcp,nw_src=10.0.0.0/8,tp_dst=443 actions=output:2\r\n"
                "\n"
                " table=3, actions=resubmit(,1), note:00.11\n"
                " cookie=0x0, duration=1.2s, table=0, n_packets=18446744073709551615, n_bytes=0, "
                "reset_counts priority=1,in_port=\"a, b\" actions=NORMAL\n"});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            R"({"type":"snapshot","version":2})"
            "\n"
            R"({"type":"group","name":"table 0"})"
            "\n"
            R"({"type":"entry","table":"ip","shadowId":1,"sequence":0,"priority":500,)"
            R"("description":"tcp,nw_src=10.0.0.0/8,tp_dst=443","action":"output:2","hits":3,)"
            R"("bytes":162,"counterStatus":7,"feature":"openflow","qualifiers":{)"
            R"("qualifierIpProtocol":{"value":6,"mask":255},)"
            R"("qualifierSrcIp":{"value":"10.0.0.0","mask":"255.0.0.0"},)"
            R"("qualifierL4DstPort":{"value":443,"mask":65535}}})"
            "\n"
            R"({"type":"group","groupId":3,"name":"table 3"})"
            "\n"
            R"({"type":"entry","groupId":3,"table":"mac","shadowId":2,"sequence":0,)"
            R"("priority":32768,"action":"resubmit(,1), note:00.11","feature":"openflow"})"
            "\n"
            R"({"type":"entry","table":"mac","shadowId":3,"sequence":0,"priority":1,)"
            R"("description":"in_port=\"a, b\"","action":"NORMAL","hits":18446744073709551615,)"
            R"("bytes":0,"counterStatus":7,"feature":"openflow","otherMatch":"in_port=\"a, b\""})"
            "\n"
            R"({"type":"end","groups":2,"entries":3})"
            "\n");
}

TEST(Ovs, MakesTheMatch) {
  struct Row {
    const char* flow;
    const char* match;
  };
  Row const rows[] = {
      {"", "mac"},
      // Words that name a protocol.
      {"ip", "ip"},
      {"icmp", "ip IpProtocol=1/255"},
      {"tcp", "ip IpProtocol=6/255"},
      {"udp", "ip IpProtocol=17/255"},
      {"sctp", "ip IpProtocol=132/255"},
      {"ipv6", "ip6"},
      {"ip6", "ip6"},
      {"icmp6", "ip6 IpProtocol=58/255"},
      {"tcp6", "ip6 IpProtocol=6/255"},
      {"udp6", "ip6 IpProtocol=17/255"},
      {"sctp6", "ip6 IpProtocol=132/255"},
      {"arp", "mac EtherType=2054/65535"},
      {"rarp", "mac EtherType=32821/65535"},
      {"mpls", "mac EtherType=34887/65535"},
      {"mplsm", "mac EtherType=34888/65535"},
      // Numbers in place of words.
      {"dl_type=0x0800", "ip"},
      {"dl_type=0x86dd,nw_proto=6,tp_src=1", "ip6 IpProtocol=6/255 L4SrcPort=1/65535"},
      {"eth_type=0x88cc", "mac EtherType=35020/65535"},
      {"dl_type=2048,nw_proto=0", "ip IpProtocol=0/255"},
      {"dl_type=0x8000/0x8000", "mac EtherType=32768/32768"},
      {"dl_type=0x05ff", "mac {dl_type=0x05ff}"},
      {"ip,nw_proto=47", "ip IpProtocol=47/255"},
      // Addresses.
      {"ip,nw_src=10.1.2.3", "ip SrcIp=10.1.2.3/255.255.255.255"},
      {"ip,nw_src=10.0.0.0/8", "ip SrcIp=10.0.0.0/255.0.0.0"},
      {"ip,nw_dst=10.0.0.0/255.0.255.0", "ip DstIp=10.0.0.0/255.0.255.0"},
      {"ip,nw_dst=0.0.0.0/0", "ip DstIp=0.0.0.0/0.0.0.0"},
      {"ip,ip_src=1.2.3.4,ip_dst=5.6.7.8",
       "ip SrcIp=1.2.3.4/255.255.255.255 DstIp=5.6.7.8/255.255.255.255"},
      {"ipv6,ipv6_src=2001:db8::/32", "ip6 SrcIp6=2001:db8::/ffff:ffff::"},
      {"ipv6,ipv6_dst=2001:db8::1/ffff:ffff::ffff", "ip6 DstIp6=2001:db8::1/ffff:ffff::ffff"},
      {"ipv6,ipv6_dst=::1", "ip6 DstIp6=::1/ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
      {"dl_src=50:54:00:00:00:06", "mac SrcMac=50:54:00:00:00:06/ff:ff:ff:ff:ff:ff"},
      {"dl_dst=01:00:00:00:00:00/01:00:00:00:00:00",
       "mac DstMac=01:00:00:00:00:00/01:00:00:00:00:00"},
      {"eth_src=50:54:00:00:00:06,ip", "ip SrcMac=50:54:00:00:00:06/ff:ff:ff:ff:ff:ff"},
      // The type of service: the DSCP shifted by two.
      {"ip,nw_tos=184", "ip DSCP=46/63"},
      {"ip,nw_tos=0", "ip DSCP=0/63"},
      {"ipv6,nw_tos=0xb8", "ip6 DSCP=46/63"},
      {"ip,ip_dscp=46", "ip DSCP=46/63"},
      {"ip,ip_dscp=0x2e/0x30", "ip DSCP=46/48"},
      {"ip,nw_tos=0xb8/0xe0", "ip DSCP=46/56"},
      {"ip,nw_tos=0xb8/0xff", "ip {nw_tos=0xb8/0xff}"},
      {"ip,nw_tos=185", "ip {nw_tos=185}"},
      {"ip,nw_ecn=1", "ip {nw_ecn=1}"},
      {"nw_tos=184", "mac {nw_tos=184}"},
      // VLANs.
      {"dl_vlan=100", "mac OuterVlanId=100/4095"},
      {"dl_vlan=0", "mac OuterVlanId=0/4095"},
      {"dl_vlan=0xffff", "mac {dl_vlan=0xffff}"},
      {"dl_vlan=100,dl_vlan_pcp=3", "mac OuterVlanId=100/4095 {dl_vlan_pcp=3}"},
      {"vlan_tci=0x1064/0x1fff", "mac OuterVlanId=100/4095"},
      {"vlan_tci=0x3064/0x1fff", "mac OuterVlanId=100/4095"},
      {"vlan_tci=0x1000/0x1000", "mac {vlan_tci=0x1000/0x1000}"},
      {"vlan_tci=0x0064/0x1fff", "mac {vlan_tci=0x0064/0x1fff}"},
      {"vlan_tci=0x0000/0x1fff", "mac {vlan_tci=0x0000/0x1fff}"},
      {"vlan_tci=0x3064", "mac {vlan_tci=0x3064}"},
      {"vlan_tci=0x1064/0x0fff", "mac {vlan_tci=0x1064/0x0fff}"},
      {"vlan_vid=0x1064", "mac OuterVlanId=100/4095"},
      {"vlan_vid=0x1064/0x1fff", "mac OuterVlanId=100/4095"},
      {"vlan_vid=0x64", "mac {vlan_vid=0x64}"},
      // Ports.
      {"tcp,tp_src=0x1230/0xfff0", "ip IpProtocol=6/255 L4SrcPort=4656/65520"},
      {"udp,tp_dst=53", "ip IpProtocol=17/255 L4DstPort=53/65535"},
      {"sctp6,tp_dst=7", "ip6 IpProtocol=132/255 L4DstPort=7/65535"},
      {"tcp,tcp_src=1,tcp_dst=2", "ip IpProtocol=6/255 L4SrcPort=1/65535 L4DstPort=2/65535"},
      {"udp6,udp_src=1,udp_dst=2", "ip6 IpProtocol=17/255 L4SrcPort=1/65535 L4DstPort=2/65535"},
      {"sctp,sctp_src=1/1,sctp_dst=2", "ip IpProtocol=132/255 L4SrcPort=1/1 L4DstPort=2/65535"},
      {"udp,tcp_dst=80", "ip IpProtocol=17/255 {tcp_dst=80}"},
      {"ip,tp_dst=80", "ip {tp_dst=80}"},
      {"icmp,tp_src=8", "ip IpProtocol=1/255 {tp_src=8}"},
      {"ip,nw_proto=17,tp_dst=80", "ip IpProtocol=17/255 L4DstPort=80/65535"},
      {"ip,tp_dst=80,nw_proto=6", "ip L4DstPort=80/65535 IpProtocol=6/255"},
      // Flags.
      {"tcp,tcp_flags=+syn-ack", "ip IpProtocol=6/255 TcpControl=2/18"},
      {"tcp,tcp_flags=-syn", "ip IpProtocol=6/255 TcpControl=0/2"},
      {"tcp6,tcp_flags=+fin+syn+rst-psh-ack+urg", "ip6 IpProtocol=6/255 TcpControl=39/63"},
      {"tcp,tcp_flags=0x002/0x012", "ip IpProtocol=6/255 TcpControl=2/18"},
      {"tcp,tcp_flags=+syn-ece", "ip IpProtocol=6/255 {tcp_flags=+syn-ece}"},
      {"tcp,tcp_flags=+ns+cwr", "ip IpProtocol=6/255 {tcp_flags=+ns+cwr}"},
      {"tcp,tcp_flags=+syn-[200]", "ip IpProtocol=6/255 {tcp_flags=+syn-[200]}"},
      {"tcp,tcp_flags=syn|ack", "ip IpProtocol=6/255 {tcp_flags=syn|ack}"},
      {"tcp,tcp_flags=syn", "ip IpProtocol=6/255 {tcp_flags=syn}"},
      {"tcp,tcp_flags=0", "ip IpProtocol=6/255 {tcp_flags=0}"},
      {"tcp,tcp_flags=0x002/0xfff", "ip IpProtocol=6/255 {tcp_flags=0x002/0xfff}"},
      {"udp,tcp_flags=+syn", "ip IpProtocol=17/255 {tcp_flags=+syn}"},
      // ICMP.
      {"icmp,icmp_type=8", "ip IpProtocol=1/255 L4SrcPort=2048/65280"},
      {"icmp,icmp_type=3,icmp_code=1", "ip IpProtocol=1/255 L4SrcPort=768/65280 L4DstPort=1/255"},
      {"icmp6,icmp_type=135,icmp_code=0",
       "ip6 IpProtocol=58/255 L4SrcPort=34560/65280 L4DstPort=0/255"},
      {"icmp6,icmpv6_type=135", "ip6 IpProtocol=58/255 L4SrcPort=34560/65280"},
      {"icmp,icmpv6_type=135", "ip IpProtocol=1/255 {icmpv6_type=135}"},
      {"tcp,icmp_type=8", "ip IpProtocol=6/255 {icmp_type=8}"},
      {"icmp_type=8", "mac {icmp_type=8}"},
      {"ip,nw_proto=58,icmp_type=8", "ip IpProtocol=58/255 {icmp_type=8}"},
      // Fragments, time to live.
      {"ip,nw_frag=no", "ip IpFrag=1/3"},
      {"ipv6,nw_frag=yes", "ip6 IpFrag=3/3"},
      {"ip,ip_frag=yes", "ip IpFrag=3/3"},
      {"ip,nw_frag=first", "ip {nw_frag=first}"},
      {"ip,nw_frag=later", "ip {nw_frag=later}"},
      {"ip,nw_frag=not_later", "ip {nw_frag=not_later}"},
      {"nw_frag=no", "mac {nw_frag=no}"},
      {"ipv6,nw_ttl=64", "ip6 Ip6HopLimit=64/255"},
      {"ip,nw_ttl=1", "ip {nw_ttl=1}"},
      // Fields that a snapshot does not have, and fields of packets that are not theirs.
      {"in_port=1", "mac {in_port=1}"},
      {"in_port=LOCAL,ip,nw_src=1.2.3.4", "ip SrcIp=1.2.3.4/255.255.255.255 {in_port=LOCAL}"},
      {"ct_state=+est+trk,ip", "ip {ct_state=+est+trk}"},
      {"ip,reg0=0x5,metadata=0x5/0xf", "ip {reg0=0x5,metadata=0x5/0xf}"},
      {"arp,arp_spa=1.2.3.4,arp_op=1", "mac EtherType=2054/65535 {arp_spa=1.2.3.4,arp_op=1}"},
      {"arp,nw_src=1.2.3.4,nw_proto=1", "mac EtherType=2054/65535 {nw_src=1.2.3.4,nw_proto=1}"},
      {"nw_src=1.2.3.4", "mac {nw_src=1.2.3.4}"},
      {"ipv6,nw_src=1.2.3.4", "ip6 {nw_src=1.2.3.4}"},
      {"ip,ipv6_src=::1", "ip {ipv6_src=::1}"},
      {"mpls,mpls_label=5", "mac EtherType=34887/65535 {mpls_label=5}"},
      {"packet_type=(1,0x800)", "mac {packet_type=(1,0x800)}"},
      {"conj_id=7,ip", "ip {conj_id=7}"},
      {"nsh", "mac {nsh}"},
      {"new_field=1,tcp=1", "mac {new_field=1,tcp=1}"},
      {R"(in_port="p \", tcp",ip)", R"(ip {in_port="p \", tcp"})"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.flow);
    EXPECT_EQ(matchOfFlow(row.flow), row.match);
  }
}

TEST(Ovs, ReadsEveryFormOfAFlow) {
  struct Row {
    const char* line;
    const char* entry;  ///< table, priority, hits, bytes, description, action
  };
  Row const rows[] = {
      {" actions=drop", "0 32768 - - () drop"},
      {"actions=drop", "0 32768 - - () drop"},
      {" cookie=0x0, duration=2.1s, table=0, n_packets=1, n_bytes=2, idle_age=2, actions=drop",
       "0 32768 1 2 () drop"},
      {" cookie=0x5, duration=0.2s, table=3, n_packets=0, n_bytes=0, idle_timeout=60, "
       "hard_timeout=70, importance=5, send_flow_rem check_overlap reset_counts no_packet_counts "
       "no_byte_counts hard_age=3, idle_age=0, priority=77,ip actions=drop",
       "3 77 0 0 (ip) drop"},
      {" table=254, priority=0 actions=CONTROLLER:65535", "254 0 - - () CONTROLLER:65535"},
      {" n_packets=5, priority=1,ip actions=drop", "0 1 5 - (ip) drop"},
      {" n_bytes=5, priority=1,ip actions=drop", "0 1 - 5 (ip) drop"},
      {"priority=1,tcp,table=4,tp_dst=80,actions=output:1", "4 1 - - (tcp,tp_dst=80) output:1"},
      {" ip,in_port=\"a actions=b\" actions=output:\"a actions=b\"",
       "0 32768 - - (ip,in_port=\"a actions=b\") output:\"a actions=b\""},
      {" ip,nw_src=1.2.3.4 actions=learn(table=2,priority=5,NXM_OF_ETH_DST[]=NXM_OF_ETH_SRC[])",
       "0 32768 - - (ip,nw_src=1.2.3.4) "
       "learn(table=2,priority=5,NXM_OF_ETH_DST[]=NXM_OF_ETH_SRC[])"},
      {" table=classifier, ip actions=drop", "256 32768 - - (ip) drop"},
      {" table=\"my table\", ip actions=drop", "256 32768 - - (ip) drop"},
  };
  auto const show = [](const Entry& entry) {
    auto const number = [](bool isThere, std::uint64_t value) {
      return isThere ? " " + std::to_string(value) : std::string(" -");
    };
    return std::to_string(entry.place.groupId) + " " + std::to_string(entry.priority) +
           number(entry.counterStatus == statusProgrammed, entry.hits) +
           number(entry.bytes.has_value(), entry.bytes.value_or(0)) + " (" +
           std::string(entry.description) + ") " + std::string(entry.action);
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    EXPECT_EQ(read(row.line, show), std::vector<std::string>{row.entry});
  }
}

TEST(Ovs, KeepsAFlowOfAConjunctionApart) {
  EXPECT_EQ(read(" ip,nw_src=1.2.3.4 actions=conjunction(7,1/2)\n"
                 " reg1=1,ip actions=conjunction(7,1/2),conjunction(8,2/2)\n"
                 " ip actions=output:1\n"),
            (std::vector<std::string>{
                "ip SrcIp=1.2.3.4/255.255.255.255 {conjunction(7,1/2)}",
                "ip {reg1=1,conjunction(7,1/2),conjunction(8,2/2)}",
                "ip",
            }));
}

TEST(Ovs, GivesAGroupToEachTable) {
  TemporaryFile const file(
      " table=1, ip actions=drop\n table=b, ip actions=drop\n ip actions=drop\n"
      " table=1, ip actions=drop\n table=\"a b\", ip actions=drop\n table=b, ip actions=drop\n");
  Complaints complaints;
  auto const source = openOvs(InputFile(file.path()), complaints);
  std::string all;
  for (Source::Item item; (item = source->next()) != Source::Item::end;) {
    all += item == Source::Item::group ? "[" + std::to_string(source->group().place.groupId) + " " +
                                             std::string(source->group().name) + "]"
                                       : std::to_string(source->entry().place.groupId) + ";";
  }
  EXPECT_EQ(all, "[1 table 1]1;[256 table b]256;[0 table 0]0;1;[257 table a b]257;256;");
}

TEST(Ovs, RefusesWhatIsNoFlow) {
  std::string const bad = "\xC3";
  struct Row {
    std::string line;
    const char* error;
  };
  Row const rows[] = {
      {"version 1", R"("version 1" is not a flow: "actions=" is missing)"},
      {" priority=1,ip", R"("priority=1,ip" is not a flow: "actions=" is missing)"},
      {" ip,actions", R"("ip,actions" is not a flow: "actions=" is missing)"},
      {" ip actions=", "the flow has no actions"},
      {"2026-11-22 error: actions=drop",
       R"("2026-11-22 error: actions=drop" is not a flow: "2026-11-22" is not a field)"},
      {" ip,=5 actions=drop", R"("ip,=5 actions=drop" is not a flow: "=5" is not a field)"},
      {" ip,In_port=5 actions=drop",
       R"("ip,In_port=5 actions=drop" is not a flow: "In_port=5" is not a field)"},
      {" \"ip\" actions=drop", R"(""ip" actions=drop" is not a flow: ""ip"" is not a field)"},
      {"flow-dump from the main thread:",
       "this is a flow of the datapath, which caches the tables; the flows of the tables are "
       "read: 'ovs-ofctl dump-flows BRIDGE'"},
      {"recirc_id(0),in_port(1),eth_type(0x0800), packets:0, bytes:0, used:never, actions:drop",
       "this is a flow of the datapath, which caches the tables; the flows of the tables are "
       "read: 'ovs-ofctl dump-flows BRIDGE'"},
      {" ip,nw_src=1.2.3 actions=drop", R"(nw_src: "1.2.3" is not an IPv4 address)"},
      {" ip,nw_src=1.2.3.4/33 actions=drop", R"(nw_src: "1.2.3.4/33" is not an IPv4 address)"},
      {" ip,nw_src= actions=drop", R"(nw_src: "" is not an IPv4 address)"},
      {" ipv6,ipv6_src=1.2.3.4 actions=drop", R"(ipv6_src: "1.2.3.4" is not an IPv6 address)"},
      {" ipv6,ipv6_dst=::/129 actions=drop", R"(ipv6_dst: "::/129" is not an IPv6 address)"},
      {" dl_src=1:2:3:4:5:6 actions=drop", R"(dl_src: "1:2:3:4:5:6" is not a MAC address)"},
      {" tcp,tp_dst=65536 actions=drop",
       R"(tp_dst: "65536" is not a number from 0 to 65535, with or without a mask)"},
      {" tcp,tp_dst=http actions=drop",
       R"(tp_dst: "http" is not a number from 0 to 65535, with or without a mask)"},
      {" icmp,icmp_type=256 actions=drop",
       R"(icmp_type: "256" is not a number from 0 to 255, with or without a mask)"},
      {" ip,nw_tos=256 actions=drop",
       R"(nw_tos: "256" is not a number from 0 to 255, with or without a mask)"},
      {" ip,ip_dscp=64 actions=drop",
       R"(ip_dscp: "64" is not a number from 0 to 63, with or without a mask)"},
      {" tcp,tcp_flags=+sin actions=drop",
       R"(tcp_flags: "sin" is not a flag of TCP: fin, syn, rst, psh, ack, urg, ece, cwr, ns)"},
      {" priority=x,ip actions=drop", R"(priority: "x" is not a number from 0 to 4294967295)"},
      {" n_packets=-1, ip actions=drop",
       R"(n_packets: "-1" is not a number from 0 to 18446744073709551615)"},
      {" tcp,udp actions=drop", "udp stands twice"},
      {" tcp,nw_proto=6 actions=drop", "nw_proto: the flow names its protocol twice"},
      {" ip,dl_type=0x0800 actions=drop", "dl_type: the flow names its ether type twice"},
      {" ip,nw_src=1.2.3.4,ip_src=1.2.3.4 actions=drop", "ip_src stands twice"},
      {" dl_vlan=1,vlan_tci=0x1001/0x1fff actions=drop", "vlan_tci stands twice"},
      {" ip,nw_tos=4,ip_dscp=1 actions=drop", "ip_dscp stands twice"},
      {" table=1, table=2, ip actions=drop", "table=2 stands twice"},
      {" table=, ip actions=drop", "table: the name is missing"},
      {std::string(" ip actions=dr\0op", 17), "the line holds a NUL byte"},
      {std::string("\0", 1), "the line holds a NUL byte"},
      {" ip\tactions=drop", "the line holds a control character"},
      {" ip actions=output:\x7F", "the line holds a control character"},
      {" ip actions=output:" + bad, "the line holds bytes that are not UTF-8"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    EXPECT_EQ(read(" ip actions=drop\n" + row.line + "\n"),
              (std::vector<std::string>{"ip", std::string("line 2: ") + row.error}));
  }
}

TEST(Ovs, StopsAtAFaultWithoutAnEnd) {
  ProcessResult const result =
      runTcamshow({"import", "ovs"}, {.input = " ip actions=drop\nno flow\n ip actions=drop\n"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "tcamshow: <stdin>:2: \"no flow\" is not a flow: \"actions=\" is missing\n");
  EXPECT_NE(result.out.find("\"shadowId\":1"), std::string::npos);
  EXPECT_EQ(result.out.find("\"end\""), std::string::npos);
}

TEST(Ovs, RecognisesFlows) {
  struct Row {
    const char* start;
    bool isFlows;
  };
  Row const rows[] = {
      {"NXST_FLOW reply (xid=0x4):\n", true},
      {"OFPST_FLOW reply (OF1.3) (xid=0x2): flags=[more]\n", true},
      {" cookie=0x0, priority=1,ip actions=drop\n", true},
      {"\r\n\n actions=drop", true},
      {"ip,actions=drop", true},
      {"flow-dump from the main thread:\n", true},
      {"recirc_id(0),in_port(p1),eth_type(0x0800), packets:0, actions:drop\n", true},
      {"", false},
      {"{\"actions=\":1}", false},
      {"@1.2.3.4/32 actions", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.start);
    EXPECT_EQ(ovsRuledOut(row.start).empty(), row.isFlows);
  }
  ProcessResult const result = runTcamshow({"tcam"}, {.input = " priority=1,ip actions=drop\n"});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "    0x00000001            0 hits - ip\n");
}

TEST(Ovs, ReachesEveryCommandPackedOrNot) {
  std::string const flows = " priority=1,ip,nw_src=10.0.0.0/8 actions=drop\n actions=NORMAL\n";
  std::string const packed = runProcess({"/usr/bin/env", "gzip", "-c"}, {.input = flows}).out;
  std::vector<std::vector<std::string>> const commands = {
      {"list"},
      {"ip"},
      {"tcam"},
      {"--json", "tcam"},
      {"usage"},
      {"summary"},
      {"inspect"},
      {"import"},
      {"import", "ovs"},
      {"import", "ovs", "-"},
      {"list", "--from", "ovs"},
      {"list", "--where", "src within 10.0.0.0/8"}};
  for (const std::vector<std::string>& command : commands) {
    SCOPED_TRACE(command.front());
    ProcessResult const plain = runTcamshow(command, {.input = flows});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.err, "");
    EXPECT_NE(plain.out, "");
    EXPECT_EQ(runTcamshow(command, {.input = packed}).out, plain.out);
  }
  EXPECT_EQ(
      runTcamshow({"list", "--from", "openconfig"}, {.input = flows}).err,
      "tcamshow: <stdin>:1: this is a list of flows, not an OpenConfig ACL document; without a "
      "format it is recognised\n");
}

TEST(Ovs, ReadsRealFlows) {
  struct Row {
    const char* file;
    std::size_t flows;
  };
  Row const rows[] = {
      {"dump_mixed.txt", 24},
      {"dump_mixed_names_nostats.txt", 24},
      {"dump_mixed_of13.txt", 24},
      {"dump_acl1_1k.txt", 1307},
  };
  std::filesystem::path const directory = std::filesystem::path(TCAMSHOW_SHARED_DATA) / "ovs";
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << directory << " is not there";
  std::vector<std::vector<std::string>> mixed;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.file);
    std::ifstream file(directory / row.file);
    std::string const text(std::istreambuf_iterator<char>(file), {});
    std::vector<std::string> entries = read(text, [](const Entry& entry) {
      return std::to_string(entry.priority) + " " + matchText(entry);
    });
    EXPECT_EQ(entries.size(), row.flows);
    // Ports have names in one of the three forms of the same flows.
    for (std::string& entry : entries) {
      if (entry.find("{in_port") != std::string::npos) entry.resize(entry.find("{in_port"));
    }
    if (row.flows == 24) mixed.push_back(entries);
  }
  EXPECT_EQ(mixed[0], mixed[1]);
  EXPECT_EQ(mixed[0], mixed[2]);
}

// The winner that the switch itself found for each packet is the first entry that matches it.
TEST(Ovs, RealPacketsMeetTheFlowsThatTheSwitchFound) {
  std::filesystem::path const directory = std::filesystem::path(TCAMSHOW_SHARED_DATA) / "ovs";
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << directory << " is not there";
  struct Flow {
    std::uint32_t priority;
    Match match;
  };
  std::vector<Flow> flows;
  Complaints complaints;
  auto const source = openOvs(InputFile((directory / "dump_acl1_1k.txt").string()), complaints);
  eachEntry(*source, [&](const Entry& entry) {
    EXPECT_EQ(entry.otherMatch, "");
    flows.push_back({entry.priority, matchOf(entry)});
  });
  std::ifstream trace(directory / "acl1_1k.trace");
  std::string line;
  std::size_t packets = 0;
  while (std::getline(trace, line)) {
    if (line.empty() || line[0] == '#') continue;
    char source4[16];
    char destination[16];
    unsigned sourcePort = 0;
    unsigned destinationPort = 0;
    unsigned protocol = 0;
    unsigned flags = 0;
    std::uint32_t winner = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "%15s %15s %u %u %u %x %u", source4, destination,
                          &sourcePort, &destinationPort, &protocol, &flags, &winner),
              7)
        << line;
    std::uint32_t address = 0;
    TestPacket packet{};
    ASSERT_TRUE(ipFromText(source4, address));
    packet[indexOf(Field::src)] = address;
    ASSERT_TRUE(ipFromText(destination, address));
    packet[indexOf(Field::dst)] = address;
    packet[indexOf(Field::ethertype)] = etherTypeIp;
    packet[indexOf(Field::proto)] = protocol;
    packet[indexOf(Field::sport)] = sourcePort;
    packet[indexOf(Field::dport)] = destinationPort;
    packet[indexOf(Field::flags)] = flags & 0x3F;
    std::uint32_t priority = 0;
    for (const Flow& flow : flows) {
      if (flow.priority > priority && isIn(flow.match, packet)) priority = flow.priority;
    }
    // The priority of the flows of filter n is 65000 - n.
    EXPECT_EQ(priority == 0 ? 0 : 65000 - priority, winner) << line;
    ++packets;
  }
  EXPECT_EQ(packets, 393U);
}

}  // namespace
}  // namespace tcamshow
