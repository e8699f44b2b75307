// The notation of ACL entries in a SONiC switch's database, read packet by packet: whether an
// entry's row holds for a packet. It shares nothing with the importer.
#pragma once

#include <arpa/inet.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "SourceEntries.h"

namespace tcamshow {

/// A packet with the fields that a snapshot does not have.
struct SonicPacket {
  TestPacket fields{};
  unsigned tcpFlags = 0;  // eight of them
  unsigned fragment = 0;  // 0: none, 1: the head, 2: behind the head
  unsigned trafficClass = 0;
  unsigned frameLength = 64;
  unsigned inPort = 0;

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

/// All entries of an ASIC_DB.json.
class SonicNotation {
 public:
  explicit SonicNotation(const std::string& path) {
    nlohmann::json const database = nlohmann::json::parse(std::ifstream(path));
    for (auto const& [key, row] : database.items()) {
      std::size_t const at = key.find("oid:0x");
      if (at == key.npos) continue;
      nlohmann::json const& fields =
          row.contains("value") && row["value"].is_object() ? row["value"] : row;
      std::uint64_t const id = std::stoull(key.substr(at + 4), nullptr, 0);
      if (key.find(":SAI_OBJECT_TYPE_ACL_ENTRY:") != key.npos) entries_[id] = fields;
      if (key.find(":SAI_OBJECT_TYPE_ACL_RANGE:") != key.npos) ranges_[id] = fields;
    }
  }

  /// Whether the row of the entry with this object id holds. Throws std::invalid_argument about a
  /// field that it does not know.
  bool holds(std::uint64_t id, const SonicPacket& packet) const {
    static const std::string start = "SAI_ACL_ENTRY_ATTR_FIELD_";
    for (auto const& [name, value] : entries_.at(id).items()) {
      if (!name.starts_with(start)) continue;
      if (!fieldHolds(name.substr(start.size()), value, packet)) return false;
    }
    return true;
  }
  std::size_t size() const { return entries_.size(); }

 private:
  struct Masked {
    Word value = 0;
    Word mask = 0;
    bool has(Word word) const { return ((word ^ value) & mask) == 0; }
  };

  template <class Read>
  static Masked masked(const std::string& text, Word whole, Read read) {
    std::size_t const at = text.find("&mask:");
    if (at == text.npos) return {read(text), whole};
    return {read(text.substr(0, at)), read(text.substr(at + 6))};
  }
  static Masked number(const std::string& text, Word whole) {
    return masked(text, whole,
                  [](const std::string& part) { return Word{std::stoull(part, nullptr, 0)}; });
  }

  template <std::size_t size>
  static Word wordOf(const unsigned char (&octets)[size]) {
    Word word = 0;
    for (unsigned char const octet : octets) word = word << 8 | octet;
    return word;
  }
  static Masked ip(const std::string& text) {
    return masked(text, 0xFFFFFFFF, [](const std::string& part) {
      unsigned char octets[4];
      if (::inet_pton(AF_INET, part.c_str(), octets) != 1) throw std::invalid_argument(part);
      return wordOf(octets);
    });
  }
  static Masked ip6(const std::string& text) {
    return masked(text, ~Word{0}, [](const std::string& part) {
      unsigned char octets[16];
      if (::inet_pton(AF_INET6, part.c_str(), octets) != 1) throw std::invalid_argument(part);
      return wordOf(octets);
    });
  }
  static Masked mac(const std::string& text) {
    return masked(text, 0xFFFFFFFFFFFF, [](const std::string& part) {
      unsigned char octets[6];
      if (std::sscanf(part.c_str(), "%2hhx:%2hhx:%2hhx:%2hhx:%2hhx:%2hhx", &octets[0], &octets[1],
                      &octets[2], &octets[3], &octets[4], &octets[5]) != 6) {
        throw std::invalid_argument(part);
      }
      return wordOf(octets);
    });
  }

  bool fieldHolds(const std::string& name, const std::string& text,
                  const SonicPacket& packet) const {
    if (text == "disabled") return true;
    if (name == "SRC_IP") return packet.isIp() && ip(text).has(packet[Field::src]);
    if (name == "DST_IP") return packet.isIp() && ip(text).has(packet[Field::dst]);
    if (name == "SRC_IPV6") return packet.isIp6() && ip6(text).has(packet[Field::src6]);
    if (name == "DST_IPV6") return packet.isIp6() && ip6(text).has(packet[Field::dst6]);
    if (name == "SRC_MAC") return mac(text).has(packet[Field::smac]);
    if (name == "DST_MAC") return mac(text).has(packet[Field::dmac]);
    if (name == "ETHER_TYPE") return number(text, 0xFFFF).has(packet[Field::ethertype]);
    if (name == "OUTER_VLAN_ID") return number(text, 0xFFF).has(packet[Field::vlan]);
    if (name == "IP_PROTOCOL") return number(text, 0xFF).has(packet[Field::proto]);
    if (name == "IPV6_NEXT_HEADER") {
      return packet.isIp6() && number(text, 0xFF).has(packet[Field::proto]);
    }
    if (name == "L4_SRC_PORT") return number(text, 0xFFFF).has(packet[Field::sport]);
    if (name == "L4_DST_PORT") return number(text, 0xFFFF).has(packet[Field::dport]);
    if (name == "TOS") return number(text, 0xFF).has(packet[Field::tc]);
    if (name == "DSCP") return number(text, 0x3F).has(packet[Field::tc] >> 2);
    if (name == "ECN") return number(text, 3).has(packet[Field::tc] & 3);
    if (name == "TC") return number(text, 0xFF).has(packet.trafficClass);
    if (name == "TCP_FLAGS") return number(text, 0x3F).has(packet.tcpFlags);
    if (name == "IN_PORTS") return packet.inPort == 1;
    if (name.starts_with("ICMP")) return icmpHolds(name, text, packet);
    if (name == "ACL_IP_TYPE") return typeHolds(text.substr(0, text.find('&')), packet);
    if (name == "ACL_IP_FRAG") return fragmentHolds(text.substr(0, text.find('&')), packet);
    if (name == "ACL_RANGE_TYPE") return rangesHold(text, packet);
    throw std::invalid_argument(name);
  }

  static bool icmpHolds(const std::string& name, const std::string& text,
                        const SonicPacket& packet) {
    bool const is6 = name.starts_with("ICMPV6_");
    if (is6 ? !packet.isIp6() || packet[Field::proto] != 58
            : !packet.isIp() || packet[Field::proto] != 1) {
      return false;
    }
    return number(text, 0xFF)
        .has(name.ends_with("TYPE") ? packet[Field::sport] >> 8 : packet[Field::dport] & 0xFF);
  }

  static bool typeHolds(const std::string& type, const SonicPacket& packet) {
    static const std::map<std::string, bool (*)(const SonicPacket&)> types = {
        {"ANY", [](const SonicPacket&) { return true; }},
        {"IP", [](const SonicPacket& each) { return each.isIp() || each.isIp6(); }},
        {"NON_IP", [](const SonicPacket& each) { return !each.isIp() && !each.isIp6(); }},
        {"IPV4ANY", [](const SonicPacket& each) { return each.isIp(); }},
        {"NON_IPV4", [](const SonicPacket& each) { return !each.isIp(); }},
        {"IPV6ANY", [](const SonicPacket& each) { return each.isIp6(); }},
        {"NON_IPV6", [](const SonicPacket& each) { return !each.isIp6(); }},
        {"ARP", [](const SonicPacket& each) { return each[Field::ethertype] == 0x0806; }},
    };
    return types.at(type.substr(sizeof "SAI_ACL_IP_TYPE_" - 1))(packet);
  }

  static bool fragmentHolds(const std::string& fragment, const SonicPacket& packet) {
    static const std::map<std::string, bool (*)(unsigned)> fragments = {
        {"ANY", [](unsigned each) { return each != 0; }},
        {"NON_FRAG", [](unsigned each) { return each == 0; }},
        {"HEAD", [](unsigned each) { return each == 1; }},
        {"NON_FRAG_OR_HEAD", [](unsigned each) { return each != 2; }},
        {"NON_HEAD", [](unsigned each) { return each == 2; }},
    };
    return fragments.at(fragment.substr(sizeof "SAI_ACL_IP_FRAG_" - 1))(packet.fragment);
  }

  bool rangesHold(const std::string& text, const SonicPacket& packet) const {
    for (std::size_t at = text.find("oid:"); at != text.npos; at = text.find("oid:", at + 1)) {
      nlohmann::json const& range = ranges_.at(std::stoull(text.substr(at + 4), nullptr, 0));
      std::string const limit = range.at("SAI_ACL_RANGE_ATTR_LIMIT");
      Word const low = std::stoull(limit);
      Word const high = std::stoull(limit.substr(limit.find(',') + 1));
      std::string const type = range.at("SAI_ACL_RANGE_ATTR_TYPE");
      Word value = 0;
      if (type == "SAI_ACL_RANGE_TYPE_L4_SRC_PORT_RANGE") {
        value = packet[Field::sport];
      } else if (type == "SAI_ACL_RANGE_TYPE_L4_DST_PORT_RANGE") {
        value = packet[Field::dport];
      } else if (type == "SAI_ACL_RANGE_TYPE_OUTER_VLAN") {
        value = packet[Field::vlan];
      } else if (type == "SAI_ACL_RANGE_TYPE_PACKET_LENGTH") {
        value = packet.frameLength;
      } else {
        throw std::invalid_argument(type);
      }
      if (value < low || high < value) return false;
    }
    return true;
  }

  std::map<std::uint64_t, nlohmann::json> entries_;
  std::map<std::uint64_t, nlohmann::json> ranges_;
};

}  // namespace tcamshow
