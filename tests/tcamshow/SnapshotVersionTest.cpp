// Version 2 of the snapshot.
#include <gtest/gtest.h>

#include <string>

#include "Process.h"
#include "SnapshotText.h"
#include "TemporaryFile.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"

namespace tcamshow {
namespace {

const std::string header2 = "{\"type\":\"snapshot\",\"version\":2}\n";
const std::string end1 = "{\"type\":\"end\",\"groups\":0,\"entries\":1}\n";

/// A snapshot with one entry that has these members beside the required ones.
std::string entry2(const std::string& members) {
  return header2 + R"({"type":"entry","table":"ip","shadowId":1,)" + members + "}\n" + end1;
}

/// What an import of it writes, but for the header and the end: the entry's line.
std::string importOf(const std::string& snapshot) {
  ProcessResult const result = runTcamshow({"import", "snapshot"}, {.input = snapshot});
  if (result.status != 0) return result.err;
  std::size_t const begin = result.out.find('\n') + 1;
  return result.out.substr(begin, result.out.find('\n', begin) - begin);
}

TEST(Snapshot2, ReadsTheHeader) {
  TemporaryFile const snapshot(
      R"({"takenAt":"2026-01-31T12:30:00.25Z","type":"snapshot","source":"agent 7","version":2,)"
      R"("device":"leaf\u00e9","numPipes":2})"
      "\n{\"type\":\"end\",\"groups\":0,\"entries\":0}\n");
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  EXPECT_EQ(reader->next(), Source::Item::end);
  // The texts are there when the line is gone.
  const Header& header = reader->header();
  EXPECT_EQ(header.version.number, 2u);
  EXPECT_EQ(header.takenAt.text, "2026-01-31T12:30:00.25Z");
  EXPECT_EQ(header.takenAt.seconds, 1769862600);
  EXPECT_EQ(header.takenAt.nanoseconds, 250'000'000u);
  EXPECT_EQ(header.source, "agent 7");
  EXPECT_EQ(header.device, "leaf\xC3\xA9");
  EXPECT_EQ(header.numPipes, 2);
}

TEST(Snapshot2, ReadsTheMembersOfAnEntry) {
  TemporaryFile const snapshot(entry2(
      R"("bytes":18446744073709551615,"state":"failed","reason":"no room","otherMatch":"in_port=3")"));
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  ASSERT_EQ(reader->next(), Source::Item::entry);
  EXPECT_EQ(reader->entry().bytes, 18446744073709551615u);
  EXPECT_EQ(reader->entry().givenState, EntryState::failed);
  EXPECT_EQ(reader->entry().reason, "no room");
  EXPECT_EQ(reader->entry().otherMatch, "in_port=3");
  EXPECT_EQ(reader->next(), Source::Item::end);
}

TEST(Snapshot2, TellsWhatIsNotReportedFromNothing) {
  TemporaryFile const snapshot(
      header2 + R"({"type":"group","groupId":1})"
                "\n"
                R"({"type":"group","groupId":2,"availableEntries":0,"freeEntries":0,)"
                R"("totalEntries":4294967295})"
                "\n"
                R"({"type":"entry","table":"ip","shadowId":1})"
                "\n"
                R"({"type":"entry","table":"ip","shadowId":1,"bytes":0})"
                "\n"
                R"({"type":"end","groups":2,"entries":2})");
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  ASSERT_EQ(reader->next(), Source::Item::group);
  EXPECT_EQ(reader->group().availableEntries, std::nullopt);
  EXPECT_EQ(reader->group().freeEntries, std::nullopt);
  EXPECT_EQ(reader->group().totalEntries, std::nullopt);
  ASSERT_EQ(reader->next(), Source::Item::group);
  EXPECT_EQ(reader->group().availableEntries, 0u);
  EXPECT_EQ(reader->group().freeEntries, 0u);
  EXPECT_EQ(reader->group().totalEntries, 4294967295u);
  ASSERT_EQ(reader->next(), Source::Item::entry);
  EXPECT_EQ(reader->entry().bytes, std::nullopt);
  EXPECT_EQ(reader->entry().givenState, std::nullopt);
  ASSERT_EQ(reader->next(), Source::Item::entry);
  EXPECT_EQ(reader->entry().bytes, 0u);
  EXPECT_EQ(reader->next(), Source::Item::end);
}

TEST(Snapshot2, TakesPrefixesAndLeavesOutMasks) {
  struct Row {
    const char* qualifier;  // as given
    const char* written;    // as an import writes it
  };
  Row const rows[] = {
      {R"("qualifierSrcIp":{"value":"10.1.2.3/8"})",
       R"("qualifierSrcIp":{"value":"10.1.2.3","mask":"255.0.0.0"})"},
      {R"("qualifierSrcIp":{"value":"10.1.2.3/0"})",
       R"("qualifierSrcIp":{"value":"10.1.2.3","mask":"0.0.0.0"})"},
      {R"("qualifierDstIp":{"status":4,"value":"10.1.2.3/32"})",
       R"("qualifierDstIp":{"value":"10.1.2.3","mask":"255.255.255.255","status":4})"},
      {R"("qualifierDstIp":{"value":"10.1.2.3"})",
       R"("qualifierDstIp":{"value":"10.1.2.3","mask":"255.255.255.255"})"},
      {R"("qualifierSrcIp6":{"value":"2001:db8::1/33"})",
       R"("qualifierSrcIp6":{"value":"2001:db8::1","mask":"ffff:ffff:8000::"})"},
      {R"("qualifierDstIp6Alt":{"value":"::/0"})",
       R"("qualifierDstIp6Alt":{"value":"::","mask":"::"})"},
      {R"("qualifierDstIp6":{"value":"::1"})",
       R"("qualifierDstIp6":{"value":"::1","mask":"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"})"},
      {R"("qualifierSrcMac":{"value":"00:00:5e:00:53:01"})",
       R"("qualifierSrcMac":{"value":"00:00:5e:00:53:01","mask":"ff:ff:ff:ff:ff:ff"})"},
      {R"("qualifierL4SrcPort":{"value":1})", R"("qualifierL4SrcPort":{"value":1,"mask":65535})"},
      {R"("qualifierL4DstPort":{"value":1})", R"("qualifierL4DstPort":{"value":1,"mask":65535})"},
      {R"("qualifierEtherType":{"value":1})", R"("qualifierEtherType":{"value":1,"mask":65535})"},
      {R"("qualifierOuterVlanId":{"value":1})",
       R"("qualifierOuterVlanId":{"value":1,"mask":4095})"},
      {R"("qualifierIpProtocol":{"value":1})", R"("qualifierIpProtocol":{"value":1,"mask":255})"},
      {R"("qualifierIp6TrafficClass":{"value":1})",
       R"("qualifierIp6TrafficClass":{"value":1,"mask":255})"},
      {R"("qualifierIp6HopLimit":{"value":1})", R"("qualifierIp6HopLimit":{"value":1,"mask":255})"},
      {R"("qualifierDSCP":{"value":1})", R"("qualifierDSCP":{"value":1,"mask":63})"},
      {R"("qualifierTcpControl":{"value":1})", R"("qualifierTcpControl":{"value":1,"mask":63})"},
      {R"("qualifierIpFrag":{"value":3})", R"("qualifierIpFrag":{"value":3,"mask":3})"},
      // A mask that is there stays.
      {R"("qualifierIpProtocol":{"mask":15,"value":1})",
       R"("qualifierIpProtocol":{"value":1,"mask":15})"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.qualifier);
    EXPECT_EQ(
        importOf(entry2(R"("qualifiers":{)" + std::string(row.qualifier) + "}")),
        R"({"type":"entry","table":"ip","shadowId":1,"sequence":0,"priority":0,"qualifiers":{)" +
            std::string(row.written) + "}}");
  }
}

TEST(Snapshot2, RefusesWhatIsWrongWithAnEntry) {
  struct Row {
    const char* members;
    const char* error;
  };
  Row const rows[] = {
      {R"("qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0/8","mask":"255.0.0.0"}})",
       R"(member "qualifiers.qualifierSrcIp.mask" stands beside the length of a prefix)"},
      {R"("qualifiers":{"qualifierSrcIp":{"mask":"255.0.0.0","value":"10.0.0.0/8"}})",
       R"(member "qualifiers.qualifierSrcIp.mask" stands beside the length of a prefix)"},
      {R"("qualifiers":{"qualifierSrcIp":{"value":1}})",
       R"(member "qualifiers.qualifierSrcIp.value": 1 is not an IPv4 address)"},
      {R"("qualifiers":{"qualifierSrcIp":{"value":"1.2.3.4","mask":8}})",
       R"(member "qualifiers.qualifierSrcIp.mask": 8 is not an IPv4 address)"},
      {R"("qualifiers":{"qualifierSrcIp":{"value":"1.2.3.4","mask":"255.0.0.0/8"}})",
       R"(member "qualifiers.qualifierSrcIp.mask": "255.0.0.0/8" is not an IPv4 address)"},
      {R"("qualifiers":{"qualifierSrcIp":{"mask":"255.0.0.0"}})",
       R"(member "qualifiers.qualifierSrcIp.value" is missing)"},
      {R"("qualifiers":{"qualifierDstIp":{"value":"1.2.3.4/33"}})",
       R"(member "qualifiers.qualifierDstIp.value": "1.2.3.4/33" is not an IPv4 address or prefix)"},
      {R"("qualifiers":{"qualifierDstIp":{"value":"1.2.3.4/"}})",
       R"(member "qualifiers.qualifierDstIp.value": "1.2.3.4/" is not an IPv4 address or prefix)"},
      {R"("qualifiers":{"qualifierDstIp":{"value":"1.2.3.4/08"}})",
       R"(member "qualifiers.qualifierDstIp.value": "1.2.3.4/08" is not an IPv4 address or prefix)"},
      {R"("qualifiers":{"qualifierDstIp":{"value":"1.2.3.4/+8"}})",
       R"(member "qualifiers.qualifierDstIp.value": "1.2.3.4/+8" is not an IPv4 address or prefix)"},
      {R"("qualifiers":{"qualifierDstIp6":{"value":"::1/129"}})",
       R"(member "qualifiers.qualifierDstIp6.value": "::1/129" is not an IPv6 address or prefix)"},
      {R"("qualifiers":{"qualifierDstIp6":{"value":1}})",
       R"(member "qualifiers.qualifierDstIp6.value": 1 is not an IPv6 address)"},
      {R"("qualifiers":{"qualifierDstMac":{"value":"00:00:5e:00:53:01/8"}})",
       R"(member "qualifiers.qualifierDstMac.value": "00:00:5e:00:53:01/8" is not a MAC address)"},
      {R"("state":"Failed")",
       R"(member "state": "Failed" is not "programmed", "pending", "failed" or "unknown")"},
      {R"("bytes":-1)",
       R"(member "bytes": -1 is not a whole number from 0 to 18446744073709551615)"},
      {R"("bytes":null)",
       R"(member "bytes": null is not a whole number from 0 to 18446744073709551615)"},
      {R"("reason":"\u0007")", R"(member "reason": holds the control character U+0007)"},
      {R"("totalEntries":1)", R"(member "totalEntries" is not known; it belongs to a group)"},
      {R"("takenAt":"x")", R"(member "takenAt" is not known; it belongs to the header)"},
      {R"("entries":1)", R"(member "entries" is not known; it belongs to the "end" line)"},
      {R"("otherMatsh":"x")", R"(member "otherMatsh" is not known; did you mean "otherMatch"?)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    EXPECT_EQ(errorOf(entry2(row.members)), "2: entry: " + std::string(row.error));
  }
}

TEST(Snapshot2, IsNotReadAsVersion1) {
  struct Row {
    std::string text;
    const char* error;
  };
  std::string const first(header1);
  Row const rows[] = {
      {R"({"type":"snapshot","version":1,"device":"x"})",
       R"(1: snapshot: member "device" is not known in version 1 of the snapshot, only in version 2)"},
      {R"({"type":"snapshot","source":"x","version":1})",
       R"(1: snapshot: member "source" is not known in version 1 of the snapshot, only in version 2)"},
      {first + R"({"type":"entry","table":"ip","shadowId":1,"bytes":1})",
       R"(2: entry: member "bytes" is not known in version 1 of the snapshot, only in version 2)"},
      {first + R"({"type":"group","totalEntries":1})",
       R"(2: group: member "totalEntries" is not known in version 1 of the snapshot, only in version 2)"},
      {first + R"({"type":"end","groups":0,"entries":0})",
       R"(2: member "type": "end" is not "snapshot", "group" or "entry")"},
      {first +
           R"({"type":"entry","table":"ip","shadowId":1,"qualifiers":{"qualifierSrcIp":{"value":"1.2.3.4/8","mask":"1.1.1.1"}}})",
       R"(2: entry: member "qualifiers.qualifierSrcIp.value": "1.2.3.4/8" is not an IPv4 address)"},
      {first +
           R"({"type":"entry","table":"ip","shadowId":1,"qualifiers":{"qualifierSrcIp":{"value":"1.2.3.4"}}})",
       R"(2: entry: member "qualifiers.qualifierSrcIp.mask" is missing)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(errorOf(row.text), row.error);
  }
}

TEST(Snapshot2, IsWholeOrAnError) {
  std::string const entry = R"({"type":"entry","table":"tcam","shadowId":1})"
                            "\n";
  std::string const group = R"({"type":"group"})"
                            "\n";
  struct Row {
    std::string text;
    const char* error;
  };
  Row const rows[] = {
      {header2, R"(2: the snapshot was cut: its "end" line is missing)"},
      {header2 + entry + "\n", R"(4: the snapshot was cut: its "end" line is missing)"},
      {header2 + end1,
       "2: end: the snapshot was cut or changed: it has 0 entries, but this line says 1"},
      {header2 + entry + entry + end1,
       "4: end: the snapshot was cut or changed: it has 2 entries, but this line says 1"},
      {header2 + group + entry + end1,
       "4: end: the snapshot was cut or changed: it has 1 groups, but this line says 0"},
      {header2 + entry + end1 + entry, R"(4: nothing may follow the "end" line)"},
      {header2 + entry + end1 + end1, R"(4: nothing may follow the "end" line)"},
      {header2 + R"({"type":"end","groups":0})", R"(2: end: member "entries" is missing)"},
      {header2 + R"({"type":"end","groups":0,"entries":0,"pipe":1})",
       R"(2: end: member "pipe" is not known; it belongs to a group or an entry)"},
      {header2 + R"({"type":"ends"})",
       R"(2: member "type": "ends" is not "snapshot", "group", "entry" or "end")"},
      {header2 + entry + end1 + "\n \n", "no error"},
      {header2 + group + entry + R"({"entries":1,"type":"end","groups":1})", "no error"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(errorOf(row.text), row.error);
  }
  // All before the fault is shown, and an import writes nothing.
  ProcessResult const shown = runTcamshow({"tcam"}, {.input = header2 + entry});
  EXPECT_EQ(shown.status, 1);
  EXPECT_EQ(shown.out, "    0x00000001            0 hits - \n");
  ProcessResult const imported = runTcamshow({"import"}, {.input = header2 + entry});
  EXPECT_EQ(imported.status, 1);
  EXPECT_EQ(imported.out, "");
}

TEST(Snapshot2, CutAnywhereIsNeverTakenForWhole) {
  std::string const whole =
      header2 + R"({"type":"group","name":"acl"})" + "\n" +
      R"({"type":"entry","table":"ip","shadowId":1,"qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0/8"}}})" +
      "\n" + R"({"type":"end","groups":1,"entries":1})";
  ASSERT_EQ(errorOf(whole), "no error");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NE(errorOf(whole.substr(0, size)), "no error") << size;
  }
}

TEST(Snapshot2, UpgradesVersion1) {
  std::string const first =
      std::string(header1) +
      R"({"type":"entry","table":"ip","shadowId":2,"groupId":9,"qualifiers":{"qualifierSrcIp":{"value":167772160,"mask":4278190080}}})"
      "\n"
      R"({"type":"group","groupId":9,"name":"acl","availableEntries":0})"
      "\n"
      R"({"type":"entry","table":"mac","shadowId":1,"hits":3,"counterStatus":7})"
      "\n";
  std::string const second =
      header2 +
      R"({"type":"group","groupId":9,"name":"acl","availableEntries":0})"
      "\n"
      R"({"type":"entry","groupId":9,"table":"ip","shadowId":2,"sequence":0,"priority":0,"qualifiers":{"qualifierSrcIp":{"value":"10.0.0.0","mask":"255.0.0.0"}}})"
      "\n"
      R"({"type":"entry","table":"mac","shadowId":1,"sequence":0,"priority":0,"hits":3,"counterStatus":7})"
      "\n"
      R"({"type":"end","groups":1,"entries":2})"
      "\n";
  EXPECT_EQ(runTcamshow({"import", "snapshot"}, {.input = first}).out, second);
  EXPECT_EQ(runTcamshow({"import"}, {.input = second}).out, second);
  // No exact view changes.
  for (const char* const command : {"ip", "mac", "tcam", "usage", "summary", "inspect"}) {
    EXPECT_EQ(runTcamshow({command}, {.input = second}).out,
              runTcamshow({command}, {.input = first}).out);
  }
}

TEST(Snapshot2, JsonHasItsMembersWhereTheyAreGiven) {
  std::string const plain = runTcamshow({"--json", "ip"}, {.input = entry2(R"("hits":1)")}).out;
  for (const char* const name : {"bytes", "state", "reason", "otherMatch"}) {
    EXPECT_EQ(plain.find(name), std::string::npos) << name;
  }
  std::string const full =
      runTcamshow(
          {"--json", "ip"},
          {.input = entry2(R"("bytes":0,"state":"programmed","reason":"x","otherMatch":"y")")})
          .out;
  EXPECT_NE(full.find(R"("hits":0,"bytes":0,"counterStatus":0,"state":"programmed","reason":"x",)"),
            std::string::npos)
      << full;
  EXPECT_NE(full.find(R"("rangeCheckers":{},"otherMatch":"y"})"), std::string::npos) << full;
}

TEST(Time, IsReadAsRfc3339WritesIt) {
  struct Row {
    const char* text;
    std::int64_t seconds;
    std::uint32_t nanoseconds = 0;
  };
  Row const rows[] = {
      {"1970-01-01T00:00:00Z", 0},
      {"1970-01-01t00:00:01z", 1},
      {"1970-01-01 00:00:01Z", 1},
      {"2026-01-31T12:30:00+00:00", 1769862600},
      {"2024-02-29T23:59:59.999999999Z", 1709251199, 999999999},
      {"2024-02-29T23:59:59.1234567891234Z", 1709251199, 123456789},
      {"1969-12-31T23:59:59Z", -1},
      {"0000-01-01T00:00:00Z", -62167219200},
      {"9999-12-31T23:59:59Z", 253402300799},
      {"2016-12-31T23:59:60Z", 1483228800},
  };
  for (const Row& row : rows) {
    Time time;
    ASSERT_TRUE(timeFromText(row.text, time)) << row.text;
    EXPECT_EQ(time.text, row.text);
    EXPECT_EQ(time.seconds, row.seconds) << row.text;
    EXPECT_EQ(time.nanoseconds, row.nanoseconds) << row.text;
  }
  for (const char* const text :
       {"", "2026", "2026-01-31", "2026-01-31T12:30:00", "2026-01-31T12:30:00+01:00",
        "2026-01-31T12:30Z", "2026-1-31T12:30:00Z", "2026-13-01T00:00:00Z", "2026-02-29T00:00:00Z",
        "2026-01-00T00:00:00Z", "2026-01-31T24:00:00Z", "2026-01-31T12:60:00Z",
        "2026-01-31T12:30:60Z", "2026-01-31T12:30:00.Z", "2026-01-31T12:30:00Zx",
        " 2026-01-31T12:30:00Z", "+026-01-31T12:30:00Z", "2026-01-31T12:30:00-00:00",
        "2026/01/31T12:30:00Z"}) {
    Time time;
    EXPECT_FALSE(timeFromText(text, time)) << text;
    EXPECT_FALSE(time.isGiven());
  }
}

}  // namespace
}  // namespace tcamshow
