// What the lines of a snapshot hold.
#include "snapshot/SnapshotReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Process.h"
#include "SnapshotText.h"
#include "TemporaryFile.h"
#include "io/InputError.h"
#include "snapshot/SnapshotWriter.h"

namespace tcamshow {
namespace {

TEST(SnapshotReader, ReadsHeader) {
  struct Row {
    std::string text;
    unsigned numPipes;
  };
  Row const rows[] = {
      {"{\"type\":\"snapshot\",\"version\":1}", 1},
      {"{\"version\":1,\"numPipes\":0,\"type\":\"snapshot\"}\n", 0},
      {"\n  \n\t\r\n{ \"type\" : \"snapshot\" , \"version\" : 1, \"numPipes\" : 255 } \r\n", 255},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    TemporaryFile const snapshot(row.text);
    Complaints complaints;
    auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
    EXPECT_EQ(reader->header().numPipes, row.numPipes);
    EXPECT_EQ(reader->next(), Source::Item::end);
  }
}

TEST(SnapshotReader, GivesDefaults) {
  Entry const entry = readEntry("\"table\":\"ip\",\"shadowId\":5");
  EXPECT_EQ(entry.place, Place());
  EXPECT_EQ(entry.place.stage, Stage::ingress);
  EXPECT_EQ(entry.table, Table::ip);
  EXPECT_EQ(entry.shadowId, 5u);
  EXPECT_EQ(entry.sequence, 0u);
  EXPECT_EQ(entry.priority, 0u);
  EXPECT_EQ(entry.hits, 0u);
  EXPECT_EQ(entry.counterStatus, 0u);
  EXPECT_EQ(entry.featurePriority, 0u);
  EXPECT_TRUE(entry.qualifiers.empty());
  EXPECT_TRUE(entry.rangeCheckers.empty());
}

TEST(SnapshotReader, ReadsEveryMemberOfAnEntry) {
  TemporaryFile const snapshot(
      std::string(header1) +
      R"({"type":"entry","stage":"egress","pipe":-32768,"groupPriority":4294967295,"groupId":7,)"
      R"("copyId":8,"table":"tcam","shadowId":18446744073709551615,"sequence":4294967295,)"
      R"("priority":9,"description":"a \"b\" \u00e9","action":"permit é","hits":18446744073709551615,)"
      R"("counterStatus":255,"featurePriority":10,"feature":"acl","qualifiers":{)"
      R"("qualifierSrcIp":{"value":"10.0.0.1","mask":4294967040,"status":6},)"
      R"("qualifierDstIp6Alt":{"mask":"ffff::","value":"2001:DB8::1"},)"
      R"("qualifierSrcMac":{"value":"00:1A:2b:3c:4d:5e","mask":"ff:ff:ff:ff:ff:ff"},)"
      R"("qualifierDSCP":{"value":0,"mask":0}},)"
      R"("rangeCheckers":{"rangeCheckerIpLength":{"low":-2147483648,"high":2147483647},)"
      R"("rangeCheckerL4SrcPort":{"high":2,"low":1,"status":0}}})");
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  ASSERT_EQ(reader->next(), Source::Item::entry);
  EXPECT_EQ(reader->lineNumber(), 2u);
  const Entry& entry = reader->entry();
  EXPECT_EQ(entry.place, (Place{Stage::egress, -32768, 4294967295u, 7, 8}));
  EXPECT_EQ(entry.table, Table::tcam);
  EXPECT_EQ(entry.shadowId, std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(entry.sequence, 4294967295u);
  EXPECT_EQ(entry.priority, 9u);
  EXPECT_EQ(entry.description, "a \"b\" \xC3\xA9");
  EXPECT_EQ(entry.action, "permit \xC3\xA9");
  EXPECT_EQ(entry.hits, std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(entry.counterStatus, 255u);
  EXPECT_EQ(entry.featurePriority, 10u);
  EXPECT_EQ(entry.feature, "acl");
  ASSERT_EQ(entry.qualifiers.size(), 4u);
  EXPECT_EQ(entry.qualifiers[0].type, 153u);
  EXPECT_EQ(entry.qualifiers[0].kind, QualifierKind::ip);
  EXPECT_EQ(entry.qualifiers[0].value, 0x0A000001u);
  EXPECT_EQ(entry.qualifiers[0].mask, 0xFFFFFF00u);
  EXPECT_EQ(entry.qualifiers[0].status, 6u);
  EXPECT_EQ(entry.qualifiers[1].type, 25u);
  EXPECT_EQ(entry.qualifiers[1].kind, QualifierKind::ip6);
  EXPECT_EQ(entry.qualifiers[1].ip6.value,
            (Ip6Octets{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(entry.qualifiers[1].ip6.mask, ip6Mask(16));
  EXPECT_EQ(entry.qualifiers[1].status, 7u);
  EXPECT_EQ(entry.qualifiers[2].mac.value, (MacOctets{0, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E}));
  EXPECT_EQ(entry.qualifiers[2].mac.mask, (MacOctets{255, 255, 255, 255, 255, 255}));
  EXPECT_EQ(entry.qualifiers[3].type, 8u);
  EXPECT_EQ(entry.qualifiers[3].mask, 0u);
  ASSERT_EQ(entry.rangeCheckers.size(), 2u);
  EXPECT_EQ(entry.rangeCheckers[0].type, 3u);
  EXPECT_EQ(entry.rangeCheckers[0].low, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(entry.rangeCheckers[0].high, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(entry.rangeCheckers[0].status, 7u);
  EXPECT_EQ(entry.rangeCheckers[1].type, 1u);
  EXPECT_EQ(entry.rangeCheckers[1].status, 0u);
}

TEST(SnapshotReader, ReadsGroups) {
  TemporaryFile const snapshot(
      std::string(header1) +
      R"({"groupId":3,"name":"acl","availableEntries":4294967295,"freeEntries":1,"type":"group"})"
      "\n"
      R"({"type":"group","groupId":3,"copyId":1})");
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  ASSERT_EQ(reader->next(), Source::Item::group);
  EXPECT_EQ(reader->group().place.groupId, 3u);
  EXPECT_EQ(reader->group().name, "acl");
  EXPECT_EQ(reader->group().availableEntries, 4294967295u);
  EXPECT_EQ(reader->group().freeEntries, 1u);
  ASSERT_EQ(reader->next(), Source::Item::group);
  EXPECT_EQ(reader->group().name, "");
  EXPECT_EQ(reader->group().availableEntries, std::nullopt);
  EXPECT_EQ(reader->next(), Source::Item::end);
}

TEST(SnapshotReader, KnowsEveryName) {
  struct Row {
    const char* name;
    unsigned type;
  };
  Row const rows[] = {
      {"qualifierDSCP", 8},          {"qualifierDstIp", 15},           {"qualifierDstIp6", 20},
      {"qualifierDstIp6Alt", 25},    {"qualifierDstMac", 28},          {"qualifierEtherType", 36},
      {"qualifierIp6HopLimit", 92},  {"qualifierIp6TrafficClass", 95}, {"qualifierIpFrag", 97},
      {"qualifierIpProtocol", 101},  {"qualifierL4DstPort", 116},      {"qualifierL4SrcPort", 118},
      {"qualifierOuterVlanId", 132}, {"qualifierSrcIp", 153},          {"qualifierSrcIp6", 158},
      {"qualifierSrcIp6Alt", 163},   {"qualifierSrcMac", 164},         {"qualifierTcpControl", 182},
  };
  std::uint32_t seen = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const QualifierName* const found = qualifierByName(row.name);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->type, row.type);
    EXPECT_EQ(qualifierByType(found->type), found);
    seen |= 1u << found->index;
    // Nothing near the name has it.
    std::string near = row.name;
    EXPECT_EQ(qualifierByName(near + "x"), nullptr);
    near[0] = 'Q';
    EXPECT_EQ(qualifierByName(near), nullptr);
  }
  EXPECT_EQ(seen, (1u << std::size(rows)) - 1);
  EXPECT_EQ(rangeCheckerByName("rangeCheckerL4SrcPort")->type, 1u);
  EXPECT_EQ(rangeCheckerByName("rangeCheckerL4DstPort")->type, 2u);
  EXPECT_EQ(rangeCheckerByName("rangeCheckerIpLength")->type, 3u);
  EXPECT_EQ(rangeCheckerByName(""), nullptr);
  EXPECT_EQ(qualifierByType(0), nullptr);
}

TEST(SnapshotReader, RefusesBadHeaders) {
  std::string const expected = R"(the first line must be {"type":"snapshot","version":2})";
  struct Row {
    std::string text;
    std::string error;
  };
  Row const rows[] = {
      {"", "1: the snapshot is empty: " + expected},
      {"\n\n", "3: the snapshot is empty: " + expected},
      {R"({"type":"group"})", "1: " + expected},
      {R"({"type":"entry"})", "1: " + expected},
      {"\n"
       R"({"version":1})",
       R"(2: member "type" is missing)"},
      {R"({"type":"snap"})",
       R"(1: member "type": "snap" is not "snapshot", "group", "entry" or "end")"},
      {R"({"type":1})", R"(1: member "type": 1 is not a string)"},
      {R"({"type":"snapshot"})", R"(1: snapshot: member "version" is missing)"},
      {R"({"type":"snapshot","version":0})",
       R"(1: snapshot: member "version": version 0 is not known, only 1 and 2 are)"},
      {R"({"type":"snapshot","version":3})",
       R"(1: snapshot: member "version": version 3 is not known, only 1 and 2 are)"},
      {R"({"type":"snapshot","version":1,"numPipes":256})",
       R"(1: snapshot: member "numPipes": 256 is not a whole number from 0 to 255)"},
      {R"({"type":"snapshot","version":1,"pipe":0})",
       R"(1: snapshot: member "pipe" is not known; it belongs to a group or an entry)"},
      {std::string(header1) + std::string(header1),
       "2: snapshot: only the first line is the header"},
      {"[1]", "1: the line is not a JSON object"},
      {"17", "1: the line is not a JSON object"},
      // A byte order mark is skipped, once.
      {"\xEF\xBB\xBF{}", "1: member \"type\" is missing"},
      {"\xEF\xBB\xBF\xEF\xBB\xBF{}", "1: the line is not a JSON object"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(errorOf(row.text), row.error);
  }
}

TEST(SnapshotReader, NamesTheMemberOfABadEntry) {
  struct Row {
    const char* members;
    const char* error;
  };
  Row const rows[] = {
      {R"("shadowId":1)", R"(member "table" is missing)"},
      {R"("table":"ip")", R"(member "shadowId" is missing)"},
      {R"("table":"ipv4")", R"(member "table": "ipv4" is not "ip", "ip6", "mac" or "tcam")"},
      {R"("table":null)", R"(member "table": null is not a string)"},
      {R"("stage":"Ingress")",
       R"(member "stage": "Ingress" is not "lookup", "ingress" or "egress")"},
      {R"("stage":3)", R"(member "stage": 3 is not a string)"},
      {R"("pipe":32768)", R"(member "pipe": 32768 is not a whole number from -32768 to 32767)"},
      {R"("pipe":-32769)", R"(member "pipe": -32769 is not a whole number from -32768 to 32767)"},
      {R"("groupPriority":4294967296)",
       R"(member "groupPriority": 4294967296 is not a whole number from 0 to 4294967295)"},
      {R"("groupId":-1)", R"(member "groupId": -1 is not a whole number from 0 to 4294967295)"},
      {R"("copyId":1.0)", R"(member "copyId": 1.0 is not a whole number from 0 to 4294967295)"},
      {R"("shadowId":18446744073709551616)",
       R"(member "shadowId": 18446744073709551616 is not a whole number from 0 to 18446744073709551615)"},
      {R"("shadowId":1e3)",
       R"(member "shadowId": 1e3 is not a whole number from 0 to 18446744073709551615)"},
      {R"("shadowId":01)",
       R"(member "shadowId": 01 is not a whole number from 0 to 18446744073709551615)"},
      {R"("shadowId":"1")",
       R"(member "shadowId": "1" is not a whole number from 0 to 18446744073709551615)"},
      {R"("sequence":true)",
       R"(member "sequence": true is not a whole number from 0 to 4294967295)"},
      {R"("sequence":null)",
       R"(member "sequence": null is not a whole number from 0 to 4294967295)"},
      {R"("priority":[1])",
       R"(member "priority": an array is not a whole number from 0 to 4294967295)"},
      {R"("priority":{})",
       R"(member "priority": an object is not a whole number from 0 to 4294967295)"},
      {R"("counterStatus":256)",
       R"(member "counterStatus": 256 is not a whole number from 0 to 255)"},
      {R"("hits":-0.5)",
       R"(member "hits": -0.5 is not a whole number from 0 to 18446744073709551615)"},
      {R"("hits":12x)",
       R"(member "hits": 12x is not a whole number from 0 to 18446744073709551615)"},
      {R"("featurePriority":999999999999999999999999999999999999999999999999999999999999999999999)",
       R"(member "featurePriority": 999999999999999999999999999999999999999999999999999999999999... is not a whole number from 0 to 4294967295)"},
      {R"("description":5)", R"(member "description": 5 is not a string)"},
      {R"("description":"a\u0000b")",
       R"(member "description": holds the control character U+0000)"},
      {R"("description":"a\nb")", R"(member "description": holds the control character U+000A)"},
      {R"("action":"\u001f")", R"(member "action": holds the control character U+001F)"},
      {"\"action\":\"\x7F\"", R"(member "action": holds the control character U+007F)"},
      {R"("feature":"\u007f")", R"(member "feature": holds the control character U+007F)"},
      {R"("feature":"\x")", R"(member "feature": the string has a bad escape)"},
      {R"("feature":"\ud800")", R"(member "feature": the string has a bad escape)"},
      {R"("feature\q":"")",
       "not valid JSON: a bad escape stands in a string, at byte 25, member \"type\""},
      {R"("descripton":"")", R"(member "descripton" is not known; did you mean "description"?)"},
      {R"("shadowid":1)", R"(member "shadowid" is not known; did you mean "shadowId"?)"},
      {R"("NAME":1)", R"(member "NAME" is not known)"},
      {R"("qualifiers":{"qualifierSrcIP":{}})",
       R"(member "qualifiers.qualifierSrcIP" is not a qualifier; did you mean "qualifierSrcIp"?)"},
      {R"("qualifiers":{"qualifierSrcIp4":{}})",
       R"(member "qualifiers.qualifierSrcIp4" is not a qualifier; did you mean "qualifierSrcIp" or "qualifierSrcIp6"?)"},
      {R"("rangeCheckers":{"rangeCheckerL4DestPort":{}})",
       R"(member "rangeCheckers.rangeCheckerL4DestPort" is not a range checker; did you mean "rangeCheckerL4DstPort"?)"},
      {R"("qualifiers":{"qualifierDSCP":{"vlaue":1}})",
       R"(member "qualifiers.qualifierDSCP.vlaue" is not known; did you mean "value"?)"},
      {R"("rangeCheckers":{"rangeCheckerIpLength":{"hihg":1}})",
       R"(member "rangeCheckers.rangeCheckerIpLength.hihg" is not known; did you mean "high"?)"},
      {R"("table":"ip4")", R"(member "table": "ip4" is not "ip", "ip6", "mac" or "tcam")"},
      {R"("pipe":-0)", R"(member "pipe": -0 is not a whole number from -32768 to 32767)"},
      {R"("shadowId":-0)",
       R"(member "shadowId": -0 is not a whole number from 0 to 18446744073709551615)"},
      {R"("hits":1e400)",
       R"(member "hits": 1e400 is not a whole number from 0 to 18446744073709551615)"},
      {R"("rangeCheckers":{"rangeCheckerIpLength":{"low":-0}})",
       R"(member "rangeCheckers.rangeCheckerIpLength.low": -0 is not a whole number from -2147483648 to 2147483647)"},
      {R"("":"")", R"(member "" is not known)"},
      {R"("name":"")", R"(member "name" is not known; it belongs to a group)"},
      {R"("version":1)", R"(member "version" is not known; it belongs to the header)"},
      {R"("hits":1,"hits":1)", R"(member "hits" stands twice)"},
      {R"("type":"entry")", R"(member "type" stands twice)"},
      {R"("qualifiers":[])", R"(member "qualifiers": an array is not an object)"},
      {R"("qualifiers":{"qualifierFoo":{}})",
       R"(member "qualifiers.qualifierFoo" is not a qualifier)"},
      {R"("qualifiers":{"":{}})", R"(member "qualifiers." is not a qualifier)"},
      {R"("qualifiers":{"qualifierDSCP":1})",
       R"(member "qualifiers.qualifierDSCP": 1 is not an object)"},
      {R"("qualifiers":{"qualifierDSCP":{"value":1}})",
       R"(member "qualifiers.qualifierDSCP.mask" is missing)"},
      {R"("qualifiers":{"qualifierDSCP":{}})",
       R"(member "qualifiers.qualifierDSCP.value" is missing)"},
      {R"("qualifiers":{"qualifierDSCP":{"value":1,"value":1}})",
       R"(member "qualifiers.qualifierDSCP.value" stands twice)"},
      {R"("qualifiers":{"qualifierDSCP":{"low":1}})",
       R"(member "qualifiers.qualifierDSCP.low" is not known)"},
      {R"("qualifiers":{"qualifierDSCP":{"value":1,"mask":1,"status":300}})",
       R"(member "qualifiers.qualifierDSCP.status": 300 is not a whole number from 0 to 255)"},
      {R"("qualifiers":{"qualifierDSCP":{"value":"1","mask":1}})",
       R"(member "qualifiers.qualifierDSCP.value": "1" is not a whole number from 0 to 4294967295)"},
      {R"("qualifiers":{"qualifierDSCP":{"value":1,"mask":1},"qualifierDSCP":{"value":1,"mask":1}})",
       R"(member "qualifiers.qualifierDSCP" stands twice)"},
      {R"("qualifiers":{"qualifierSrcIp":{"value":"10.0.0.1","mask":"255.255.255"}})",
       R"(member "qualifiers.qualifierSrcIp.mask": "255.255.255" is not an IPv4 address)"},
      {R"("qualifiers":{"qualifierSrcIp":{"value":"010.0.0.1","mask":0}})",
       R"(member "qualifiers.qualifierSrcIp.value": "010.0.0.1" is not an IPv4 address)"},
      {R"("qualifiers":{"qualifierSrcIp":{"value":4294967296,"mask":0}})",
       R"(member "qualifiers.qualifierSrcIp.value": 4294967296 is not a whole number from 0 to 4294967295)"},
      {R"("qualifiers":{"qualifierSrcIp6":{"value":1,"mask":0}})",
       R"(member "qualifiers.qualifierSrcIp6.value": 1 is not an IPv6 address)"},
      {R"("qualifiers":{"qualifierSrcIp6":{"value":"fe80::1%eth0","mask":"::"}})",
       R"(member "qualifiers.qualifierSrcIp6.value": "fe80::1%eth0" is not an IPv6 address)"},
      {R"("qualifiers":{"qualifierDstMac":{"value":"00:00:00:00:00:0","mask":"::"}})",
       R"(member "qualifiers.qualifierDstMac.value": "00:00:00:00:00:0" is not a MAC address)"},
      {R"("qualifiers":{"qualifierDstMac":{"value":17,"mask":"::"}})",
       R"(member "qualifiers.qualifierDstMac.value": 17 is not a MAC address)"},
      {R"("rangeCheckers":{"rangeCheckerFoo":{}})",
       R"(member "rangeCheckers.rangeCheckerFoo" is not a range checker)"},
      {R"("rangeCheckers":{"rangeCheckerIpLength":{"low":1}})",
       R"(member "rangeCheckers.rangeCheckerIpLength.high" is missing)"},
      {R"("rangeCheckers":{"rangeCheckerIpLength":{"low":2147483648}})",
       R"(member "rangeCheckers.rangeCheckerIpLength.low": 2147483648 is not a whole number from -2147483648 to 2147483647)"},
      {R"("rangeCheckers":{"rangeCheckerIpLength":{"value":1}})",
       R"(member "rangeCheckers.rangeCheckerIpLength.value" is not known)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    EXPECT_EQ(errorOf(std::string(header1) + "{\"type\":\"entry\"," + row.members + "}\n"),
              std::string("2: entry: ") + row.error);
  }
}

TEST(SnapshotReader, NamesTheMemberOfABadGroup) {
  struct Row {
    const char* members;
    const char* error;
  };
  Row const rows[] = {
      {R"("table":"ip")", R"(member "table" is not known; it belongs to an entry)"},
      {R"("name":1)", R"(member "name": 1 is not a string)"},
      {R"("name":"a\tb")", R"(member "name": holds the control character U+0009)"},
      {R"("availableEntries":-1)",
       R"(member "availableEntries": -1 is not a whole number from 0 to 4294967295)"},
      {R"("freeEntries":"")",
       R"(member "freeEntries": "" is not a whole number from 0 to 4294967295)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    EXPECT_EQ(errorOf(std::string(header1) + "{\"type\":\"group\"," + row.members + "}\n"),
              std::string("2: group: ") + row.error);
  }
}

TEST(SnapshotReader, RefusesAPlaceThatStandsTwice) {
  std::string const group = R"({"type":"group","groupId":1,"pipe":2})"
                            "\n";
  std::string const entry = R"({"type":"entry","table":"ip","shadowId":1})"
                            "\n";
  EXPECT_EQ(errorOf(std::string(header1) + group + entry + entry + group),
            R"(5: group: the place of members "stage": "ingress", "pipe": 2, "groupPriority": 0, )"
            R"("groupId": 1, "copyId": 0 stands in an earlier line too)");
  // Every member of the place tells one from the other.
  EXPECT_EQ(errorOf(std::string(header1) + group +
                    R"({"type":"group","groupId":1,"pipe":3})"
                    "\n" +
                    R"({"type":"group","groupId":1,"pipe":2,"copyId":1})"
                    "\n" +
                    R"({"type":"group","groupId":1,"pipe":2,"groupPriority":1})"
                    "\n" +
                    R"({"type":"group","groupId":2,"pipe":2})"
                    "\n" +
                    R"({"type":"group","groupId":1,"pipe":2,"stage":"egress"})"),
            "no error");
}

/// Writes random entries as a snapshot of `version` and reads them back.
void writeAndRead(std::uint32_t version) {
  std::mt19937 random(10 + version);
  auto word = [&] {
    auto const bits = static_cast<std::uint32_t>(random() % 33);
    return bits == 0 ? 0u : static_cast<std::uint32_t>(random()) >> (32 - bits);
  };
  std::string const texts[] = {"", "permit", "a \"quoted\" \\ text", "\xC3\xA9\xE2\x82\xAC"};
  std::vector<Entry> entries;
  std::string text;
  Header header9;
  header9.version.number = version;
  header9.numPipes = 9;
  appendLine(text, header9);
  std::string lines;
  for (int i = 0; i < 500; ++i) {
    Entry entry;
    entry.place = {static_cast<Stage>(1 + random() % 3), static_cast<std::int16_t>(word()), word(),
                   word(), word()};
    entry.table = static_cast<Table>(random() % 4);
    entry.shadowId = std::uint64_t{word()} << 32 | word();
    entry.sequence = word();
    entry.priority = word();
    entry.description = texts[random() % 4];
    entry.action = texts[random() % 4];
    entry.feature = texts[random() % 4];
    entry.hits = std::uint64_t{word()} << 32 | word();
    entry.counterStatus = static_cast<std::uint8_t>(word());
    entry.featurePriority = word();
    for (unsigned type = 0; type < 256; ++type) {
      const QualifierName* const name = qualifierByType(static_cast<std::uint8_t>(type));
      if (name == nullptr || random() % 2 == 0) continue;
      Qualifier qualifier;
      if (name->kind == QualifierKind::ip6) {
        Ip6Octets octets;
        for (std::uint8_t& octet : octets) octet = static_cast<std::uint8_t>(word());
        qualifier =
            ip6Qualifier(name->type, octets, ip6Mask(static_cast<unsigned>(random() % 129)));
      } else if (name->kind == QualifierKind::mac) {
        MacOctets octets;
        for (std::uint8_t& octet : octets) octet = static_cast<std::uint8_t>(word());
        qualifier = macQualifier(name->type, octets, octets);
      } else {
        qualifier = wordQualifier(name->type, word(), word(), name->kind);
      }
      qualifier.status = static_cast<std::uint8_t>(random() % 9);
      entry.qualifiers.push_back(qualifier);
    }
    for (std::uint8_t type = 1; type <= 3; ++type) {
      if (random() % 2 == 0) continue;
      RangeChecker range;
      range.type = type;
      range.low = static_cast<std::int32_t>(word());
      range.high = -static_cast<std::int32_t>(word() / 2);
      range.status = static_cast<std::uint8_t>(random() % 9);
      entry.rangeCheckers.push_back(range);
    }
    if (version >= 2) {
      if (random() % 2 != 0) entry.bytes = std::uint64_t{word()} << 32 | word();
      if (random() % 2 != 0) entry.givenState = static_cast<EntryState>(random() % 4);
      entry.reason = texts[random() % 4];
      entry.otherMatch = texts[random() % 4];
    }
    appendLine(lines, entry);
    entries.push_back(entry);
  }
  text += lines;
  std::string end;
  appendLine(end, SnapshotEnd{0, entries.size()});
  if (version >= 2) text += end;
  // An import of either version gives version 2 with the same lines.
  EXPECT_EQ(runTcamshow({"import"}, {.input = text}).out,
            "{\"type\":\"snapshot\",\"version\":2,\"numPipes\":9}\n" + lines + end);
  TemporaryFile const snapshot(text);
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  EXPECT_EQ(reader->header().numPipes, 9u);
  for (const Entry& entry : entries) {
    ASSERT_EQ(reader->next(), Source::Item::entry);
    const Entry& read = reader->entry();
    EXPECT_EQ(read.place, entry.place);
    EXPECT_EQ(read.table, entry.table);
    EXPECT_EQ(read.shadowId, entry.shadowId);
    EXPECT_EQ(read.sequence, entry.sequence);
    EXPECT_EQ(read.priority, entry.priority);
    EXPECT_EQ(read.description, entry.description);
    EXPECT_EQ(read.action, entry.action);
    EXPECT_EQ(read.feature, entry.feature);
    EXPECT_EQ(read.hits, entry.hits);
    EXPECT_EQ(read.counterStatus, entry.counterStatus);
    EXPECT_EQ(read.featurePriority, entry.featurePriority);
    EXPECT_EQ(read.bytes, entry.bytes);
    EXPECT_EQ(read.givenState, entry.givenState);
    EXPECT_EQ(read.reason, entry.reason);
    EXPECT_EQ(read.otherMatch, entry.otherMatch);
    ASSERT_EQ(read.qualifiers.size(), entry.qualifiers.size());
    for (std::size_t i = 0; i < read.qualifiers.size(); ++i) {
      const Qualifier& a = read.qualifiers[i];
      const Qualifier& b = entry.qualifiers[i];
      EXPECT_EQ(a.type, b.type);
      EXPECT_EQ(a.kind, b.kind);
      EXPECT_EQ(a.status, b.status);
      if (a.kind == QualifierKind::ip6) {
        EXPECT_EQ(a.ip6.value, b.ip6.value);
        EXPECT_EQ(a.ip6.mask, b.ip6.mask);
      } else if (a.kind == QualifierKind::mac) {
        EXPECT_EQ(a.mac.value, b.mac.value);
        EXPECT_EQ(a.mac.mask, b.mac.mask);
      } else {
        EXPECT_EQ(a.value, b.value);
        EXPECT_EQ(a.mask, b.mask);
      }
    }
    ASSERT_EQ(read.rangeCheckers.size(), entry.rangeCheckers.size());
    for (std::size_t i = 0; i < read.rangeCheckers.size(); ++i) {
      EXPECT_EQ(read.rangeCheckers[i].type, entry.rangeCheckers[i].type);
      EXPECT_EQ(read.rangeCheckers[i].low, entry.rangeCheckers[i].low);
      EXPECT_EQ(read.rangeCheckers[i].high, entry.rangeCheckers[i].high);
      EXPECT_EQ(read.rangeCheckers[i].status, entry.rangeCheckers[i].status);
    }
  }
  EXPECT_EQ(reader->next(), Source::Item::end);
}

TEST(SnapshotReader, ReadsBackWhatTheWriterWrote) {
  for (std::uint32_t const version : {1U, 2U}) {
    SCOPED_TRACE(version);
    writeAndRead(version);
  }
}

}  // namespace
}  // namespace tcamshow
