// `list`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Process.h"

namespace tcamshow {
namespace {

using ::testing::HasSubstr;

std::string listOf(const std::string& entries, std::vector<std::string> options = {}) {
  options.insert(options.begin(), "list");
  std::size_t groups = 0;
  std::size_t count = 0;
  for (std::size_t at = 0; (at = entries.find("{\"type\":\"", at)) != entries.npos; ++at) {
    ++(entries[at + 9] == 'g' ? groups : count);
  }
  ProcessResult const result =
      runTcamshow(options, {.input = "{\"type\":\"snapshot\",\"version\":2}\n" + entries +
                                     "{\"type\":\"end\",\"groups\":" + std::to_string(groups) +
                                     ",\"entries\":" + std::to_string(count) + "}\n"});
  EXPECT_THAT(result.err, ::testing::AnyOf("", HasSubstr("is over")));
  EXPECT_EQ(result.status, 0);
  return result.out;
}

/// One entry of the table with these members.
std::string entry(const std::string& table, const std::string& members) {
  return R"({"type":"entry","shadowId":1,"table":")" + table + "\"" + (members.empty() ? "" : ",") +
         members + "}\n";
}

/// The cells of the columns, of the one entry.
std::string cellsOf(const std::string& columns, const std::string& table,
                    const std::string& members) {
  std::string const text = listOf(entry(table, members), {"--columns", columns});
  std::size_t const end = text.size() - 1;
  return text.substr(text.rfind('\n', end - 1) + 1, end - text.rfind('\n', end - 1) - 1);
}

std::string qualifiers(const std::string& records) { return R"("qualifiers":{)" + records + "}"; }

TEST(List, ShowsEveryTableByPlaceInMatchOrder) {
  EXPECT_EQ(
      listOf(
          R"({"type":"group","groupId":2,"name":"acl \"b\"","availableEntries":3,"freeEntries":4,"totalEntries":7}
{"type":"entry","table":"ip","shadowId":1,"groupId":2,"priority":1,"sequence":20,"action":"permit","hits":1234567,"counterStatus":7,"qualifiers":{"qualifierIpProtocol":{"value":6},"qualifierSrcIp":{"value":"10.0.0.0/8"},"qualifierL4DstPort":{"value":443},"qualifierTcpControl":{"value":2,"mask":18},"qualifierDSCP":{"value":46}}}
{"type":"entry","table":"ip","shadowId":2,"groupId":2,"priority":1,"sequence":10,"action":"deny","hits":0,"counterStatus":7,"state":"failed","qualifiers":{"qualifierDstIp":{"value":"10.0.0.1","mask":"255.0.255.0","status":4}}}
{"type":"entry","table":"tcam","shadowId":18446744073709551615,"groupId":2,"priority":4294967295,"action":"redirect to port 7","otherMatch":"in_port=2"}
{"type":"entry","table":"ip6","shadowId":3,"groupId":2,"priority":1,"sequence":10,"action":"deny","state":"pending","qualifiers":{"qualifierSrcIp6":{"value":"2001:db8::/32"},"qualifierIp6HopLimit":{"value":255}}}
{"type":"entry","stage":"lookup","table":"mac","shadowId":4,"pipe":-1,"copyId":8,"groupPriority":9,"qualifiers":{"qualifierSrcMac":{"value":"00:00:5e:00:53:01"},"qualifierOuterVlanId":{"value":100}}}
{"type":"group","stage":"egress","groupId":5}
)"),
      R"(lookup pipe -1 group 0 priority 9 copy 8: 1 entry
SEQ  PRIORITY  ACTION  PROTO  SOURCE             SPORT  DESTINATION  DPORT  VLAN  OTHER  HITS  ID
  0         0          *      00:00:5e:00:53:01  *      *            *      100             -   4

ingress pipe 0 group 2 "acl "b"" priority 0 copy 0: 4 entries, 3 available, 4 free, 7 total
   SEQ    PRIORITY  ACTION              PROTO  SOURCE         SPORT  DESTINATION            DPORT  VLAN  OTHER                  HITS                    ID
     0  4294967295  redirect to port 7  *      *              *      *                      *      *     "in_port=2"               -  18446744073709551615
!   10           1  deny                *      *              *      10.0.0.0/255.0.255.0!  *      *                               0                     2
~   10           1  deny                *      2001:db8::/32  *      *                      *      *     hoplimit=255              -                     3
    20           1  permit              tcp    10.0.0.0/8     *      *                      443    *     dscp=46 flags=+S-A  1234567                     1

egress pipe 0 group 5 priority 0 copy 0: 0 entries
)");
}

TEST(List, SaysThatThereIsNothing) {
  EXPECT_EQ(listOf(""), "no entries\n");
  EXPECT_EQ(listOf(entry("ip", ""), {"--where", "id = 2"}), "no entries\n");
  EXPECT_EQ(listOf("", {"--json"}), "{\"type\":\"list\",\"schema\":1}\n");
}

TEST(List, ShowsWhatIsNotProgrammedWithAMark) {
  struct Row {
    const char* columns;
    const char* table;
    std::string members;
    const char* cells;
  };
  Row const rows[] = {
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.0.0.0/8","status":4})"),
       "10.0.0.0/8!"},
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.0.0.0/8","status":0})"),
       "10.0.0.0/8?"},
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.0.0.0/8","status":5})"),
       "10.0.0.0/8~"},
      // Never as any.
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.0.0.0/0","status":4})"),
       "0.0.0.0/0!"},
      {"source", "ip6", qualifiers(R"("qualifierSrcIp6":{"value":"::/0","status":1})"), "::/0~"},
      {"vlan", "ip", qualifiers(R"("qualifierOuterVlanId":{"value":1,"mask":0,"status":4})"),
       "0/0!"},
      {"frag", "ip", qualifiers(R"("qualifierIpFrag":{"value":0,"mask":0,"status":4})"), "any!"},
      {"smac", "mac",
       qualifiers(
           R"("qualifierSrcMac":{"value":"00:00:00:00:00:00","mask":"00:00:00:00:00:00","status":4})"),
       "00:00:00:00:00:00/00:00:00:00:00:00!"},
      // The worst of those that share a field.
      {"dport", "ip",
       qualifiers(R"("qualifierL4DstPort":{"value":80,"mask":65535,"status":3})") +
           R"(,"rangeCheckers":{"rangeCheckerL4DstPort":{"low":1,"high":100,"status":4}})",
       "80!"},
      {"dport", "ip",
       R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":1,"high":100,"status":0}})", "1-100?"},
      // Of an address and its alternative one counts.
      {"source", "ip6",
       qualifiers(
           R"("qualifierSrcIp6":{"value":"::1","status":4},"qualifierSrcIp6Alt":{"value":"::2"})"),
       "::2"},
      {"source", "ip6",
       qualifiers(
           R"("qualifierSrcIp6":{"value":"::1","status":4},"qualifierSrcIp6Alt":{"value":"::2","status":3})"),
       "::1!"},
      {"state,id", "ip", R"("state":"failed")", "!   1"},
      {"state,id", "ip", R"("state":"pending")", "~   1"},
      {"state,id", "ip", R"("state":"unknown")", "?   1"},
      {"state,id", "ip", R"("state":"programmed")", "1"},
      {"state,id", "ip",
       R"("state":"programmed","qualifiers":{"qualifierIpProtocol":{"value":6,"status":4}})",
       "!   1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.columns) + " of " + row.members);
    std::string const cells = cellsOf(row.columns, row.table, row.members);
    EXPECT_EQ(cells.substr(cells.find_first_not_of(' ')), row.cells);
  }
}

TEST(List, ShowsTheFieldsOfAnEntry) {
  std::string const icmp = R"("qualifierIpProtocol":{"value":1},)";
  struct Row {
    const char* columns;
    const char* table;
    std::string members;
    const char* cells;
  };
  Row const rows[] = {
      {"source", "ip", "", "*"},
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.1.2.3/8"})"), "10.0.0.0/8"},
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.1.2.3"})"), "10.1.2.3"},
      {"source", "ip", qualifiers(R"("qualifierSrcIp":{"value":"10.0.0.1","mask":"255.0.0.255"})"),
       "10.0.0.1/255.0.0.255"},
      {"source", "tcam",
       qualifiers(
           R"("qualifierSrcIp":{"value":"10.0.0.1"},"qualifierSrcMac":{"value":"00:00:5e:00:53:01"})"),
       "10.0.0.1"},
      {"other", "tcam",
       qualifiers(
           R"("qualifierSrcIp":{"value":"10.0.0.1"},"qualifierSrcMac":{"value":"00:00:5e:00:53:01"})"),
       "src=10.0.0.1 smac=00:00:5e:00:53:01"},
      {"source,other", "tcam",
       qualifiers(
           R"("qualifierSrcIp":{"value":"10.0.0.1"},"qualifierSrcMac":{"value":"00:00:5e:00:53:01"})"),
       "10.0.0.1  smac=00:00:5e:00:53:01"},
      // ICMP's type and code stand among the others.
      {"sport,dport,other", "ip",
       qualifiers(
           icmp +
           R"("qualifierL4SrcPort":{"value":2048,"mask":65280},"qualifierL4DstPort":{"value":3,"mask":255})"),
       "*      *      proto=icmp icmp-type=8 icmp-code=3"},
      // What is more than a type is a port.
      {"sport,other", "ip",
       qualifiers(icmp + R"("qualifierL4SrcPort":{"value":2048,"mask":65535})"),
       "2048   proto=icmp"},
      {"icmp-type", "ip", qualifiers(icmp + R"("qualifierL4SrcPort":{"value":2048,"mask":65280})"),
       "8"},
      {"icmp-type", "ip", qualifiers(R"("qualifierL4SrcPort":{"value":2048,"mask":65280})"), "*"},
      {"other", "ip", qualifiers(R"("qualifierIp6TrafficClass":{"value":184,"mask":252})"),
       "dscp=46"},
      {"other", "ip", qualifiers(R"("qualifierIp6TrafficClass":{"value":185})"), "tc=185"},
      {"dscp,other", "ip", qualifiers(R"("qualifierDSCP":{"value":46})"), "46"},
      {"tc,other", "ip", qualifiers(R"("qualifierDSCP":{"value":46})"), "184-187"},
      {"other", "ip", qualifiers(R"("qualifierIpFrag":{"value":3})"), "frag=yes"},
      {"other", "ip", qualifiers(R"("qualifierIpFrag":{"value":1})"), "frag=no"},
      // The ether type that the table implies is not named.
      {"ethertype", "ip", "", "*"},
      {"other", "mac", qualifiers(R"("qualifierEtherType":{"value":2054})"), "ethertype=0x806"},
      {"length", "ip", R"("rangeCheckers":{"rangeCheckerIpLength":{"low":64,"high":1500}})",
       "64-1500"},
      {"dport", "ip", R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":9,"high":8}})", "none"},
      {"other", "ip", R"("otherMatch":"reg0=1, x")", R"("reg0=1, x")"},
      {"flags,other", "ip",
       qualifiers(R"("qualifierTcpControl":{"value":2,"mask":18})") + R"(,"otherMatch":"y")",
       R"(+S-A   "y")"},
      {"hits", "ip", R"("hits":5)", "-"},
      {"hits", "ip", R"("hits":5,"counterStatus":7)", "5"},
      {"bytes", "ip", "", "-"},
      {"bytes", "ip", R"("bytes":0)", "0"},
      {"table,stage,pipe,group,copy,groupPriority,feature,featurePriority", "ip6",
       R"("stage":"egress","pipe":-4,"groupId":3,"copyId":2,"groupPriority":1,"feature":"web","featurePriority":6)",
       "ip6    egress    -4      3     2               1  web                     6"},
      {"reason,description", "ip", R"("reason":"no room","description":"d")", "no room  d"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.columns) + " of " + row.members);
    std::string const cells = cellsOf(row.columns, row.table, row.members);
    EXPECT_EQ(cells.substr(std::min(cells.find_first_not_of(' '), cells.size())), row.cells);
  }
}

TEST(List, IsAsWideAsItsContents) {
  // A character of several bytes takes one column, what is escaped as many as it shows.
  EXPECT_EQ(listOf(entry("ip", R"("action":"\u00e9\u00e9")") +
                       R"({"type":"entry","shadowId":22,"table":"ip","action":"permit-\u202e"})"
                       "\n",
                   {"--columns", "action,id"}),
            "ingress pipe 0 group 0 priority 0 copy 0: 2 entries\n"
            "ACTION           ID\n"
            "\xC3\xA9\xC3\xA9                1\n"
            "permit-\\u{202E}  22\n");
}

TEST(List, IsColouredWhenAsked) {
  std::string const entries =
      entry("ip", R"("action":"permit","hits":0,"counterStatus":7,"state":"failed")") +
      entry("ip", R"("action":"deny","hits":1,"counterStatus":7,"state":"pending")") +
      entry("ip", R"("action":"Drop it","hits":0)");
  std::string const plain = listOf(entries);
  EXPECT_EQ(listOf(entries, {"--color", "never"}), plain);
  EXPECT_EQ(plain.find('\x1B'), std::string::npos);
  std::string const coloured = listOf(entries, {"--color=always"});
  for (const char* const part :
       {"\x1B[31m!\x1B[0m", "\x1B[33m~\x1B[0m", "\x1B[32mpermit\x1B[0m", "\x1B[31mdeny\x1B[0m",
        "\x1B[31mDrop it\x1B[0m", "\x1B[2m0\x1B[0m"}) {
    EXPECT_THAT(coloured, HasSubstr(part));
  }
  // Without the sequences it is the same.
  std::string stripped;
  for (std::size_t at = 0; at < coloured.size(); ++at) {
    if (coloured[at] == '\x1B') {
      at = coloured.find('m', at);
    } else {
      stripped += coloured[at];
    }
  }
  EXPECT_EQ(stripped, plain);
  // The exact views are never coloured.
  ::setenv("CLICOLOR_FORCE", "1", 1);
  EXPECT_EQ(listOf(entries), coloured);
  EXPECT_EQ(listOf(entries, {"--color", "never"}), plain);
  std::string const input = "{\"type\":\"snapshot\",\"version\":1}\n";
  EXPECT_EQ(runTcamshow({"ip"}, {.input = input}).out.find('\x1B'), std::string::npos);
  ::setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(listOf(entries), plain);
  EXPECT_EQ(listOf(entries, {"--color", "always"}), coloured);
  ::unsetenv("NO_COLOR");
  ::setenv("CLICOLOR_FORCE", "0", 1);
  EXPECT_EQ(listOf(entries), plain);
  ::unsetenv("CLICOLOR_FORCE");
}

TEST(List, GivesJsonInItsOrder) {
  std::string const text = listOf(
      R"({"type":"entry","shadowId":1,"table":"ip","groupId":2}
{"type":"entry","shadowId":2,"table":"mac","groupId":1,"priority":1}
{"type":"entry","shadowId":3,"table":"ip","groupId":1,"priority":2,"qualifiers":{"qualifierIpProtocol":{"value":6,"status":4}}}
)",
      {"--json"});
  std::size_t const first = text.find("\"shadowId\":3");
  std::size_t const second = text.find("\"shadowId\":2");
  std::size_t const third = text.find("\"shadowId\":1");
  EXPECT_EQ(text.substr(0, 28), "{\"type\":\"list\",\"schema\":1}\n{");
  EXPECT_LT(first, second);
  EXPECT_LT(second, third);
  EXPECT_NE(third, std::string::npos);
  EXPECT_THAT(text.substr(first, second - first), HasSubstr(R"("state":"failed")"));
  EXPECT_THAT(text.substr(second), HasSubstr(R"("state":"programmed")"));
}

TEST(List, ListsItsColumns) {
  ProcessResult const result = runTcamshow({"list", "--columns", "help", "/nonexistent"});
  EXPECT_EQ(result.status, 0);
  for (const char* const name : {"state ", "\nhits ", "\nreason ", "\nicmp-type ", "\nname "}) {
    EXPECT_THAT(result.out, HasSubstr(name));
  }
}

}  // namespace
}  // namespace tcamshow
