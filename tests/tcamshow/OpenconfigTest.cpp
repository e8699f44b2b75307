#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Process.h"
#include "TemporaryFile.h"
#include "snapshot/SnapshotReader.h"

namespace tcamshow {
namespace {

ProcessResult import(const std::string& text) {
  return runTcamshow({"import", "openconfig", "-"}, {.input = text});
}

std::string document(const std::string& acls) {
  return R"({"acl":{"acl-sets":{"acl-set":{)" + acls + "}}}}";
}

std::string acl(const std::string& name, const std::string& entries) {
  return "\"" + name + R"(":{"acl-entries":{"acl-entry":{)" + entries + "}}}";
}

/// An entry with these members beside its sequence number and action.
std::string entry(const std::string& name, const std::string& members) {
  return "\"" + name + R"(":{"config":{"sequence-id":)" + name +
         R"(},"actions":{"config":{"forwarding-action":"ACCEPT"}})" +
         (members.empty() ? "" : "," + members) + "}";
}

/// The table and matches of the last entry of a snapshot: `TABLE QUALIFIERS`.
std::string lastEntry(const ProcessResult& result) {
  if (result.status != 0) return result.err;
  // Before the line that ends the snapshot.
  std::size_t const end = result.out.rfind('\n', result.out.size() - 2) + 1;
  std::size_t const begin = result.out.rfind('\n', end - 2) + 1;
  std::string const line = result.out.substr(begin, end - begin);
  std::string const tableStart = "\"table\":\"";
  std::size_t const table = line.find(tableStart) + tableStart.size();
  std::string const featureStart = "\"feature\":\"A\"";
  std::size_t const matches = line.find(featureStart) + featureStart.size();
  return line.substr(table, line.find('"', table) - table) + " " +
         line.substr(matches, line.size() - matches - 2);
}

TEST(Openconfig, WritesGroupsAndEntries) {
  ProcessResult const result = import(document(
      R"("first":{"config":{"name":"first","type":"ACL_IPV4","description":"x"},)"
      R"("acl-entries":{"acl-entry":{)"
      R"("a":{"config":{"sequence-id":"30","description":"say \"hi\""},)"
      R"("actions":{"config":{"forwarding-action":"REJECT"}},)"
      R"("ip":{"config":{"protocol":"IP_TCP","source-ip-address":"10.0.0.1/8"}}},)"
      R"("b":{"ip":{"config":{"destination-ip-address":"1.2.3.4/32"}},)"
      R"("actions":{"config":{"forwarding-action":"FORWARD"}},"config":{"sequence-id":10}}}}},)"
      R"("empty":{},)" +
      acl("second", entry("4294967295", ""))));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.out,
      "{\"type\":\"snapshot\",\"version\":2}\n"
      R"({"type":"group","groupId":1,"name":"first"})"
      "\n"
      R"({"type":"entry","groupId":1,"table":"ip","shadowId":1,"sequence":30,"priority":4294967265,)"
      R"("description":"say \"hi\"","action":"deny","feature":"first","qualifiers":{)"
      R"("qualifierSrcIp":{"value":"10.0.0.1","mask":"255.0.0.0"},)"
      R"("qualifierIpProtocol":{"value":6,"mask":255}}})"
      "\n"
      R"({"type":"entry","groupId":1,"table":"ip","shadowId":2,"sequence":10,"priority":4294967285,)"
      R"("description":"permit ip any host 1.2.3.4","action":"permit","feature":"first","qualifiers":{)"
      R"("qualifierDstIp":{"value":"1.2.3.4","mask":"255.255.255.255"}}})"
      "\n"
      R"({"type":"group","groupId":2,"name":"empty"})"
      "\n"
      R"({"type":"group","groupId":3,"name":"second"})"
      "\n"
      R"({"type":"entry","groupId":3,"table":"mac","shadowId":3,"sequence":4294967295,"priority":0,)"
      R"("description":"permit any any","action":"permit","feature":"second"})"
      "\n"
      R"({"type":"end","groups":3,"entries":3})"
      "\n");
}

TEST(Openconfig, MakesQualifiers) {
  struct Row {
    const char* members;
    const char* entry;
  };
  Row const rows[] = {
      {R"("ip":{"config":{"protocol":0}})", "mac "},
      {R"("ip":{"config":{"protocol":"0","source-ip-address":"1.2.3.4/0"}})", "ip "},
      {R"("ip":{"config":{"protocol":"0x2f"}})",
       R"(ip ,"qualifiers":{"qualifierIpProtocol":{"value":47,"mask":255}})"},
      {R"("ip":{"config":{"protocol":"IP_GRE"}})",
       R"(ip ,"qualifiers":{"qualifierIpProtocol":{"value":47,"mask":255}})"},
      {R"("ip":{"config":{"protocol":"IP_ICMPV6"}})",
       R"(ip6 ,"qualifiers":{"qualifierIpProtocol":{"value":58,"mask":255}})"},
      {R"("ip":{"config":{"protocol":58}})",
       R"(ip6 ,"qualifiers":{"qualifierIpProtocol":{"value":58,"mask":255}})"},
      {R"("ip":{"config":{"protocol":"IP_ICMP"}})",
       R"(ip ,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255}})"},
      {R"("ip":{"config":{"protocol":"IP_ICMP","source-ip-address":"::/0"}},"icmp":{"config":{"type":128}})",
       R"(ip6 ,"qualifiers":{"qualifierIpProtocol":{"value":58,"mask":255},"qualifierL4SrcPort":{"value":32768,"mask":65280}})"},
      {R"("icmp":{"config":{"code":"3","type":"255"}},"ip":{"config":{"protocol":1}})",
       R"(ip ,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255},"qualifierL4SrcPort":{"value":65280,"mask":65280},"qualifierL4DstPort":{"value":3,"mask":255}})"},
      {R"("transport":{"config":{"source-port":"1024..2047","destination-port":22}})",
       R"(ip ,"qualifiers":{"qualifierL4SrcPort":{"value":1024,"mask":64512},"qualifierL4DstPort":{"value":22,"mask":65535}})"},
      {R"("transport":{"config":{"destination-port":"1..3"}})",
       R"(ip ,"rangeCheckers":{"rangeCheckerL4DstPort":{"low":1,"high":3}})"},
      {R"("transport":{"config":{"tcp-flags":["TCP_FIN","TCP_SYN","TCP_RST","TCP_PSH","TCP_ACK","TCP_URG"]}})",
       R"(ip ,"qualifiers":{"qualifierTcpControl":{"value":63,"mask":63}})"},
      {R"("l2":{"config":{"vlan_id":"4094","ethertype":"0x88cc"}})",
       R"(mac ,"qualifiers":{"qualifierOuterVlanId":{"value":4094,"mask":4095},"qualifierEtherType":{"value":35020,"mask":65535}})"},
      {R"("l2":{"config":{"ethertype":"ETHERTYPE_IPV6","vlan-id":1}},"transport":{"config":{"source-port":5}})",
       R"(ip6 ,"qualifiers":{"qualifierEtherType":{"value":34525,"mask":65535},"qualifierOuterVlanId":{"value":1,"mask":4095},"qualifierL4SrcPort":{"value":5,"mask":65535}})"},
      {R"("l2":{"config":{"source-mac":"00:11:22:33:44:55","destination-mac":"01:00:00:00:00:00","destination-mac-mask":"01:00:00:00:00:00"}})",
       R"(mac ,"qualifiers":{"qualifierSrcMac":{"value":"00:11:22:33:44:55","mask":"ff:ff:ff:ff:ff:ff"},"qualifierDstMac":{"value":"01:00:00:00:00:00","mask":"01:00:00:00:00:00"}})"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    EXPECT_EQ(lastEntry(import(document(acl("A", entry("1", row.members))))), row.entry);
  }
}

TEST(Openconfig, TakesTheFamilyFromTheOtherEntries) {
  std::string const port = R"("transport":{"config":{"source-port":5}})";
  std::string const icmp = R"("ip":{"config":{"protocol":"IP_ICMP"}})";
  std::string const ip = R"("ip":{"config":{"source-ip-address":"1.2.3.4/32"}})";
  std::string const ip6 = R"("ip":{"config":{"source-ip-address":"::1/128"}})";
  std::string const etherType = R"("l2":{"config":{"ethertype":"ETHERTYPE_IPV6"}})";
  struct Row {
    std::string first;
    std::string second;
    std::string last;
    const char* table;
  };
  Row const rows[] = {
      {ip, ip, port, "ip"},     {ip6, port, port, "ip6"},       {ip6, ip, port, "ip"},
      {port, port, port, "ip"}, {etherType, port, port, "ip6"},
  };
  for (const Row& row : rows) {
    ProcessResult const result = import(document(acl(
        "A", entry("1", row.first) + "," + entry("2", row.second) + "," + entry("3", row.last))));
    EXPECT_EQ(lastEntry(result),
              std::string(row.table) +
                  R"( ,"qualifiers":{"qualifierL4SrcPort":{"value":5,"mask":65535}})");
  }
  EXPECT_EQ(lastEntry(import(document(acl("A", entry("1", ip6) + "," + entry("2", icmp))))),
            R"(ip6 ,"qualifiers":{"qualifierIpProtocol":{"value":58,"mask":255}})");
  // Another ACL's entries say nothing, the ACL's own type does.
  EXPECT_EQ(
      lastEntry(import(document(acl("B", entry("1", ip6)) + "," + acl("A", entry("1", icmp))))),
      R"(ip ,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255}})");
  EXPECT_EQ(lastEntry(import(
                document(R"("A":{"config":{"type":"ACL_IPV6"},"acl-entries":{"acl-entry":{)" +
                         entry("1", icmp) + "}}}"))),
            R"(ip6 ,"qualifiers":{"qualifierIpProtocol":{"value":58,"mask":255}})");
}

TEST(Openconfig, KeepsInputInterfacesAsOtherMatch) {
  struct Row {
    const char* member;
    const char* entry;
  };
  Row const rows[] = {
      {R"("input_interface":{"interface_ref":{"config":{"interface":"Ethernet0"}}})",
       R"(mac ,"otherMatch":"input_interface=Ethernet0")"},
      {R"("input-interface":["Ethernet0",{"config":["Ethernet4"]}])", ""},
      {R"("input_interface":{"a":"Ethernet0","b":["Ethernet4",8]})",
       R"(mac ,"otherMatch":"input_interface=Ethernet0,Ethernet4,8")"},
      // Which one is not said.
      {R"("input_interface":{})", R"(mac ,"otherMatch":"input_interface")"},
      {R"("input_interface":{"x":"Ethernet0"},"ip":{"config":{"protocol":"IP_TCP"}})",
       R"(ip ,"qualifiers":{"qualifierIpProtocol":{"value":6,"mask":255}},"otherMatch":"input_interface=Ethernet0")"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.member);
    ProcessResult const result = import(document(acl("A", entry("1", row.member))));
    if (*row.entry == '\0') {
      EXPECT_EQ(result.status, 1);
      continue;
    }
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(lastEntry(result), row.entry);
  }
}

TEST(Openconfig, RefusesBadEntries) {
  struct Row {
    const char* members;
    const char* error;
  };
  Row const rows[] = {
      {R"("qos":{})", R"(member "qos" is not known)"},
      {R"("ip":{})", R"(member "ip.config" is missing)"},
      {R"("ip":[])", R"(member "ip": an array is not an object)"},
      {R"("ip":{"config":{},"state":{}})", R"(member "ip.state" is not known)"},
      {R"("ip":{"config":{"dscp":1}})", R"(member "ip.config.dscp" is not known)"},
      {R"("ip":{"config":{"protocol":256}})",
       R"(member "ip.config.protocol": 256 is not a number from 0 to 255 or a known name)"},
      {R"("ip":{"config":{"protocol":"IP_FOO"}})",
       R"(member "ip.config.protocol": "IP_FOO" is not a number from 0 to 255 or a known name)"},
      {R"("ip":{"config":{"protocol":6.5}})",
       R"(member "ip.config.protocol": 6.5 is not a number from 0 to 255 or a known name)"},
      {R"("ip":{"config":{"protocol":null}})",
       R"(member "ip.config.protocol": null is not a number from 0 to 255 or a known name)"},
      {R"("ip":{"config":{"source-ip-address":"1.2.3.4/33"}})",
       R"(member "ip.config.source-ip-address": "1.2.3.4/33" is not an address with its length)"},
      {R"("ip":{"config":{"destination-ip-address":"1.2.3/8"}})",
       R"(member "ip.config.destination-ip-address": "1.2.3/8" is not an address with its length)"},
      {R"("ip":{"config":{"destination-ip-address":17}})",
       R"(member "ip.config.destination-ip-address": 17 is not an address with its length)"},
      {R"("ip":{"config":{"source-ip-address":"1.2.3.4/8","destination-ip-address":"::1/128"}})",
       R"(member "ip.config.destination-ip-address": "::1/128" is of IPv6, the rest of the entry is not)"},
      {R"("l2":{"config":{"ethertype":2048}},"ip":{"config":{"protocol":58}})",
       R"(member "ip.config.protocol": 58 is of IPv6, the rest of the entry is not)"},
      {R"("l2":{"config":{"vlan-id":4095}})",
       R"(member "l2.config.vlan-id": 4095 is not a number from 1 to 4094)"},
      {R"("l2":{"config":{"vlan_id":0}})",
       R"(member "l2.config.vlan_id": 0 is not a number from 1 to 4094)"},
      {R"("l2":{"config":{"vlan_id":1,"vlan-id":1}})",
       R"(member "l2.config.vlan-id": the VLAN stands twice)"},
      {R"("l2":{"config":{"ethertype":65536}})",
       R"(member "l2.config.ethertype": 65536 is not a number from 0 to 65535 or a known name)"},
      {R"("l2":{"config":{"source-mac":"1"}})",
       R"(member "l2.config.source-mac": "1" is not a MAC address)"},
      {R"("l2":{"config":{"source-mac-mask":"ff:ff:ff:ff:ff:ff"}})",
       R"(member "l2.config.source-mac" is missing, but its mask is there)"},
      {R"("transport":{"config":{"source-port":"5..4"}})",
       R"(member "transport.config.source-port": "5..4" is not a port from 0 to 65535 or a range LOW..HIGH)"},
      {R"("transport":{"config":{"source-port":"1...4"}})",
       R"(member "transport.config.source-port": "1...4" is not a port from 0 to 65535 or a range LOW..HIGH)"},
      {R"("transport":{"config":{"destination-port":65536}})",
       R"(member "transport.config.destination-port": 65536 is not a port from 0 to 65535 or a range LOW..HIGH)"},
      {R"("transport":{"config":{"tcp-flags":"TCP_SYN"}})",
       R"(member "transport.config.tcp-flags": "TCP_SYN" is not an array)"},
      {R"("transport":{"config":{"tcp-flags":["TCP_ECE"]}})",
       R"(member "transport.config.tcp-flags": no qualifier carries the flag "TCP_ECE")"},
      {R"("transport":{"config":{"tcp-flags":["TCP_SYN"]}},"ip":{"config":{"protocol":17}})",
       R"(member "transport.config.tcp-flags": the entry's protocol is not TCP)"},
      {R"("transport":{"config":{"source-port":5}},"ip":{"config":{"protocol":1}})",
       R"(member "transport.config": ICMP has no ports)"},
      {R"("icmp":{"config":{"type":256}})",
       R"(member "icmp.config.type": 256 is not a number from 0 to 255)"},
      {R"("icmp":{"config":{"code":""}})",
       R"(member "icmp.config.code": "" is not a number from 0 to 255)"},
      {R"("icmp":{"config":{"type":1}})",
       R"(member "ip.config.protocol" is missing, but the entry has an ICMP type or code)"},
      {R"("icmp":{"config":{"type":1}},"ip":{"config":{"protocol":"IP_TCP"}})",
       R"(member "ip.config.protocol": "IP_TCP" is not ICMP, but the entry has an ICMP type or code)"},
      {R"("input_interface":1)", R"(member "input_interface": 1 is not an object)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    ProcessResult const result = import(document(
        acl("good", entry("1", "")) + "," + acl("A", std::string("\n") + entry("7", row.members))));
    EXPECT_EQ(result.err,
              std::string("tcamshow: <stdin>:2: ACL \"A\", entry \"7\": ") + row.error + "\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
}

TEST(Openconfig, RefusesBadDocuments) {
  std::string const action = R"("actions":{"config":{"forwarding-action":"ACCEPT"}})";
  struct Row {
    std::string text;
    std::string error;
  };
  Row const rows[] = {
      {"[]", "the document is not a JSON object"},
      {"{}", R"(member "acl" is missing)"},
      {R"({"acl":{}})", R"(member "acl.acl-sets" is missing)"},
      {R"({"acl":{"acl-sets":{}}})", R"(member "acl.acl-sets.acl-set" is missing)"},
      {R"({"acl":{"acl-sets":{"acl-set":[]}}})",
       R"(member "acl.acl-sets.acl-set": an array is not an object)"},
      {R"({"x":1,"acl":{}})", R"(member "x" is not known)"},
      {R"({"ACL":1})", R"(member "ACL" is not known; did you mean "acl"?)"},
      {document(R"("A\n":{})"),
       R"(ACL "A\u{A}": member "name": "A\u{A}" holds a control character)"},
      {document(R"("A":{"x":1})"), R"(ACL "A": member "x" is not known)"},
      {document(R"("A":{"config":{"name":"B"}})"),
       R"(ACL "A": member "config.name": "B" is not the ACL's name)"},
      {document(R"("A":{"config":{"type":"ACL_X"}})"),
       R"(ACL "A": member "config.type": "ACL_X" is not a known type)"},
      {document(R"("A":{"acl-entries":{}})"),
       R"(ACL "A": member "acl-entries.acl-entry" is missing)"},
      {document(acl("A", R"("1":2)")), R"(ACL "A", entry "1": 2 is not an object)"},
      {document(acl("A", "\"1\":{" + action + "}")),
       R"(ACL "A", entry "1": member "config.sequence-id" is missing)"},
      {document(acl("A", R"("1":{"config":{"sequence-id":1}})")),
       R"(ACL "A", entry "1": member "actions.config.forwarding-action" is missing)"},
      {document(acl("A", R"("1":{"config":{"sequence-id":4294967296}})")),
       R"(ACL "A", entry "1": member "config.sequence-id": 4294967296 is not a number from 0 to 4294967295)"},
      {document(acl("A", R"("1":{"config":{"sequence-id":1,"x":1}})")),
       R"(ACL "A", entry "1": member "config.x" is not known)"},
      {document(acl("A", R"("1":{"config":{"description":"\u0007"}})")),
       R"(ACL "A", entry "1": member "config.description": "\u{7}" holds a control character)"},
      {document(acl("A", R"("1":{"actions":{"config":{"forwarding-action":"LOG"}}})")),
       R"(ACL "A", entry "1": member "actions.config.forwarding-action": "LOG" is not a known action)"},
      {document(acl("A", entry("1", "") + R"(,"2":{"config":{"sequence-id":1},)" + action + "}")),
       R"(ACL "A", entry "2": member "config.sequence-id": another entry has 1 too)"},
      {document(R"("A":{"config":{"type":"ACL_IPV4"},"acl-entries":{"acl-entry":{)" +
                entry("1", R"("ip":{"config":{"protocol":58}})") + "}}}"),
       R"(ACL "A", entry "1": member "config.type" of the ACL: it is not of the entry's family)"},
      {document(acl("A", entry("1", "") + "," + entry("1", ""))),
       R"(ACL "A": member "acl-entries.acl-entry.1" stands twice)"},
      {document(R"("A":{},"B":{},"\u0041":{},"B":{})"),
       R"(member "acl.acl-sets.acl-set.A" stands twice)"},
      {document(R"("A":{"config":{},"config":{}})"), R"(ACL "A": member "config" stands twice)"},
      {document(R"("A":{"acl-entry":{}})"), R"(ACL "A": member "acl-entry" is not known)"},
      {document(R"("A":{"acl-entires":{}})"),
       R"(ACL "A": member "acl-entires" is not known; did you mean "acl-entries"?)"},
      {document(acl("A", entry("1", R"("ip":{"config":{"sorce-ip-address":""}})"))),
       R"(ACL "A", entry "1": member "ip.config.sorce-ip-address" is not known; did you mean "source-ip-address"?)"},
      {document(acl("A", entry("1", R"("icmp":{"config":{"type":1e400}})"))),
       R"(ACL "A", entry "1": member "icmp.config.type": 1e400 is not a number from 0 to 255)"},
      {document(acl("A", entry("1", R"("icmp":{"config":{"type":-0}})"))),
       R"(ACL "A", entry "1": member "icmp.config.type": -0 is not a number from 0 to 255)"},
      {document(acl("A", entry("1", R"("input_interface":")" + std::string(40000, 'x') + "\""))),
       R"(ACL "A", entry "1": member "input_interface": ")" + std::string(60, 'x') +
           R"(..." is not an object)"},
      {document(
           acl("A", entry("1", R"("input_interface":{"x":")" + std::string(40000, 'x') + "\"}"))),
       R"(ACL "A", entry "1": member "input_interface": the text is longer than 32 KiB)"},
      {document(acl("A", entry("1", R"("input_interface":{"x":["a\u001b"]})"))),
       R"(ACL "A", entry "1": member "input_interface": "a\u{1B}" holds a control character)"},
      {R"({"acl":)" + std::string(63, '[') + std::string(63, ']') + "}",
       R"(member "acl": an array is not an object)"},
      {R"({"acl":)" + std::string(64, '[') + std::string(64, ']') + "}",
       R"(nested deeper than 64 values, at byte 71, member "acl")"},
      {R"({"acl":)" + std::string(100000, '['),
       R"(nested deeper than 64 values, at byte 71, member "acl")"},
      {std::string(100, '['), "the document is not a JSON object"},
      {"17", "the document is not a JSON object"},
      {std::string("{\0}", 3), "the document holds a NUL byte"},
      {document("") + std::string("\0", 1), "the document holds a NUL byte"},
      {std::string("\0", 1), "the document holds a NUL byte"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    ProcessResult const result = import(row.text);
    EXPECT_EQ(result.err, std::string("tcamshow: <stdin>:1: ") + row.error + "\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
  Row const secondLineRows[] = {
      {"", "the document is empty"},
      {"{", "not valid JSON: the document does not end where the object does, at byte 3"},
      {R"({"acl":})", R"(not valid JSON, at byte 9, member "acl")"},
      {"{\"acl\":\"\xFF\"}", R"(not valid UTF-8, at byte 10, member "acl")"},
      {"{} {}", "not valid JSON: something follows the object, at byte 5"},
      {"nul", "the document is not a JSON object"},
      {R"({"a":01})", R"(not valid JSON, at byte 8, member "a")"},
      {R"({"a":"\x"})",
       R"(not valid JSON: a bad escape stands in a string, at byte 8, member "a")"},
      // Members that nobody reads are checked too.
      {document(acl("A", entry("1", R"("input_interface":{"x":tru})"))),
       R"(not valid JSON, at byte 173, member "acl.acl-sets.acl-set.A.acl-entries.acl-entry.1.input_interface.x")"},
  };
  for (const Row& row : secondLineRows) {
    SCOPED_TRACE(row.text);
    ProcessResult const result = import("\n " + row.text);
    EXPECT_EQ(result.err, "tcamshow: <stdin>:2: " + row.error + "\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
}

TEST(Openconfig, TellsTheLineOfARepeatedName) {
  std::string const second = "\n,\"B\":{}\n,\n\"A\":\n{}";
  EXPECT_EQ(import(document("\"A\":{}" + second)).err,
            "tcamshow: <stdin>:5: member \"acl.acl-sets.acl-set.A\" stands twice\n");
  EXPECT_EQ(import(document("\"A\":{}" + second + "," + acl("C", "\"1\":1"))).err,
            "tcamshow: <stdin>:5: ACL \"C\", entry \"1\": 1 is not an object\n");
  // A line feed that is escaped begins no line.
  EXPECT_EQ(import(document(acl("A", R"("\n\n":{"config":{"sequence-id":1},"actions":)"
                                     R"({"config":{"forwarding-action":"DROP"}},)"
                                     R"("input_interface":{"\n":"x\u002Fy"}})") +
                            ",\n\"A\":{}"))
                .err,
            "tcamshow: <stdin>:2: member \"acl.acl-sets.acl-set.A\" stands twice\n");
}

TEST(Openconfig, LeavesOutWhatIsNoAcl) {
  ProcessResult const one = import(document("\"updated\":\"2024-05-01T00:00:00Z\",\"A\":{}"));
  EXPECT_EQ(one.status, 0);
  EXPECT_EQ(one.err,
            "tcamshow: <stdin>:1: warning: member \"acl.acl-sets.acl-set.updated\": "
            "\"2024-05-01T00:00:00Z\" is not an ACL, and is left out\n");
  EXPECT_EQ(one.out,
            "{\"type\":\"snapshot\",\"version\":2}\n"
            "{\"type\":\"group\",\"groupId\":1,\"name\":\"A\"}\n"
            "{\"type\":\"end\",\"groups\":1,\"entries\":0}\n");
  // Once, with the count.
  ProcessResult const many = import(document("\"A\":{},\n\"a\":1,\n\"b\":[2],\"c\":null"));
  EXPECT_EQ(many.status, 0);
  EXPECT_EQ(many.err,
            "tcamshow: <stdin>:2: warning: member \"acl.acl-sets.acl-set.a\": 1 is not an ACL, and "
            "is left out (and 2 more)\n");
}

TEST(Openconfig, PutsWhatMatchesEverythingIntoTheTableOfItsAcl) {
  auto const lastOf = [](const std::string& type, const std::string& entries) {
    return lastEntry(import(document(R"("A":{"config":{"type":")" + type +
                                     R"("},"acl-entries":{"acl-entry":{)" + entries + "}}}")));
  };
  std::string const ip = entry("1", R"("ip":{"config":{"source-ip-address":"1.2.3.4/8"}})");
  std::string const vlan = R"("l2":{"config":{"vlan-id":5}})";
  struct Row {
    const char* type;
    std::string entries;
    const char* entry;
  };
  Row const rows[] = {
      {"ACL_IPV4", entry("1", ""), "ip "},
      {"ACL_IPV6", entry("1", ""), "ip6 "},
      {"ACL_IPV4", ip + "," + entry("2", ""), "ip "},
      {"ACL_IPV4", entry("1", R"("ip":{"config":{"protocol":0}})"), "ip "},
      {"ACL_IPV6", entry("1", R"("transport":{"config":{"source-port":"ANY"}})"), "ip6 "},
      {"ACL_IPV6", entry("1", R"("input_interface":{"x":"Ethernet0"})"),
       R"(ip6 ,"otherMatch":"input_interface=Ethernet0")"},
      {"ACL_MIXED", entry("1", ""), "mac "},
      {"ACL_L2", ip + "," + entry("2", ""), "mac "},
      // It does not match everything.
      {"ACL_IPV4", entry("1", vlan),
       R"(mac ,"qualifiers":{"qualifierOuterVlanId":{"value":5,"mask":4095}})"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.entries);
    EXPECT_EQ(lastOf(row.type, row.entries), row.entry);
  }
}

TEST(Openconfig, DescribesAnEntryByItsMatch) {
  struct Row {
    const char* members;
    const char* description;
  };
  Row const rows[] = {
      {"", "permit any any"},
      {R"("ip":{"config":{"protocol":"IP_TCP","source-ip-address":"10.0.0.0/8"}})",
       "permit tcp 10.0.0.0/8 any"},
      {R"("ip":{"config":{"source-ip-address":"::/0","destination-ip-address":"2001:db8::1/128"}})",
       "permit ipv6 any host 2001:db8::1"},
      {R"("ip":{"config":{"protocol":126,"source-ip-address":"2001:db8::/33"}})",
       "permit protocol 126 2001:db8::/33 any"},
      {R"("ip":{"config":{"protocol":17}},"transport":{"config":{"source-port":"4640..4687","destination-port":"1024..2047"}})",
       "permit udp any range 4640 4687 any range 1024 2047"},
      {R"("ip":{"config":{"protocol":6}},"transport":{"config":{"destination-port":22,"tcp-flags":["TCP_SYN","TCP_ACK"]}})",
       "permit tcp any any eq 22 flags syn,ack"},
      {R"("ip":{"config":{"protocol":1}},"icmp":{"config":{"type":8,"code":0}})",
       "permit icmp any type 8 any code 0"},
      {R"("ip":{"config":{"protocol":58}},"icmp":{"config":{"code":4}})",
       "permit icmpv6 any any code 4"},
      {R"("l2":{"config":{"vlan-id":100,"ethertype":"ETHERTYPE_LLDP"}})",
       "permit any any vlan 100 ethertype 0x88cc"},
      {R"("l2":{"config":{"source-mac":"00:11:22:33:44:55","destination-mac":"01:00:5e:00:00:00","destination-mac-mask":"ff:ff:ff:00:00:00"}})",
       "permit host 00:11:22:33:44:55 01:00:5e:00:00:00/ff:ff:ff:00:00:00"},
      {R"("l2":{"config":{"source-mac":"00:11:22:33:44:55"}},"ip":{"config":{"protocol":47}})",
       "permit gre any any from host 00:11:22:33:44:55"},
      {R"("input_interface":{"interface_ref":{"config":{"interface":"Ethernet0,Ethernet4"}}})",
       "permit any any"},
      {R"("input_interface":{"x":[{"y":"Ethernet0"},{"y":"\u0045thernet4"},5]})", "permit any any"},
      {R"("input_interface":{})", "permit any any"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    ProcessResult const result = import(document(acl("A", entry("1", row.members))));
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(
        result.out.find(R"("description":")" + std::string(row.description) + R"(","action")"),
        std::string::npos)
        << result.out;
  }
  // Its own description stands, and the interface behind it.
  EXPECT_NE(import(document(acl("A", R"("1":{"config":{"sequence-id":1,"description":"mine"},)"
                                     R"("actions":{"config":{"forwarding-action":"DROP"}},)"
                                     R"("input_interface":{"x":"Ethernet0"}})")))
                .out.find(R"("description":"mine","action":"deny")"),
            std::string::npos);
}

TEST(Openconfig, SkipsAByteOrderMark) {
  std::string const text = document(acl("A", entry("1", "")));
  EXPECT_EQ(import("\xEF\xBB\xBF" + text).out, import(text).out);
  EXPECT_EQ(import("\xEF\xBB\xBF" + text).status, 0);
  EXPECT_EQ(import("\xEF\xBB\xBF\xEF\xBB\xBF" + text).err,
            "tcamshow: <stdin>:1: the document is not a JSON object\n");
}

TEST(Openconfig, ReadsRealDocuments) {
  std::filesystem::path const directory =
      std::filesystem::path(TCAMSHOW_SHARED_DATA) / "openconfig";
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << "no documents";
  struct Row {
    const char* name;
    std::size_t groups;
    std::size_t ip;
    std::size_t ip6;
    std::size_t mac;
  };
  Row const rows[] = {
      {"acl1.json", 10, 10, 7, 1},
      {"acltb_test_rules_part_1.json", 1, 8, 0, 0},
      {"default_acl_rules.json", 1, 0, 0, 1},
      {"drop_packets_acltb_test_rule.json", 1, 1, 0, 1},
      {"empty_acl.json", 0, 0, 0, 0},
      {"incremental_1.json", 1, 1, 0, 0},
      {"rendered_acltb_test_rules_v4.json", 1, 33, 0, 0},
      {"rendered_acltb_v6_test_rules_part_1.json", 1, 0, 8, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ProcessResult const result = runTcamshow({"import", "openconfig", directory / row.name});
    ASSERT_EQ(result.status, 0) << result.err;
    TemporaryFile const snapshot(result.out);
    Complaints complaints;
    auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
    std::size_t groups = 0;
    std::size_t tables[4] = {};
    for (Source::Item item; (item = reader->next()) != Source::Item::end;) {
      if (item == Source::Item::group) {
        ++groups;
      } else {
        ++tables[static_cast<std::size_t>(reader->entry().table)];
      }
    }
    EXPECT_EQ(groups, row.groups);
    EXPECT_EQ(tables[0], row.ip);
    EXPECT_EQ(tables[1], row.ip6);
    EXPECT_EQ(tables[2], row.mac);
    EXPECT_EQ(tables[3], 0u);
  }
  struct BadRow {
    const char* name;
    const char* error;
  };
  BadRow const badRows[] = {
      {"icmp_bad_protocol_number.json",
       R"(:19: ACL "DATAACL", entry "1": member "ip.config.protocol": "IP_UDP" is not ICMP, but the entry has an ICMP type or code)"},
      {"illegal_icmp_code_300.json",
       R"(:27: ACL "DATAACL", entry "1": member "icmp.config.code": "300" is not a number from 0 to 255)"},
      {"illegal_icmp_type_nan.json",
       R"(:26: ACL "DATAACL", entry "1": member "icmp.config.type": "foo" is not a number from 0 to 255)"},
      {"illegal_icmp_type_neg_1.json",
       R"(:26: ACL "DATAACL", entry "1": member "icmp.config.type": "-1" is not a number from 0 to 255)"},
      {"illegal_vlan_0.json",
       R"(:19: ACL "DATAACL", entry "1": member "l2.config.vlan-id": "0" is not a number from 1 to 4094)"},
  };
  for (const BadRow& row : badRows) {
    SCOPED_TRACE(row.name);
    std::string const path = directory / row.name;
    ProcessResult const result = runTcamshow({"import", "openconfig", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "tcamshow: " + path + row.error + "\n");
  }
}

}  // namespace
}  // namespace tcamshow
