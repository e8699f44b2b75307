// The fields of a packet that entries match on.
//
// Threads: any thread. There is only constant data, and the functions keep no state.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "match/FieldSet.h"

namespace tcamshow {

/// One word of a TCAM's key. Every packet has every field: if its protocol lacks the field, the
/// word may have any value. Addresses have their first octet in the highest bits.
enum class Field : std::uint8_t {
  src,        ///< IPv4 source address
  dst,        ///< IPv4 destination address
  src6,       ///< IPv6 source address
  dst6,       ///< IPv6 destination address
  smac,       ///< Ethernet source address
  dmac,       ///< Ethernet destination address
  ethertype,  ///< 0x0800: an IPv4 packet; 0x86dd: an IPv6 packet
  vlan,       ///< outer VLAN id
  proto,      ///< IP protocol or IPv6 next header
  tc,         ///< traffic class or type-of-service byte; its upper six bits are the DSCP
  frag,       ///< 1 for a fragment
  flags,      ///< TCP: FIN 1, SYN 2, RST 4, PSH 8, ACK 16, URG 32
  sport,      ///< source port; for ICMP, the type in the high byte
  dport,      ///< destination port; for ICMP, the code in the low byte
  hoplimit,   ///< IPv6
  length,     ///< IP length in bytes
};
inline constexpr std::size_t fieldCount = 16;

constexpr std::size_t indexOf(Field field) noexcept { return static_cast<std::size_t>(field); }
/// The field's width in bits.
constexpr unsigned bitsOf(Field field) noexcept {
  constexpr std::array<unsigned, fieldCount> bits{32, 32, 128, 128, 48, 48, 16, 12,
                                                  8,  8,  1,   6,   16, 16, 8,  16};
  return bits[indexOf(field)];
}

/// A set of fields, one bit each.
using FieldMask = std::uint16_t;
constexpr FieldMask bitOf(Field field) noexcept {
  return static_cast<FieldMask>(1U << indexOf(field));
}

inline constexpr Word etherTypeIp = 0x0800;
inline constexpr Word etherTypeIp6 = 0x86DD;
inline constexpr Word protocolNumberIcmp = 1;
inline constexpr Word protocolNumberIcmp6 = 58;

/// The text form of a field's values.
enum class ValueForm : std::uint8_t { number, ip, ip6, mac, protocol, etherType, flags, frag };

/// A name that people use for a field or for a part of one: bits [shift, shift + bits).
struct FieldName {
  std::string_view name;
  Field field;
  std::uint8_t shift;
  std::uint8_t bits;
  ValueForm form;
};

/// All names: those of the fields in their order, then dscp, icmp-type and icmp-code.
std::span<const FieldName> fieldNames() noexcept;
/// Null when no field has that name.
const FieldName* fieldByName(std::string_view name) noexcept;
/// The name of a whole field.
const FieldName& nameOf(Field field) noexcept;

}  // namespace tcamshow
