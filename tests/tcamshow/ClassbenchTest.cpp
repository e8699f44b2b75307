#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Process.h"
#include "TemporaryFile.h"
#include "snapshot/SnapshotReader.h"

namespace tcamshow {
namespace {

constexpr const char* headerLine = "{\"type\":\"snapshot\",\"version\":2}\n";

ProcessResult import(const std::string& text) {
  return runTcamshow({"import", "classbench"}, {.input = text});
}

/// The qualifiers and range checkers of the one entry that a filter becomes.
std::string matchesOf(const std::string& filter) {
  ProcessResult const result = import(filter);
  if (result.status != 0) return result.err;
  std::string const before = R"("feature":"classbench")";
  std::size_t const from = result.out.find(before);
  if (from == std::string::npos) return "no entry: " + result.out;
  std::size_t const start = from + before.size();
  return result.out.substr(start, result.out.find("}\n", start) - start);
}

TEST(Classbench, WritesTheWholeEntry) {
  ProcessResult const result = import(
      "# a comment\n\n \t\n"
      "@10.1.2.3/24\t192.168.0.0/16\t0 : 65535\t80 : 80\t0x06/0xFF\t0x1000/0x1000\t\n"
      "@2001:db8::1/64 ::/0 \t 7 : 9 0 : 65535  58/255\r\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.out,
      std::string(headerLine) +
          R"({"type":"entry","table":"ip","shadowId":1,"sequence":10,"priority":4294967294,)"
          R"("description":"10.1.2.3/24 192.168.0.0/16 0 : 65535 80 : 80 0x06/0xFF 0x1000/0x1000",)"
          R"("action":"permit","feature":"classbench","qualifiers":{)"
          R"("qualifierSrcIp":{"value":"10.1.2.3","mask":"255.255.255.0"},)"
          R"("qualifierDstIp":{"value":"192.168.0.0","mask":"255.255.0.0"},)"
          R"("qualifierIpProtocol":{"value":6,"mask":255},)"
          R"("qualifierL4DstPort":{"value":80,"mask":65535},)"
          R"("qualifierTcpControl":{"value":16,"mask":16}}})"
          "\n"
          R"({"type":"entry","table":"ip6","shadowId":2,"sequence":20,"priority":4294967293,)"
          R"("description":"2001:db8::1/64 ::/0 7 : 9 0 : 65535 58/255",)"
          R"("action":"permit","feature":"classbench","qualifiers":{)"
          R"("qualifierSrcIp6":{"value":"2001:db8::1","mask":"ffff:ffff:ffff:ffff::"},)"
          R"("qualifierIpProtocol":{"value":58,"mask":255}},)"
          R"("rangeCheckers":{"rangeCheckerL4SrcPort":{"low":7,"high":9}}})"
          "\n"
          R"({"type":"end","groups":0,"entries":2})"
          "\n");
}

TEST(Classbench, MakesQualifiers) {
  struct Row {
    const char* filter;
    const char* matches;
  };
  Row const rows[] = {
      // Nothing at all.
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 0/0", ""},
      {"@1.2.3.4/0 ::1.2.3.4/0 0 : 65535 0 : 65535 0/0",
       "tcamshow: <stdin>:1: the source and destination addresses are of two families\n"},
      {"@1.2.3.4/0 1.2.3.4/0 0 : 65535 0 : 65535 0x06/0x00 0xFFFF/0x0000", ""},
      // Addresses.
      {"@1.2.3.4/32 0.0.0.0/0 0 : 65535 0 : 65535 0/0",
       R"(,"qualifiers":{"qualifierSrcIp":{"value":"1.2.3.4","mask":"255.255.255.255"}})"},
      {"@0.0.0.0/0 128.0.0.0/1 0 : 65535 0 : 65535 0/0",
       R"(,"qualifiers":{"qualifierDstIp":{"value":"128.0.0.0","mask":"128.0.0.0"}})"},
      {"@::/0 ::1/128 0 : 65535 0 : 65535 0/0",
       R"(,"qualifiers":{"qualifierDstIp6":{"value":"::1","mask":"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}})"},
      {"@8000::/1 ::/0 0 : 65535 0 : 65535 0/0",
       R"(,"qualifiers":{"qualifierSrcIp6":{"value":"8000::","mask":"8000::"}})"},
      // Ports.
      {"@0.0.0.0/0 0.0.0.0/0 0 : 0 65535 : 65535 0/0",
       R"(,"qualifiers":{"qualifierL4SrcPort":{"value":0,"mask":65535},"qualifierL4DstPort":{"value":65535,"mask":65535}})"},
      {"@0.0.0.0/0 0.0.0.0/0 1024 : 2047 0 : 1 0/0",
       R"(,"qualifiers":{"qualifierL4SrcPort":{"value":1024,"mask":64512},"qualifierL4DstPort":{"value":0,"mask":65534}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0 : 32767 32768 : 65535 0/0",
       R"(,"qualifiers":{"qualifierL4SrcPort":{"value":0,"mask":32768},"qualifierL4DstPort":{"value":32768,"mask":32768}})"},
      {"@0.0.0.0/0 0.0.0.0/0 1 : 2 1024 : 65535 0/0",
       R"(,"rangeCheckers":{"rangeCheckerL4SrcPort":{"low":1,"high":2},"rangeCheckerL4DstPort":{"low":1024,"high":65535}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0x10 : 0X1f 0 : 65535 0/0",
       R"(,"qualifiers":{"qualifierL4SrcPort":{"value":16,"mask":65520}})"},
      // Protocols.
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 0x2f/0xF0",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":47,"mask":240}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 17/255 0x1234/0",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":17,"mask":255}})"},
      // TCP flags: what the mask does not hold is no part of the value, nor are the two high bits.
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 6/255 0xff00/0x0200",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":6,"mask":255},"qualifierTcpControl":{"value":2,"mask":2}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 6/255 0xff00/0xff00",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":6,"mask":255},"qualifierTcpControl":{"value":63,"mask":63}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 6/255 0xc0ff/0xc0ff",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":6,"mask":255}})"},
      {"@0.0.0.0/0 0.0.0.0/0 5 : 5 0 : 65535 6/255 0/0x1200",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":6,"mask":255},"qualifierL4SrcPort":{"value":5,"mask":65535},"qualifierTcpControl":{"value":0,"mask":18}})"},
      // ICMP types and codes.
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 1/255 0x0303/0xffff",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255},"qualifierL4SrcPort":{"value":768,"mask":65280},"qualifierL4DstPort":{"value":3,"mask":255}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 1/255 0x0805/0xff00",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255},"qualifierL4SrcPort":{"value":2048,"mask":65280}})"},
      {"@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 1/255 0x0805/0x000f",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255},"qualifierL4DstPort":{"value":5,"mask":15}})"},
      {"@::/0 ::/0 0 : 65535 0 : 65535 58/255 0x8000/0xff00",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":58,"mask":255},"qualifierL4SrcPort":{"value":32768,"mask":65280}})"},
      {"@0.0.0.0/0 0.0.0.0/0 5 : 5 0 : 65535 1/255 0x0805/0",
       R"(,"qualifiers":{"qualifierIpProtocol":{"value":1,"mask":255},"qualifierL4SrcPort":{"value":5,"mask":65535}})"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.filter);
    EXPECT_EQ(matchesOf(row.filter), row.matches);
  }
}

TEST(Classbench, RefusesBadFilters) {
  struct Row {
    std::string filter;
    const char* error;
  };
  Row const rows[] = {
      {"1.2.3.4/32 1.2.3.4/32 0 : 1 0 : 1 0/0", "a filter begins with '@', not \"1.2.3.4/32\""},
      {" # no comment", "a filter begins with '@', not \"#\""},
      {"@", R"(source address: "" has no '/')"},
      {"@1.2.3.4 1.2.3.4/32", R"(source address: "1.2.3.4" has no '/')"},
      {"@1.2.3.4/32", "the destination address field is missing"},
      {"@1.2.3.4/32 1.2.3.4/32", "the source ports field is missing"},
      {"@1.2.3.4/32 1.2.3.4/32 5", "the source ports field is missing"},
      {"@1.2.3/8 1.2.3.4/32 0 : 1 0 : 1 0/0", R"(source address: "1.2.3" is not an address)"},
      {"@01.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 0/0", R"(source address: "01.2.3.4" is not an address)"},
      {"@1.2.3.4/33 1.2.3.4/32 0 : 1 0 : 1 0/0", R"(source address length: 33 is more than 32)"},
      {"@::/0 ::/129 0 : 1 0 : 1 0/0", R"(destination address length: 129 is more than 128)"},
      {"@::/0 ::g/0 0 : 1 0 : 1 0/0", R"(destination address: "::g" is not an address)"},
      {"@1.2.3.4/ 1.2.3.4/32 0 : 1 0 : 1 0/0", R"(source address length: "" is not a number)"},
      {"@1.2.3.4/8/8 1.2.3.4/32 0 : 1 0 : 1 0/0",
       R"(source address length: "8/8" is not a number)"},
      {"@1.2.3.4/-1 1.2.3.4/32 0 : 1 0 : 1 0/0", R"(source address length: "-1" is not a number)"},
      {"@1.2.3.4/8 ::/0 0 : 1 0 : 1 0/0",
       "the source and destination addresses are of two families"},
      {"@1.2.3.4/8 1.2.3.4/32 2 : 1 0 : 1 0/0", "source ports: 2 is more than 1"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 65536 0 : 1 0/0", "source ports: 65536 is more than 65535"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 99999999999 : 1 0/0",
       "destination ports: 99999999999 is more than 65535"},
      {"@1.2.3.4/8 1.2.3.4/32 0 - 1 0 : 1 0/0", R"(source ports: ':' is expected, not "-")"},
      {"@1.2.3.4/8 1.2.3.4/32 0:1 0 : 1 0/0", R"(source ports: "0:1" is not a number)"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0x : 1 0/0", R"(destination ports: "0x" is not a number)"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1x 0/0", R"(destination ports: "1x" is not a number)"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1", "the protocol field is missing"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6", R"(protocol: "6" has no '/')"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 256/255", "protocol: 256 is more than 255"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6/0x100", "protocol mask: 0x100 is more than 255"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6/255 1", R"(flags: "1" has no '/')"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6/255 0x10000/0", "flags: 0x10000 is more than 65535"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6/255 0/0x10000",
       "flags mask: 0x10000 is more than 65535"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6/255 0/0 x",
       R"(something follows the last field: " x")"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 17/255 0/1", "flags: protocol 17 has none"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 6/0xfe 0/1",
       "flags: they need a protocol whose mask is 255"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 65535 0 : 65535 0/0 0/1",
       "flags: they need a protocol whose mask is 255"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 65535 1/255 0/1",
       "flags: an ICMP filter cannot have both flags and ports"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 65535 5 : 5 58/255 0/1",
       "flags: an ICMP filter cannot have both flags and ports"},
      {std::string("@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 0/0\0", 38), "the line holds a NUL byte"},
      {std::string("\0", 1), "the line holds a NUL byte"},
      {std::string("# a comment\0", 12), "the line holds a NUL byte"},
      {"\x1B[2J", R"(a filter begins with '@', not "\u{1B}[2J")"},
      {"@1.2.3.4/8 1.2.3.4/32 0 : 1 0 : 1 0/0 0/0 \xC2\x9B\xFF",
       R"(something follows the last field: " \u{9B}\xFF")"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.filter);
    ProcessResult const result = import("@0.0.0.0/0 0.0.0.0/0 0 : 1 0 : 1 0/0\n" + row.filter);
    EXPECT_EQ(result.err, std::string("tcamshow: <stdin>:2: ") + row.error + "\n");
    EXPECT_EQ(result.status, 1);
    // The entries before the bad line are printed.
    EXPECT_NE(result.out.find("\"shadowId\":1"), std::string::npos);
    EXPECT_EQ(result.out.find("\"shadowId\":2"), std::string::npos);
  }
}

TEST(Classbench, ReadsRealFilterSets) {
  struct Row {
    const char* name;
    std::size_t filters;
  };
  Row const rows[] = {
      {"acl1_100k", 44473},      {"acl1_10k", 9774},  {"acl1_1k", 942}, {"acl2_1k", 961},
      {"dpdk_acl1v4_5_rule", 5}, {"fw1_10k", 9379},   {"fw1_1k", 857},  {"fw3_1k", 799},
      {"ipc1_1k", 974},          {"ipc2_10k", 10000},
  };
  std::filesystem::path const directory =
      std::filesystem::path(TCAMSHOW_SHARED_DATA) / "classbench";
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << "no filter sets";
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ProcessResult const result = runTcamshow({"import", "classbench", directory / row.name});
    EXPECT_EQ(result.err, "");
    ASSERT_EQ(result.status, 0);
    TemporaryFile const snapshot(result.out);
    Complaints complaints;
    auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
    std::size_t entries = 0;
    while (reader->next() == Source::Item::entry) {
      ++entries;
      ASSERT_EQ(reader->entry().shadowId, entries);
      ASSERT_EQ(reader->entry().sequence, 10 * entries);
      ASSERT_EQ(reader->entry().priority, 4294967295u - entries);
    }
    EXPECT_EQ(entries, row.filters);
  }
}

}  // namespace
}  // namespace tcamshow
