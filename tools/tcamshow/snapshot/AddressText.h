// The text forms of addresses: Trelix, for the types of the snapshot's model.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Trelix.h"

namespace tcamshow {

/// In network order.
using Ip6Octets = std::array<std::uint8_t, 16>;
using MacOctets = std::array<std::uint8_t, 6>;

/// These functions read a text strictly: nothing before or after the address, no zone, and no
/// leading 0 in a number of a dotted quad. If the text is wrong, they return false and leave the
/// result unchanged.
inline bool ipFromText(std::string_view text, std::uint32_t& address) noexcept {
  auto const parsed = Trelix::IpAddr::tryParse(text);
  if (parsed) address = parsed->hostOrder();
  return parsed.has_value();
}
inline bool ip6FromText(std::string_view text, Ip6Octets& address) noexcept {
  auto const parsed = Trelix::Ip6Addr::tryParse(text);
  if (parsed) address = parsed->bytes();
  return parsed.has_value();
}
/// Six pairs of hexadecimal digits with colons between them.
inline bool macFromText(std::string_view text, MacOctets& address) noexcept {
  auto const parsed = Trelix::EthAddr::tryParse(text);
  if (parsed) address = parsed->bytes();
  return parsed.has_value();
}

template <class Address>
void appendAddress(std::string& out, const Address& address) {
  char text[Address::maxTextSize];
  out.append(text, static_cast<std::size_t>(address.write(text) - text));
}
inline void appendIp(std::string& out, std::uint32_t address) {
  appendAddress(out, Trelix::IpAddr::fromHostOrder(address));
}
inline void appendIp6(std::string& out, const Ip6Octets& address) {
  appendAddress(out, Trelix::Ip6Addr::fromBytes(address));
}
inline void appendMac(std::string& out, const MacOctets& address) {
  appendAddress(out, Trelix::EthAddr::fromBytes(address));
}

/// The mask of the first `length` bits. `length` is at most 32 for IPv4, at most 128 for IPv6.
constexpr std::uint32_t ipMask(unsigned length) noexcept {
  return Trelix::IpAddr::prefixMask(length).hostOrder();
}
constexpr Ip6Octets ip6Mask(unsigned length) noexcept {
  return Trelix::Ip6Addr::prefixMask(length).bytes();
}

}  // namespace tcamshow
