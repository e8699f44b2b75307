// The notation of flows, read packet by packet: whether the match that ovs-ofctl prints holds for a
// packet. It shares nothing with the importer.
#pragma once

#include <arpa/inet.h>

#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "SourceEntries.h"

namespace tcamshow {

/// A packet with a VLAN's tag, and the fields that a snapshot does not have.
struct FlowPacket {
  TestPacket fields{};
  unsigned inPort = 1;
  unsigned vlanPriority = 0;
  unsigned tcpFlags = 0;  // twelve of them
  unsigned ttl = 64;      // of IPv4
  unsigned fragment = 0;  // 0: none, 1: first, 2: later
  unsigned reg0 = 0;

  Word& operator[](Field field) { return fields[indexOf(field)]; }
  Word operator[](Field field) const { return fields[indexOf(field)]; }
  bool isIp() const { return (*this)[Field::ethertype] == etherTypeIp; }
  bool isIp6() const { return (*this)[Field::ethertype] == etherTypeIp6; }
  /// The fields that the TCAM's key has of the packet.
  TestPacket key() const {
    TestPacket key = fields;
    key[indexOf(Field::frag)] = fragment == 0 ? 0 : 1;
    key[indexOf(Field::flags)] = tcpFlags & 0x3F;
    return key;
  }
};

class FlowNotation {
 public:
  explicit FlowNotation(const FlowPacket& packet) : packet_(packet) {}

  /// Throws std::invalid_argument about a part that it does not know.
  bool holds(std::string_view match) const {
    while (!match.empty()) {
      std::size_t const comma = std::min(match.find(','), match.size());
      if (!partHolds(std::string(match.substr(0, comma)))) return false;
      match.remove_prefix(std::min(comma + 1, match.size()));
    }
    return true;
  }

 private:
  struct Masked {
    Word value = 0;
    Word mask = 0;
    bool has(Word word) const { return ((word ^ value) & mask) == 0; }
  };

  static Masked numbers(const std::string& text, Word whole) {
    std::size_t const slash = text.find('/');
    Masked result{std::stoull(text, nullptr, 0), whole};
    if (slash != text.npos) result.mask = std::stoull(text.substr(slash + 1), nullptr, 0);
    return result;
  }

  template <std::size_t size>
  static Word wordOf(const unsigned char (&octets)[size]) {
    Word word = 0;
    for (unsigned char const octet : octets) word = word << 8 | octet;
    return word;
  }
  static Word mac(const std::string& text) {
    unsigned char octets[6];
    if (std::sscanf(text.c_str(), "%2hhx:%2hhx:%2hhx:%2hhx:%2hhx:%2hhx", &octets[0], &octets[1],
                    &octets[2], &octets[3], &octets[4], &octets[5]) != 6) {
      throw std::invalid_argument(text);
    }
    return wordOf(octets);
  }
  static Word ip(const std::string& text) {
    unsigned char octets[4];
    if (::inet_pton(AF_INET, text.c_str(), octets) != 1) throw std::invalid_argument(text);
    return wordOf(octets);
  }
  static Word ip6(const std::string& text) {
    unsigned char octets[16];
    if (::inet_pton(AF_INET6, text.c_str(), octets) != 1) throw std::invalid_argument(text);
    return wordOf(octets);
  }
  static Masked address(const std::string& text, Word (*read)(const std::string&), unsigned bits) {
    std::size_t const slash = text.find('/');
    Masked result{read(text.substr(0, slash)), lowOnes(bits)};
    if (slash == text.npos) return result;
    std::string const mask = text.substr(slash + 1);
    bool const isLength = mask.find_first_not_of("0123456789") == mask.npos;
    result.mask = isLength
                      ? lowOnes(bits) & ~lowOnes(bits - static_cast<unsigned>(std::stoul(mask)))
                      : read(mask);
    return result;
  }

  /// +syn-ack, syn|ack, or numbers.
  static Masked flags(const std::string& text) {
    if (text[0] >= '0' && text[0] <= '9') return numbers(text, 0xFFF);
    static const std::map<std::string, unsigned> bits = {{"fin", 1},  {"syn", 2},   {"rst", 4},
                                                         {"psh", 8},  {"ack", 16},  {"urg", 32},
                                                         {"ece", 64}, {"cwr", 128}, {"ns", 256}};
    bool const isSigned = text[0] == '+' || text[0] == '-';
    Masked result{0, isSigned ? Word{0} : Word{0xFFF}};
    for (std::size_t at = 0; at < text.size();) {
      bool const isSet = text[at] != '-';
      if (text[at] == '+' || text[at] == '-' || text[at] == '|') ++at;
      std::size_t const end = std::min(text.find_first_of("+-|", at), text.size());
      unsigned const bit = bits.at(text.substr(at, end - at));
      result.mask |= bit;
      if (isSet) result.value |= bit;
      at = end;
    }
    return result;
  }

  bool partHolds(const std::string& part) const {
    std::size_t const sign = part.find('=');
    std::string const name = part.substr(0, sign);
    if (sign == part.npos) return wordHolds(name);
    std::string const text = part.substr(sign + 1);
    if (name.starts_with("tcp_") && packet_[Field::proto] != 6) return false;
    if (name.starts_with("udp_") && packet_[Field::proto] != 17) return false;
    if (name.starts_with("sctp_") && packet_[Field::proto] != 132) return false;
    bool const isAnyIp = packet_.isIp() || packet_.isIp6();
    if (name == "dl_type") return numbers(text, 0xFFFF).has(packet_[Field::ethertype]);
    if (name == "dl_src") return address(text, mac, 48).has(packet_[Field::smac]);
    if (name == "dl_dst") return address(text, mac, 48).has(packet_[Field::dmac]);
    if (name == "nw_src") return packet_.isIp() && address(text, ip, 32).has(packet_[Field::src]);
    if (name == "nw_dst") return packet_.isIp() && address(text, ip, 32).has(packet_[Field::dst]);
    if (name == "ipv6_src") {
      return packet_.isIp6() && address(text, ip6, 128).has(packet_[Field::src6]);
    }
    if (name == "ipv6_dst") {
      return packet_.isIp6() && address(text, ip6, 128).has(packet_[Field::dst6]);
    }
    if (name == "nw_proto") return isAnyIp && numbers(text, 0xFF).has(packet_[Field::proto]);
    if (name == "nw_tos") return isAnyIp && numbers(text, 0xFC).has(packet_[Field::tc] & 0xFC);
    if (name == "ip_dscp") return isAnyIp && numbers(text, 0x3F).has(packet_[Field::tc] >> 2);
    if (name == "nw_ecn") return isAnyIp && numbers(text, 3).has(packet_[Field::tc] & 3);
    if (name == "nw_ttl") {
      return isAnyIp &&
             numbers(text, 0xFF).has(packet_.isIp() ? packet_.ttl : packet_[Field::hoplimit]);
    }
    if (name == "nw_frag") return isAnyIp && fragmentHolds(text);
    if (name == "dl_vlan") return numbers(text, 0xFFF).has(packet_[Field::vlan]);
    if (name == "dl_vlan_pcp") return numbers(text, 7).has(packet_.vlanPriority);
    if (name == "vlan_tci") {
      return numbers(text, 0xFFFF)
          .has(packet_[Field::vlan] | 0x1000U | Word{packet_.vlanPriority} << 13);
    }
    if (name.ends_with("_src"))
      return hasPorts() && numbers(text, 0xFFFF).has(packet_[Field::sport]);
    if (name.ends_with("_dst"))
      return hasPorts() && numbers(text, 0xFFFF).has(packet_[Field::dport]);
    if (name == "tcp_flags") return flags(text).has(packet_.tcpFlags);
    if (name == "icmp_type") return isIcmp() && numbers(text, 0xFF).has(packet_[Field::sport] >> 8);
    if (name == "icmp_code") {
      return isIcmp() && numbers(text, 0xFF).has(packet_[Field::dport] & 0xFF);
    }
    if (name == "in_port") return text == std::to_string(packet_.inPort);
    if (name == "reg0") return numbers(text, 0xFFFFFFFF).has(packet_.reg0);
    throw std::invalid_argument(part);
  }

  bool wordHolds(const std::string& word) const {
    struct Protocol {
      Word etherType;
      int number;  // -1: any
    };
    static const std::map<std::string, Protocol> protocols = {
        {"ip", {0x0800, -1}},     {"icmp", {0x0800, 1}},   {"tcp", {0x0800, 6}},
        {"udp", {0x0800, 17}},    {"sctp", {0x0800, 132}}, {"ipv6", {0x86DD, -1}},
        {"icmp6", {0x86DD, 58}},  {"tcp6", {0x86DD, 6}},   {"udp6", {0x86DD, 17}},
        {"sctp6", {0x86DD, 132}}, {"arp", {0x0806, -1}},   {"rarp", {0x8035, -1}},
        {"mpls", {0x8847, -1}},   {"mplsm", {0x8848, -1}}};
    auto const found = protocols.find(word);
    if (found == protocols.end()) throw std::invalid_argument(word);
    return packet_[Field::ethertype] == found->second.etherType &&
           (found->second.number < 0 ||
            packet_[Field::proto] == static_cast<Word>(found->second.number));
  }

  bool fragmentHolds(const std::string& text) const {
    if (text == "no") return packet_.fragment == 0;
    if (text == "yes") return packet_.fragment != 0;
    if (text == "first") return packet_.fragment == 1;
    if (text == "later") return packet_.fragment == 2;
    if (text == "not_later") return packet_.fragment != 2;
    throw std::invalid_argument(text);
  }
  bool hasPorts() const {
    Word const protocol = packet_[Field::proto];
    return (packet_.isIp() || packet_.isIp6()) &&
           (protocol == 6 || protocol == 17 || protocol == 132);
  }
  bool isIcmp() const {
    return (packet_.isIp() && packet_[Field::proto] == 1) ||
           (packet_.isIp6() && packet_[Field::proto] == 58);
  }

  const FlowPacket& packet_;
};

}  // namespace tcamshow
