// Ip6Addr: an IPv6 address.
//
// Threads: plain values. Different threads may use different objects at the same time. Several
// threads may read one object while no thread changes it.
#pragma once

#include <array>
#include <bit>
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

/// An IPv6 address or mask: any 128 bits. They are stored as four 32-bit words in network order, so
/// the 16 bytes of the object in memory are the octets of the address, first to last. `::` by
/// default.
///
///     Ip6Addr::fromHostOrder(0x20010DB8, 0, 0, 1).stringValue() == "2001:db8::1"
class VELMOR_PLATFORM_API Ip6Addr {
 public:
  /// The longest text, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff".
  static constexpr std::size_t maxTextSize = 39;

  constexpr Ip6Addr() noexcept = default;
  /// From four numbers in host order. The first one is the top 32 bits of the address.
  static constexpr Ip6Addr fromHostOrder(U32 first, U32 second, U32 third, U32 fourth) noexcept {
    return fromNetworkOrder(Trelix::networkOrder(first), Trelix::networkOrder(second),
                            Trelix::networkOrder(third), Trelix::networkOrder(fourth));
  }
  /// From four words whose bytes in memory are octets 0-3, 4-7, 8-11 and 12-15, as in in6_addr.
  static constexpr Ip6Addr fromNetworkOrder(U32 first, U32 second, U32 third, U32 fourth) noexcept {
    Ip6Addr address;
    address.words_[0] = first;
    address.words_[1] = second;
    address.words_[2] = third;
    address.words_[3] = fourth;
    return address;
  }
  static constexpr Ip6Addr fromBytes(const std::array<U8, 16>& octets) noexcept {
    return std::bit_cast<Ip6Addr>(octets);
  }
  /// The mask of a prefix: the top `length` bits are one. A length over 128 stops the process.
  static constexpr Ip6Addr prefixMask(unsigned length) noexcept {
    if (length > 128) [[unlikely]] {
      Zel::assertionFailed({"length <= 128", "platform/Trelix/Ip6Addr", 0,
                            "Trelix::Ip6Addr Trelix::Ip6Addr::prefixMask(unsigned int)"});
    }
    Ip6Addr mask;
    for (U32& word : mask.words_) {
      unsigned const ones = length < 32 ? length : 32;
      word = Trelix::networkOrder(ones == 0 ? U32{0} : ~U32{0} << (32 - ones));
      length -= ones;
    }
    return mask;
  }

  /// Word `index` (0 to 3) as a number in host order.
  constexpr U32 hostOrder(std::size_t index) const noexcept {
    return Trelix::networkOrder(words_[index]);
  }
  /// Word `index` (0 to 3) in network order, as it is in memory.
  constexpr U32 networkOrder(std::size_t index) const noexcept { return words_[index]; }
  constexpr std::array<U8, 16> bytes() const noexcept {
    return std::bit_cast<std::array<U8, 16>>(words_);
  }
  /// Whether the address is in ::ffff:0:0/96.
  constexpr bool isIp4Mapped() const noexcept {
    return (words_[0] | words_[1]) == 0 && words_[2] == Trelix::networkOrder(U32{0xFFFF});
  }

  /// Reads every form of RFC 4291, section 2.2: eight groups of one to four hexadecimal digits of
  /// either case. "::" may stand once, for one or more zero groups. The last two groups may be a
  /// dotted quad. A zone, a prefix length, and text before or after the address are errors.
  static Ip6Addr parse(std::string_view text);
  static std::optional<Ip6Addr> tryParse(std::string_view text) noexcept;

  /// The canonical text of RFC 5952: lower case, no leading zeros, "::" for the longest run of two
  /// or more zero groups. If two runs are equally long, "::" is the left one. Only IPv4-mapped
  /// addresses end in a dotted quad: "::ffff:192.0.2.1".
  Halvo::String stringValue() const;
  /// Writes the text to `out`, without a NUL, and returns its end. `out` must have room for
  /// maxTextSize bytes. Bytes behind the text may be overwritten.
  char* write(char* out) const noexcept;

  friend constexpr bool operator==(const Ip6Addr&, const Ip6Addr&) noexcept = default;
  friend constexpr std::strong_ordering operator<=>(const Ip6Addr& a, const Ip6Addr& b) noexcept {
    for (std::size_t i = 0; i < 3; ++i) {
      if (a.words_[i] != b.words_[i]) return a.hostOrder(i) <=> b.hostOrder(i);
    }
    return a.hostOrder(3) <=> b.hostOrder(3);
  }

 private:
  U32 words_[4] = {};
};

static_assert(sizeof(Ip6Addr) == 16);

/// The number of leading one bits of a mask: 0 for all zeros, 128 for all ones. Bits after the
/// first zero bit do not count: a mask that is not contiguous gives the length of its leading run.
VELMOR_PLATFORM_API U8 ip6AddrToPrefixLen(const Ip6Addr& mask) noexcept;

VELMOR_PLATFORM_API std::ostream& operator<<(std::ostream& out, const Ip6Addr& address);

}  // namespace Trelix

template <>
struct VELMOR_PLATFORM_API std::hash<Trelix::Ip6Addr> {
  std::size_t operator()(const Trelix::Ip6Addr& address) const noexcept;
};
