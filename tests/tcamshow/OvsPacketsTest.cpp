// Flows and packets: an entry matches what its flow matches, as another reader of the flows'
// notation has it.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "FlowNotation.h"
#include "TemporaryFile.h"
#include "sources/Ovs.h"

namespace tcamshow {
namespace {

std::string number(Word value, bool isHexadecimal) {
  return isHexadecimal ? hexadecimal(value) : decimal(value);
}

struct Protocol {
  const char* word;
  Word etherType;
  int number;  // -1: any
};
constexpr Protocol protocols[] = {
    {"ip", 0x0800, -1},    {"icmp", 0x0800, 1},    {"tcp", 0x0800, 6},    {"udp", 0x0800, 17},
    {"sctp", 0x0800, 132}, {"ipv6", 0x86DD, -1},   {"icmp6", 0x86DD, 58}, {"tcp6", 0x86DD, 6},
    {"udp6", 0x86DD, 17},  {"sctp6", 0x86DD, 132}, {"arp", 0x0806, -1},   {"rarp", 0x8035, -1},
    {"mpls", 0x8847, -1},  {"mplsm", 0x8848, -1},
};

/// The match of a random flow around a packet: most parts hold for it.
class FlowMaker {
 public:
  FlowMaker(Random& random, const FlowPacket& near) : random_(random), near_(near) {}

  std::string make() {
    if (random_.chance(90)) addProtocol();
    addMasked("dl_src", Field::smac, macText);
    addMasked("dl_dst", Field::dmac, macText);
    addVlan();
    if (random_.chance(10)) add("in_port=1");
    if (random_.chance(10)) add("reg0=0x1/0x1");
    if (etherType_ == etherTypeIp) {
      addAddress("nw_src", Field::src, ipText);
      addAddress("nw_dst", Field::dst, ipText);
    }
    if (etherType_ == etherTypeIp6) {
      addAddress("ipv6_src", Field::src6, ip6Text);
      addAddress("ipv6_dst", Field::dst6, ip6Text);
    }
    if (etherType_ == etherTypeIp || etherType_ == etherTypeIp6) {
      addTypeOfService();
      addTtl();
      if (wants()) {
        add(std::string("nw_frag=") +
            random_.of<const char*>({"no", "yes", "first", "later", "not_later"}));
      }
    }
    if (protocol_ == 6 || protocol_ == 17 || protocol_ == 132) {
      addPort("tp_src", "_src", Field::sport);
      addPort("tp_dst", "_dst", Field::dport);
    }
    if (protocol_ == 6) addFlags();
    if (protocol_ == 1 || protocol_ == 58) {
      if (wants()) add("icmp_type=" + number(near_[Field::sport] >> 8, false));
      if (wants()) add("icmp_code=" + number(near_[Field::dport] & 0xFF, false));
    }
    return std::move(match_);
  }

 private:
  void add(const std::string& part) {
    if (!match_.empty()) match_ += ',';
    match_ += part;
  }
  bool wants() { return random_.chance(25); }
  /// Mostly the packet's value.
  Word near(Field field, unsigned bits) {
    return random_.chance(80) ? near_[field] : random_.word(bits);
  }

  void addProtocol() {
    const Protocol& protocol = protocols[random_.below(std::size(protocols))];
    etherType_ = protocol.etherType;
    protocol_ = protocol.number;
    bool const isNumber = random_.chance(20) && protocol_ < 0;
    add(isNumber ? "dl_type=" + number(etherType_, true) : protocol.word);
    bool const isAnyIp = protocol_ < 0 && (etherType_ == etherTypeIp || etherType_ == etherTypeIp6);
    if (!isAnyIp || !wants()) return;
    protocol_ = static_cast<int>(near(Field::proto, 8));
    add("nw_proto=" + std::to_string(protocol_));
  }

  template <class Text>
  void addMasked(const std::string& name, Field field, Text text) {
    if (!wants()) return;
    Word const mask = random_.mask(bitsOf(field));
    bool const isWhole = mask == lowOnes(bitsOf(field));
    add(name + "=" + text(near(field, bitsOf(field))) + (isWhole ? "" : "/" + text(mask)));
  }

  template <class Text>
  void addAddress(const std::string& name, Field field, Text text) {
    if (!random_.chance(60)) return addMasked(name, field, text);
    if (!wants()) return;
    unsigned const bits = bitsOf(field);
    unsigned const length = random_.below(bits + 1);
    Word const mask = lowOnes(bits) & ~lowOnes(bits - length);
    add(name + "=" + text(near(field, bits) & mask) + "/" + std::to_string(length));
  }

  void addVlan() {
    if (!wants()) return;
    Word const vlan = near(Field::vlan, 12);
    std::string const tagged = "vlan_tci=" + number(vlan | 0x1000, true);
    switch (random_.below(4)) {
      case 0:
        add("dl_vlan=" + number(vlan, false));
        if (random_.chance(30)) add("dl_vlan_pcp=3");
        break;
      case 1:
        add(tagged + "/0x1fff");
        break;
      case 2:
        add("vlan_tci=" + number(vlan | 0x1000 | Word{near_.vlanPriority} << 13, true) +
            (random_.chance(50) ? "" : "/0x1fff"));
        break;
      default:
        add(tagged + "/" + number(random_.mask(12) | 0x1000, true));
    }
  }

  void addTypeOfService() {
    Word const dscp = near(Field::tc, 8) >> 2;
    if (wants()) {
      add(random_.chance(50) ? "nw_tos=" + number(dscp << 2, false)
                             : "ip_dscp=" + number(dscp, false));
    }
    if (random_.chance(8)) add("nw_ecn=1");
  }

  void addTtl() {
    if (!random_.chance(15)) return;
    Word const ttl = etherType_ == etherTypeIp6 ? near_[Field::hoplimit] : Word{near_.ttl};
    add("nw_ttl=" + number(ttl, false));
  }

  void addPort(const std::string& name, const std::string& end, Field field) {
    if (!random_.chance(50)) return;
    std::string const own = protocol_ == 6 ? "tcp" : protocol_ == 17 ? "udp" : "sctp";
    std::string const used = random_.chance(30) ? own + end : name;
    Word const mask = random_.mask(16);
    bool const isHexadecimal = random_.chance(50);
    add(used + "=" + number(near(field, 16), isHexadecimal) +
        (mask == 0xFFFF ? "" : "/" + number(mask, isHexadecimal)));
  }

  void addFlags() {
    if (!random_.chance(60)) return;
    static constexpr const char* names[] = {"fin", "syn", "rst", "psh", "ack",
                                            "urg", "ece", "cwr", "ns"};
    unsigned const mask = static_cast<unsigned>(random_.word(random_.chance(70) ? 6 : 9)) |
                          (random_.chance(50) ? 2 : 16);
    unsigned const value =
        (random_.chance(80) ? near_.tcpFlags : static_cast<unsigned>(random_.word(9))) & mask;
    std::string text;
    switch (random_.below(3)) {
      case 0:
        for (unsigned bit = 0; bit != 9; ++bit) {
          if ((mask >> bit & 1) != 0) (text += (value >> bit & 1) != 0 ? '+' : '-') += names[bit];
        }
        break;
      case 1:
        text = number(value, true) + "/" + number(mask, true);
        break;
      default:
        for (unsigned bit = 0; bit != 9; ++bit) {
          if ((value >> bit & 1) == 0) continue;
          if (!text.empty()) text += '|';
          text += names[bit];
        }
        if (text.empty()) text = "0";
    }
    add("tcp_flags=" + text);
  }

  Random& random_;
  const FlowPacket& near_;
  std::string match_;
  Word etherType_ = 0;
  int protocol_ = -1;
};

FlowPacket randomPacket(Random& random) {
  FlowPacket packet;
  for (std::size_t i = 0; i != fieldCount; ++i) {
    Field const field = static_cast<Field>(i);
    packet[field] = random.word(bitsOf(field));
  }
  packet[Field::ethertype] = random.of<Word>(
      {etherTypeIp, etherTypeIp, etherTypeIp6, etherTypeIp6, 0x0806, 0x8035, 0x8847});
  packet[Field::proto] = random.of<Word>({1, 6, 6, 17, 58, 132, 47});
  packet.inPort = 1 + random.below(2);
  packet.vlanPriority = random.below(8);
  packet.tcpFlags = static_cast<unsigned>(random.word(12));
  packet.ttl = random.below(4);
  packet[Field::hoplimit] = random.below(4);
  packet.fragment = random.below(3);
  packet.reg0 = random.below(2);
  return packet;
}

/// A packet that has most of its fields from another one.
FlowPacket packetNear(Random& random, const FlowPacket& near) {
  FlowPacket const other = randomPacket(random);
  FlowPacket packet = near;
  for (std::size_t i = 0; i != fieldCount; ++i) {
    Field const field = static_cast<Field>(i);
    if (random.chance(8)) packet[field] = other[field];
    if (random.chance(8)) packet[field] ^= Word{1} << random.below(bitsOf(field));
  }
  if (random.chance(10)) packet.inPort = other.inPort;
  if (random.chance(10)) packet.vlanPriority = other.vlanPriority;
  if (random.chance(10)) packet.tcpFlags = other.tcpFlags;
  if (random.chance(10)) packet.ttl = other.ttl;
  if (random.chance(10)) packet.fragment = other.fragment;
  if (random.chance(10)) packet.reg0 = other.reg0;
  return packet;
}

/// A packet that the entry's fields allow.
FlowPacket packetOf(Random& random, const Match& match) {
  FlowPacket packet = randomPacket(random);
  packet.fields = packetIn(match, [&random] { return random.word(128); });
  if (match.isAny(Field::frag)) packet[Field::frag] = 0;
  packet.fragment = packet[Field::frag] == 0 ? 0 : 1 + random.below(2);
  packet.tcpFlags = static_cast<unsigned>(packet[Field::flags]) | (packet.tcpFlags & 0xFC0);
  return packet;
}

/// Whether an entry and its flow match the same: the same packets, or, with an otherMatch, at least
/// those of the flow.
bool agree(const Entry& entry, const Match& match, const FlowPacket& packet, bool& isMet) {
  isMet = FlowNotation(packet).holds(entry.description);
  bool const isFound = isIn(match, packet.key());
  return entry.otherMatch.empty() ? isFound == isMet : isFound || !isMet;
}

TEST(OvsPackets, AnEntryMatchesWhatItsFlowMatches) {
  constexpr std::size_t flows = 4000;
  constexpr int packetsEach = 60;
  Random random(20261);
  std::string text;
  std::vector<FlowPacket> nears;
  for (std::size_t i = 0; i != flows; ++i) {
    nears.push_back(randomPacket(random));
    std::string const match = FlowMaker(random, nears.back()).make();
    text += " table=0, priority=" + std::to_string(i) + (match.empty() ? "" : ",") + match +
            " actions=drop\n";
  }
  TemporaryFile const file(text);
  Complaints complaints;
  auto const source = openOvs(InputFile(file.path()), complaints);
  std::size_t number = 0;
  std::size_t exact = 0;
  std::size_t hits = 0;
  eachEntry(*source, [&](const Entry& entry) {
    Match const match = matchOf(entry);
    for (int i = 0; i != packetsEach; ++i) {
      FlowPacket const packet = i % 6 == 0 && !match.isEmpty() ? packetOf(random, match)
                                                               : packetNear(random, nears[number]);
      bool isMet = false;
      if (!agree(entry, match, packet, isMet)) {
        ADD_FAILURE() << entry.description << " is " << matchText(entry) << ": "
                      << (isMet ? "lacks" : "has") << " a packet that the flow "
                      << (isMet ? "has" : "lacks");
      }
      hits += isMet ? 1U : 0U;
    }
    exact += entry.otherMatch.empty() ? 1U : 0U;
    ++number;
  });
  EXPECT_EQ(number, flows);
  // The test tests something.
  EXPECT_GT(exact, flows / 4);
  EXPECT_LT(exact, flows);
  EXPECT_GT(hits, flows);
}

TEST(OvsPackets, AnEntryMatchesWhatItsRealFlowMatches) {
  std::filesystem::path const path =
      std::filesystem::path(TCAMSHOW_SHARED_DATA) / "ovs" / "dump_acl1_1k.txt";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " is not there";
  Random random(20263);
  Complaints complaints;
  auto const source = openOvs(InputFile(path.string()), complaints);
  std::size_t hits = 0;
  eachEntry(*source, [&](const Entry& entry) {
    Match const match = matchOf(entry);
    FlowPacket const near = packetOf(random, match);
    for (int i = 0; i != 60; ++i) {
      bool isMet = false;
      EXPECT_TRUE(agree(entry, match, i == 0 ? near : packetNear(random, near), isMet))
          << entry.description << " is " << matchText(entry);
      hits += isMet ? 1U : 0U;
    }
  });
  EXPECT_GT(hits, 1307U);
}

}  // namespace
}  // namespace tcamshow
