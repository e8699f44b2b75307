// The text forms of addresses, read strictly.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tcamshow {

/// In network order.
using Ip6Octets = std::array<std::uint8_t, 16>;
using MacOctets = std::array<std::uint8_t, 6>;

/// Each reads a whole text: nothing may stand before or after the address, there are no zones, and
/// no number of a dotted quad begins with a needless 0. False, and the result untouched, otherwise.
bool ipFromText(std::string_view text, std::uint32_t& address) noexcept;
bool ip6FromText(std::string_view text, Ip6Octets& address) noexcept;
/// Six pairs of hexadecimal digits with colons between them.
bool macFromText(std::string_view text, MacOctets& address) noexcept;

void appendIp(std::string& out, std::uint32_t address);
void appendIp6(std::string& out, const Ip6Octets& address);
void appendMac(std::string& out, const MacOctets& address);

/// The mask of the first `length` bits; `length` is at most 32, or 128.
constexpr std::uint32_t ipMask(unsigned length) noexcept {
  return length == 0 ? 0 : ~std::uint32_t{0} << (32 - length);
}
constexpr Ip6Octets ip6Mask(unsigned length) noexcept {
  Ip6Octets mask{};
  for (std::uint8_t& octet : mask) {
    unsigned const bits = length < 8 ? length : 8;
    octet = static_cast<std::uint8_t>(0xFF00U >> bits);
    length -= bits;
  }
  return mask;
}

}  // namespace tcamshow
