// One entry of an OpenConfig ACL: reading it, and making an entry of the model from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "io/Complaints.h"
#include "snapshot/AddressText.h"
#include "snapshot/Snapshot.h"
#include "sources/JsonDocument.h"

namespace tcamshow {

enum class Family : std::uint8_t { unknown, ip, ip6 };

/// The contents of one entry. It is small, because an ACL may have very many. The document owns the
/// texts.
struct AclEntry {
  struct Prefix {
    Ip6Octets address;  ///< an IPv4 address takes the first four
    std::uint8_t length = 0;
  };
  struct Mac {
    MacOctets address;
    MacOctets mask;
  };
  struct Ports {
    std::uint16_t low = 0;
    std::uint16_t high = 65535;
    bool isAll() const noexcept { return low == 0 && high == 65535; }
  };

  std::string_view description;
  std::string_view inputInterface;  ///< its names with commas between them
  std::uint32_t sequence = 0;
  Family family = Family::unknown;  ///< if the entry itself shows it
  bool permits = false;
  bool isIcmpByName = false;  ///< the protocol was given as IP_ICMP, a name used for ICMPv6 too
  bool hasInputInterface = false;
  bool isVlanFirst = false;  ///< the VLAN stands before the ether type
  std::uint8_t tcpFlags = 0;
  std::optional<std::uint8_t> protocol;  ///< absent for any
  std::optional<std::uint8_t> icmpType;
  std::optional<std::uint8_t> icmpCode;
  std::optional<std::uint16_t> etherType;
  std::optional<std::uint16_t> vlan;
  Ports sourcePorts;
  Ports destinationPorts;
  std::optional<Mac> sourceMac;
  std::optional<Mac> destinationMac;
  std::optional<Prefix> source;
  std::optional<Prefix> destination;

  bool matchesLayer2() const noexcept { return etherType || vlan || sourceMac || destinationMac; }
  bool matchesAboveLayer2() const noexcept {
    return source || destination || protocol || !sourcePorts.isAll() || !destinationPorts.isAll() ||
           tcpFlags != 0 || icmpType || icmpCode;
  }
};
// The shortest entry with an action and a number takes about 80 bytes of a document.
static_assert(sizeof(AclEntry) <= 160);

/// Reads the values of a document, and knows the present ACL and entry for messages. A fault throws
/// InputError with the line, the ACL, the entry and the member.
class AclDocument {
 public:
  AclDocument(InputFile file, Complaints& complaints)
      : json_(std::move(file)), complaints_(complaints) {}

  JsonDocument& json() noexcept { return json_; }
  const JsonDocument& json() const noexcept { return json_; }
  /// Sets the ACL that messages name. They name no entry until entryIs().
  void aclIs(std::string_view name) noexcept {
    acl_ = name;
    entry_ = {};
  }
  void entryIs(std::string_view name) noexcept { entry_ = name; }

  [[noreturn]] void fail(const JsonValue& at, const std::string& message) const {
    fail(at.begin(), message);
  }
  [[noreturn]] void fail(const char* at, const std::string& message) const;
  /// `member "ip.config.protocol"MESSAGE`
  [[noreturn]] void failMember(const JsonValue& at, std::string_view member,
                               std::string_view message) const;
  void warn(const WarningKind& kind, const JsonValue& at, std::string_view member,
            std::string_view message) const;

  const JsonValue& object(const JsonValue& value, std::string_view member) const;
  /// A string without control characters, not longer than 32 KiB.
  std::string_view printable(const JsonValue& value, std::string_view member) const;
  void checkPrintable(const JsonValue& at, std::string_view text, std::string_view member) const;
  /// A number. It may be a string, in decimal or, after 0x, in hexadecimal.
  std::uint32_t number(const JsonValue& value, std::string_view member, std::uint32_t smallest,
                       std::uint32_t largest, std::string_view otherwise = "") const;

  using Names = std::span<const std::string_view>;
  using UseKnown =
      std::function<void(std::size_t index, const std::string& path, JsonValue& value)>;
  using UseOnly = std::function<void(const std::string& path, JsonValue& value)>;
  /// Calls `use` for each member of the object `parent`, with the member's index in `names`. `path`
  /// is the path of `parent`. A member that is not in `names`, or comes twice, is a fault.
  void eachKnown(JsonValue& parent, const std::string& path, Names names,
                 const UseKnown& use) const;
  /// Calls `use` for the member `name` of the object `parent`. It must be an object, and the only
  /// member.
  void only(JsonValue& parent, const std::string& path, std::string_view name,
            const UseOnly& use) const;

 private:
  std::string place() const;

  JsonDocument json_;
  Complaints& complaints_;
  std::string_view acl_;
  std::string_view entry_;
};

/// Reads the entry `name`. Checks everything that does not depend on other entries of its ACL.
AclEntry readAclEntry(AclDocument& document, std::string_view name, JsonValue& value);

/// Fills `entry` from an entry of `family`, except for its place, its number and its feature.
/// `usual` is the family that the ACL's type names: an entry that matches everything goes to its
/// table. `description` receives the text of the entry's description, and must live as long as
/// `entry`.
void fillEntry(const AclEntry& from, Family family, Family usual, Entry& entry,
               std::string& description, std::string& otherMatch);

}  // namespace tcamshow
