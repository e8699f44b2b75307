// The match of one ACL entry of a SONiC switch, whichever database describes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot/Snapshot.h"

namespace tcamshow {

/// A field on which an entry matches, and that a snapshot can hold.
enum class SonicField : std::uint8_t {
  sourceIp,
  destinationIp,
  sourceIp6,
  destinationIp6,
  sourceMac,
  destinationMac,
  etherType,
  vlan,
  protocol,
  nextHeader,  ///< the protocol of IPv6
  sourcePort,
  destinationPort,
  tcpFlags,
  dscp,
  tos,
  icmpType,
  icmpCode,
  icmp6Type,
  icmp6Code,
  ipType,
  fragment,
  none,  ///< every other field
};

/// One field of an entry, as its database writes it.
struct SonicValue {
  std::string_view name;  ///< without what all names begin with
  std::string_view text;  ///< the whole value
  std::string_view value;
  std::string_view mask;  ///< all ones of the field if hasMask is false
  bool hasMask = false;
};

/// So that all texts of an entry fit into a line of a snapshot, however they are escaped there.
constexpr std::size_t longestSonicText = std::size_t{32} << 10;

/// What a range limits.
enum class SonicRange : std::uint8_t { sourcePort, destinationPort, ipLength, other };

/// Makes the match of an entry. Fields may come in any order. A field that a snapshot cannot hold
/// goes into `otherMatch`, as NAME=VALUE.
class SonicMatch {
 public:
  void clear() noexcept;

  /// Adds a field. Returns false, and adds nothing, if its value cannot be read. A field that
  /// stands twice counts twice: both must hold.
  bool add(SonicField field, const SonicValue& value);
  /// Adds a field as text.
  void addOther(std::string_view name, std::string_view text);
  /// Adds a range, both ends included. Several of one kind must all hold. `name` is that of its
  /// kind.
  void addRange(SonicRange range, std::uint32_t low, std::uint32_t high, std::string_view name);

  /// Sets table, qualifiers, range checkers and otherMatch of an entry that has its defaults.
  /// `otherMatch` is valid until the next call of clear(). Call it once.
  void fill(Entry& entry);
  /// Whether otherMatch would be longer than 32 KiB. Then it lacks a part.
  bool isTooLong() const noexcept { return othersSize_ > longestSonicText; }

 private:
  /// A type or code of ICMP, in the low eight bits. It depends on the protocol what becomes of it.
  struct Icmp {
    bool isType;
    bool isIp6;
    std::uint32_t value;
    std::uint32_t mask;
    std::string text;
  };

  bool addWord(std::uint8_t type, const SonicValue& value, std::uint32_t largest);
  bool addIp(std::uint8_t type, const SonicValue& value);
  bool addIp6(std::uint8_t type, const SonicValue& value);
  bool addMac(std::uint8_t type, const SonicValue& value);
  bool addIcmp(bool isType, bool isIp6, const SonicValue& value);
  bool addIpType(const SonicValue& value);
  bool addFragment(const SonicValue& value);
  /// Adds a qualifier. If there is one of its type, the field goes into otherMatch unless both are
  /// the same.
  void addQualifier(const Qualifier& qualifier, const SonicValue& value);
  const Qualifier* find(std::uint8_t type) const noexcept;
  bool hasProtocol(std::uint32_t protocol) const noexcept;
  void placeIcmp(bool isContradiction);

  std::vector<Qualifier> qualifiers_;
  std::vector<RangeChecker> ranges_;
  std::vector<std::string> others_;  // NAME=VALUE
  std::size_t othersSize_ = 0;
  std::vector<Icmp> icmp_;
  std::string nextHeader_;  // NAME=VALUE
  std::string ipType_;      // NAME=VALUE of a type that says the family
  bool isIpType_ = false;   // it is IPv4
  bool namesIp_ = false;    // an address of IPv4, or a field of ICMP
  bool namesIp6_ = false;   // the same of IPv6, or its protocol
  std::string otherMatch_;
};

}  // namespace tcamshow
