// The value records of a shadow.
//
// Threads: plain values. Different threads may use different objects at the same time. Several
// threads may read one object while no thread changes it.
#pragma once

#include "EntryShadow/Enums.h"
#include "Trelix.h"
#include "Zel/Base/Types.h"

namespace VelmorTcam {

/// The 32-bit value and mask that the hardware matches on. Numbers are in host order: the first
/// octet of an IPv4 address is the most significant byte.
///
/// A record is set when it is not equal to a default-constructed record. A record made from a value
/// and a mask is always set, even when both are 0.
class Qualifier {
 public:
  constexpr Qualifier() = default;
  constexpr Qualifier(U32 value, U32 mask) noexcept : value_(value), mask_(mask), given_(1) {}

  constexpr U32 value() const noexcept { return value_; }
  constexpr U32 mask() const noexcept { return mask_; }
  constexpr bool isEq(const Qualifier& other) const noexcept {
    return value_ == other.value_ && mask_ == other.mask_ && given_ == other.given_;
  }
  /// Whether the record is set.
  constexpr explicit operator bool() const noexcept { return !isEq(Qualifier()); }
  friend constexpr bool operator==(const Qualifier& a, const Qualifier& b) { return a.isEq(b); }

 private:
  U32 value_ = 0;
  U32 mask_ = 0;
  U8 given_ = 0;
};

/// The MAC address and mask that the hardware matches on. The rule of Qualifier says when it is
/// set.
class EthAddrQualifier {
 public:
  constexpr EthAddrQualifier() = default;
  constexpr EthAddrQualifier(const Trelix::EthAddr& address, const Trelix::EthAddr& mask) noexcept
      : given_(1), address_(address), mask_(mask) {}

  constexpr const Trelix::EthAddr& address() const noexcept { return address_; }
  constexpr const Trelix::EthAddr& mask() const noexcept { return mask_; }
  constexpr bool isEq(const EthAddrQualifier& other) const noexcept {
    return given_ == other.given_ && address_ == other.address_ && mask_ == other.mask_;
  }
  constexpr explicit operator bool() const noexcept { return !isEq(EthAddrQualifier()); }
  friend constexpr bool operator==(const EthAddrQualifier& a, const EthAddrQualifier& b) {
    return a.isEq(b);
  }

 private:
  U8 given_ = 0;
  Trelix::EthAddr address_;
  Trelix::EthAddr mask_;
};

/// The IPv6 address and mask that the hardware matches on. All zero by default. A record made from
/// an address and a mask that are all zero equals a default-constructed record: it is not set.
class Ip6AddrQualifier {
 public:
  constexpr Ip6AddrQualifier() = default;
  constexpr Ip6AddrQualifier(const Trelix::Ip6Addr& address, const Trelix::Ip6Addr& mask) noexcept
      : address_(address), mask_(mask) {}

  constexpr const Trelix::Ip6Addr& address() const noexcept { return address_; }
  constexpr const Trelix::Ip6Addr& mask() const noexcept { return mask_; }
  constexpr bool isEq(const Ip6AddrQualifier& other) const noexcept {
    return address_ == other.address_ && mask_ == other.mask_;
  }
  constexpr explicit operator bool() const noexcept { return !isEq(Ip6AddrQualifier()); }
  friend constexpr bool operator==(const Ip6AddrQualifier& a, const Ip6AddrQualifier& b) {
    return a.isEq(b);
  }

 private:
  Trelix::Ip6Addr address_;
  Trelix::Ip6Addr mask_;
};

/// The bounds of a range checker, both inclusive, and how far the hardware has programmed it.
class RangeCheckerStatus {
 public:
  constexpr RangeCheckerStatus() = default;
  constexpr RangeCheckerStatus(S32 low, S32 high,
                               HwQualStatus status = hwQualStatusProgrammed) noexcept
      : low_(low), high_(high), status_(status) {}

  constexpr S32 low() const noexcept { return low_; }
  constexpr S32 high() const noexcept { return high_; }
  constexpr HwQualStatus status() const noexcept { return status_; }
  friend constexpr bool operator==(const RangeCheckerStatus&, const RangeCheckerStatus&) = default;

 private:
  S32 low_ = 0;
  S32 high_ = 0;
  HwQualStatus status_ = hwQualStatusInvalid;
};

/// The hardware counters of an entry, as they were last read.
class CounterSet {
 public:
  constexpr CounterSet() = default;
  constexpr CounterSet(U64 packets, U64 bytes) noexcept : packets_(packets), bytes_(bytes) {}

  constexpr U64 packets() const noexcept { return packets_; }
  constexpr U64 bytes() const noexcept { return bytes_; }
  friend constexpr bool operator==(const CounterSet&, const CounterSet&) = default;

 private:
  U64 packets_ = 0;
  U64 bytes_ = 0;
};

}  // namespace VelmorTcam
