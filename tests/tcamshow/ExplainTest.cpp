// `explain`: its answers beside a judge that lists all packets, and their texts.
#include "questions/Explain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

using ::testing::HasSubstr;

// --- against a judge that lists all packets

// A packet has a kind (0: IPv4, 1: IPv6), 6 bits of flags, and a destination port from 0 to 7.
constexpr unsigned packetCount = 2 * 64 * 8;

struct Rule {
  const char* table = "mac";
  unsigned value = 0;  // of the flags
  unsigned mask = 0;
  int low = 0;  // of the port
  int high = 7;
  unsigned priority = 0;
  unsigned otherMatch = 0;
  bool isInstalled = true;

  bool allows(unsigned packet) const {
    unsigned const kind = packet / 512;
    unsigned const flags = packet % 64;
    auto const port = static_cast<int>(packet / 64 % 8);
    if (std::string_view(table) == "ip" && kind != 0) return false;
    if (std::string_view(table) == "ip6" && kind != 1) return false;
    return (flags & mask) == (value & mask) && low <= port && port <= high;
  }
  std::string line(unsigned id) const {
    std::string text = std::string(R"({"type":"entry","table":")") + table + R"(","shadowId":)" +
                       std::to_string(id) + R"(,"priority":)" + std::to_string(priority) +
                       R"(,"qualifiers":{"qualifierTcpControl":{"value":)" + std::to_string(value) +
                       R"(,"mask":)" + std::to_string(mask) +
                       R"(}},"rangeCheckers":{"rangeCheckerL4DstPort":{"low":)" +
                       std::to_string(low) + R"(,"high":)" + std::to_string(high) + "}}";
    if (otherMatch != 0) text += R"(,"otherMatch":"m)" + std::to_string(otherMatch) + '"';
    if (!isInstalled) text += R"(,"state":"failed")";
    return text + "}";
  }
};

struct Asked {
  unsigned value = 0;
  unsigned mask = 0;
  unsigned low = 0;
  unsigned high = 7;
  const char* kind = "";  // "ip", "ip6" or any

  bool has(unsigned packet) const {
    unsigned const port = packet / 64 % 8;
    if (std::string_view(kind) == "ip" && packet / 512 != 0) return false;
    if (std::string_view(kind) == "ip6" && packet / 512 != 1) return false;
    return (packet % 64 & mask) == (value & mask) && low <= port && port <= high;
  }
  std::string text() const {
    return std::string(kind) + " flags=" + std::to_string(value) + "/" + std::to_string(mask) +
           " dport=" + std::to_string(low) + "-" + std::to_string(high);
  }
};

/// The answers by their definitions: "wins 3".
std::vector<std::string> expected(const std::vector<Rule>& rules, const Asked& asked) {
  std::vector<std::string> answers;
  auto const isTaken = [&](unsigned packet, std::size_t before, unsigned otherMatch) {
    for (std::size_t i = 0; i < before; ++i) {
      bool const isCertain = rules[i].otherMatch == 0 || rules[i].otherMatch == otherMatch;
      if (rules[i].isInstalled && isCertain && rules[i].allows(packet)) return true;
    }
    return false;
  };
  bool isMet = false;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    bool hasOne = false;
    for (unsigned packet = 0; packet < packetCount; ++packet) {
      if (!asked.has(packet) || !rules[i].allows(packet)) continue;
      isMet = true;
      hasOne = hasOne || !isTaken(packet, i, rules[i].otherMatch);
    }
    if (!hasOne) continue;
    answers.push_back((!rules[i].isInstalled      ? "would-win "
                       : rules[i].otherMatch != 0 ? "may-win "
                                                  : "wins ") +
                      std::to_string(i));
  }
  if (!isMet) return {};
  for (unsigned packet = 0; packet < packetCount; ++packet) {
    if (!asked.has(packet) || isTaken(packet, rules.size(), 0)) continue;
    answers.emplace_back("none");
    break;
  }
  return answers;
}

TEST(Explain, AnswersAsTheDefinitionsSay) {
  std::mt19937 random(1);
  auto const below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
  int met = 0;
  for (int round = 0; round < 600; ++round) {
    SCOPED_TRACE(round);
    std::vector<Rule> rules(1 + below(9));
    for (Rule& rule : rules) {
      rule.table = below(2) == 0 ? "mac" : below(2) == 0 ? "ip" : "ip6";
      rule.mask = below(64) & below(64) & below(16);
      rule.value = below(64) & rule.mask;
      rule.low = static_cast<int>(below(8));
      rule.high = static_cast<int>(below(8));
      if (rule.low > rule.high && below(4) != 0) std::swap(rule.low, rule.high);
      rule.priority = below(3);
      rule.otherMatch = below(4) == 0 ? 1 + below(2) : 0;
      rule.isInstalled = below(6) != 0;
    }
    std::stable_sort(rules.begin(), rules.end(),
                     [](const Rule& a, const Rule& b) { return a.priority > b.priority; });
    Asked asked;
    asked.mask = below(2) == 0 ? 63 : below(64);
    asked.value = below(64) & asked.mask;
    asked.low = below(8);
    asked.high = below(2) == 0 ? asked.low : asked.low + below(8 - asked.low);
    asked.kind = below(3) == 0 ? "ip" : below(2) == 0 ? "ip6" : "";
    std::vector<std::string> lines;
    for (unsigned i = 0; i < rules.size(); ++i) lines.push_back(rules[i].line(i));
    auto const all = storeOf(snapshotOf(lines));
    Packets const packets = packetsFromText(asked.text());
    Complaints complaints;
    TemporaryFile const file(snapshotOf(lines));
    auto const source = openSnapshot(InputFile(file.path()), complaints);
    MeetingEntries const entries(*source, packets, [](const Place&) { return true; });

    std::vector<std::string> found;
    for (const PlaceInfo& place : entries.store().places()) {
      Entry scratch;
      for (const Answer& answer : explain(entries.store(), place, packets)) {
        std::string text(verdictName(answer.verdict));
        std::optional<std::uint64_t> id;
        if (answer.entry) {
          id = entries.store().entry(place.entries[*answer.entry], scratch).shadowId;
          text += " " + std::to_string(*id);
        }
        found.push_back(text);
        // The witness is one of the packets asked for, and meets what the answer says.
        ASSERT_NE(answer.packet, nullptr);
        Match const one = onePacketOf(*answer.packet, entries.named(place.place));
        ASSERT_TRUE(one[Field::flags].isExact() && one[Field::dport].isExact() &&
                    one[Field::ethertype].isExact());
        Word const type = one[Field::ethertype].low();
        ASSERT_TRUE(type == etherTypeIp || type == etherTypeIp6);
        auto const packet = static_cast<unsigned>(one[Field::flags].low()) +
                            64 * static_cast<unsigned>(one[Field::dport].low()) +
                            (type == etherTypeIp ? 0 : 512);
        ASSERT_TRUE(asked.has(packet));
        if (id) {
          ASSERT_TRUE(rules[*id].allows(packet));
        }
        for (std::size_t i = 0; i < (id ? *id : rules.size()); ++i) {
          bool const isCertain =
              rules[i].otherMatch == 0 || (id && rules[i].otherMatch == rules[*id].otherMatch);
          ASSERT_FALSE(rules[i].isInstalled && isCertain && rules[i].allows(packet));
        }
        ++met;
      }
    }
    ASSERT_EQ(found, expected(rules, asked)) << asked.text();
  }
  EXPECT_GT(met, 800);
}

// --- real packets

TEST(Explain, AgreesWithTheWinnersThatASoftwareSwitchGave) {
  std::string const data = TCAMSHOW_SHARED_DATA;
  std::ifstream trace(data + "/ovs/acl1_1k.trace");
  if (!trace) GTEST_SKIP() << "no " << data;
  std::vector<std::string> const filters =
      linesOf(runTcamshow({"import", "classbench", data + "/classbench/acl1_1k"}).out);
  std::string snapshot;
  for (const std::string& line : filters) snapshot += line + "\n";
  auto const store = storeOf(snapshot);
  ASSERT_EQ(store->places().size(), 1U);
  const PlaceInfo& place = store->places().front();
  int packets = 0;
  for (std::string line; std::getline(trace, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string src, dst, sport, dport, proto, flags;
    std::uint64_t winner = 0;
    ASSERT_TRUE(words >> src >> dst >> sport >> dport >> proto >> flags >> winner) << line;
    auto const answers =
        explain(*store, place,
                packetsFromText("src=" + src + " dst=" + dst + " sport=" + sport +
                                " dport=" + dport + " proto=" + proto + " flags=" + flags));
    ASSERT_EQ(answers.size(), 1U) << line;
    Entry scratch;
    if (winner == 0) {
      EXPECT_EQ(answers[0].verdict, Verdict::none) << line;
    } else {
      ASSERT_EQ(answers[0].verdict, Verdict::wins) << line;
      EXPECT_EQ(store->entry(place.entries[*answers[0].entry], scratch).shadowId, winner) << line;
    }
    ++packets;
  }
  EXPECT_EQ(packets, 393);
}

// --- the texts

// Every verdict but `unknown`, in two places; a third has no entry that meets the packets.
const std::string& everyVerdict() {
  static const std::string text = snapshotOf({
      R"({"type":"group","groupId":2,"groupPriority":5,"name":"edge"})",
      R"({"type":"entry","groupId":2,"groupPriority":5,"table":"ip","shadowId":1,"sequence":10,"priority":90,"action":"permit","state":"failed","reason":"no room","qualifiers":{"qualifierDstIp":{"value":"192.0.2.0/24"}}})",
      R"({"type":"entry","groupId":2,"groupPriority":5,"table":"ip","shadowId":2,"sequence":20,"priority":80,"action":"redirect","hits":7,"counterStatus":7,"otherMatch":"in_port=3","qualifiers":{"qualifierDstIp":{"value":"192.0.2.0/25"}}})",
      R"({"type":"entry","groupId":2,"groupPriority":5,"table":"ip","shadowId":3,"sequence":30,"priority":70,"action":"deny","hits":5,"counterStatus":7,"qualifiers":{"qualifierDstIp":{"value":"192.0.2.80/32"},"qualifierIpProtocol":{"value":6}}})",
      R"({"type":"entry","groupId":2,"groupPriority":5,"table":"ip","shadowId":4,"sequence":40,"priority":60,"action":"permit","qualifiers":{"qualifierDstIp":{"value":"192.0.2.80/32"},"qualifierIpProtocol":{"value":6}}})",
      R"({"type":"entry","groupId":2,"groupPriority":5,"table":"ip","shadowId":5,"sequence":50,"priority":50,"state":"pending","otherMatch":"in_port=4","qualifiers":{"qualifierDstIp":{"value":"192.0.2.81/32"}}})",
      R"({"type":"entry","pipe":-1,"groupId":1,"table":"ip","shadowId":6,"sequence":4294967295,"action":"deny"})",
      R"({"type":"entry","stage":"egress","groupId":9,"table":"ip6","shadowId":7})",
  });
  return text;
}

TEST(Explain, PrintsEveryVerdictToTheByte) {
  struct Row {
    std::vector<std::string> arguments;
    const char* out;
  } const rows[] = {
      {{"explain", "ip dst=192.0.2.80/31 proto=6"},
       "ingress pipe -1 group 1 priority 0 copy 0\n"
       "  entry Drop (id 6) wins; action deny, state programmed, hits -; packet tcp "
       "dst=192.0.2.80\n"
       "ingress pipe 0 group 2 \"edge\" priority 5 copy 0\n"
       "  entry 10 (id 1) would win if it were installed; action permit, state failed, hits -; "
       "packet tcp dst=192.0.2.80\n"
       "  entry 20 (id 2) may win, if in_port=3; action redirect, state programmed, hits 7; packet "
       "tcp dst=192.0.2.80\n"
       "  entry 30 (id 3) wins; action deny, state programmed, hits 5; packet tcp dst=192.0.2.80\n"
       "  entry 50 (id 5) would win if it were installed, and if in_port=4; action -, state "
       "pending, hits -; packet tcp dst=192.0.2.81\n"
       "  no entry matches; packet tcp dst=192.0.2.81\n"},
      // One exact packet: one winner in each place, or none.
      {{"explain", "tcp dst=192.0.2.80", "--where", "group = 2"},
       "ingress pipe 0 group 2 \"edge\" priority 5 copy 0\n"
       "  entry 10 (id 1) would win if it were installed; action permit, state failed, hits -; "
       "packet tcp dst=192.0.2.80\n"
       "  entry 20 (id 2) may win, if in_port=3; action redirect, state programmed, hits 7; packet "
       "tcp dst=192.0.2.80\n"
       "  entry 30 (id 3) wins; action deny, state programmed, hits 5; packet tcp "
       "dst=192.0.2.80\n"},
      {{"explain", "ip dst=192.0.2.80", "--where", "name = nowhere"},
       "no place has an entry that meets ip dst=192.0.2.80\n"},
      {{"explain", "ethertype=0x0806"}, "no place has an entry that meets ethertype=0x0806\n"},
      {{"explain", "--json", "ethertype=0x0806"}, "{\"type\":\"explain\",\"schema\":1}\n"},
      {{"--json", "explain", "udp dst=192.0.2.81", "--where", "name ~ EDGE"},
       "{\"type\":\"explain\",\"schema\":1}\n"
       R"({"type":"answer","stage":"ingress","pipe":0,"groupPriority":5,"groupId":2,"copyId":0,"name":"edge","verdict":"would-win","shadowId":1,"sequence":10,"action":"permit","state":"failed","hits":0,"packet":"udp dst=192.0.2.81"})"
       "\n"
       R"({"type":"answer","stage":"ingress","pipe":0,"groupPriority":5,"groupId":2,"copyId":0,"name":"edge","verdict":"may-win","shadowId":2,"sequence":20,"action":"redirect","state":"programmed","hits":7,"packet":"udp dst=192.0.2.81","otherMatch":"in_port=3"})"
       "\n"
       R"({"type":"answer","stage":"ingress","pipe":0,"groupPriority":5,"groupId":2,"copyId":0,"name":"edge","verdict":"would-win","shadowId":5,"sequence":50,"action":"","state":"pending","hits":0,"packet":"udp dst=192.0.2.81","otherMatch":"in_port=4"})"
       "\n"
       R"({"type":"answer","stage":"ingress","pipe":0,"groupPriority":5,"groupId":2,"copyId":0,"name":"edge","verdict":"none","packet":"udp dst=192.0.2.81"})"
       "\n"},
      {{"explain", "ip6"},
       "egress pipe 0 group 9 priority 0 copy 0\n"
       "  entry 0 (id 7) wins; action -, state programmed, hits -; packet ip6\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments, {.input = everyVerdict()});
    EXPECT_EQ(result.out, row.out);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
}

// A witness tells a value for each field that an entry of the place names, also an entry that does
// not meet the packets. As PACKET it gives the same answer.
TEST(Explain, TellsWitnessesThatItTakesItself) {
  std::string const snapshot = snapshotOf({
      R"({"type":"entry","table":"mac","shadowId":1,"priority":9,"qualifiers":{"qualifierOuterVlanId":{"value":2},"qualifierEtherType":{"value":2054}}})",
      R"({"type":"entry","table":"mac","shadowId":2,"priority":8,"qualifiers":{"qualifierOuterVlanId":{"value":2},"qualifierSrcIp":{"value":"10.0.0.0/8"}}})",
      R"({"type":"entry","table":"mac","shadowId":3,"priority":7,"qualifiers":{"qualifierOuterVlanId":{"value":1}}})",
      R"({"type":"entry","table":"tcam","shadowId":4,"priority":6,"qualifiers":{"qualifierDstIp6":{"value":"2001:db8::/32"}}})",
      R"({"type":"entry","table":"mac","shadowId":5,"priority":5,"qualifiers":{"qualifierEtherType":{"value":2048,"mask":63488}}})",
  });
  for (const char* const packet : {"vlan=1", "vlan=0-2", "ip", "ip6", "tcp", "icmp6",
                                   "ethertype=0x0800-0x0fff vlan=3", "smac=00:00:5e:00:53:01"}) {
    SCOPED_TRACE(packet);
    auto const answers =
        jsonLinesOf(runTcamshow({"explain", "--json", packet}, {.input = snapshot}).out);
    ASSERT_GT(answers.size(), 1U);
    for (std::size_t i = 1; i < answers.size(); ++i) {
      ASSERT_TRUE(answers[i].contains("packet")) << answers[i];
      std::string const witness = answers[i]["packet"];
      ProcessResult const again = runTcamshow({"explain", "--json", witness}, {.input = snapshot});
      ASSERT_EQ(again.status, 0) << again.err;
      auto const second = jsonLinesOf(again.out);
      ASSERT_LE(second.size(), 2U) << witness;
      if (second.size() == 2) {
        EXPECT_EQ(second[1], answers[i]);
      } else {
        // No entry of the place meets it.
        EXPECT_EQ(answers[i]["verdict"], "none");
      }
    }
  }
}

TEST(Explain, RefusesWhatIsNoPacket) {
  struct Row {
    std::vector<std::string> arguments;
    const char* error;
  } const rows[] = {
      {{"explain", "ip src6=::1"}, "PACKET: column 4: "},
      {{"explain", "tcp proto=6"}, "PACKET: column 5: "},
      {{"explain", "tcp dport=70000"}, "PACKET: column 11: "},
      {{"explain", "icmp-type=8"}, "PACKET: column 1: icmp-type and icmp-code need icmp or icmp6"},
      {{"explain"}, "PACKET is required"},
      {{"explain", "ip", "--where", "src = 10.0.0.1"},
       "--where: column 1: expected a term on the place: stage, pipe, groupPriority, group, copy "
       "or "
       "name"},
      {{"explain", "ip", "--where", "stage = ingress and not hits = 0"}, "--where: column 25: "},
      {{"explain", "ip", "--where", "stage = "}, "--where: column 9: expected a value"},
      {{"explain", "ip", "--where", ""}, "--where: the condition is empty"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments, {.input = everyVerdict()});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(row.error));
  }
}

// Whether the entries together match all packets is a puzzle: the search ends, and tells what it
// did not find out. Each entry by itself is settled.
TEST(Explain, GivesUpAtItsBound) {
  ProcessResult const result =
      runTcamshow({"explain", "ip6"}, {.input = snapshotOf(pigeonEntries())});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("  whether something is left is unknown: the search gave up at "
                                    "100000 boxes\n"));
  EXPECT_THAT(result.out, HasSubstr("entry 1 (id 1) wins"));
  auto const answers = jsonLinesOf(
      runTcamshow({"explain", "--json", "ip6"}, {.input = snapshotOf(pigeonEntries())}).out);
  EXPECT_EQ(answers.back()["verdict"], "unknown");
  EXPECT_FALSE(answers.back().contains("packet"));
}

}  // namespace
}  // namespace tcamshow
