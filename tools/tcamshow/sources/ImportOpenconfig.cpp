#include "sources/ImportOpenconfig.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "io/InputError.h"
#include "snapshot/AddressText.h"
#include "snapshot/Snapshot.h"
#include "snapshot/SnapshotWriter.h"
#include "sources/JsonDocument.h"
#include "sources/PortQualifiers.h"

namespace tcamshow {
namespace {

constexpr std::uint32_t etherTypeIp = 0x0800;
constexpr std::uint32_t etherTypeIp6 = 0x86DD;
constexpr std::uint32_t vlanMask = 4095;

struct NamedNumber {
  std::string_view name;
  std::uint32_t number;
};

constexpr NamedNumber protocolNames[] = {
    {"IP_ICMP", protocolIcmp},
    {"IP_IGMP", 2},
    {"IP_IN_IP", 4},
    {"IP_TCP", protocolTcp},
    {"IP_UDP", 17},
    {"IP_RSVP", 46},
    {"IP_GRE", 47},
    {"IP_AUTH", 51},
    {"IP_ICMPV6", protocolIcmp6},
    {"IP_PIM", 103},
    {"IP_L2TP", 115},
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

enum class Family { unknown, ip, ip6 };

struct Ports {
  std::uint32_t low = 0;
  std::uint32_t high = largestPort;
  bool isAll() const noexcept { return low == 0 && high == largestPort; }
};

/// What one entry says, before its family is known. The members are views into the document.
struct Entry {
  std::string_view name;
  const JsonValue* value = nullptr;
  std::uint32_t sequence = 0;
  bool permits = false;
  std::string_view description;

  std::vector<Qualifier> layer2;
  std::optional<Qualifier> source;
  std::optional<Qualifier> destination;
  /// Absent when any protocol is meant.
  std::optional<std::uint32_t> protocol;
  const JsonValue* protocolValue = nullptr;
  bool protocolIsIcmpName = false;
  Ports sourcePorts;
  Ports destinationPorts;
  const JsonValue* portsValue = nullptr;
  std::uint32_t tcpFlags = 0;
  const JsonValue* tcpFlagsValue = nullptr;
  std::optional<std::uint32_t> icmpType;
  std::optional<std::uint32_t> icmpCode;

  Family family = Family::unknown;  // what the entry itself shows

  bool matchesAboveLayer2() const noexcept {
    return source || destination || protocol || !sourcePorts.isAll() || !destinationPorts.isAll() ||
           tcpFlags != 0 || icmpType || icmpCode;
  }
};

/// The document's ACLs, one after the other, appended to a snapshot's text.
class Importer {
 public:
  Importer(const InputFile& file, std::vector<std::string>& warnings)
      : file_(file), warnings_(warnings) {
    appendLine(snapshot_, Header());
  }

  const std::string& snapshot() const noexcept { return snapshot_; }

  void read(const JsonValue& document) {
    if (!document.isObject()) fail(document, "the document is not a JSON object");
    const JsonValue& acl = only(document, "acl", "");
    const JsonValue& sets = only(acl, "acl-sets", "acl");
    const JsonValue& set = only(sets, "acl-set", "acl.acl-sets");
    for (const JsonMember& member : set.members) readAcl(member.name, member.value);
  }

 private:
  // --- messages

  [[noreturn]] void fail(const JsonValue& at, const std::string& message) const {
    throw InputError(file_.name(), at.line, place() + message);
  }
  [[noreturn]] void failMember(const JsonValue& at, std::string_view member,
                               std::string_view message) const {
    fail(at, named(member) + std::string(message));
  }
  static std::string named(std::string_view member) { return "member " + inQuotes(member); }

  std::string place() const {
    std::string text;
    if (aclName_.data() == nullptr) return text;
    text = "ACL " + inQuotes(aclName_);
    if (entryName_.data() != nullptr) text += ", entry " + inQuotes(entryName_);
    return text + ": ";
  }

  // --- values

  const JsonValue& object(const JsonValue& value, std::string_view member) const {
    if (!value.isObject()) failMember(value, member, ": " + value.shown() + " is not an object");
    return value;
  }

  /// The one member that `parent` has, an object.
  const JsonValue& only(const JsonValue& parent, std::string_view name,
                        const std::string& parentName) const {
    std::string const prefix = parentName.empty() ? "" : parentName + ".";
    for (const JsonMember& member : parent.members) {
      if (member.name != name) failMember(member.value, prefix + member.name, " is not known");
    }
    std::string const path = prefix + std::string(name);
    const JsonValue* const value = parent.find(name);
    if (value == nullptr) failMember(parent, path, " is missing");
    return object(*value, path);
  }

  std::string_view printable(const JsonValue& value, std::string_view member) const {
    if (!value.isString()) failMember(value, member, ": " + value.shown() + " is not a string");
    checkPrintable(value, value.text, member);
    return value.text;
  }
  void checkPrintable(const JsonValue& at, std::string_view text, std::string_view member) const {
    for (char const c : text) {
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
        failMember(at, member, ": " + inQuotes(text) + " holds a control character");
      }
    }
  }

  /// False when the text is no whole number from `smallest` to `largest`.
  static bool parseNumber(std::string_view text, std::uint32_t smallest, std::uint32_t largest,
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

  template <std::size_t count>
  static const NamedNumber* find(const NamedNumber (&names)[count], std::string_view name) {
    for (const NamedNumber& row : names) {
      if (row.name == name) return &row;
    }
    return nullptr;
  }

  static bool isScalar(const JsonValue& value) { return value.isNumber() || value.isString(); }

  std::uint32_t number(const JsonValue& value, std::string_view member, std::uint32_t smallest,
                       std::uint32_t largest, std::string_view otherwise = "") const {
    std::uint32_t result = 0;
    if (!isScalar(value) || !parseNumber(value.text, smallest, largest, result)) {
      failMember(value, member,
                 ": " + value.shown() + " is not a number from " + std::to_string(smallest) +
                     " to " + std::to_string(largest) + std::string(otherwise));
    }
    return result;
  }

  /// A number, or one of the names.
  template <std::size_t count>
  std::uint32_t numberOrName(const JsonValue& value, std::string_view member, std::uint32_t largest,
                             const NamedNumber (&names)[count]) const {
    if (value.isString()) {
      const NamedNumber* const row = find(names, value.text);
      if (row != nullptr) return row->number;
    }
    return number(value, member, 0, largest, " or a known name");
  }

  /// Calls `use(name, path, value)` for each member of `section`'s one member, `config`.
  template <class Use>
  void eachConfig(const JsonValue& section, const std::string& path, const Use& use) const {
    const JsonValue& config = only(object(section, path), "config", path);
    for (const JsonMember& member : config.members) {
      std::string const memberPath = path + ".config." + member.name;
      if (!use(member.name, memberPath, member.value)) {
        failMember(member.value, memberPath, " is not known");
      }
    }
  }

  // --- ACLs

  void readAcl(std::string_view name, const JsonValue& acl) {
    aclName_ = name;
    entryName_ = {};
    if (!acl.isObject()) fail(acl, acl.shown() + " is not an object");
    checkPrintable(acl, name, "name");
    Family declared = Family::unknown;
    const JsonValue* entryValues = nullptr;
    for (const JsonMember& member : acl.members) {
      if (member.name == "config") {
        declared = readAclConfig(object(member.value, "config"));
      } else if (member.name == "acl-entries") {
        entryValues = &only(object(member.value, "acl-entries"), "acl-entry", "acl-entries");
      } else {
        failMember(member.value, member.name, " is not known");
      }
    }
    std::vector<Entry> entries;
    if (entryValues != nullptr) {
      std::unordered_set<std::uint32_t> sequences;
      for (const JsonMember& member : entryValues->members) {
        entries.push_back(readEntry(member.name, member.value));
        if (!sequences.insert(entries.back().sequence).second) {
          failMember(member.value, "config.sequence-id",
                     ": another entry has " + std::to_string(entries.back().sequence) + " too");
        }
      }
    }

    ++groupId_;
    GroupLine group;
    group.place.groupId = groupId_;
    group.name = name;
    appendLine(snapshot_, group);
    Family const usual = familyOf(entries, declared);
    for (const Entry& entry : entries) {
      entryName_ = entry.name;
      Family const family = entry.family == Family::unknown ? usual : entry.family;
      if (declared != Family::unknown && entry.family != Family::unknown &&
          entry.family != declared) {
        fail(*entry.value, named("config.type") + " of the ACL: it is not of the entry's family");
      }
      writeEntry(entry, family);
    }
  }

  Family readAclConfig(const JsonValue& config) const {
    Family declared = Family::unknown;
    for (const JsonMember& member : config.members) {
      std::string const path = "config." + member.name;
      std::string_view const text = printable(member.value, path);
      if (member.name == "name") {
        if (text != aclName_)
          failMember(member.value, path, ": " + inQuotes(text) + " is not the ACL's name");
      } else if (member.name == "type") {
        if (text == "ACL_IPV4") {
          declared = Family::ip;
        } else if (text == "ACL_IPV6") {
          declared = Family::ip6;
        } else if (text != "ACL_L2" && text != "ACL_MIXED") {
          failMember(member.value, path, ": " + inQuotes(text) + " is not a known type");
        }
      } else if (member.name != "description") {
        failMember(member.value, path, " is not known");
      }
    }
    return declared;
  }

  /// The family of the entries that show none.
  static Family familyOf(const std::vector<Entry>& entries, Family declared) {
    bool ip = false;
    bool ip6 = false;
    for (const Entry& entry : entries) {
      ip |= entry.family == Family::ip;
      ip6 |= entry.family == Family::ip6;
    }
    if (ip != ip6) return ip ? Family::ip : Family::ip6;
    return declared == Family::unknown ? Family::ip : declared;
  }

  // --- entries

  Entry readEntry(std::string_view name, const JsonValue& value) {
    entryName_ = name;
    Entry entry;
    entry.name = name;
    entry.value = &value;
    if (!value.isObject()) fail(value, value.shown() + " is not an object");
    bool hasAction = false;
    bool hasSequence = false;
    for (const JsonMember& member : value.members) {
      if (member.name == "config") {
        hasSequence = readEntryConfig(entry, object(member.value, "config"));
      } else if (member.name == "actions") {
        hasAction = readActions(entry, member.value);
      } else if (member.name == "l2") {
        readLayer2(entry, member.value);
      } else if (member.name == "ip") {
        readIp(entry, member.value);
      } else if (member.name == "transport") {
        readTransport(entry, member.value);
      } else if (member.name == "icmp") {
        readIcmp(entry, member.value);
      } else if (member.name == "input_interface" || member.name == "input-interface") {
        object(member.value, member.name);
        warnings_.push_back(file_.name() + ":" + std::to_string(member.value.line) +
                            ": warning: " + place() + named(member.name) +
                            ": no qualifier carries an input interface");
      } else {
        failMember(member.value, member.name, " is not known");
      }
    }
    if (!hasSequence) failMember(value, "config.sequence-id", " is missing");
    if (!hasAction) failMember(value, "actions.config.forwarding-action", " is missing");
    return entry;
  }

  bool readEntryConfig(Entry& entry, const JsonValue& config) const {
    bool hasSequence = false;
    for (const JsonMember& member : config.members) {
      std::string const path = "config." + member.name;
      if (member.name == "sequence-id") {
        entry.sequence = number(member.value, path, 0, std::numeric_limits<std::uint32_t>::max());
        hasSequence = true;
      } else if (member.name == "description") {
        entry.description = printable(member.value, path);
      } else {
        failMember(member.value, path, " is not known");
      }
    }
    return hasSequence;
  }

  bool readActions(Entry& entry, const JsonValue& actions) const {
    bool found = false;
    eachConfig(actions, "actions", [&](std::string_view name, auto& path, const JsonValue& value) {
      if (name != "forwarding-action") return false;
      std::string_view const action = printable(value, path);
      entry.permits = action == "ACCEPT" || action == "FORWARD";
      if (!entry.permits && action != "DROP" && action != "REJECT") {
        failMember(value, path, ": " + inQuotes(action) + " is not a known action");
      }
      return found = true;
    });
    return found;
  }

  void showFamily(Entry& entry, Family family, const JsonValue& at, std::string_view member) const {
    if (entry.family != Family::unknown && entry.family != family) {
      failMember(at, member,
                 ": " + at.shown() + " is of " + (family == Family::ip ? "IPv4" : "IPv6") +
                     ", the rest of the entry is not");
    }
    entry.family = family;
  }

  void readLayer2(Entry& entry, const JsonValue& section) const {
    std::optional<MacOctets> addresses[2];
    std::optional<MacOctets> masks[2];
    const JsonValue* vlan = nullptr;
    eachConfig(section, "l2", [&](std::string_view name, auto& path, const JsonValue& value) {
      if (name == "ethertype") {
        std::uint32_t const type = numberOrName(value, path, 65535, etherTypeNames);
        if (type == etherTypeIp) showFamily(entry, Family::ip, value, path);
        if (type == etherTypeIp6) showFamily(entry, Family::ip6, value, path);
        entry.layer2.push_back(wordQualifier(VelmorTcam::qualifierEtherType, type, 65535));
      } else if (name == "vlan-id" || name == "vlan_id") {
        if (vlan != nullptr) failMember(value, path, ": the VLAN stands twice");
        vlan = &value;
        entry.layer2.push_back(wordQualifier(VelmorTcam::qualifierOuterVlanId,
                                             number(value, path, 1, 4094), vlanMask));
      } else if (name == "source-mac") {
        addresses[0] = mac(value, path);
      } else if (name == "source-mac-mask") {
        masks[0] = mac(value, path);
      } else if (name == "destination-mac") {
        addresses[1] = mac(value, path);
      } else if (name == "destination-mac-mask") {
        masks[1] = mac(value, path);
      } else {
        return false;
      }
      return true;
    });
    for (int i = 0; i < 2; ++i) {
      if (!addresses[i]) {
        if (masks[i]) {
          failMember(section, i == 0 ? "l2.config.source-mac" : "l2.config.destination-mac",
                     " is missing, but its mask is there");
        }
        continue;
      }
      MacOctets full;
      full.fill(0xFF);
      entry.layer2.push_back(
          macQualifier(i == 0 ? VelmorTcam::qualifierSrcMac : VelmorTcam::qualifierDstMac,
                       *addresses[i], masks[i].value_or(full)));
    }
  }

  MacOctets mac(const JsonValue& value, std::string_view member) const {
    MacOctets address;
    if (!value.isString() || !macFromText(value.text, address)) {
      failMember(value, member, ": " + value.shown() + " is not a MAC address");
    }
    return address;
  }

  void readIp(Entry& entry, const JsonValue& section) const {
    eachConfig(section, "ip", [&](std::string_view name, auto& path, const JsonValue& value) {
      if (name == "source-ip-address") {
        entry.source =
            prefix(entry, value, path, VelmorTcam::qualifierSrcIp, VelmorTcam::qualifierSrcIp6);
      } else if (name == "destination-ip-address") {
        entry.destination =
            prefix(entry, value, path, VelmorTcam::qualifierDstIp, VelmorTcam::qualifierDstIp6);
      } else if (name == "protocol") {
        std::uint32_t const protocol = numberOrName(value, path, 255, protocolNames);
        entry.protocolValue = &value;
        entry.protocolIsIcmpName = value.text == "IP_ICMP";
        if (protocol != 0) entry.protocol = protocol;
        if (protocol == protocolIcmp6) showFamily(entry, Family::ip6, value, path);
      } else {
        return false;
      }
      return true;
    });
  }

  Qualifier prefix(Entry& entry, const JsonValue& value, std::string_view member,
                   std::uint8_t ipType, std::uint8_t ip6Type) const {
    std::string_view const text = value.text;
    std::size_t const slash = text.find('/');
    std::string_view const address = text.substr(0, slash);
    bool const isIp6 = address.find(':') != address.npos;
    std::uint32_t const longest = isIp6 ? 128 : 32;
    std::uint32_t length = longest;
    std::uint32_t ip = 0;
    Ip6Octets ip6{};
    if (!value.isString() || (isIp6 ? !ip6FromText(address, ip6) : !ipFromText(address, ip)) ||
        (slash != text.npos && !parseNumber(text.substr(slash + 1), 0, longest, length))) {
      failMember(value, member, ": " + value.shown() + " is not an address with its length");
    }
    showFamily(entry, isIp6 ? Family::ip6 : Family::ip, value, member);
    if (isIp6) return ip6Qualifier(ip6Type, ip6, ip6Mask(length));
    return wordQualifier(ipType, ip, ipMask(length), QualifierKind::ip);
  }

  void readTransport(Entry& entry, const JsonValue& section) const {
    eachConfig(
        section, "transport", [&](std::string_view name, auto& path, const JsonValue& value) {
          if (name == "source-port" || name == "destination-port") {
            Ports& ports = name == "source-port" ? entry.sourcePorts : entry.destinationPorts;
            ports = readPorts(value, path);
            if (!ports.isAll()) entry.portsValue = &value;
          } else if (name == "tcp-flags") {
            if (!value.isArray())
              failMember(value, path, ": " + value.shown() + " is not an array");
            entry.tcpFlagsValue = &value;
            for (const JsonValue& item : value.items) {
              const NamedNumber* const flag =
                  item.isString() ? find(tcpFlagNames, item.text) : nullptr;
              if (flag == nullptr) {
                failMember(item, path, ": no qualifier carries the flag " + item.shown());
              }
              entry.tcpFlags |= flag->number;
            }
          } else {
            return false;
          }
          return true;
        });
  }

  Ports readPorts(const JsonValue& value, std::string_view member) const {
    Ports ports;
    if (value.isString() && value.text == "ANY") return ports;
    std::string_view const text = value.text;
    std::size_t const dots = value.isString() ? text.find("..") : text.npos;
    std::string_view const low = text.substr(0, dots);
    std::string_view const high = dots == text.npos ? low : text.substr(dots + 2);
    if (!isScalar(value) || !parseNumber(low, 0, largestPort, ports.low) ||
        !parseNumber(high, 0, largestPort, ports.high) || ports.low > ports.high) {
      failMember(value, member,
                 ": " + value.shown() + " is not a port from 0 to 65535 or a range LOW..HIGH");
    }
    return ports;
  }

  void readIcmp(Entry& entry, const JsonValue& section) const {
    eachConfig(section, "icmp", [&](std::string_view name, auto& path, const JsonValue& value) {
      if (name != "type" && name != "code") return false;
      (name == "type" ? entry.icmpType : entry.icmpCode) = number(value, path, 0, 255);
      return true;
    });
  }

  // --- output

  void writeEntry(const Entry& entry, Family family) {
    line_.clear();
    line_.place.groupId = groupId_;
    line_.table = !entry.matchesAboveLayer2() ? Table::mac
                  : family == Family::ip6     ? Table::ip6
                                              : Table::ip;
    line_.shadowId = ++shadowId_;
    line_.sequence = entry.sequence;
    line_.priority = std::numeric_limits<std::uint32_t>::max() - entry.sequence;
    line_.description = entry.description;
    line_.action = entry.permits ? "permit" : "deny";
    line_.feature = aclName_;
    addQualifiers(entry, family);
    appendLine(snapshot_, line_);
  }

  void addQualifiers(const Entry& entry, Family family) {
    std::vector<Qualifier>& qualifiers = line_.qualifiers;
    qualifiers = entry.layer2;
    for (const std::optional<Qualifier>& address : {entry.source, entry.destination}) {
      if (!address) continue;
      bool const matches =
          address->kind == QualifierKind::ip6 ? address->ip6.mask[0] != 0 : address->mask != 0;
      if (matches) qualifiers.push_back(*address);
    }
    std::optional<std::uint32_t> protocol = entry.protocol;
    // The name is used for both families.
    if (entry.protocolIsIcmpName && family == Family::ip6) protocol = protocolIcmp6;
    if (protocol) {
      qualifiers.push_back(wordQualifier(VelmorTcam::qualifierIpProtocol, *protocol, 255));
    }
    // NOLINTNEXTLINE(misc-redundant-expression): the numbers differ
    bool const isIcmp = protocol == protocolIcmp || protocol == protocolIcmp6;
    if (entry.portsValue != nullptr && isIcmp) {
      failMember(*entry.portsValue, "transport.config", ": ICMP has no ports");
    }
    addPorts(line_, VelmorTcam::qualifierL4SrcPort, VelmorTcam::rangeCheckerL4SrcPort,
             entry.sourcePorts.low, entry.sourcePorts.high);
    addPorts(line_, VelmorTcam::qualifierL4DstPort, VelmorTcam::rangeCheckerL4DstPort,
             entry.destinationPorts.low, entry.destinationPorts.high);
    if (entry.icmpType || entry.icmpCode) {
      const JsonValue* const at = entry.protocolValue;
      if (!isIcmp) {
        failMember(at == nullptr ? *entry.value : *at, "ip.config.protocol",
                   (at == nullptr ? " is missing" : ": " + at->shown() + " is not ICMP") +
                       std::string(", but the entry has an ICMP type or code"));
      }
      addIcmp(line_, entry.icmpType.value_or(0) << 8 | entry.icmpCode.value_or(0),
              (entry.icmpType ? 0xFF00U : 0U) | (entry.icmpCode ? 0xFFU : 0U));
    }
    if (entry.tcpFlags != 0) {
      if (protocol && *protocol != protocolTcp) {
        failMember(*entry.tcpFlagsValue, "transport.config.tcp-flags",
                   ": the entry's protocol is not TCP");
      }
      qualifiers.push_back(
          wordQualifier(VelmorTcam::qualifierTcpControl, entry.tcpFlags, entry.tcpFlags));
    }
  }

  const InputFile& file_;
  std::vector<std::string>& warnings_;
  std::string snapshot_;
  EntryLine line_;
  std::uint32_t groupId_ = 0;
  std::uint64_t shadowId_ = 0;
  // What messages name.
  std::string_view aclName_;
  std::string_view entryName_;
};

}  // namespace

void importOpenconfig(InputFile& file, OutputBuffer& out, std::vector<std::string>& warnings) {
  JsonValue const document = readJsonDocument(file);
  Importer importer(file, warnings);
  importer.read(document);
  out.write(importer.snapshot());
}

}  // namespace tcamshow
