// One entry of an OpenConfig ACL: what it says, and what it becomes.
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

/// What one entry says, in little memory: an ACL may have very many. The texts belong to the
/// document.
struct AclEntry {
  struct Prefix {
    Ip6Octets address;  ///< of an IPv4 address the first four
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
  std::string_view inputInterface;
  std::uint32_t sequence = 0;
  Family family = Family::unknown;  ///< as the entry itself shows
  bool permits = false;
  bool isIcmpByName = false;  ///< the name is used for ICMPv6 too
  bool isVlanFirst = false;   ///< the VLAN stands before the ether type
  std::uint8_t tcpFlags = 0;
  std::optional<std::uint8_t> protocol;  ///< absent when any is meant
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
// The least that an entry with an action and a number takes in a document is some 80 bytes.
static_assert(sizeof(AclEntry) <= 160);

/// Where in the document the import is, for messages, and what the document's values mean. Every
/// fault throws InputError with the line, the ACL, the entry and the member.
class AclDocument {
 public:
  AclDocument(InputFile file, Complaints& complaints)
      : json_(std::move(file)), complaints_(complaints) {}

  JsonDocument& json() noexcept { return json_; }
  const JsonDocument& json() const noexcept { return json_; }
  /// What messages name; no entry is named any more.
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
  /// A number, which may stand in a string, decimal or with 0x before it.
  std::uint32_t number(const JsonValue& value, std::string_view member, std::uint32_t smallest,
                       std::uint32_t largest, std::string_view otherwise = "") const;

  using Names = std::span<const std::string_view>;
  using UseKnown =
      std::function<void(std::size_t index, const std::string& path, JsonValue& value)>;
  using UseOnly = std::function<void(const std::string& path, JsonValue& value)>;
  /// Calls `use` for each member of the object `parent`, whose path is `path`, with its index in
  /// `names`. Each of these may stand there once, and no other.
  void eachKnown(JsonValue& parent, const std::string& path, Names names,
                 const UseKnown& use) const;
  /// Calls `use` for the one member, `name`, that the object `parent` has: an object, and required.
  void only(JsonValue& parent, const std::string& path, std::string_view name,
            const UseOnly& use) const;

 private:
  std::string place() const;

  JsonDocument json_;
  Complaints& complaints_;
  std::string_view acl_;
  std::string_view entry_;
};

/// What the entry `name` says. Whatever does not depend on the other entries of its ACL is checked.
AclEntry readAclEntry(AclDocument& document, std::string_view name, JsonValue& value);

/// Fills `entry` with what an entry of `family` becomes: all but its place, its number and its
/// feature. `usual` is the family that its ACL's own type names, whose table an entry that matches
/// everything belongs to. The description, where it is not the document's own, is made in
/// `description`.
void fillEntry(const AclEntry& from, Family family, Family usual, Entry& entry,
               std::string& description);

}  // namespace tcamshow
