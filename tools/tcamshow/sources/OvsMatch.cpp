#include "sources/OvsMatch.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <system_error>

#include "io/SafeText.h"
#include "snapshot/AddressText.h"
#include "sources/NumberText.h"
#include "sources/PortQualifiers.h"

namespace tcamshow {
namespace {

constexpr std::uint32_t noNumber = 0xFFFFFFFF;
constexpr std::uint32_t protocolSctp = 132;
constexpr std::uint32_t typeIp = 0x0800;
constexpr std::uint32_t typeIp6 = 0x86DD;

/// The switch's number for frames that have a length in place of an ether type.
constexpr std::uint32_t noEtherType = 0x05FF;

constexpr std::uint32_t vlanMask = 0xFFF;
constexpr std::uint32_t dscpMask = 0x3F;
/// In a tag: the bit that says that there is one.
constexpr std::uint32_t tagBit = 0x1000;
constexpr std::uint32_t fragmentMask = 3;
constexpr std::uint32_t notAFragment = 1;
constexpr std::uint32_t aFragment = 3;
/// The flags of TCP that a qualifier holds, and all of them.
constexpr std::uint32_t sixFlags = 0x3F;
constexpr std::uint32_t allFlags = 0xFFFF;

struct KnownName {
  std::string_view name;
  OvsField field;
  std::uint32_t etherType = noNumber;  ///< of a word
  std::uint32_t protocol = noNumber;   ///< of a word; or the only protocol that has the field
};
constexpr KnownName knownNames[] = {
    {"cookie", OvsField::ignored},
    {"duration", OvsField::ignored},
    {"idle_age", OvsField::ignored},
    {"hard_age", OvsField::ignored},
    {"idle_timeout", OvsField::ignored},
    {"hard_timeout", OvsField::ignored},
    {"importance", OvsField::ignored},
    {"reset_counts", OvsField::ignored},
    {"send_flow_rem", OvsField::ignored},
    {"check_overlap", OvsField::ignored},
    {"no_packet_counts", OvsField::ignored},
    {"no_byte_counts", OvsField::ignored},
    {"table", OvsField::table},
    {"n_packets", OvsField::packets},
    {"n_bytes", OvsField::bytes},
    {"priority", OvsField::priority},
    {"ip", OvsField::protocol, typeIp},
    {"icmp", OvsField::protocol, typeIp, protocolIcmp},
    {"tcp", OvsField::protocol, typeIp, protocolTcp},
    {"udp", OvsField::protocol, typeIp, protocolUdp},
    {"sctp", OvsField::protocol, typeIp, protocolSctp},
    {"ipv6", OvsField::protocol, typeIp6},
    {"ip6", OvsField::protocol, typeIp6},
    {"icmp6", OvsField::protocol, typeIp6, protocolIcmp6},
    {"icmpv6", OvsField::protocol, typeIp6, protocolIcmp6},
    {"tcp6", OvsField::protocol, typeIp6, protocolTcp},
    {"udp6", OvsField::protocol, typeIp6, protocolUdp},
    {"sctp6", OvsField::protocol, typeIp6, protocolSctp},
    {"arp", OvsField::protocol, 0x0806},
    {"rarp", OvsField::protocol, 0x8035},
    {"mpls", OvsField::protocol, 0x8847},
    {"mplsm", OvsField::protocol, 0x8848},
    {"dl_type", OvsField::etherType},
    {"eth_type", OvsField::etherType},
    {"dl_vlan", OvsField::vlan},
    {"vlan_tci", OvsField::vlanTci},
    {"vlan_vid", OvsField::vlanTci},
    {"dl_src", OvsField::sourceMac},
    {"eth_src", OvsField::sourceMac},
    {"dl_dst", OvsField::destinationMac},
    {"eth_dst", OvsField::destinationMac},
    {"nw_src", OvsField::sourceIp},
    {"ip_src", OvsField::sourceIp},
    {"nw_dst", OvsField::destinationIp},
    {"ip_dst", OvsField::destinationIp},
    {"ipv6_src", OvsField::sourceIp6},
    {"ipv6_dst", OvsField::destinationIp6},
    {"nw_proto", OvsField::ipProtocol},
    {"ip_proto", OvsField::ipProtocol},
    {"nw_tos", OvsField::tos},
    {"ip_dscp", OvsField::dscp},
    {"nw_ttl", OvsField::ttl},
    {"ip_ttl", OvsField::ttl},
    {"nw_frag", OvsField::fragment},
    {"ip_frag", OvsField::fragment},
    {"tcp_flags", OvsField::tcpFlags},
    {"tp_src", OvsField::sourcePort},
    {"tcp_src", OvsField::sourcePort, noNumber, protocolTcp},
    {"udp_src", OvsField::sourcePort, noNumber, protocolUdp},
    {"sctp_src", OvsField::sourcePort, noNumber, protocolSctp},
    {"tp_dst", OvsField::destinationPort},
    {"tcp_dst", OvsField::destinationPort, noNumber, protocolTcp},
    {"udp_dst", OvsField::destinationPort, noNumber, protocolUdp},
    {"sctp_dst", OvsField::destinationPort, noNumber, protocolSctp},
    {"icmp_type", OvsField::icmpType},
    {"icmpv6_type", OvsField::icmpType, noNumber, protocolIcmp6},
    {"icmp_code", OvsField::icmpCode},
    {"icmpv6_code", OvsField::icmpCode, noNumber, protocolIcmp6},
};

/// The index of each known name, found by its hash. Equal hashes take the slots behind.
class NameIndex {
 public:
  static constexpr std::uint8_t none = 0xFF;

  constexpr NameIndex() noexcept {
    slots_.fill(none);
    for (std::size_t i = 0; i != std::size(knownNames); ++i) {
      std::size_t slot = hash(knownNames[i].name);
      while (slots_[slot] != none) slot = (slot + 1) % slotCount;
      slots_[slot] = static_cast<std::uint8_t>(i);
    }
  }

  constexpr std::uint8_t find(std::string_view name) const noexcept {
    std::size_t slot = hash(name);
    while (slots_[slot] != none && knownNames[slots_[slot]].name != name) {
      slot = (slot + 1) % slotCount;
    }
    return slots_[slot];
  }

 private:
  static constexpr std::size_t slotCount = 256;
  static_assert(std::size(knownNames) < slotCount / 2);

  // Some of the characters tell the known names apart well enough.
  static constexpr std::size_t hash(std::string_view name) noexcept {
    std::size_t const size = name.size();
    if (size == 0) return 0;
    auto const at = [name](std::size_t i) {
      return std::size_t{static_cast<unsigned char>(name[i])};
    };
    return (size + at(0) * 11 + at(size / 2) * 19 + at(size - 1) * 5) % slotCount;
  }

  std::array<std::uint8_t, slotCount> slots_{};
};
constexpr NameIndex names;

constexpr std::string_view flagNames[] = {"fin", "syn", "rst", "psh", "ack",
                                          "urg", "ece", "cwr", "ns"};

/// The bit of one flag: its name, or its bit in hexadecimal in brackets. 0 if it is none.
std::uint32_t flagByName(std::string_view name) noexcept {
  for (std::size_t bit = 0; bit != std::size(flagNames); ++bit) {
    if (flagNames[bit] == name) return 1U << bit;
  }
  std::uint32_t bits = 0;
  if (name.size() < 3 || name.front() != '[' || name.back() != ']') return 0;
  const char* const end = name.data() + name.size() - 1;
  auto const [at, error] = std::from_chars(name.data() + 1, end, bits, 16);
  return at == end && error == std::errc() && bits <= allFlags ? bits : 0;
}

/// The fields of which an entry has one qualifier share a bit.
constexpr std::uint64_t seenBit(OvsField field) noexcept {
  if (field == OvsField::vlanTci) field = OvsField::vlan;
  if (field == OvsField::dscp) field = OvsField::tos;
  return std::uint64_t{1} << static_cast<unsigned>(field);
}

}  // namespace

OvsPart ovsPart(std::string_view text, std::size_t nameSize) noexcept {
  OvsPart part;
  part.text = text;
  std::uint8_t const index = names.find(text.substr(0, nameSize));
  if (index == NameIndex::none) return part;
  part.index = index;
  part.field = knownNames[index].field;
  bool const isWord = nameSize == text.size();
  if (!isWord) part.value = text.substr(nameSize + 1);
  // A word has no value, and a field has one. Otherwise nobody knows what it is.
  if (isMatch(part.field) && isWord != (part.field == OvsField::protocol)) {
    part.field = OvsField::other;
  }
  return part;
}

void OvsMatch::clear() noexcept {
  parts_.clear();
  seen_ = 0;
  etherType_ = none;
  protocol_ = none;
  other_.clear();
  moreOther_ = {};
}

void OvsMatch::add(const OvsPart& part) {
  if (part.field != OvsField::other) {
    if ((seen_ & seenBit(part.field)) != 0) fail(part, " stands twice");
    seen_ |= seenBit(part.field);
  }
  parts_.push_back(part);
  // The other fields depend on these, wherever they stand.
  if (part.field == OvsField::protocol) {
    const KnownName& known = knownNames[part.index];
    setEtherType(part, known.etherType);
    if (known.protocol != none) setProtocol(part, known.protocol);
  } else if (part.field == OvsField::etherType) {
    Masked const type = masked(part, 0xFFFF);
    setEtherType(part, type.mask == 0xFFFF ? type.value : none);
  } else if (part.field == OvsField::ipProtocol) {
    Masked const protocol = masked(part, 0xFF);
    if (protocol.mask == 0xFF) setProtocol(part, protocol.value);
  }
}

void OvsMatch::setEtherType(const OvsPart& part, std::uint32_t type) {
  if (etherType_ != none) fail(part, ": the flow names its ether type twice");
  etherType_ = type;
}

void OvsMatch::setProtocol(const OvsPart& part, std::uint32_t protocol) {
  if (protocol_ != none) fail(part, ": the flow names its protocol twice");
  protocol_ = protocol;
}

void OvsMatch::fill(Entry& entry) {
  entry.table = isIp() ? Table::ip : isIp6() ? Table::ip6 : Table::mac;
  auto const append = [this](std::string_view text) {
    if (!other_.empty()) other_ += ',';
    other_ += text;
  };
  for (const OvsPart& part : parts_) {
    if (!addQualifier(part, entry)) append(part.text);
  }
  if (!moreOther_.empty()) append(moreOther_);
  entry.otherMatch = other_;
}

bool OvsMatch::addQualifier(const OvsPart& part, Entry& entry) const {
  auto const addWord = [&entry](std::uint8_t type, std::uint32_t value, std::uint32_t mask) {
    entry.qualifiers.push_back(wordQualifier(type, value, mask));
  };
  switch (part.field) {
    case OvsField::protocol:
      if (entry.table == Table::mac) addWord(VelmorTcam::qualifierEtherType, etherType_, 0xFFFF);
      if (knownNames[part.index].protocol != none) {
        addWord(VelmorTcam::qualifierIpProtocol, protocol_, 0xFF);
      }
      return true;
    case OvsField::etherType:
      if (entry.table == Table::mac) {
        Masked const type = masked(part, 0xFFFF);
        if (type.value == noEtherType) return false;
        addWord(VelmorTcam::qualifierEtherType, type.value, type.mask);
      }
      return true;
    case OvsField::vlan: {
      Masked const vlan = masked(part, 0xFFFF);
      bool const isWhole = part.value.find('/') == part.value.npos;
      if (vlan.value > vlanMask || (!isWhole && vlan.mask > vlanMask)) return false;
      addWord(VelmorTcam::qualifierOuterVlanId, vlan.value, isWhole ? vlanMask : vlan.mask);
      return true;
    }
    case OvsField::vlanTci:
      return addVlanTci(part, entry);
    case OvsField::sourceMac:
      addMac(part, VelmorTcam::qualifierSrcMac, entry);
      return true;
    case OvsField::destinationMac:
      addMac(part, VelmorTcam::qualifierDstMac, entry);
      return true;
    case OvsField::sourceIp:
      return addIp(part, VelmorTcam::qualifierSrcIp, entry);
    case OvsField::destinationIp:
      return addIp(part, VelmorTcam::qualifierDstIp, entry);
    case OvsField::sourceIp6:
      return addIp6(part, VelmorTcam::qualifierSrcIp6, entry);
    case OvsField::destinationIp6:
      return addIp6(part, VelmorTcam::qualifierDstIp6, entry);
    case OvsField::ipProtocol: {
      if (!isIp() && !isIp6()) return false;  // the operation of an ARP packet
      Masked const protocol = masked(part, 0xFF);
      addWord(VelmorTcam::qualifierIpProtocol, protocol.value, protocol.mask);
      return true;
    }
    case OvsField::tos: {
      if (!isIp() && !isIp6()) return false;
      // The low two bits are another field. Without a mask they must be 0, and are not compared.
      Masked const tos = masked(part, 0xFF);
      bool const isWhole = part.value.find('/') == part.value.npos;
      if (((isWhole ? tos.value : tos.mask) & 3) != 0) return false;
      addWord(VelmorTcam::qualifierDSCP, tos.value >> 2, tos.mask >> 2);
      return true;
    }
    case OvsField::dscp: {
      if (!isIp() && !isIp6()) return false;
      Masked const dscp = masked(part, dscpMask);
      addWord(VelmorTcam::qualifierDSCP, dscp.value, dscp.mask);
      return true;
    }
    case OvsField::ttl: {
      Masked const ttl = masked(part, 0xFF);
      if (!isIp6()) return false;
      addWord(VelmorTcam::qualifierIp6HopLimit, ttl.value, ttl.mask);
      return true;
    }
    case OvsField::fragment:
      return addFragment(part, entry);
    case OvsField::tcpFlags:
      return addFlags(part, entry);
    case OvsField::sourcePort:
      return addPort(part, VelmorTcam::qualifierL4SrcPort, entry);
    case OvsField::destinationPort:
      return addPort(part, VelmorTcam::qualifierL4DstPort, entry);
    case OvsField::icmpType:
    case OvsField::icmpCode:
      return addIcmpField(part, entry);
    case OvsField::other:
    case OvsField::ignored:
    case OvsField::table:
    case OvsField::packets:
    case OvsField::bytes:
    case OvsField::priority:
      break;
  }
  return false;
}

bool OvsMatch::addIp(const OvsPart& part, std::uint8_t type, Entry& entry) const {
  if (!isIp()) return false;
  std::size_t const slash = part.value.find('/');
  Qualifier qualifier = wordQualifier(type, 0, 0xFFFFFFFF, QualifierKind::ip);
  bool isGood = ipFromText(part.value.substr(0, slash), qualifier.value);
  if (slash != part.value.npos) {
    std::string_view const mask = part.value.substr(slash + 1);
    std::uint64_t length = 0;
    if (numberFromText(mask, 32, length)) {
      qualifier.mask = ipMask(static_cast<unsigned>(length));
    } else {
      isGood = isGood && ipFromText(mask, qualifier.mask);
    }
  }
  if (!isGood) fail(part, ": " + inQuotes(part.value) + " is not an IPv4 address");
  entry.qualifiers.push_back(qualifier);
  return true;
}

bool OvsMatch::addIp6(const OvsPart& part, std::uint8_t type, Entry& entry) const {
  if (!isIp6()) return false;
  std::size_t const slash = part.value.find('/');
  Ip6Octets value{};
  Ip6Octets mask = ip6Mask(128);
  bool isGood = ip6FromText(part.value.substr(0, slash), value);
  if (slash != part.value.npos) {
    std::string_view const text = part.value.substr(slash + 1);
    std::uint64_t length = 0;
    if (numberFromText(text, 128, length)) {
      mask = ip6Mask(static_cast<unsigned>(length));
    } else {
      isGood = isGood && ip6FromText(text, mask);
    }
  }
  if (!isGood) fail(part, ": " + inQuotes(part.value) + " is not an IPv6 address");
  entry.qualifiers.push_back(ip6Qualifier(type, value, mask));
  return true;
}

void OvsMatch::addMac(const OvsPart& part, std::uint8_t type, Entry& entry) const {
  std::size_t const slash = part.value.find('/');
  MacOctets value{};
  MacOctets mask;
  mask.fill(0xFF);
  bool isGood = macFromText(part.value.substr(0, slash), value);
  if (slash != part.value.npos) {
    isGood = isGood && macFromText(part.value.substr(slash + 1), mask);
  }
  if (!isGood) fail(part, ": " + inQuotes(part.value) + " is not a MAC address");
  entry.qualifiers.push_back(macQualifier(type, value, mask));
}

// A tag of the VLAN's number and the bit that says that there is a tag. With its priority, or
// without that bit, it is no VLAN alone.
bool OvsMatch::addVlanTci(const OvsPart& part, Entry& entry) const {
  constexpr std::uint32_t plainMask = vlanMask | tagBit;
  Masked tag = masked(part, 0xFFFF);
  if (knownNames[part.index].name == "vlan_vid" && part.value.find('/') == part.value.npos) {
    tag.mask = plainMask;
  }
  if (tag.mask != plainMask || (tag.value & tagBit) == 0) return false;
  entry.qualifiers.push_back(
      wordQualifier(VelmorTcam::qualifierOuterVlanId, tag.value & vlanMask, vlanMask));
  return true;
}

bool OvsMatch::addFragment(const OvsPart& part, Entry& entry) const {
  bool const isYes = part.value == "yes";
  if ((!isYes && part.value != "no") || (!isIp() && !isIp6())) return false;
  entry.qualifiers.push_back(
      wordQualifier(VelmorTcam::qualifierIpFrag, isYes ? aFragment : notAFragment, fragmentMask));
  return true;
}

bool OvsMatch::addFlags(const OvsPart& part, Entry& entry) const {
  Masked const flags = this->flags(part);
  if (!hasProtocol(protocolTcp) || flags.mask > sixFlags || flags.value > sixFlags) return false;
  entry.qualifiers.push_back(
      wordQualifier(VelmorTcam::qualifierTcpControl, flags.value, flags.mask));
  return true;
}

bool OvsMatch::addPort(const OvsPart& part, std::uint8_t type, Entry& entry) const {
  Masked const port = masked(part, largestPort);
  std::uint32_t const wanted = knownNames[part.index].protocol;
  bool const hasPorts = wanted != none ? hasProtocol(wanted)
                                       : hasProtocol(protocolTcp) || hasProtocol(protocolUdp) ||
                                             hasProtocol(protocolSctp);
  if (!hasPorts) return false;
  entry.qualifiers.push_back(wordQualifier(type, port.value, port.mask));
  return true;
}

bool OvsMatch::addIcmpField(const OvsPart& part, Entry& entry) const {
  Masked const field = masked(part, 0xFF);
  bool const isIcmp6 = isIp6() && protocol_ == protocolIcmp6;
  bool const isIcmp = isIp() && protocol_ == protocolIcmp;
  if (!isIcmp6 && (!isIcmp || knownNames[part.index].protocol == protocolIcmp6)) return false;
  bool const isType = part.field == OvsField::icmpType;
  addIcmp(entry, isType ? field.value << 8 : field.value, isType ? field.mask << 8 : field.mask);
  return true;
}

bool OvsMatch::isIp() const noexcept { return etherType_ == typeIp; }
bool OvsMatch::isIp6() const noexcept { return etherType_ == typeIp6; }
bool OvsMatch::hasProtocol(std::uint32_t protocol) const noexcept {
  return protocol_ == protocol && (isIp() || isIp6());
}

// --- values

void OvsMatch::fail(const OvsPart& part, std::string_view message) const {
  lines_.fail(shownName(part.text.substr(0, part.text.find('='))) + std::string(message));
}

OvsMatch::Masked OvsMatch::masked(const OvsPart& part, std::uint32_t largest) const {
  std::size_t const slash = part.value.find('/');
  std::uint64_t value = 0;
  std::uint64_t mask = largest;
  if (!numberFromText(part.value.substr(0, slash), largest, value) ||
      (slash != part.value.npos && !numberFromText(part.value.substr(slash + 1), largest, mask))) {
    fail(part, ": " + inQuotes(part.value) + " is not a number from 0 to " +
                   std::to_string(largest) + ", with or without a mask");
  }
  return {static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(mask)};
}

// +syn-ack: these flags, set or not. syn|ack: these and no others. Else a number.
OvsMatch::Masked OvsMatch::flags(const OvsPart& part) const {
  std::string_view rest = part.value;
  if (rest.empty() || (rest.front() >= '0' && rest.front() <= '9')) return masked(part, allFlags);
  bool const isSigned = rest.front() == '+' || rest.front() == '-';
  Masked result;
  while (!rest.empty()) {
    bool isSet = true;
    if (isSigned) {
      isSet = rest.front() == '+';
      rest.remove_prefix(1);
    }
    std::size_t const end = rest.find_first_of(isSigned ? "+-" : "|");
    std::uint32_t const flag = flagByName(rest.substr(0, end));
    if (flag == 0) {
      fail(part, ": " + inQuotes(rest.substr(0, end)) +
                     " is not a flag of TCP: fin, syn, rst, psh, ack, urg, ece, cwr, ns");
    }
    result.mask |= flag;
    if (isSet) result.value |= flag;
    if (end == rest.npos) break;
    // A sign belongs to the next flag; a bar stands between two.
    rest.remove_prefix(isSigned ? end : end + 1);
  }
  if (!isSigned) result.mask = allFlags;
  return result;
}

}  // namespace tcamshow
