#include "sources/OpenconfigEntry.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "io/InputError.h"
#include "io/Nearest.h"
#include "io/SafeText.h"
#include "sources/DescribeEntry.h"
#include "sources/PortQualifiers.h"

namespace tcamshow {
namespace {

// So that all texts of an entry fit into a line of a snapshot, however they are escaped there.
constexpr std::size_t longestText = std::size_t{32} << 10;

constexpr std::uint32_t etherTypeIp = 0x0800;
constexpr std::uint32_t etherTypeIp6 = 0x86DD;
constexpr std::uint32_t vlanMask = 4095;

struct NamedNumber {
  std::string_view name;
  std::uint32_t number;
};

constexpr NamedNumber protocolNames[] = {
    {"IP_ICMP", protocolIcmp},    {"IP_IGMP", 2},  {"IP_IN_IP", 4},  {"IP_TCP", protocolTcp},
    {"IP_UDP", protocolUdp},      {"IP_RSVP", 46}, {"IP_GRE", 47},   {"IP_AUTH", 51},
    {"IP_ICMPV6", protocolIcmp6}, {"IP_PIM", 103}, {"IP_L2TP", 115},
};

constexpr NamedNumber etherTypeNames[] = {
    {"ETHERTYPE_IPV4", etherTypeIp},  {"ETHERTYPE_ARP", 0x0806},  {"ETHERTYPE_VLAN", 0x8100},
    {"ETHERTYPE_IPV6", etherTypeIp6}, {"ETHERTYPE_MPLS", 0x8847}, {"ETHERTYPE_ROCE", 0x8915},
    {"ETHERTYPE_LLDP", 0x88CC},
};

constexpr NamedNumber tcpFlagNames[] = {
    {"TCP_FIN", 1}, {"TCP_SYN", 2},  {"TCP_RST", 4},
    {"TCP_PSH", 8}, {"TCP_ACK", 16}, {"TCP_URG", 32},
};

template <std::size_t count>
const NamedNumber* find(const NamedNumber (&names)[count], std::string_view name) {
  const NamedNumber* const row =
      std::find_if(std::begin(names), std::end(names),
                   [&](const NamedNumber& each) { return each.name == name; });
  return row == std::end(names) ? nullptr : row;
}

/// False when the text is no whole number from `smallest` to `largest`.
bool parseNumber(std::string_view text, std::uint32_t smallest, std::uint32_t largest,
                 std::uint32_t& result) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  const char* const end = text.data() + text.size();
  auto const [at, error] = std::from_chars(text.data(), end, result, base);
  return error == std::errc() && at == end && result >= smallest && result <= largest;
}

bool isScalar(const JsonValue& value) { return value.isNumber() || value.isString(); }

/// Reads one entry, section by section.
class EntryReader {
 public:
  EntryReader(AclDocument& document, JsonValue& value) : document_(document), value_(value) {}

  AclEntry read() {
    static constexpr std::string_view names[] = {
        "config", "actions", "l2", "ip", "transport", "icmp", "input_interface", "input-interface"};
    if (!value_.isObject()) document_.fail(value_, value_.shown() + " is not an object");
    document_.eachKnown(value_, "", names, [&](std::size_t index, auto& path, JsonValue& value) {
      switch (index) {
        case 0:
          return readConfig(path, value);
        case 1:
          return readActions(path, value);
        case 2:
          return readLayer2(path, value);
        case 3:
          return readIp(path, value);
        case 4:
          return readTransport(path, value);
        case 5:
          return readIcmp(path, value);
        default:
          return readInputInterface(path, value);
      }
    });
    if (!hasSequence_) document_.failMember(value_, "config.sequence-id", " is missing");
    if (!hasAction_) {
      document_.failMember(value_, "actions.config.forwarding-action", " is missing");
    }
    checkProtocol();
    return entry_;
  }

 private:
  /// Calls `use(index, path, value)` for each member of `section`'s one member, `config`.
  void eachConfig(JsonValue& section, const std::string& path, AclDocument::Names names,
                  const AclDocument::UseKnown& use) const {
    document_.only(section, path, "config", [&](const std::string& configPath, JsonValue& config) {
      document_.eachKnown(config, configPath, names, use);
    });
  }

  /// A number, or one of the names.
  template <std::size_t count>
  std::uint32_t numberOrName(const JsonValue& value, std::string_view member, std::uint32_t largest,
                             const NamedNumber (&names)[count]) const {
    if (value.isString()) {
      const NamedNumber* const row = find(names, value.text());
      if (row != nullptr) return row->number;
    }
    return document_.number(value, member, 0, largest, " or a known name");
  }

  void readConfig(const std::string& path, JsonValue& config) {
    static constexpr std::string_view names[] = {"sequence-id", "description"};
    document_.object(config, path);
    document_.eachKnown(config, path, names, [&](std::size_t index, auto& member, auto& value) {
      if (index == 0) {
        entry_.sequence =
            document_.number(value, member, 0, std::numeric_limits<std::uint32_t>::max());
        hasSequence_ = true;
      } else {
        entry_.description = document_.printable(value, member);
      }
    });
  }

  void readActions(const std::string& path, JsonValue& actions) {
    static constexpr std::string_view names[] = {"forwarding-action"};
    eachConfig(actions, path, names, [&](std::size_t, auto& member, auto& value) {
      std::string_view const action = document_.printable(value, member);
      entry_.permits = action == "ACCEPT" || action == "FORWARD";
      if (!entry_.permits && action != "DROP" && action != "REJECT") {
        document_.failMember(value, member, ": " + inQuotes(action) + " is not a known action");
      }
      hasAction_ = true;
    });
  }

  void showFamily(Family family, const JsonValue& at, std::string_view member) {
    if (entry_.family != Family::unknown && entry_.family != family) {
      document_.failMember(at, member,
                           ": " + at.shown() + " is of " +
                               (family == Family::ip ? "IPv4" : "IPv6") +
                               ", the rest of the entry is not");
    }
    entry_.family = family;
  }

  void readLayer2(const std::string& path, JsonValue& section) {
    static constexpr std::string_view names[] = {
        "ethertype",           "vlan-id",         "vlan_id",
        "source-mac",          "source-mac-mask", "destination-mac",
        "destination-mac-mask"};
    std::optional<MacOctets> macs[4];  // each address, and its mask
    eachConfig(section, path, names, [&](std::size_t index, auto& member, auto& value) {
      if (index == 0) {
        std::uint32_t const type = numberOrName(value, member, 65535, etherTypeNames);
        if (type == etherTypeIp) showFamily(Family::ip, value, member);
        if (type == etherTypeIp6) showFamily(Family::ip6, value, member);
        entry_.etherType = static_cast<std::uint16_t>(type);
      } else if (index <= 2) {
        if (entry_.vlan) document_.failMember(value, member, ": the VLAN stands twice");
        entry_.vlan = static_cast<std::uint16_t>(document_.number(value, member, 1, 4094));
        entry_.isVlanFirst = !entry_.etherType;
      } else {
        macs[index - 3] = mac(value, member);
      }
    });
    entry_.sourceMac = macOf(section, macs[0], macs[1], path + ".config.source-mac");
    entry_.destinationMac = macOf(section, macs[2], macs[3], path + ".config.destination-mac");
  }

  std::optional<AclEntry::Mac> macOf(const JsonValue& section,
                                     const std::optional<MacOctets>& address,
                                     const std::optional<MacOctets>& mask,
                                     std::string_view member) const {
    if (!address && mask) {
      document_.failMember(section, member, " is missing, but its mask is there");
    }
    if (!address) return std::nullopt;
    MacOctets full;
    full.fill(0xFF);
    return AclEntry::Mac{*address, mask.value_or(full)};
  }

  MacOctets mac(const JsonValue& value, std::string_view member) const {
    MacOctets address;
    if (!value.isString() || !macFromText(value.text(), address)) {
      document_.failMember(value, member, ": " + value.shown() + " is not a MAC address");
    }
    return address;
  }

  void readIp(const std::string& path, JsonValue& section) {
    static constexpr std::string_view names[] = {"source-ip-address", "destination-ip-address",
                                                 "protocol"};
    eachConfig(section, path, names, [&](std::size_t index, auto& member, auto& value) {
      if (index == 0) {
        entry_.source = prefix(value, member);
      } else if (index == 1) {
        entry_.destination = prefix(value, member);
      } else {
        std::uint32_t const protocol = numberOrName(value, member, 255, protocolNames);
        protocolAt_ = value;
        entry_.isIcmpByName = value.text() == "IP_ICMP";
        if (protocol != 0) entry_.protocol = static_cast<std::uint8_t>(protocol);
        if (protocol == protocolIcmp6) showFamily(Family::ip6, value, member);
      }
    });
  }

  AclEntry::Prefix prefix(const JsonValue& value, std::string_view member) {
    std::string_view const text = value.text();
    std::size_t const slash = text.find('/');
    std::string_view const address = text.substr(0, slash);
    bool const isIp6 = address.find(':') != address.npos;
    std::uint32_t const longest = isIp6 ? 128 : 32;
    std::uint32_t length = longest;
    std::uint32_t ip = 0;
    AclEntry::Prefix prefix{};
    if (!value.isString() ||
        (isIp6 ? !ip6FromText(address, prefix.address) : !ipFromText(address, ip)) ||
        (slash != text.npos && !parseNumber(text.substr(slash + 1), 0, longest, length))) {
      document_.failMember(value, member,
                           ": " + value.shown() + " is not an address with its length");
    }
    showFamily(isIp6 ? Family::ip6 : Family::ip, value, member);
    if (!isIp6) {
      for (unsigned i = 0; i != 4; ++i) {
        prefix.address[i] = static_cast<std::uint8_t>(ip >> (24 - 8 * i));
      }
    }
    prefix.length = static_cast<std::uint8_t>(length);
    return prefix;
  }

  void readTransport(const std::string& path, JsonValue& section) {
    static constexpr std::string_view names[] = {"source-port", "destination-port", "tcp-flags"};
    eachConfig(section, path, names, [&](std::size_t index, auto& member, auto& value) {
      if (index == 2) return readTcpFlags(member, value);
      AclEntry::Ports& ports = index == 0 ? entry_.sourcePorts : entry_.destinationPorts;
      ports = readPorts(value, member);
      if (!ports.isAll()) portsAt_ = value;
    });
  }

  void readTcpFlags(const std::string& member, JsonValue& value) {
    if (!value.isArray()) {
      document_.failMember(value, member, ": " + value.shown() + " is not an array");
    }
    tcpFlagsAt_ = value;
    value.eachItem([&](const JsonValue& item) {
      const NamedNumber* const flag = item.isString() ? find(tcpFlagNames, item.text()) : nullptr;
      if (flag == nullptr) {
        document_.failMember(item, member, ": no qualifier carries the flag " + item.shown());
      }
      entry_.tcpFlags |= static_cast<std::uint8_t>(flag->number);
    });
  }

  AclEntry::Ports readPorts(const JsonValue& value, std::string_view member) const {
    if (value.isString() && value.text() == "ANY") return {};
    std::string_view const text = value.text();
    std::size_t const dots = value.isString() ? text.find("..") : text.npos;
    std::string_view const lowText = text.substr(0, dots);
    std::string_view const highText = dots == text.npos ? lowText : text.substr(dots + 2);
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    if (!isScalar(value) || !parseNumber(lowText, 0, largestPort, low) ||
        !parseNumber(highText, 0, largestPort, high) || low > high) {
      document_.failMember(
          value, member,
          ": " + value.shown() + " is not a port from 0 to 65535 or a range LOW..HIGH");
    }
    return {static_cast<std::uint16_t>(low), static_cast<std::uint16_t>(high)};
  }

  void readIcmp(const std::string& path, JsonValue& section) {
    static constexpr std::string_view names[] = {"type", "code"};
    eachConfig(section, path, names, [&](std::size_t index, auto& member, auto& value) {
      (index == 0 ? entry_.icmpType : entry_.icmpCode) =
          static_cast<std::uint8_t>(document_.number(value, member, 0, 255));
    });
  }

  /// Wherever in it the interfaces are named: the forms in use differ.
  void readInputInterface(const std::string& path, JsonValue& section) {
    document_.object(section, path);
    std::string names;
    std::string_view only;
    std::size_t count = 0;
    std::function<void(JsonValue&)> const add = [&](JsonValue& value) {
      if (value.isObject() || value.isArray()) {
        value.eachItem(add);
      } else {
        if (value.isString()) document_.checkPrintable(value, value.text(), path);
        if (count++ != 0) names += ',';
        names += only = value.text();
        if (names.size() > longestText) {
          document_.failMember(section, path, ": the names are longer than 32 KiB");
        }
      }
    };
    add(section);
    entry_.hasInputInterface = true;
    entry_.inputInterface = count == 1 ? only : document_.json().keep(std::move(names));
  }

  /// Applies the rules between the sections, whose order does not matter.
  void checkProtocol() const {
    // NOLINTNEXTLINE(misc-redundant-expression): the numbers differ
    bool const isIcmp = entry_.protocol == protocolIcmp || entry_.protocol == protocolIcmp6;
    if (portsAt_ && isIcmp) {
      document_.failMember(*portsAt_, "transport.config", ": ICMP has no ports");
    }
    if ((entry_.icmpType || entry_.icmpCode) && !isIcmp) {
      document_.failMember(protocolAt_ ? *protocolAt_ : value_, "ip.config.protocol",
                           (protocolAt_ ? ": " + protocolAt_->shown() + " is not ICMP"
                                        : std::string(" is missing")) +
                               ", but the entry has an ICMP type or code");
    }
    if (entry_.tcpFlags != 0 && entry_.protocol && entry_.protocol != protocolTcp) {
      document_.failMember(*tcpFlagsAt_, "transport.config.tcp-flags",
                           ": the entry's protocol is not TCP");
    }
  }

  AclDocument& document_;
  JsonValue& value_;
  AclEntry entry_;
  bool hasSequence_ = false;
  bool hasAction_ = false;
  // For messages.
  std::optional<JsonValue> protocolAt_;
  std::optional<JsonValue> portsAt_;
  std::optional<JsonValue> tcpFlagsAt_;
};

Qualifier prefixQualifier(const AclEntry::Prefix& prefix, Family family, std::uint8_t ipType,
                          std::uint8_t ip6Type) {
  if (family == Family::ip6) return ip6Qualifier(ip6Type, prefix.address, ip6Mask(prefix.length));
  std::uint32_t address = 0;
  for (unsigned i = 0; i != 4; ++i) address = address << 8 | prefix.address[i];
  return wordQualifier(ipType, address, ipMask(prefix.length), QualifierKind::ip);
}

void addQualifiers(const AclEntry& from, Family family, Entry& entry) {
  std::vector<Qualifier>& qualifiers = entry.qualifiers;
  auto const addEtherType = [&] {
    if (!from.etherType) return;
    qualifiers.push_back(wordQualifier(VelmorTcam::qualifierEtherType, *from.etherType, 65535));
  };
  if (!from.isVlanFirst) addEtherType();
  if (from.vlan) {
    qualifiers.push_back(wordQualifier(VelmorTcam::qualifierOuterVlanId, *from.vlan, vlanMask));
  }
  if (from.isVlanFirst) addEtherType();
  if (from.sourceMac) {
    qualifiers.push_back(
        macQualifier(VelmorTcam::qualifierSrcMac, from.sourceMac->address, from.sourceMac->mask));
  }
  if (from.destinationMac) {
    qualifiers.push_back(macQualifier(VelmorTcam::qualifierDstMac, from.destinationMac->address,
                                      from.destinationMac->mask));
  }
  if (from.source && from.source->length != 0) {
    qualifiers.push_back(prefixQualifier(*from.source, from.family, VelmorTcam::qualifierSrcIp,
                                         VelmorTcam::qualifierSrcIp6));
  }
  if (from.destination && from.destination->length != 0) {
    qualifiers.push_back(prefixQualifier(*from.destination, from.family, VelmorTcam::qualifierDstIp,
                                         VelmorTcam::qualifierDstIp6));
  }
  if (from.protocol) {
    std::uint32_t const protocol =
        from.isIcmpByName && family == Family::ip6 ? protocolIcmp6 : std::uint32_t{*from.protocol};
    qualifiers.push_back(wordQualifier(VelmorTcam::qualifierIpProtocol, protocol, 255));
  }
  addPorts(entry, VelmorTcam::qualifierL4SrcPort, VelmorTcam::rangeCheckerL4SrcPort,
           from.sourcePorts.low, from.sourcePorts.high);
  addPorts(entry, VelmorTcam::qualifierL4DstPort, VelmorTcam::rangeCheckerL4DstPort,
           from.destinationPorts.low, from.destinationPorts.high);
  addIcmp(entry, std::uint32_t{from.icmpType.value_or(0)} << 8 | from.icmpCode.value_or(0),
          (from.icmpType ? 0xFF00U : 0U) | (from.icmpCode ? 0xFFU : 0U));
  if (from.tcpFlags != 0) {
    qualifiers.push_back(
        wordQualifier(VelmorTcam::qualifierTcpControl, from.tcpFlags, from.tcpFlags));
  }
}

Table tableOf(const AclEntry& from, Family family, Family usual) {
  if (!from.matchesAboveLayer2()) {
    // An entry that matches everything is meant for the packets of its ACL.
    if (from.matchesLayer2() || usual == Family::unknown) return Table::mac;
    return usual == Family::ip6 ? Table::ip6 : Table::ip;
  }
  return family == Family::ip6 ? Table::ip6 : Table::ip;
}

}  // namespace

// --- messages

void AclDocument::fail(const char* at, const std::string& message) const {
  throw InputError(json_.fileName(), json_.lineOf(at), place() + message);
}

void AclDocument::failMember(const JsonValue& at, std::string_view member,
                             std::string_view message) const {
  fail(at, "member \"" + shownName(member) + '"' + std::string(message));
}

void AclDocument::warn(const WarningKind& kind, const JsonValue& at, std::string_view member,
                       std::string_view message) const {
  complaints_.warn(kind, [&] {
    return warningText(json_.fileName(), json_.lineOf(at.begin()),
                       place() + "member \"" + shownName(member) + '"' + std::string(message));
  });
}

std::string AclDocument::place() const {
  if (acl_.data() == nullptr) return {};
  std::string text = "ACL \"" + shownName(acl_) + '"';
  if (entry_.data() != nullptr) text += ", entry \"" + shownName(entry_) + '"';
  return text + ": ";
}

// --- values

const JsonValue& AclDocument::object(const JsonValue& value, std::string_view member) const {
  if (!value.isObject()) failMember(value, member, ": " + value.shown() + " is not an object");
  return value;
}

std::string_view AclDocument::printable(const JsonValue& value, std::string_view member) const {
  if (!value.isString()) failMember(value, member, ": " + value.shown() + " is not a string");
  checkPrintable(value, value.text(), member);
  return value.text();
}

void AclDocument::checkPrintable(const JsonValue& at, std::string_view text,
                                 std::string_view member) const {
  if (text.size() > longestText) failMember(at, member, ": the text is longer than 32 KiB");
  if (findControl(text) == text.npos) return;
  failMember(at, member, ": " + inQuotes(text) + " holds a control character");
}

std::uint32_t AclDocument::number(const JsonValue& value, std::string_view member,
                                  std::uint32_t smallest, std::uint32_t largest,
                                  std::string_view otherwise) const {
  std::uint32_t result = 0;
  if (!isScalar(value) || !parseNumber(value.text(), smallest, largest, result)) {
    failMember(value, member,
               ": " + value.shown() + " is not a number from " + std::to_string(smallest) + " to " +
                   std::to_string(largest) + std::string(otherwise));
  }
  return result;
}

// --- objects

void AclDocument::eachKnown(JsonValue& parent, const std::string& path, Names names,
                            const UseKnown& use) const {
  std::vector<bool> seen(names.size());
  parent.eachMember([&](std::string_view name, JsonValue& value) {
    std::string const memberPath =
        path.empty() ? std::string(name) : path + "." + std::string(name);
    auto const found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
      failMember(value, memberPath, " is not known" + suggestion(name, names));
    }
    auto const index = static_cast<std::size_t>(found - names.begin());
    if (seen[index]) failMember(value, memberPath, " stands twice");
    seen[index] = true;
    use(index, memberPath, value);
  });
}

void AclDocument::only(JsonValue& parent, const std::string& path, std::string_view name,
                       const UseOnly& use) const {
  object(parent, path);
  bool isThere = false;
  eachKnown(parent, path, {&name, 1},
            [&](std::size_t, const std::string& memberPath, JsonValue& value) {
              isThere = true;
              object(value, memberPath);
              use(memberPath, value);
            });
  if (isThere) return;
  failMember(parent, path.empty() ? std::string(name) : path + "." + std::string(name),
             " is missing");
}

// --- entries

AclEntry readAclEntry(AclDocument& document, std::string_view name, JsonValue& value) {
  document.entryIs(name);
  return EntryReader(document, value).read();
}

void fillEntry(const AclEntry& from, Family family, Family usual, Entry& entry,
               std::string& description, std::string& otherMatch) {
  entry.table = tableOf(from, family, usual);
  entry.sequence = from.sequence;
  entry.priority = std::numeric_limits<std::uint32_t>::max() - from.sequence;
  entry.action = from.permits ? "permit" : "deny";
  addQualifiers(from, family, entry);
  description = from.description;
  if (description.empty()) appendDescription(entry, description);
  entry.description = description;
  if (from.hasInputInterface) {
    // No qualifier carries it.
    otherMatch = "input_interface";
    if (!from.inputInterface.empty()) (otherMatch += '=') += from.inputInterface;
    entry.otherMatch = otherMatch;
  }
}

}  // namespace tcamshow
