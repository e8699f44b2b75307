#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "Process.h"
#include "SonicFiles.h"
#include "snapshot/EntryState.h"

namespace tcamshow {
namespace {

using Texts = std::vector<std::string>;

/// `ID PRIORITY ACTION DESCRIPTION STATE (REASON) HITS BYTES FEATURE`
std::string lineOf(const Entry& entry) {
  return std::to_string(entry.shadowId) + " " + std::to_string(entry.priority) + " " +
         std::string(entry.action) + " " + std::string(entry.description) + " " +
         std::string(stateName(stateOf(entry))) + " (" + std::string(entry.reason) + ") " +
         (entry.counterStatus == statusProgrammed ? std::to_string(entry.hits) : "-") + " " +
         (entry.bytes ? std::to_string(*entry.bytes) : "-") + " " + std::string(entry.feature);
}

TEST(Sonic, WritesTheWholeSnapshot) {
  SonicFiles const files;
  files.writeRows(
      "ASIC_DB.json",
      {
          asicTable("0x7000000000600", "EGRESS"),
          asicEntry("0x8000000000609", "0x7000000000600",
                    {"PRIORITY=9995", "ADMIN_STATE=true",
                     "ACTION_PACKET_ACTION=SAI_PACKET_ACTION_FORWARD",
                     "ACTION_COUNTER=oid:0x9000000000606", "FIELD_SRC_IP=10.0.0.2&mask:255.0.255.0",
                     "FIELD_IP_PROTOCOL=6&mask:0xff", "FIELD_ACL_RANGE_TYPE=1:oid:0xa000000000607",
                     "FIELD_TC=3&mask:0xff"}),
          asicRange("0xa000000000607", "L4_DST_PORT_RANGE", "90,95"),
          R"("ASIC_STATE:SAI_OBJECT_TYPE_ROUTE_ENTRY:{\"dest\":\"10.2.1.1\"}":{"a":[{}]})",
          R"("VIDTORID":{"oid:0x1":"oid:0x2"})",
      });
  files.writeRows("CONFIG_DB.json",
                  {
                      row("ACL_TABLE|DATAACL", {"type=L3", "stage=egress"}),
                      row("ACL_RULE|DATAACL|RULE_1",
                          {"PRIORITY=9995", "PACKET_ACTION=FORWARD", "SRC_IP=10.0.0.2/255.0.255.0",
                           "IP_PROTOCOL=6", "L4_DST_PORT_RANGE=90-95"}),
                      row("ACL_RULE|DATAACL|RULE_2",
                          {"PRIORITY=5", "PACKET_ACTION=DROP", "SRC_IPV6=2001:db8::/32"}),
                  });
  files.writeRows("COUNTERS_DB.json",
                  {
                      row("ACL_COUNTER_RULE_MAP", {"DATAACL:RULE_1=oid:0x9000000000606"}),
                      row("COUNTERS:oid:0x9000000000606",
                          {"SAI_ACL_COUNTER_ATTR_PACKETS=101", "SAI_ACL_COUNTER_ATTR_BYTES=6464"}),
                      row("CRM:ACL_TABLE_STATS:0x7000000000600",
                          {"crm_stats_acl_entry_used=1", "crm_stats_acl_entry_available=2047"}),
                  });
  files.writeRows("STATE_DB.json",
                  {row("ACL_RULE_TABLE|DATAACL|RULE_2", {"status=Pending creation"})});
  ProcessResult const result = runTcamshow({"import", "sonic", files.path()});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.out,
      R"({"type":"snapshot","version":2})"
      "\n"
      R"({"type":"group","stage":"egress","groupId":1,"name":"DATAACL","availableEntries":2047,)"
      R"("totalEntries":2048})"
      "\n"
      R"({"type":"entry","stage":"egress","groupId":1,"table":"ip","shadowId":2251799813686793,)"
      R"("sequence":0,"priority":9995,"description":"DATAACL|RULE_1","action":"permit","hits":101,)"
      R"("bytes":6464,"counterStatus":7,"state":"programmed","feature":"DATAACL","qualifiers":{)"
      R"("qualifierIpProtocol":{"value":6,"mask":255},)"
      R"("qualifierSrcIp":{"value":"10.0.0.2","mask":"255.0.255.0"}},)"
      R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":90,"high":95}},)"
      R"("otherMatch":"TC=3&mask:0xff"})"
      "\n"
      R"({"type":"entry","stage":"egress","groupId":1,"table":"ip6","shadowId":1,"sequence":0,)"
      R"("priority":5,"description":"DATAACL|RULE_2","action":"deny","state":"pending",)"
      R"("reason":"Pending creation","feature":"DATAACL","qualifiers":{)"
      R"("qualifierSrcIp6":{"value":"2001:db8::","mask":"ffff:ffff::"}}})"
      "\n"
      R"({"type":"end","groups":1,"entries":2})"
      "\n");
  // A directory needs no name of a format.
  EXPECT_EQ(runTcamshow({"import", files.path()}).out, result.out);
  EXPECT_EQ(runTcamshow({"list", files.path()}).out,
            runTcamshow({"list"}, {.input = result.out}).out);
  EXPECT_EQ(runTcamshow({"list", "--from", "sonic", files.path()}).out,
            runTcamshow({"list", files.path()}).out);
  EXPECT_EQ(runTcamshow({"tcam", files.path()}).out,
            "    0x00000609          101 hits - DATAACL|RULE_1\n"
            "    0x00000001            0 hits - DATAACL|RULE_2\n");
}

TEST(Sonic, NumbersTablesByTheirObjectIds) {
  SonicFiles const files;
  files.writeRows("ASIC_DB.json", {asicTable("0x10", "EGRESS"), asicTable("0x9"),
                                   asicTable("0x70000000000000a0", "PRE_INGRESS")});
  files.writeRows("COUNTERS_DB.json",
                  {row("CRM:ACL_TABLE_STATS:0x9",
                       {"crm_stats_acl_entry_used=3", "crm_stats_acl_entry_available=13"}),
                   row("CRM:ACL_TABLE_STATS:0x10", {"crm_stats_acl_entry_available=7"}),
                   row("CRM:ACL_TABLE_STATS:0x99", {"crm_stats_acl_entry_available=7"}),
                   row("CRM:STATS", {"crm_stats_fdb_entry_used=x"})});
  EXPECT_EQ(readSonic(files, lineOf, true),
            (Texts{"[1 oid:0x9 ingress 13 16]", "[2 oid:0x10 egress 7 -]",
                   "[3 oid:0x70000000000000a0 lookup - -]"}));
}

TEST(Sonic, FindsTheRuleOfAnEntry) {
  struct Row {
    const char* what;
    Texts asic;
    Texts config;
    Texts counters;
    Texts found;
  };
  std::string const anyRule = "PRIORITY=1";
  Row const rows[] = {
      {"the counters' map tells it",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"PRIORITY=5", "ACTION_COUNTER=oid:0x9"})},
       {row("ACL_RULE|A|R", {"PRIORITY=1"})},
       {row("ACL_COUNTER_RULE_MAP", {"A:R=oid:0x9"})},
       {"[1 A ingress - -]", "8 5  A|R programmed () - - A"}},
      {"names hold colons and slashes",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"ACTION_COUNTER=oid:0x9"})},
       {row("ACL_RULE|NULL:ROUTE|BLOCK_2001:db8::1/128", {anyRule})},
       {row("ACL_COUNTER_RULE_MAP", {"NULL:ROUTE:BLOCK_2001:db8::1/128=oid:0x9"})},
       {"[1 NULL:ROUTE ingress - -]",
        "8 0  NULL:ROUTE|BLOCK_2001:db8::1/128 programmed () - - NULL:ROUTE"}},
      {"two rules have the same name with a colon: the fields tell which",
       {asicTable("0x7"),
        asicEntry("0x8", "0x7",
                  {"ACTION_COUNTER=oid:0x9", "PRIORITY=3", "FIELD_DSCP=7&mask:0x3f"})},
       {row("ACL_RULE|A:B|C", {"PRIORITY=3"}), row("ACL_RULE|A|B:C", {"PRIORITY=3", "DSCP=7"})},
       {row("ACL_COUNTER_RULE_MAP", {"A:B:C=oid:0x9"})},
       {"[1 A ingress - -]", "8 3  A|B:C programmed () - - A", "[2 A:B ingress - -]",
        "1 3  A:B|C failed (not in ASIC_DB) - - A:B"}},
      {"several entries of one rule share its counter",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"PRIORITY=5", "ACTION_COUNTER=oid:0x9"}),
        asicEntry("0x9", "0x7", {"PRIORITY=5", "ACTION_COUNTER=oid:0x9"})},
       {row("ACL_RULE|A|R", {"PRIORITY=5"})},
       {row("ACL_COUNTER_RULE_MAP", {"A:R=oid:0x9"})},
       {"[1 A ingress - -]", "8 5  A|R programmed () - - A", "9 5  A|R programmed () - - A"}},
      {"two rules share a counter: the fields tell which",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"PRIORITY=5", "ACTION_COUNTER=oid:0x9"}),
        asicEntry("0x9", "0x7", {"PRIORITY=6", "ACTION_COUNTER=oid:0x9"})},
       {row("ACL_RULE|A|R6", {"PRIORITY=6"}), row("ACL_RULE|A|Z5", {"PRIORITY=5"})},
       {row("ACL_COUNTER_RULE_MAP", {"A:R6=oid:0x9", "A:Z5=oid:0x9"})},
       {"[1 A ingress - -]", "9 6  A|R6 programmed () - - A", "8 5  A|Z5 programmed () - - A"}},
      {"rules of the same priority and fields tell it",
       {asicTable("0x7"), asicEntry("0x8", "0x7",
                                    {"PRIORITY=5", "FIELD_SRC_IP=10.0.0.0&mask:255.0.0.0",
                                     "FIELD_ACL_IP_TYPE=SAI_ACL_IP_TYPE_IPV4ANY"})},
       {row("ACL_RULE|A|R", {"PRIORITY=5", "SRC_IP=10.1.2.3/8"}),
        row("ACL_RULE|B|R", {"PRIORITY=6", "SRC_IP=10.0.0.0/8"})},
       {},
       {"[1 A ingress - -]", "8 5  A|R programmed () - - A", "[2 B ingress - -]",
        "1 6  B|R failed (not in ASIC_DB) - - B"}},
      {"a rule that two tables have tells nothing; then the rest is told",
       {asicTable("0x7"), asicEntry("0x81", "0x7", {"PRIORITY=1"}),
        asicEntry("0x82", "0x7", {"PRIORITY=2"}), asicTable("0x8"),
        asicEntry("0x83", "0x8", {"PRIORITY=1"})},
       {row("ACL_RULE|A|D", {"PRIORITY=1"}), row("ACL_RULE|B|D", {"PRIORITY=1"}),
        row("ACL_RULE|B|R", {"PRIORITY=2"})},
       {},
       {"[1 B ingress - -]", "130 2  B|R programmed () - - B", "129 1  B|D programmed () - - B",
        "[2 A ingress - -]", "131 1  A|D programmed () - - A"}},
      {"nobody knows which is which: the rules are there, their names are not",
       {asicTable("0x7"), asicEntry("0x81", "0x7", {"PRIORITY=1"}), asicTable("0x8"),
        asicEntry("0x82", "0x8", {"PRIORITY=1"})},
       {row("ACL_RULE|A|D", {"PRIORITY=1"}), row("ACL_RULE|B|D", {"PRIORITY=1"})},
       {},
       {"[1 oid:0x7 ingress - -]", "129 1   programmed () - - oid:0x7", "[2 oid:0x8 ingress - -]",
        "130 1   programmed () - - oid:0x8"}},
      {"a table of the other stage is another one",
       {asicTable("0x7", "EGRESS"), asicEntry("0x8", "0x7", {"PRIORITY=5"})},
       {row("ACL_RULE|A|R", {"PRIORITY=5"})},
       {},
       {"[1 oid:0x7 egress - -]", "8 5   programmed (not in CONFIG_DB) - - oid:0x7",
        "[2 A ingress - -]", "1 5  A|R failed (not in ASIC_DB) - - A"}},
      {"the configuration lacks the rule, but not the table",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"ACTION_COUNTER=oid:0x9"})},
       {row("ACL_TABLE|A", {"type=L3"})},
       {row("ACL_COUNTER_RULE_MAP", {"A:GONE=oid:0x9"})},
       {"[1 A ingress - -]", "8 0  A|GONE programmed (not in CONFIG_DB) - - A"}},
      {"the table's name is known from another entry",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"ACTION_COUNTER=oid:0x9"}),
        asicEntry("0x9", "0x7", {"ACTION_COUNTER=oid:0xa"})},
       {row("ACL_RULE|A:B|R", {anyRule})},
       {row("ACL_COUNTER_RULE_MAP", {"A:B:GONE=oid:0x9", "A:B:R=oid:0xa"})},
       {"[1 A:B ingress - -]", "8 0  A:B|GONE programmed (not in CONFIG_DB) - - A:B",
        "9 0  A:B|R programmed () - - A:B"}},
      {"the configuration lacks the table",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"ACTION_COUNTER=oid:0x9"})},
       {row("ACL_TABLE|B", {"type=L3"})},
       {row("ACL_COUNTER_RULE_MAP", {"A:GONE=oid:0x9"})},
       {"[1 oid:0x7 ingress - -]", "8 0  A|GONE programmed (not in CONFIG_DB) - - oid:0x7",
        "[2 B ingress - -]"}},
      {"a disabled entry that no rule explains",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"ADMIN_STATE=false"})},
       {},
       {},
       {"[1 oid:0x7 ingress - -]", "8 0   pending (disabled, not in CONFIG_DB) - - oid:0x7"}},
  };
  for (const Row& each : rows) {
    SCOPED_TRACE(each.what);
    SonicFiles const files;
    files.writeRows("ASIC_DB.json", each.asic);
    files.writeRows("CONFIG_DB.json", each.config);
    files.writeRows("COUNTERS_DB.json", each.counters);
    EXPECT_EQ(readSonic(files, lineOf, true), each.found);
  }
}

TEST(Sonic, GivesTheRulesThatTheAsicLacks) {
  SonicFiles const files;
  files.writeRows("ASIC_DB.json", {asicTable("0x7"), asicEntry("0x8", "0x7", {"PRIORITY=5"})});
  files.writeRows("CONFIG_DB.json", {
                                        row("ACL_RULE|Z|LAST", {"PRIORITY=1"}),
                                        row("ACL_RULE|B|PENDING", {"PRIORITY=1"}),
                                        row("ACL_RULE|B|INACTIVE", {"PRIORITY=2"}),
                                        row("ACL_RULE|B|UNSAID", {"priority=3"}),
                                        row("ACL_RULE|B|EMPTY", {"PRIORITY=2"}),
                                        row("ACL_RULE|A|THERE", {"PRIORITY=5"}),
                                        row("ACL_RULE|A|NOT", {"PRIORITY=9", "PACKET_ACTION=DROP"}),
                                        row("ACL_TABLE|A", {"stage=INGRESS"}),
                                        row("ACL_TABLE|B", {"stage=Egress"}),
                                        row("ACL_TABLE|C", {"type=L3"}),
                                    });
  files.writeRows("STATE_DB.json", {
                                       row("ACL_RULE_TABLE|B|PENDING", {"status=Pending creation"}),
                                       row("ACL_RULE_TABLE|B|INACTIVE", {"status=Inactive"}),
                                       row("ACL_RULE_TABLE|B|EMPTY", {"status="}),
                                       row("ACL_RULE_TABLE|A|THERE", {"status=Inactive"}),
                                       row("ACL_RULE_TABLE|X|Y", {"status=Inactive"}),
                                       row("ACL_TABLE_TABLE|A", {"status=Inactive"}),
                                   });
  EXPECT_EQ(readSonic(files, lineOf, true), (Texts{
                                                "[1 A ingress - -]",
                                                "1 9 deny A|NOT failed (not in ASIC_DB) - - A",
                                                "8 5  A|THERE programmed () - - A",
                                                "[2 B egress - -]",
                                                "2 3  B|UNSAID failed (not in ASIC_DB) - - B",
                                                "3 2  B|EMPTY failed (not in ASIC_DB) - - B",
                                                "4 2  B|INACTIVE failed (Inactive) - - B",
                                                "5 1  B|PENDING pending (Pending creation) - - B",
                                                "[3 C ingress - -]",
                                                "[4 Z ingress - -]",
                                                "6 1  Z|LAST failed (not in ASIC_DB) - - Z",
                                            }));
}

TEST(Sonic, LeavesControlPlaneTablesOut) {
  SonicFiles const files;
  files.writeRows("ASIC_DB.json", {asicTable("0x7")});
  files.writeRows("CONFIG_DB.json", {
                                        row("ACL_RULE|SNMP|R", {"PRIORITY=1"}),
                                        row("ACL_TABLE|SNMP", {"type=CTRLPLANE"}),
                                        row("ACL_TABLE|SSH", {"type=ctrlplane"}),
                                    });
  ProcessResult const result = runTcamshow({"import", "sonic", files.path()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err,
            "tcamshow: " + files.path() +
                "/CONFIG_DB.json:3: warning: ACL_TABLE|SNMP: a control-plane table is not in the "
                "TCAM: it is left out (and 1 more)\n");
  EXPECT_EQ(result.out.find("SNMP"), std::string::npos);
  EXPECT_NE(result.out.find(R"({"type":"end","groups":1,"entries":0})"), std::string::npos);
}

TEST(Sonic, CountsByTheObjectOfTheCounter) {
  SonicFiles const files;
  files.writeRows("ASIC_DB.json",
                  {
                      asicTable("0x7"),
                      asicEntry("0x1", "0x7", {"PRIORITY=6", "ACTION_COUNTER=oid:0x91"}),
                      asicEntry("0x2", "0x7", {"PRIORITY=5", "ACTION_COUNTER=oid:0x92"}),
                      asicEntry("0x3", "0x7", {"PRIORITY=4", "ACTION_COUNTER=oid:0x93"}),
                      asicEntry("0x4", "0x7", {"PRIORITY=3"}),
                      asicEntry("0x5", "0x7", {"PRIORITY=2", "ACTION_COUNTER=oid:0x0"}),
                      asicEntry("0x6", "0x7", {"PRIORITY=1", "ACTION_COUNTER=oid:0x96"}),
                  });
  files.writeRows("CONFIG_DB.json", {row("ACL_RULE|A|OLD", {"PRIORITY=1"})});
  files.writeRows("COUNTERS_DB.json",
                  {
                      row("COUNTERS:oid:0x91", {"SAI_ACL_COUNTER_ATTR_PACKETS=18446744073709551615",
                                                "SAI_ACL_COUNTER_ATTR_BYTES=0"}),
                      row("COUNTERS:oid:0x92", {"SAI_ACL_COUNTER_ATTR_BYTES=5"}),
                      row("COUNTERS:oid:0x99", {"SAI_ACL_COUNTER_ATTR_PACKETS=x"}),
                      row("ACL_COUNTER_RULE_MAP", {"A:OLD=oid:0x96"}),
                      row("COUNTERS:A:OLD", {"Packets=101", "Bytes=100"}),
                  });
  EXPECT_EQ(readSonic(files, lineOf),
            (Texts{
                "1 6   programmed (not in CONFIG_DB) 18446744073709551615 0 A",
                "2 5   programmed (not in CONFIG_DB) - 5 A",
                "3 4   programmed (not in CONFIG_DB) - - A",
                "4 3   programmed (not in CONFIG_DB) - - A",
                "5 2   programmed (not in CONFIG_DB) - - A",
                "6 1  A|OLD programmed () 101 100 A",
            }));
}

TEST(Sonic, ReadsBothShapesOfARow) {
  std::string const fields =
      R"("SAI_ACL_ENTRY_ATTR_TABLE_ID":"oid:0x7","SAI_ACL_ENTRY_ATTR_PRIORITY":"5")";
  std::string const key = R"("ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8":)";
  std::string const rows[] = {
      key + "{" + fields + "}",
      key + R"({"type":"hash","value":{)" + fields + "}}",
      key + R"({"expireat":1602451533.2,"ttl":-0.001,"type":"hash","value":{)" + fields + "}}",
      key + R"({"value" : {)" + fields + R"(} ,"type":"hash"})",
      // Numbers and escapes.
      R"("ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x\u0038":)"
      R"({"SAI_ACL_ENTRY_ATTR_TABLE_\u0049D":"oid\u003a0x7","SAI_ACL_ENTRY_ATTR_PRIORITY":5})",
      R"("\u0041SIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8":{)" + fields + R"(,"NULL":"NULL"})",
  };
  for (const std::string& each : rows) {
    SCOPED_TRACE(each);
    SonicFiles const files;
    files.writeRows("ASIC_DB.json", {each, asicTable("0x7")});
    EXPECT_EQ(readSonic(files, lineOf), Texts{"8 5   programmed () - - oid:0x7"});
  }
}

TEST(Sonic, FindsTheFilesByTheirNames) {
  SonicFiles const files;
  files.writeRows("asic_db.json", {asicTable("0x7"), asicEntry("0x8", "0x7", {"PRIORITY=5"})});
  files.writeRows("Config_DB.JSON", {row("ACL_RULE|A|R", {"PRIORITY=5"})});
  files.write("APPL_DB.json", "not read");
  files.write("asic_db.json.bak", "not read");
  Texts const expected = {"8 5  A|R programmed () - - A"};
  EXPECT_EQ(readSonic(files, lineOf), expected);
  for (const char* const name : {"asic_db.json", "Config_DB.JSON"}) {
    ASSERT_EQ(runProcess({"/usr/bin/env", "gzip", files.path() + "/" + name}).status, 0);
  }
  EXPECT_EQ(readSonic(files, lineOf), expected);
  files.writeRows("ASIC_DB.json", {});
  EXPECT_EQ(readSonic(files, lineOf),
            Texts{"DIR: both ASIC_DB.json and asic_db.json.gz are there: which one is meant?"});
}

TEST(Sonic, WorksWithoutTheDatabasesThatMayBeAbsent) {
  struct Database {
    const char* name;
    Texts rows;
  };
  Database const databases[] = {
      {"ASIC_DB.json",
       {asicTable("0x7"), asicEntry("0x8", "0x7", {"PRIORITY=5", "ACTION_COUNTER=oid:0x9"})}},
      {"CONFIG_DB.json",
       {row("ACL_RULE|A|R", {"PRIORITY=5"}), row("ACL_RULE|A|LOST", {"PRIORITY=6"})}},
      {"COUNTERS_DB.json",
       {row("ACL_COUNTER_RULE_MAP", {"A:R=oid:0x9"}),
        row("COUNTERS:oid:0x9", {"SAI_ACL_COUNTER_ATTR_PACKETS=7"}),
        row("CRM:ACL_TABLE_STATS:0x7",
            {"crm_stats_acl_entry_used=1", "crm_stats_acl_entry_available=3"})}},
      {"STATE_DB.json", {row("ACL_RULE_TABLE|A|LOST", {"status=Pending creation"})}},
  };
  std::string const named = "[1 A ingress 3 4]";
  std::string const counted = "8 5  A|R programmed () 7 - A";
  std::string const lost = "1 6  A|LOST failed (not in ASIC_DB) - - A";
  std::string const pending = "1 6  A|LOST pending (Pending creation) - - A";
  struct Row {
    const char* present;  ///< a letter for each database: x there, e there without rows, - absent
    Texts all;
  };
  Row const rows[] = {
      {"xxxx", {named, pending, counted}},
      {"xxx-", {named, lost, counted}},
      {"xxxe", {named, lost, counted}},
      {"xx-x", {"[1 A ingress - -]", pending, "8 5  A|R programmed () - - A"}},
      {"xxex", {"[1 A ingress - -]", pending, "8 5  A|R programmed () - - A"}},
      {"xx--", {"[1 A ingress - -]", lost, "8 5  A|R programmed () - - A"}},
      // The counters' map alone names the rule, but no table of the configuration.
      {"x-xx", {"[1 oid:0x7 ingress 3 4]", "8 5  A|R programmed () 7 - oid:0x7"}},
      {"xexx", {"[1 oid:0x7 ingress 3 4]", "8 5  A|R programmed (not in CONFIG_DB) 7 - oid:0x7"}},
      {"x---", {"[1 oid:0x7 ingress - -]", "8 5   programmed () - - oid:0x7"}},
      {"-xxx", {"DIR: the directory holds no ASIC_DB.json, so it is no SONiC bundle"}},
  };
  for (const Row& each : rows) {
    SCOPED_TRACE(each.present);
    SonicFiles const files;
    for (std::size_t i = 0; i != std::size(databases); ++i) {
      if (each.present[i] == '-') continue;
      files.writeRows(databases[i].name, each.present[i] == 'x' ? databases[i].rows : Texts{});
    }
    EXPECT_EQ(readSonic(files, lineOf, true), each.all);
  }
}

TEST(Sonic, DoesNotDependOnTheOrderOfKeys) {
  Texts asic = {asicTable("0x7"), asicTable("0x6", "EGRESS"),
                asicRange("0xa", "L4_SRC_PORT_RANGE", "1,9")};
  Texts config = {row("ACL_TABLE|B", {"stage=egress"})};
  std::string map = "\"ACL_COUNTER_RULE_MAP\":{\"x:y\":\"oid:0x5\"";
  Texts counters;
  for (int i = 0; i != 40; ++i) {
    std::string const number = std::to_string(i);
    std::string const table = i % 3 == 0 ? "B" : "A";
    if (i % 4 != 0) {
      asic.push_back(asicEntry("0x1" + number, table == "B" ? "0x6" : "0x7",
                               {"PRIORITY=" + std::to_string(i % 7), "FIELD_DSCP=" + number,
                                "FIELD_ACL_RANGE_TYPE=1:oid:0xa", "FIELD_TC=1", "FIELD_ECN=1",
                                "ACTION_COUNTER=oid:0x9" + number}));
    }
    if (i % 5 != 0) {
      config.push_back(
          row("ACL_RULE|" + table + "|R" + number,
              {"PRIORITY=" + std::to_string(i % 7), "DSCP=" + number, "L4_SRC_PORT_RANGE=1-9"}));
    }
    if (i % 6 != 0) map += ",\"" + table + ":R" + number + "\":\"oid:0x9" + number + '"';
    counters.push_back(
        row("COUNTERS:oid:0x9" + number, {"SAI_ACL_COUNTER_ATTR_PACKETS=" + number}));
  }
  counters.push_back(map + "}");
  Texts first;
  std::mt19937 random(7);
  auto const show = [](const Entry& entry) { return lineOf(entry) + " " + matchText(entry); };
  for (int i = 0; i != 5; ++i) {
    SonicFiles const files;
    files.writeRows("ASIC_DB.json", asic);
    files.writeRows("CONFIG_DB.json", config);
    files.writeRows("COUNTERS_DB.json", counters);
    Texts const all = readSonic(files, show, true);
    if (i == 0) first = all;
    EXPECT_EQ(all, first);
    for (Texts* const rows : {&asic, &config, &counters}) {
      std::shuffle(rows->begin(), rows->end(), random);
    }
  }
  EXPECT_GT(first.size(), 30U);
}

TEST(Sonic, CountsABadPriorityAsZero) {
  SonicFiles const files;
  files.writeRows("ASIC_DB.json", {asicTable("0x7")});
  files.writeRows("CONFIG_DB.json", {row("ACL_RULE|A|R", {"PRIORITY=high"})});
  ProcessResult const result = runTcamshow({"tcam", files.path()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err,
            "tcamshow: " + files.path() +
                "/CONFIG_DB.json:2: warning: ACL_RULE|A|R: PRIORITY is not a number: it "
                "counts as 0\n");
}

TEST(Sonic, ReadsRealBundles) {
  std::filesystem::path const directory = std::filesystem::path(TCAMSHOW_SHARED_DATA) / "sonic";
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << directory << " is not there";
  ProcessResult const dump = runTcamshow({"import", (directory / "dump_acl").string()});
  EXPECT_EQ(dump.status, 0);
  EXPECT_EQ(dump.out,
            R"({"type":"snapshot","version":2})"
            "\n"
            R"({"type":"group","groupId":1,"name":"DATAACL"})"
            "\n"
            R"({"type":"entry","groupId":1,"table":"mac","shadowId":2251799813686793,"sequence":0,)"
            R"("priority":9995,"description":"DATAACL|R0","action":"permit","state":"programmed",)"
            R"("feature":"DATAACL"})"
            "\n"
            R"({"type":"group","groupId":2,"name":"oid:0x7100000000600"})"
            "\n"
            R"({"type":"entry","groupId":2,"table":"mac","shadowId":2269391999731209,"sequence":0,)"
            R"("priority":9995,"description":"DATAACL2|R0","action":"permit","state":"programmed",)"
            R"("reason":"not in CONFIG_DB","feature":"oid:0x7100000000600",)"
            R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":90,"high":95}}})"
            "\n"
            R"({"type":"group","groupId":3,"name":"DATAACL1"})"
            "\n"
            R"({"type":"end","groups":3,"entries":2})"
            "\n");
  // The ASIC of this one has no ACLs: each rule of the TCAM's tables is one that it lacks.
  ProcessResult const mock = runTcamshow({"import", (directory / "mock_tables").string()});
  EXPECT_EQ(mock.status, 0);
  EXPECT_NE(mock.out.find(R"({"type":"end","groups":15,"entries":21})"), std::string::npos);
  EXPECT_NE(mock.err.find("ACL_TABLE|SNMP_ACL"), std::string::npos);
}

}  // namespace
}  // namespace tcamshow
