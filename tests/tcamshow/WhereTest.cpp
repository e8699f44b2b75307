// Conditions on entries.
#include "questions/Where.h"

#include <gtest/gtest.h>

#include <string>

#include "Process.h"
#include "TemporaryFile.h"
#include "snapshot/SnapshotReader.h"

namespace tcamshow {
namespace {

/// Whether the condition is true of the one entry of table `table` with these members. An entry of
/// the condition is not kept: all is read again each time.
bool holds(const std::string& condition, const std::string& table, const std::string& members,
           std::string_view groupName = {}) {
  TemporaryFile const snapshot(
      "{\"type\":\"snapshot\",\"version\":2}\n"
      R"({"type":"entry","shadowId":7,"table":")" +
      table + "\"" + (members.empty() ? "" : ",") + members + "}\n" +
      "{\"type\":\"end\",\"groups\":0,\"entries\":1}\n");
  Complaints complaints;
  auto const source = openSnapshot(InputFile(snapshot.path()), complaints);
  EXPECT_EQ(source->next(), Source::Item::entry);
  return Where(condition).holds({source->entry(), groupName});
}

std::string qualifier(const char* name, const char* record) {
  return R"("qualifiers":{")" + std::string(name) + R"(":)" + record + "}";
}

TEST(Where, ComparesTheSetsOfAField) {
  std::string const source = qualifier("qualifierSrcIp", R"({"value":"10.1.0.0/16"})");
  std::string const range = R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":80,"high":90}})";
  struct Row {
    const char* condition;
    const char* table;
    std::string members;
    bool holds;
  };
  Row const rows[] = {
      {"src = 10.1.0.0/16", "ip", source, true},
      {"src=10.1.0.0/16", "ip", source, true},
      {"src = 10.1.0.0/255.255.0.0", "ip", source, true},
      {"src = 10.0.0.0/8", "ip", source, false},
      {"src != 10.0.0.0/8", "ip", source, true},
      {"src != 10.1.0.0/16", "ip", source, false},
      {"src within 10.0.0.0/8", "ip", source, true},
      {"src within 10.1.0.0/16", "ip", source, true},
      {"src within 10.1.2.0/24", "ip", source, false},
      {"src covers 10.1.2.3", "ip", source, true},
      {"src covers 10.1.0.0/16", "ip", source, true},
      {"src covers 10.0.0.0/8", "ip", source, false},
      {"src overlaps 10.0.0.0/8", "ip", source, true},
      {"src overlaps 10.1.2.0/24", "ip", source, true},
      {"src overlaps 10.2.0.0/16", "ip", source, false},
      // What is not named is any.
      {"dst = any", "ip", source, true},
      {"dst = *", "ip", "", true},
      {"dst covers 1.2.3.4", "ip", "", true},
      {"dst within 1.2.3.4", "ip", "", false},
      {"dport = any", "mac", "", true},
      // Fields that its packets lack.
      {"src = any", "ip6", "", false},
      {"src != any", "ip6", "", false},
      {"not src = any", "ip6", "", true},
      {"src6 = any", "ip", "", false},
      {"dst6 = any", "ip", "", false},
      {"hoplimit = any", "ip", "", false},
      {"src6 = any", "ip6", "", true},
      {"src = any", "mac", "", true},
      {"src6 = any", "mac", "", true},
      {"src6 = any", "mac", source, false},
      {"dst = any", "tcam", qualifier("qualifierDstIp6", R"({"value":"::1"})"), false},
      {"icmp-type = any", "ip", "", false},
      {"icmp-type = any", "ip", qualifier("qualifierIpProtocol", R"({"value":6})"), false},
      {"icmp-type = any", "ip", qualifier("qualifierIpProtocol", R"({"value":1})"), true},
      {"icmp-type = any", "ip", qualifier("qualifierIpProtocol", R"({"value":1,"mask":1})"), false},
      {"icmp-code = any", "ip6", qualifier("qualifierIpProtocol", R"({"value":58})"), true},
      {"icmp-type = 8", "ip",
       R"("qualifiers":{"qualifierIpProtocol":{"value":1},"qualifierL4SrcPort":{"value":2048,"mask":65280}})",
       true},
      // Ranges, names and numbers.
      {"dport = 80-90", "ip", range, true},
      {"dport within 1-100", "ip", range, true},
      {"dport covers 85", "ip", range, true},
      {"dport overlaps 90-100", "ip", range, true},
      {"dport overlaps 91-100", "ip", range, false},
      {"proto = tcp", "ip", qualifier("qualifierIpProtocol", R"({"value":6})"), true},
      {"proto = 0x6", "ip", qualifier("qualifierIpProtocol", R"({"value":6})"), true},
      {"dscp = 46", "ip", qualifier("qualifierDSCP", R"({"value":46})"), true},
      {"tc = 184/252", "ip", qualifier("qualifierDSCP", R"({"value":46})"), true},
      {"flags = +S-A", "ip", qualifier("qualifierTcpControl", R"({"value":2,"mask":18})"), true},
      {"frag = yes", "ip", qualifier("qualifierIpFrag", R"({"value":3})"), true},
      {"ethertype = 0x800", "ip", "", true},
      {"vlan = 5/7", "mac", qualifier("qualifierOuterVlanId", R"({"value":5,"mask":7})"), true},
      {"smac = 00:00:5e:00:53:01", "mac",
       qualifier("qualifierSrcMac", R"({"value":"00:00:5e:00:53:01"})"), true},
      // An entry that no packet matches is within everything.
      {"dport within 5", "ip", R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":9,"high":8}})",
       true},
      {"dport overlaps any", "ip",
       R"("rangeCheckers":{"rangeCheckerL4DstPort":{"low":9,"high":8}})", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.condition) + " of " + row.table + " " + row.members);
    EXPECT_EQ(holds(row.condition, row.table, row.members), row.holds);
  }
}

TEST(Where, ComparesAttributes) {
  std::string const counted = R"("hits":5,"counterStatus":7)";
  struct Row {
    const char* condition;
    std::string members;
    bool holds;
  };
  Row const rows[] = {
      {"id = 7", "", true},
      {"id != 7", "", false},
      {"id < 8", "", true},
      {"id <= 7", "", true},
      {"id > 7", "", false},
      {"id >= 7", "", true},
      {"id>=0x7", "", true},
      {"id = 18446744073709551615", "", false},
      {"id > -1", "", true},
      {"pipe < 0", R"("pipe":-3)", true},
      {"pipe = -3", R"("pipe":-3)", true},
      {"group = 9", R"("groupId":9)", true},
      {"copy = 2 and groupPriority = 3", R"("copyId":2,"groupPriority":3)", true},
      {"sequence = 4294967295", R"("sequence":4294967295)", true},
      {"priority = 1", R"("priority":1)", true},
      {"featurePriority = 1", R"("featurePriority":1)", true},
      {"hits = 5", counted, true},
      // Neither one nor the other where there is no number.
      {"hits = 5", R"("hits":5)", false},
      {"hits != 5", R"("hits":5)", false},
      {"hits >= 0", R"("hits":5)", false},
      {"not hits >= 0", R"("hits":5)", true},
      {"bytes = 0", "", false},
      {"bytes != 0", "", false},
      {"bytes = 0", R"("bytes":0)", true},
      {"stage = ingress", "", true},
      {"stage = egress", R"("stage":"egress")", true},
      {"stage != lookup", "", true},
      {"table = ip", "", true},
      {"table ~ P", "", true},
      {"state = programmed", "", true},
      {"state = failed", R"("state":"failed")", true},
      {"state = pending", qualifier("qualifierIpProtocol", R"({"value":6,"status":3})"), true},
      {"state = unknown", qualifier("qualifierIpProtocol", R"({"value":6,"status":0})"), true},
      {"action = permit", R"("action":"permit")", true},
      {"action = \"permit log\"", R"("action":"permit log")", true},
      {"action = PERMIT", R"("action":"permit")", false},
      {"action ~ ERM", R"("action":"permit")", true},
      {"action = \"\"", "", true},
      {R"(action = "a\"b\\c")", R"("action":"a\"b\\c")", true},
      {"feature ~ web", R"("feature":"acl-WEB-1")", true},
      {"description ~ \"to (b)\"", R"x("description":"from a to (B)")x", true},
      {"description ~ x", R"("description":"a")", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.condition) + " of " + row.members);
    EXPECT_EQ(holds(row.condition, "ip", row.members), row.holds);
  }
  EXPECT_TRUE(holds("name = acl", "ip", "", "acl"));
  EXPECT_FALSE(holds("name = acl", "ip", ""));
  EXPECT_TRUE(holds("name ~ CL", "ip", "", "acl"));
}

TEST(Where, JoinsTerms) {
  struct Row {
    const char* condition;
    bool holds;
  };
  constexpr const char* t = "id = 7";
  constexpr const char* f = "id = 8";
  auto const fill = [&](std::string pattern) {
    std::string text;
    for (char const c : pattern) text += c == 'T' ? t : c == 'F' ? f : std::string(1, c);
    return text;
  };
  Row const rows[] = {
      {"T and T", true},
      {"T and F", false},
      {"F or T", true},
      {"F or F", false},
      {"not F", true},
      {"not not T", true},
      // "and" binds before "or", "not" before both.
      {"T or T and F", true},
      {"F and T or T", true},
      {"(T or T) and F", false},
      {"not F and F", false},
      {"not (F and F)", true},
      {"not F or T and F", true},
      {"((T))", true},
      {"( T)or(F )", true},
      {"T and T and T and F", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.condition);
    EXPECT_EQ(holds(fill(row.condition), "ip", ""), row.holds);
  }
}

TEST(Where, SaysWhereItIsWrongAndWhatWasExpected) {
  struct Row {
    std::string condition;
    std::size_t column;
    const char* message;
  };
  Row const rows[] = {
      {"", 1, "expected a term such as \"src within 10.0.0.0/8\", \"not\" or \"(\""},
      {"id", 3, "expected =, !=, <, <=, > or >="},
      {"id = ", 6, "expected a value"},
      {"id = x", 6, "expected a number in place of \"x\""},
      {"id = 18446744073709551616", 6, "expected a number in place of \"18446744073709551616\""},
      {"id ~ 5", 4, "expected =, !=, <, <=, > or >="},
      {"action < x", 8, "expected =, != or ~"},
      {"src < 1.2.3.4", 5, "expected =, !=, within, covers or overlaps"},
      {"scr = 1.2.3.4", 1, "\"scr\" is no field and no attribute; did you mean \"src\"?"},
      {"id = 1 id = 2", 8, "expected \"and\", \"or\" or the end"},
      {"id = 1 and", 11, "expected a term such as \"src within 10.0.0.0/8\", \"not\" or \"(\""},
      {"(id = 1", 8, "expected \"and\", \"or\" or \")\""},
      {"id = 1)", 7, "expected \"and\", \"or\" or the end"},
      {"stage = up", 9, "\"up\" is no stage: expected lookup, ingress or egress"},
      {"table = ipv4", 9, "\"ipv4\" is no table: expected ip, ip6, mac or tcam"},
      {"action = \"x", 10, "the quotes are not closed"},
      {"src = 10.0.0.0/33", 16, "the prefix length \"33\" is over 32"},
      {"src = \"10.0.0.0/33\"", 17, "the prefix length \"33\" is over 32"},
      {R"(src = "10\.0.0.0/33")", 18, "the prefix length \"33\" is over 32"},
      {"flags = \"+\"", 11, "expected a TCP flag: F, S, R, P, A or U"},
      {std::string(300, '('), 201, "the condition nests too deep"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.condition);
    try {
      Where const where(row.condition);
      FAIL() << "no fault";
    } catch (const TextFault& fault) {
      EXPECT_EQ(fault.at() + 1, row.column);
      EXPECT_STREQ(fault.what(), row.message);
    }
  }
  // The fault of a value has its column too.
  try {
    Where const where("id = 1 and src = 10.0.0.0/33");
    FAIL();
  } catch (const TextFault& fault) {
    EXPECT_GE(fault.at() + 1, 18u) << fault.what();
  }
}

TEST(Where, KnowsWhatItAsksFor) {
  EXPECT_TRUE(Where("id = 1 or name = x").asksName());
  EXPECT_TRUE(Where("not (name = x)").asksName());
  EXPECT_FALSE(Where("id = 1").asksName());
  EXPECT_TRUE(
      Where("stage = egress and pipe = 1 or not (group = 1 and copy = 2) and groupPriority = 3 "
            "or name = x")
          .asksPlaceAlone());
  EXPECT_FALSE(Where("stage = egress or id = 1").asksPlaceAlone());
  EXPECT_FALSE(Where("src = any").asksPlaceAlone());
}

}  // namespace
}  // namespace tcamshow
