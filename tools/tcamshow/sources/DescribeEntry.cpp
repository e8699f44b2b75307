#include "sources/DescribeEntry.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>

#include "io/JsonText.h"
#include "snapshot/AddressText.h"
#include "sources/PortQualifiers.h"

namespace tcamshow {
namespace {

struct Protocol {
  std::uint32_t number;
  std::string_view name;
};
constexpr Protocol protocols[] = {
    {protocolIcmp, "icmp"},
    {2, "igmp"},
    {4, "ipip"},
    {protocolTcp, "tcp"},
    {protocolUdp, "udp"},
    {46, "rsvp"},
    {47, "gre"},
    {50, "esp"},
    {51, "ahp"},
    {protocolIcmp6, "icmpv6"},
    {89, "ospf"},
    {103, "pim"},
    {115, "l2tp"},
};
constexpr std::string_view flagNames[] = {"fin", "syn", "rst", "psh", "ack", "urg"};

class Describer {
 public:
  Describer(const Entry& entry, std::string& out) : entry_(entry), out_(out) {}

  void describe() {
    word(entry_.action);
    bool const isMac = entry_.table == Table::mac;
    if (!isMac) protocol();
    addressed(isMac, VelmorTcam::qualifierSrcMac, VelmorTcam::qualifierSrcIp,
              VelmorTcam::qualifierSrcIp6, VelmorTcam::qualifierSrcIp6Alt);
    ports(VelmorTcam::qualifierL4SrcPort, VelmorTcam::rangeCheckerL4SrcPort, 0xFF00, " type ");
    addressed(isMac, VelmorTcam::qualifierDstMac, VelmorTcam::qualifierDstIp,
              VelmorTcam::qualifierDstIp6, VelmorTcam::qualifierDstIp6Alt);
    ports(VelmorTcam::qualifierL4DstPort, VelmorTcam::rangeCheckerL4DstPort, 0xFF, " code ");
    if (!isMac) {
      // The fields of the frame come after those of the packet.
      mac(" from ", VelmorTcam::qualifierSrcMac);
      mac(" to ", VelmorTcam::qualifierDstMac);
    }
    flags();
    number(" vlan ", VelmorTcam::qualifierOuterVlanId, 0xFFF);
    etherType();
    number(" dscp ", VelmorTcam::qualifierDSCP, 0x3F);
    number(" traffic-class ", VelmorTcam::qualifierIp6TrafficClass, 0xFF);
    number(" hop-limit ", VelmorTcam::qualifierIp6HopLimit, 0xFF);
    number(" fragment ", VelmorTcam::qualifierIpFrag, 3);
    range(" length ", VelmorTcam::rangeCheckerIpLength);
  }

 private:
  const Qualifier* find(std::uint8_t type) const {
    auto const at = std::find_if(entry_.qualifiers.begin(), entry_.qualifiers.end(),
                                 [type](const Qualifier& each) { return each.type == type; });
    return at == entry_.qualifiers.end() ? nullptr : &*at;
  }

  void word(std::string_view text) {
    if (!out_.empty() && !text.empty()) out_ += ' ';
    out_ += text;
  }

  void protocol() {
    const Qualifier* const qualifier = find(VelmorTcam::qualifierIpProtocol);
    if (qualifier == nullptr) return word(entry_.table == Table::ip6 ? "ipv6" : "ip");
    word("");
    auto const* const known =
        std::find_if(std::begin(protocols), std::end(protocols),
                     [&](const Protocol& each) { return each.number == qualifier->value; });
    if (qualifier->mask == 255 && known != std::end(protocols)) return word(known->name);
    word("protocol ");
    masked(*qualifier, 255);
  }

  void masked(const Qualifier& qualifier, std::uint32_t full) {
    appendNumber(out_, qualifier.value);
    if (qualifier.mask == full) return;
    out_ += '/';
    appendNumber(out_, qualifier.mask);
  }

  void number(std::string_view name, std::uint8_t type, std::uint32_t full) {
    const Qualifier* const qualifier = find(type);
    if (qualifier == nullptr) return;
    out_ += name;
    masked(*qualifier, full);
  }

  void etherType() {
    const Qualifier* const qualifier = find(VelmorTcam::qualifierEtherType);
    if (qualifier == nullptr) return;
    constexpr const char* digits = "0123456789abcdef";
    out_ += " ethertype 0x";
    for (unsigned shift = 16; shift != 0;) out_ += digits[qualifier->value >> (shift -= 4) & 15];
    if (qualifier->mask == 0xFFFF) return;
    out_ += '/';
    appendNumber(out_, qualifier->mask);
  }

  /// One side of the match: an address of whatever family, or any.
  void addressed(bool isMac, std::uint8_t macType, std::uint8_t ipType, std::uint8_t ip6Type,
                 std::uint8_t ip6AltType) {
    const Qualifier* qualifier = isMac ? find(macType) : nullptr;
    for (std::uint8_t const type : {ipType, ip6Type, ip6AltType}) {
      if (qualifier == nullptr) qualifier = find(type);
    }
    out_ += ' ';
    if (qualifier == nullptr) {
      out_ += "any";
    } else {
      address(*qualifier);
    }
  }

  void mac(std::string_view name, std::uint8_t type) {
    const Qualifier* const qualifier = find(type);
    if (qualifier == nullptr) return;
    out_ += name;
    address(*qualifier);
  }

  void address(const Qualifier& qualifier) {
    switch (qualifier.kind) {
      case QualifierKind::word:
        return masked(qualifier, 0xFFFFFFFF);
      case QualifierKind::ip: {
        auto const ones = static_cast<unsigned>(std::countl_one(qualifier.mask));
        return address(qualifier, appendIp, ones, 32, ipMask(ones) == qualifier.mask);
      }
      case QualifierKind::ip6: {
        unsigned const ones = leadingOnes(qualifier.ip6.mask);
        return address(qualifier.ip6, appendIp6, ones, 128, ip6Mask(ones) == qualifier.ip6.mask);
      }
      case QualifierKind::mac:
        // A prefix of a MAC address is not written as one.
        return address(qualifier.mac, appendMac, leadingOnes(qualifier.mac.mask), 48, false);
    }
  }

  template <class Words, class AppendAddress>
  void address(const Words& words, AppendAddress appendAddress, unsigned ones, unsigned all,
               bool isPrefix) {
    if (ones == all) out_ += "host ";
    appendAddress(out_, words.value);
    if (ones == all) return;
    out_ += '/';
    if (isPrefix) {
      appendNumber(out_, ones);
    } else {
      appendAddress(out_, words.mask);
    }
  }

  template <class Octets>
  static unsigned leadingOnes(const Octets& octets) {
    unsigned ones = 0;
    for (std::uint8_t const octet : octets) {
      ones += static_cast<unsigned>(std::countl_one(octet));
      if (octet != 0xFF) break;
    }
    return ones;
  }

  /// A port's qualifier and its range checker. With ICMP the word carries the type or the code, in
  /// the bits of `icmpMask`.
  void ports(std::uint8_t type, std::uint8_t rangeType, std::uint32_t icmpMask,
             std::string_view icmpName) {
    const Qualifier* const qualifier = find(type);
    const Qualifier* const protocol = find(VelmorTcam::qualifierIpProtocol);
    bool const isIcmp = protocol != nullptr && protocol->mask == 255 &&
                        (protocol->value == protocolIcmp || protocol->value == protocolIcmp6);
    if (qualifier != nullptr && isIcmp && qualifier->mask == icmpMask) {
      out_ += icmpName;
      appendNumber(out_, icmpMask == 0xFF ? qualifier->value : qualifier->value >> 8);
    } else if (qualifier != nullptr) {
      std::uint32_t const open = ~qualifier->mask & largestPort;
      bool const isBlock = (open & (open + 1)) == 0 && qualifier->mask <= largestPort;
      if (open == 0 || !isBlock) {
        out_ += " eq ";
        masked(*qualifier, largestPort);
      } else {
        bounds(" range ", qualifier->value & qualifier->mask, qualifier->value | open);
      }
    }
    range(" range ", rangeType);
  }

  void range(std::string_view name, std::uint8_t type) {
    for (const RangeChecker& each : entry_.rangeCheckers) {
      if (each.type == type) bounds(name, each.low, each.high);
    }
  }

  template <class Number>
  void bounds(std::string_view name, Number low, Number high) {
    out_ += name;
    appendNumber(out_, low);
    out_ += ' ';
    appendNumber(out_, high);
  }

  void flags() {
    const Qualifier* const qualifier = find(VelmorTcam::qualifierTcpControl);
    if (qualifier == nullptr) return;
    out_ += " flags ";
    bool isFirst = true;
    for (unsigned bit = 0; bit != std::size(flagNames); ++bit) {
      if ((qualifier->mask >> bit & 1) == 0) continue;
      if (!isFirst) out_ += ',';
      isFirst = false;
      if ((qualifier->value >> bit & 1) == 0) out_ += '!';
      out_ += flagNames[bit];
    }
  }

  const Entry& entry_;
  std::string& out_;
};

}  // namespace

void appendDescription(const Entry& entry, std::string& out) { Describer(entry, out).describe(); }

}  // namespace tcamshow
