// Random flows and packets: an entry matches what its flow matches, as another reader of the flows'
// notation has it.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "SourceEntries.h"
#include "TemporaryFile.h"
#include "sources/Ovs.h"

namespace tcamshow {
namespace {

constexpr Word typeArp = 0x0806;

/// A packet with the fields that a snapshot does not have.
struct FlowPacket {
  TestPacket fields{};
  unsigned inPort = 1;
  unsigned vlanPriority = 0;
  unsigned tcpFlags = 0;  // twelve of them
  unsigned ttl = 64;      // of IPv4 too
  unsigned ecn = 0;
  unsigned fragment = 0;  // 0: none, 1: first, 2: later
  unsigned reg0 = 0;

  Word& operator[](Field field) { return fields[indexOf(field)]; }
  Word operator[](Field field) const { return fields[indexOf(field)]; }
};

std::string number(Word value, bool isHexadecimal) {
  char text[24];
  std::snprintf(text, sizeof text, isHexadecimal ? "0x%llx" : "%llu",
                static_cast<unsigned long long>(value));
  return text;
}

std::string ipText(Word address) {
  std::string text;
  appendIp(text, static_cast<std::uint32_t>(address));
  return text;
}
template <std::size_t size>
std::array<std::uint8_t, size> octets(Word word) {
  std::array<std::uint8_t, size> result;
  for (std::size_t i = size; i-- > 0; word >>= 8) result[i] = static_cast<std::uint8_t>(word);
  return result;
}
std::string ip6Text(Word address) {
  std::string text;
  appendIp6(text, octets<16>(address));
  return text;
}
std::string macText(Word address) {
  std::string text;
  appendMac(text, octets<6>(address));
  return text;
}

/// One part of a flow: its text, and the packets that it matches.
struct Part {
  std::string text;
  std::function<bool(const FlowPacket&)> matches;
};
using Parts = std::vector<Part>;

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

/// A random flow around a packet: most parts match it.
class FlowMaker {
 public:
  FlowMaker(Random& random, const FlowPacket& near) : random_(random), near_(near) {}

  Parts make() {
    if (random_.chance(90)) addProtocol();
    addMasked("dl_src", Field::smac, macText, "/");
    addMasked("dl_dst", Field::dmac, macText, "/");
    addVlan();
    addOthers();
    if (etherType_ == etherTypeIp || etherType_ == etherTypeIp6) {
      if (etherType_ == etherTypeIp) {
        addAddress("nw_src", Field::src, 32, ipText);
        addAddress("nw_dst", Field::dst, 32, ipText);
      } else {
        addAddress("ipv6_src", Field::src6, 128, ip6Text);
        addAddress("ipv6_dst", Field::dst6, 128, ip6Text);
      }
      addTypeOfService();
      addTtl();
      addFragment();
    }
    if (hasPorts()) {
      addPort("tp_src", "_src", Field::sport);
      addPort("tp_dst", "_dst", Field::dport);
    }
    if (protocol_ == 6) addFlags();
    if (protocol_ == 1 || protocol_ == 58) addIcmp();
    return std::move(parts_);
  }

 private:
  void add(std::string text, std::function<bool(const FlowPacket&)> matches) {
    parts_.push_back({std::move(text), std::move(matches)});
  }
  bool wants() { return random_.chance(25); }
  /// A value near the packet's.
  Word near(Field field, unsigned bits) {
    return random_.chance(80) ? near_[field] : random_.word(bits);
  }

  void addProtocol() {
    const Protocol& protocol = protocols[random_.below(std::size(protocols))];
    etherType_ = protocol.etherType;
    protocol_ = protocol.number;
    add(random_.chance(20) && protocol_ < 0 ? "dl_type=" + number(etherType_, true) : protocol.word,
        [type = etherType_, wanted = protocol_](const FlowPacket& packet) {
          return packet[Field::ethertype] == type &&
                 (wanted < 0 || packet[Field::proto] == static_cast<Word>(wanted));
        });
    bool const isAnyIp = protocol_ < 0 && (etherType_ == etherTypeIp || etherType_ == etherTypeIp6);
    if (!isAnyIp || !wants()) return;
    protocol_ = static_cast<int>(near(Field::proto, 8));
    add("nw_proto=" + std::to_string(protocol_), [wanted = protocol_](const FlowPacket& packet) {
      return packet[Field::proto] == static_cast<Word>(wanted);
    });
  }

  void addMaskedValue(std::string text, Field field, Word value, Word mask) {
    add(std::move(text), [field, value, mask](const FlowPacket& packet) {
      return (packet[field] & mask) == (value & mask);
    });
  }

  template <class Text>
  void addMasked(const std::string& name, Field field, Text text, const char* separator) {
    if (!wants()) return;
    unsigned const bits = bitsOf(field);
    Word const value = near(field, bits);
    Word const mask = random_.mask(bits);
    bool const isWhole = mask == lowOnes(bits);
    addMaskedValue(name + "=" + text(value) + (isWhole ? "" : separator + text(mask)), field, value,
                   mask);
  }

  template <class Text>
  void addAddress(const std::string& name, Field field, unsigned bits, Text text) {
    if (!wants()) return;
    if (random_.chance(40)) return addMasked(name, field, text, "/");
    unsigned const length = random_.below(bits + 1);
    Word const mask = lowOnes(bits) & ~lowOnes(bits - length);
    Word const value = near(field, bits) & mask;
    addMaskedValue(name + "=" + text(value) + "/" + std::to_string(length), field, value, mask);
  }

  void addVlan() {
    if (!wants()) return;
    Word const vlan = near(Field::vlan, 12);
    auto const hasVlan = [vlan](const FlowPacket& packet) { return packet[Field::vlan] == vlan; };
    switch (random_.below(4)) {
      case 0:
        add("dl_vlan=" + number(vlan, false), hasVlan);
        if (random_.chance(30)) {
          add("dl_vlan_pcp=3", [](const FlowPacket& packet) { return packet.vlanPriority == 3; });
        }
        break;
      case 1:
        add("vlan_tci=" + number(vlan | 0x1000, true) + "/0x1fff", hasVlan);
        break;
      case 2:
        add("vlan_tci=" + number(vlan | 0x1000 | Word{near_.vlanPriority} << 13, true),
            [vlan, wanted = near_.vlanPriority](const FlowPacket& packet) {
              return packet[Field::vlan] == vlan && packet.vlanPriority == wanted;
            });
        break;
      default: {
        // Every packet of the test has a tag, so the bit of the tag holds.
        Word const mask = random_.mask(12);
        add("vlan_tci=" + number(vlan | 0x1000, true) + "/" + number(mask | 0x1000, true),
            [vlan, mask](const FlowPacket& packet) {
              return (packet[Field::vlan] & mask) == (vlan & mask);
            });
      }
    }
  }

  void addOthers() {
    if (random_.chance(10)) {
      add("in_port=1", [](const FlowPacket& packet) { return packet.inPort == 1; });
    }
    if (random_.chance(10)) {
      add("reg0=0x1/0x1", [](const FlowPacket& packet) { return (packet.reg0 & 1) == 1; });
    }
  }

  void addTypeOfService() {
    Word const dscp = near(Field::tc, 8) >> 2;
    auto const hasDscp = [dscp](const FlowPacket& packet) {
      return packet[Field::tc] >> 2 == dscp;
    };
    if (wants()) {
      if (random_.chance(50)) {
        add("nw_tos=" + number(dscp << 2, false), hasDscp);
      } else {
        add("ip_dscp=" + number(dscp, false), hasDscp);
      }
    }
    if (random_.chance(8)) {
      add("nw_ecn=1", [](const FlowPacket& packet) { return (packet[Field::tc] & 3) == 1; });
    }
  }

  void addTtl() {
    if (!random_.chance(15)) return;
    bool const is6 = etherType_ == etherTypeIp6;
    unsigned const ttl = is6 ? static_cast<unsigned>(near_[Field::hoplimit]) : near_.ttl;
    add("nw_ttl=" + std::to_string(ttl), [is6, ttl](const FlowPacket& packet) {
      return is6 ? packet[Field::hoplimit] == ttl : packet.ttl == ttl;
    });
  }

  void addFragment() {
    if (!wants()) return;
    switch (random_.below(5)) {
      case 0:
        return add("nw_frag=no", [](const FlowPacket& packet) { return packet.fragment == 0; });
      case 1:
        return add("nw_frag=yes", [](const FlowPacket& packet) { return packet.fragment != 0; });
      case 2:
        return add("nw_frag=first", [](const FlowPacket& packet) { return packet.fragment == 1; });
      case 3:
        return add("nw_frag=later", [](const FlowPacket& packet) { return packet.fragment == 2; });
      default:
        return add("nw_frag=not_later",
                   [](const FlowPacket& packet) { return packet.fragment != 2; });
    }
  }

  bool hasPorts() const { return protocol_ == 6 || protocol_ == 17 || protocol_ == 132; }
  void addPort(const std::string& name, const std::string& end, Field field) {
    if (!random_.chance(50)) return;
    std::string const own = protocol_ == 6 ? "tcp" : protocol_ == 17 ? "udp" : "sctp";
    std::string const used = random_.chance(30) ? own + end : name;
    Word const value = near(field, 16);
    Word const mask = random_.mask(16);
    bool const isHexadecimal = random_.chance(50);
    addMaskedValue(used + "=" + number(value, isHexadecimal) +
                       (mask == 0xFFFF ? "" : "/" + number(mask, isHexadecimal)),
                   field, value, mask);
  }

  void addFlags() {
    if (!random_.chance(60)) return;
    static constexpr const char* names[] = {"fin", "syn", "rst", "psh", "ack",
                                            "urg", "ece", "cwr", "ns"};
    unsigned const mask = static_cast<unsigned>(random_.word(random_.chance(70) ? 6 : 9)) |
                          (random_.chance(50) ? 2 : 16);
    unsigned const value =
        (random_.chance(80) ? near_.tcpFlags : static_cast<unsigned>(random_.word(9))) & mask;
    std::string text = "tcp_flags=";
    unsigned compared = mask;
    switch (random_.below(3)) {
      case 0:
        for (unsigned bit = 0; bit != 9; ++bit) {
          if ((mask >> bit & 1) != 0) (text += (value >> bit & 1) != 0 ? '+' : '-') += names[bit];
        }
        break;
      case 1:
        text += number(value, true) + "/" + number(mask, true);
        break;
      default:
        compared = 0xFFF;
        for (unsigned bit = 0; bit != 9; ++bit) {
          if ((value >> bit & 1) == 0) continue;
          if (text.back() != '=') text += '|';
          text += names[bit];
        }
        if (value == 0) text += '0';
    }
    add(text, [value, compared](const FlowPacket& packet) {
      return (packet.tcpFlags & compared) == value;
    });
  }

  void addIcmp() {
    if (wants()) {
      Word const type = near_[Field::sport] >> 8;
      add("icmp_type=" + number(type, false),
          [type](const FlowPacket& packet) { return packet[Field::sport] >> 8 == type; });
    }
    if (wants()) {
      Word const code = near_[Field::dport] & 0xFF;
      add("icmp_code=" + number(code, false),
          [code](const FlowPacket& packet) { return (packet[Field::dport] & 0xFF) == code; });
    }
  }

  Random& random_;
  const FlowPacket& near_;
  Parts parts_;
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
      {etherTypeIp, etherTypeIp, etherTypeIp6, etherTypeIp6, typeArp, 0x8035, 0x8847});
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

/// The fields that the TCAM's key has of the packet.
TestPacket keyOf(const FlowPacket& packet) {
  TestPacket key = packet.fields;
  key[indexOf(Field::frag)] = packet.fragment == 0 ? 0 : 1;
  key[indexOf(Field::flags)] = packet.tcpFlags & 0x3F;
  return key;
}

TEST(OvsPackets, AnEntryMatchesWhatItsFlowMatches) {
  constexpr int flows = 4000;
  constexpr int packetsEach = 60;
  Random random(20261);
  std::string text;
  std::vector<Parts> all;
  std::vector<FlowPacket> nears;
  for (int i = 0; i != flows; ++i) {
    nears.push_back(randomPacket(random));
    Parts parts = FlowMaker(random, nears.back()).make();
    text += " table=0, priority=" + std::to_string(i);
    for (const Part& part : parts) (text += ',') += part.text;
    text += " actions=drop\n";
    all.push_back(std::move(parts));
  }
  TemporaryFile const file(text);
  Complaints complaints;
  auto const source = openOvs(InputFile(file.path()), complaints);
  std::size_t number = 0;
  std::size_t exact = 0;
  std::size_t hits = 0;
  eachEntry(*source, [&](const Entry& entry) {
    const Parts& parts = all[number];
    Match const match = matchOf(entry);
    bool const isExact = entry.otherMatch.empty();
    for (int i = 0; i != packetsEach; ++i) {
      FlowPacket const packet = packetNear(random, nears[number]);
      bool isMet = true;
      for (const Part& part : parts) isMet = isMet && part.matches(packet);
      bool const isFound = isIn(match, keyOf(packet));
      if (isExact ? isFound != isMet : isMet && !isFound) {
        ADD_FAILURE() << entry.description << " is " << matchText(entry) << ": "
                      << (isMet ? "lacks" : "has") << " a packet that the flow "
                      << (isMet ? "has" : "lacks");
      }
      hits += isMet ? 1 : 0;
    }
    exact += isExact ? 1 : 0;
    ++number;
  });
  EXPECT_EQ(number, static_cast<std::size_t>(flows));
  // The test tests something.
  EXPECT_GT(exact, static_cast<std::size_t>(flows) / 4);
  EXPECT_LT(exact, static_cast<std::size_t>(flows));
  EXPECT_GT(hits, static_cast<std::size_t>(flows));
}

}  // namespace
}  // namespace tcamshow
