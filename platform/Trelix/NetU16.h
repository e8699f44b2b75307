// NetU16: a 16-bit number as it lies in a packet.
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

/// A 16-bit number in network order: in memory its high byte comes first. value() returns the
/// number that the object was made from. 0 by default.
///
///     NetU16(0x0012).value() == 0x0012
class VELMOR_PLATFORM_API NetU16 {
 public:
  /// The longest text, "65535".
  static constexpr std::size_t maxTextSize = 5;

  constexpr NetU16() noexcept = default;
  explicit constexpr NetU16(U16 number) noexcept : word_(Trelix::networkOrder(number)) {}
  static constexpr NetU16 fromHostOrder(U16 number) noexcept { return NetU16(number); }
  /// From a word in network order: in memory the high byte of the number comes first.
  static constexpr NetU16 fromNetworkOrder(U16 word) noexcept {
    return NetU16(Trelix::networkOrder(word));
  }
  static constexpr NetU16 fromBytes(const std::array<U8, 2>& bytes) noexcept {
    return NetU16(static_cast<U16>(bytes[0] << 8 | bytes[1]));
  }

  constexpr U16 value() const noexcept { return Trelix::networkOrder(word_); }
  constexpr U16 networkOrder() const noexcept { return word_; }

  /// Reads decimal digits without a leading zero, 0 to 65535, and nothing else.
  static NetU16 parse(std::string_view text);
  static std::optional<NetU16> tryParse(std::string_view text) noexcept;

  /// The number in decimal.
  Halvo::String stringValue() const;
  /// Writes the text to `out`, without a NUL, and returns its end. `out` must have room for
  /// maxTextSize bytes.
  char* write(char* out) const noexcept;

  friend constexpr bool operator==(const NetU16&, const NetU16&) noexcept = default;
  friend constexpr std::strong_ordering operator<=>(const NetU16& a, const NetU16& b) noexcept {
    return a.value() <=> b.value();
  }

 private:
  U16 word_ = 0;
};

static_assert(sizeof(NetU16) == 2);

VELMOR_PLATFORM_API std::ostream& operator<<(std::ostream& out, const NetU16& number);

}  // namespace Trelix

template <>
struct VELMOR_PLATFORM_API std::hash<Trelix::NetU16> {
  std::size_t operator()(const Trelix::NetU16& number) const noexcept;
};
