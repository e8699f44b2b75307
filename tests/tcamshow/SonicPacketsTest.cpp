// Entries and packets: an entry matches what its row matches, as another reader of the rows'
// notation has it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "Process.h"
#include "SonicFiles.h"
#include "SonicNotation.h"

namespace tcamshow {
namespace {

/// The attributes of a random entry around a packet: most of its fields hold for it.
class EntryMaker {
 public:
  EntryMaker(Random& random, const SonicPacket& near, std::vector<std::string>& rows)
      : random_(random), near_(near), rows_(rows) {}

  std::vector<std::string> make() {
    bool const is6 = random_.chance(40);
    if (is6) {
      addMasked("SRC_IPV6", Field::src6, ip6Text, ip6Text);
      addMasked("DST_IPV6", Field::dst6, ip6Text, ip6Text);
    }
    if (!is6 || random_.chance(3)) {
      addMasked("SRC_IP", Field::src, ipText, ipText);
      addMasked("DST_IP", Field::dst, ipText, ipText);
    }
    addMasked("SRC_MAC", Field::smac, macText, macText);
    addMasked("DST_MAC", Field::dmac, macText, macText);
    if (random_.chance(30)) addMasked("ETHER_TYPE", Field::ethertype, decimal, hexadecimal);
    addMasked("OUTER_VLAN_ID", Field::vlan, decimal, hexadecimal);
    if (random_.chance(50)) addMasked("TOS", Field::tc, decimal, hexadecimal);
    addProtocol(is6);
    addPort("L4_SRC_PORT", Field::sport);
    addPort("L4_DST_PORT", Field::dport);
    if (wants()) addNumber("DSCP", near(Field::tc) >> 2, 6);
    addFlags();
    addIcmp(is6);
    addChoice("ACL_IP_TYPE=SAI_ACL_IP_TYPE_",
              {"ANY", "IP", "NON_IP", "IPV4ANY", "NON_IPV4", "IPV6ANY", "NON_IPV6", "ARP"});
    addChoice("ACL_IP_FRAG=SAI_ACL_IP_FRAG_",
              {"ANY", "NON_FRAG", "HEAD", "NON_FRAG_OR_HEAD", "NON_HEAD"});
    addRanges();
    if (random_.chance(5)) add("TC=3&mask:0xff");
    if (random_.chance(5)) add("ECN=1&mask:0x3");
    if (random_.chance(5)) add("IN_PORTS=1:oid:0x1000000000002");
    return std::move(attributes_);
  }

 private:
  void add(const std::string& attribute) { attributes_.push_back("FIELD_" + attribute); }
  bool wants() { return random_.chance(20); }
  /// Mostly the packet's value.
  Word near(Field field) { return random_.chance(85) ? near_[field] : random_.word(bitsOf(field)); }

  template <class Text, class MaskText>
  void addMasked(const std::string& name, Field field, Text text, MaskText maskText) {
    if (!wants()) return;
    Word const mask = random_.mask(bitsOf(field));
    add(name + "=" + text(near(field)) + "&mask:" + maskText(mask));
  }
  void addNumber(const std::string& name, Word value, unsigned bits) {
    add(name + "=" + decimal(value) + "&mask:" + hexadecimal(random_.mask(bits)));
  }
  void addChoice(const std::string& start, const std::vector<std::string>& names) {
    if (!wants()) return;
    add(start + names[random_.below(static_cast<std::uint32_t>(names.size()))] +
        (random_.chance(50) ? "&mask:0xffffffffffffffff" : ""));
  }

  void addProtocol(bool is6) {
    if (random_.chance(40)) return;
    protocol_ = near(Field::proto);
    isKnown_ = true;
    add(std::string(is6 && random_.chance(80) ? "IPV6_NEXT_HEADER" : "IP_PROTOCOL") + "=" +
        decimal(protocol_) + "&mask:0xff");
  }

  void addPort(const std::string& name, Field field) {
    if (isKnown_ && (protocol_ == 1 || protocol_ == 58) && random_.chance(95)) return;
    addMasked(name, field, decimal, hexadecimal);
  }

  void addFlags() {
    if (!wants()) return;
    unsigned const mask = static_cast<unsigned>(random_.mask(random_.chance(80) ? 6 : 8));
    unsigned const value = near_.tcpFlags & (random_.chance(50) ? 0x3F : mask);
    add("TCP_FLAGS=" + decimal(value) + "&mask:" + hexadecimal(mask));
  }

  void addIcmp(bool is6) {
    bool const isIcmp = isKnown_ && protocol_ == (is6 ? 58U : 1U);
    if (!random_.chance(isIcmp ? 60 : 2)) return;
    std::string const start = is6 ? "ICMPV6_" : "ICMP_";
    if (random_.chance(70)) addNumber(start + "TYPE", near(Field::sport) >> 8, 8);
    if (random_.chance(70)) addNumber(start + "CODE", near(Field::dport) & 0xFF, 8);
  }

  void addRanges() {
    if (!wants()) return;
    std::string list;
    unsigned const count = 1 + random_.below(3);
    for (unsigned i = 0; i != count; ++i) {
      std::string const id = hexadecimal(0xA000 + rows_.size());
      unsigned low = random_.below(65536);
      unsigned high = random_.below(65536);
      std::string type = "PACKET_LENGTH";
      switch (random_.below(random_.chance(80) ? 2 : 4)) {
        case 0:
          type = "L4_SRC_PORT_RANGE";
          spread(Field::sport, low, high);
          break;
        case 1:
          type = "L4_DST_PORT_RANGE";
          spread(Field::dport, low, high);
          break;
        case 2:
          type = "OUTER_VLAN";
          spread(Field::vlan, low, high);
          break;
        default:
          break;
      }
      rows_.push_back(asicRange(id, type, std::to_string(low) + "," + std::to_string(high)));
      list += (list.empty() ? "" : ",") + ("oid:" + id);
    }
    add("ACL_RANGE_TYPE=" + std::to_string(count) + ":" + list);
  }
  /// Mostly a range around the packet's value.
  void spread(Field field, unsigned& low, unsigned& high) {
    if (random_.chance(15)) return;
    unsigned const value = static_cast<unsigned>(near_[field]);
    low = value - std::min(value, low % 3000);
    high = std::min(65535U, value + high % 3000);
  }

  Random& random_;
  const SonicPacket& near_;
  std::vector<std::string>& rows_;
  std::vector<std::string> attributes_;
  Word protocol_ = 0;
  bool isKnown_ = false;
};

SonicPacket randomPacket(Random& random) {
  SonicPacket packet;
  for (std::size_t i = 0; i != fieldCount; ++i) {
    Field const field = static_cast<Field>(i);
    packet[field] = random.word(bitsOf(field));
  }
  packet[Field::ethertype] =
      random.of<Word>({etherTypeIp, etherTypeIp, etherTypeIp6, etherTypeIp6, 0x0806, 0x88CC});
  packet[Field::proto] = random.of<Word>({1, 6, 17, 58, 47});
  packet.tcpFlags = static_cast<unsigned>(random.word(8));
  packet.fragment = random.below(3);
  packet.trafficClass = 2 + random.below(3);
  packet.frameLength = random.below(65536);
  packet.inPort = random.below(2);
  return packet;
}

SonicPacket packetNear(Random& random, const SonicPacket& near) {
  SonicPacket const other = randomPacket(random);
  SonicPacket packet = near;
  for (std::size_t i = 0; i != fieldCount; ++i) {
    Field const field = static_cast<Field>(i);
    if (random.chance(6)) packet[field] = other[field];
    if (random.chance(6)) packet[field] ^= Word{1} << random.below(bitsOf(field));
  }
  if (random.chance(10)) packet.tcpFlags = other.tcpFlags;
  if (random.chance(10)) packet.fragment = other.fragment;
  if (random.chance(10)) packet.trafficClass = other.trafficClass;
  if (random.chance(10)) packet.frameLength = other.frameLength;
  if (random.chance(10)) packet.inPort = other.inPort;
  return packet;
}

/// A packet that the entry's fields allow.
SonicPacket packetOf(Random& random, const Match& match) {
  SonicPacket packet = randomPacket(random);
  packet.fields = packetIn(match, [&random] { return random.word(128); });
  packet.fragment = packet[Field::frag] == 0 ? 0 : 1 + random.below(2);
  packet.tcpFlags = static_cast<unsigned>(packet[Field::flags]) | (packet.tcpFlags & 0xC0);
  return packet;
}

/// How often an entry and its row were asked, and what they said.
struct Tally {
  std::size_t entries = 0;
  std::size_t exact = 0;
  std::size_t hits = 0;
};

/// Asks each entry of the ASIC and its row about packets: near `nears`, by the entry's number in
/// the order of object ids, or near its own.
Tally compare(const std::string& directory, const std::string& database, Random& random,
              const std::vector<SonicPacket>& nears = {}) {
  constexpr int packetsEach = 60;
  SonicNotation const notation(directory + "/" + database);
  Complaints complaints;
  auto const source = openSonic(directory, complaints);
  Tally tally;
  eachEntry(*source, [&](const Entry& entry) {
    if (entry.givenState != EntryState::programmed) return;  // it may have no row
    Match const match = matchOf(entry);
    bool const isExact = entry.otherMatch.empty();
    SonicPacket const near = !nears.empty()    ? nears[entry.shadowId - 0x100000]
                             : match.isEmpty() ? randomPacket(random)
                                               : packetOf(random, match);
    for (int i = 0; i != packetsEach; ++i) {
      SonicPacket const packet =
          i % 6 == 0 && !match.isEmpty() ? packetOf(random, match) : packetNear(random, near);
      bool const isMet = notation.holds(entry.shadowId, packet);
      bool const isFound = isIn(match, packet.key());
      // With an otherMatch, the entry has at least the row's packets.
      if (isExact ? isFound != isMet : isMet && !isFound) {
        ADD_FAILURE() << hexadecimal(entry.shadowId) << " is " << matchText(entry) << ": "
                      << (isMet ? "lacks" : "has") << " a packet that the row "
                      << (isMet ? "has" : "lacks");
      }
      tally.hits += isMet ? 1U : 0U;
    }
    tally.exact += isExact ? 1U : 0U;
    ++tally.entries;
  });
  EXPECT_EQ(tally.entries, notation.size());
  return tally;
}

TEST(SonicPackets, AnEntryMatchesWhatItsRowMatches) {
  constexpr std::size_t entries = 4000;
  Random random(20262);
  std::vector<std::string> rows = {asicTable("0x7")};
  std::vector<SonicPacket> nears;
  for (std::size_t i = 0; i != entries; ++i) {
    nears.push_back(randomPacket(random));
    std::vector<std::string> const attributes = EntryMaker(random, nears.back(), rows).make();
    rows.push_back(asicEntry(hexadecimal(0x100000 + i), "0x7", attributes));
  }
  SonicFiles const files;
  files.writeRows("ASIC_DB.json", rows);
  Tally const tally = compare(files.path(), "ASIC_DB.json", random, nears);
  // The test tests something.
  EXPECT_GT(tally.exact, entries / 4);
  EXPECT_LT(tally.exact, entries);
  EXPECT_GT(tally.hits, entries);
}

TEST(SonicPackets, AnEntryMatchesWhatItsRealRowMatches) {
  std::filesystem::path const directory =
      std::filesystem::path(TCAMSHOW_SHARED_DATA) / "sonic" / "dump_acl";
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << directory << " is not there";
  Random random(20264);
  EXPECT_EQ(compare(directory.string(), "asic_db.json", random).entries, 2U);
}

TEST(SonicPackets, AnEntryMatchesWhatItsMadeRowMatches) {
  std::filesystem::path const generator =
      std::filesystem::path(TCAMSHOW_SHARED_DATA) / ".." / "tools" / "sonic_bundle.py";
  if (!std::filesystem::exists(generator)) GTEST_SKIP() << generator << " is not there";
  Random random(20265);
  for (int seed = 1; seed != 5; ++seed) {
    SonicFiles const files;
    ProcessResult const made = runProcess(
        {"/usr/bin/env", "python3", generator.string(), "400", std::to_string(seed), files.path()});
    ASSERT_EQ(made.status, 0) << made.err;
    Tally const tally = compare(files.path(), "ASIC_DB.json", random);
    EXPECT_GT(tally.hits, tally.entries);
  }
}

}  // namespace
}  // namespace tcamshow
