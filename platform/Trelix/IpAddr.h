// IpAddr: an IPv4 address.
//
// Threads: plain values. Different threads may use different objects at the same time. Several
// threads may read one object while no thread changes it.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string_view>

#include "Halvo/String.h"
#include "Trelix/ByteOrder.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Assert.h"
#include "Zel/Base/Types.h"

namespace Trelix {

/// An IPv4 address or mask: any 32 bits. 0.0.0.0 by default.
///
///     U32 const word = 0x0A000001;  // 10.0.0.1: the first octet is the most significant byte
///     IpAddr::fromHostOrder(word) == IpAddr::fromNetworkOrder(htonl(word))
class VELMOR_PLATFORM_API IpAddr {
 public:
  /// The longest text, "255.255.255.255".
  static constexpr std::size_t maxTextSize = 15;

  constexpr IpAddr() noexcept = default;
  /// From a number whose most significant byte is the first octet.
  static constexpr IpAddr fromHostOrder(U32 number) noexcept { return IpAddr(number); }
  /// From a word whose bytes in memory are the octets in order, as inet_addr returns it.
  static constexpr IpAddr fromNetworkOrder(U32 word) noexcept {
    return IpAddr(Trelix::networkOrder(word));
  }
  static constexpr IpAddr fromBytes(const std::array<U8, 4>& octets) noexcept {
    return IpAddr(U32{octets[0]} << 24 | U32{octets[1]} << 16 | U32{octets[2]} << 8 | octets[3]);
  }
  /// The mask of a prefix: the top `length` bits are one. A length over 32 stops the process.
  static constexpr IpAddr prefixMask(unsigned length) noexcept {
    if (length > 32) [[unlikely]] {
      Zel::assertionFailed({"length <= 32", "platform/Trelix/IpAddr", 0,
                            "Trelix::IpAddr Trelix::IpAddr::prefixMask(unsigned int)"});
    }
    return IpAddr(length == 0 ? 0 : ~U32{0} << (32 - length));
  }

  constexpr U32 hostOrder() const noexcept { return number_; }
  constexpr U32 networkOrder() const noexcept { return Trelix::networkOrder(number_); }
  constexpr std::array<U8, 4> bytes() const noexcept {
    return {static_cast<U8>(number_ >> 24), static_cast<U8>(number_ >> 16),
            static_cast<U8>(number_ >> 8), static_cast<U8>(number_)};
  }

  /// Reads four decimal octets, 0 to 255 without leading zeros, joined by '.', and nothing else.
  static IpAddr parse(std::string_view text);
  static std::optional<IpAddr> tryParse(std::string_view text) noexcept;

  /// "192.0.2.1".
  Halvo::String stringValue() const;
  /// Writes the text to `out`, without a NUL, and returns its end. `out` must have room for
  /// maxTextSize bytes. Bytes behind the text may be overwritten.
  char* write(char* out) const noexcept;

  friend constexpr bool operator==(const IpAddr&, const IpAddr&) noexcept = default;
  friend constexpr auto operator<=>(const IpAddr&, const IpAddr&) noexcept = default;

 private:
  explicit constexpr IpAddr(U32 number) noexcept : number_(number) {}

  U32 number_ = 0;  // in host order, which is easy to compare and to print
};

static_assert(sizeof(IpAddr) == 4);

VELMOR_PLATFORM_API std::ostream& operator<<(std::ostream& out, const IpAddr& address);

}  // namespace Trelix

template <>
struct VELMOR_PLATFORM_API std::hash<Trelix::IpAddr> {
  std::size_t operator()(const Trelix::IpAddr& address) const noexcept;
};
