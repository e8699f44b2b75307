// EthAddr: an Ethernet (MAC) address.
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
#include "Zel/Base/Types.h"

namespace Trelix {

/// An Ethernet address or mask: any 48 bits, as six octets in order. All zero by default. It takes
/// six bytes and needs no alignment.
///
///     EthAddr::fromHostOrder(0x02005E000001).stringValue() == "02:00:5e:00:00:01"
class VELMOR_PLATFORM_API EthAddr {
 public:
  /// The size of every text, in bytes.
  static constexpr std::size_t maxTextSize = 17;

  constexpr EthAddr() noexcept = default;
  /// From a number whose bits 47 to 40 are the first octet. Bits above 47 are ignored.
  static constexpr EthAddr fromHostOrder(U64 number) noexcept {
    EthAddr address;
    for (std::size_t i = 6; i-- > 0; number >>= 8) {
      address.octets_[i] = static_cast<U8>(number);
    }
    return address;
  }
  /// From three words whose bytes in memory are octets 0-1, 2-3 and 4-5.
  static constexpr EthAddr fromNetworkOrder(U16 first, U16 second, U16 third) noexcept {
    return fromHostOrder(U64{Trelix::networkOrder(first)} << 32 |
                         U64{Trelix::networkOrder(second)} << 16 | Trelix::networkOrder(third));
  }
  static constexpr EthAddr fromBytes(const std::array<U8, 6>& octets) noexcept {
    EthAddr address;
    address.octets_ = octets;
    return address;
  }

  constexpr U64 hostOrder() const noexcept {
    U64 number = 0;
    for (U8 const octet : octets_) number = number << 8 | octet;
    return number;
  }
  constexpr const std::array<U8, 6>& bytes() const noexcept { return octets_; }

  /// Reads six pairs of hexadecimal digits, of either case, joined by ':', and nothing else.
  static EthAddr parse(std::string_view text);
  static std::optional<EthAddr> tryParse(std::string_view text) noexcept;

  /// "02:00:5e:00:00:01", in lower case.
  Halvo::String stringValue() const;
  /// Writes the text to `out`, maxTextSize bytes without a NUL, and returns its end.
  char* write(char* out) const noexcept;

  friend constexpr bool operator==(const EthAddr&, const EthAddr&) noexcept = default;
  friend constexpr std::strong_ordering operator<=>(const EthAddr& a, const EthAddr& b) noexcept {
    return a.hostOrder() <=> b.hostOrder();
  }

 private:
  std::array<U8, 6> octets_ = {};
};

static_assert(sizeof(EthAddr) == 6 && alignof(EthAddr) == 1);

VELMOR_PLATFORM_API std::ostream& operator<<(std::ostream& out, const EthAddr& address);

}  // namespace Trelix

template <>
struct VELMOR_PLATFORM_API std::hash<Trelix::EthAddr> {
  std::size_t operator()(const Trelix::EthAddr& address) const noexcept;
};
