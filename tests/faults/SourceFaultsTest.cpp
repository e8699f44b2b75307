// Flows and databases of switches, each with every allocation failing in turn.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "../tcamshow/SonicFiles.h"
#include "../tcamshow/TemporaryFile.h"
#include "EveryFault.h"
#include "Sink.h"
#include "io/OutputBuffer.h"
#include "snapshot/SnapshotWriter.h"
#include "sources/Ovs.h"

namespace tcamshow {
namespace {

/// Every allocation fails once: the snapshot is whole, or a beginning of it.
void everyFaultOf(const char* name,
                  const std::function<std::unique_ptr<Source>(Complaints& complaints)>& open) {
  Sink sink;
  auto const run = [&] {
    Complaints complaints;
    OutputBuffer out(sink.descriptor());
    writeSnapshot(*open(complaints), out);
    out.flush();
    static_cast<void>(complaints.texts());
  };
  run();
  std::string const expected = sink.take();
  ASSERT_GT(expected.size(), 400U);
  everyFault(name, [&](Fault& fault) {
    bool const isDone = fault.tries(run);
    std::string const got = sink.take();
    fault.check(isDone ? got == expected : expected.starts_with(got),
                "the output is whole, or a beginning of it");
    run();
    fault.check(sink.take() == expected, "it works afterwards");
  });
}

TEST(SourceFaults, FlowsAreWholeOrABeginning) {
  TemporaryFile const file(
      "NXST_FLOW reply (xid=0x4):\n"
      " cookie=0x0, table=0, n_packets=3, n_bytes=162, "
      "priority=500,tcp,nw_src=10.0.0.0/8,tp_dst=443,"
      "in_port=\"a port with quite a long name\" actions=output:2\n"
      " priority=1,ip,table=\"a table with quite a long name\",nw_src=1.2.3.4,actions=drop\n"
      " ipv6,ipv6_src=2001:db8::/32,tcp_flags=+syn-ack actions=conjunction(7,1/2)\n");
  everyFaultOf("tcamshow import ovs",
               [&](Complaints& complaints) { return openOvs(InputFile(file.path()), complaints); });
}

TEST(SourceFaults, BundlesAreWholeOrABeginning) {
  SonicFiles const files;
  files.writeRows(
      "ASIC_DB.json",
      {asicTable("0x7000000000600"), asicTable("0x7000000000601", "EGRESS"),
       asicRange("0xa1", "L4_SRC_PORT_RANGE", "90,95"), asicRange("0xa2", "OUTER_VLAN", "90,95"),
       asicEntry("0x81", "0x7000000000600",
                 {"PRIORITY=5", "ACTION_COUNTER=oid:0x91", "FIELD_SRC_IP=10.0.0.0&mask:255.0.0.0",
                  "ACTION_PACKET_ACTION=SAI_PACKET_ACTION_FORWARD",
                  "ACTION_MIRROR_INGRESS=1:oid:0xe0000000008f9"}),
       asicEntry(
           "0x82", "0x7000000000600",
           {"PRIORITY=4", "FIELD_ACL_RANGE_TYPE=2:oid:0xa1,oid:0xa2", "FIELD_ICMP_TYPE=8&mask:0xff",
            "FIELD_IN_PORTS=2:oid:0x1,oid:0x2", "ADMIN_STATE=false"}),
       asicEntry(
           "0x83", "0x7000000000601",
           {"PRIORITY=3", "FIELD_SRC_IPV6=2001:db8::&mask:ffff:ffff::", "FIELD_TC=\\u0031"})});
  files.writeRows("CONFIG_DB.json",
                  {row("ACL_TABLE|a table with quite a long name", {"type=L3"}),
                   row("ACL_RULE|a table with quite a long name|a rule", {"PRIORITY=5"}),
                   row("ACL_RULE|a table with quite a long name|the rule that lacks",
                       {"PRIORITY=high", "SRC_IP=nowhere", "PACKET_ACTION=DROP"}),
                   row("ACL_RULE|EGRESS|R", {"PRIORITY=3", "SRC_IPV6=2001:db8::/32"}),
                   row("ACL_TABLE|SNMP", {"type=CTRLPLANE"})});
  files.writeRows(
      "COUNTERS_DB.json",
      {row("ACL_COUNTER_RULE_MAP", {"a table with quite a long name:a rule=oid:0x91"}),
       row("COUNTERS:oid:0x91", {"SAI_ACL_COUNTER_ATTR_PACKETS=7"}),
       row("CRM:ACL_TABLE_STATS:0x7000000000600", {"crm_stats_acl_entry_available=7"})});
  files.writeRows("STATE_DB.json",
                  {row("ACL_RULE_TABLE|a table with quite a long name|the rule that lacks",
                       {"status=Inactive, and for a long time too"})});
  everyFaultOf("tcamshow import sonic",
               [&](Complaints& complaints) { return openSonic(files.path(), complaints); });
}

}  // namespace
}  // namespace tcamshow
