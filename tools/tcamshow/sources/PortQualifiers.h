// The qualifiers and range checkers for ports, ICMP types and ICMP codes.
#pragma once

#include <bit>
#include <cstdint>

#include "snapshot/Snapshot.h"

namespace tcamshow {

constexpr std::uint32_t largestPort = 65535;
constexpr std::uint32_t protocolIcmp = 1;
constexpr std::uint32_t protocolTcp = 6;
constexpr std::uint32_t protocolUdp = 17;
constexpr std::uint32_t protocolIcmp6 = 58;

/// Adds the match of the ports from `low` to `high`, both included; low <= high <= 65535. `type`
/// and `rangeType` are the types for source or destination ports.
///
/// All ports together need no match. A range that one value and mask can express takes a qualifier.
/// Every other range takes a range checker.
inline void addPorts(Entry& entry, std::uint8_t type, std::uint8_t rangeType, std::uint32_t low,
                     std::uint32_t high) {
  std::uint32_t const size = high - low + 1;
  if (size == largestPort + 1) return;
  if (std::has_single_bit(size) && low % size == 0) {
    entry.qualifiers.push_back(wordQualifier(type, low, largestPort & ~(size - 1)));
    return;
  }
  RangeChecker range;
  range.type = rangeType;
  range.low = static_cast<std::int32_t>(low);
  range.high = static_cast<std::int32_t>(high);
  entry.rangeCheckers.push_back(range);
}

/// Adds the match of an ICMP type and code. The type is the high byte of `value` and `mask`, the
/// code the low byte. A byte whose mask is 0 adds nothing. The type becomes a qualifier of the
/// source port, the code one of the destination port.
inline void addIcmp(Entry& entry, std::uint32_t value, std::uint32_t mask) {
  if ((mask & 0xFF00) != 0) {
    entry.qualifiers.push_back(
        wordQualifier(VelmorTcam::qualifierL4SrcPort, value & 0xFF00, mask & 0xFF00));
  }
  if ((mask & 0xFF) != 0) {
    entry.qualifiers.push_back(
        wordQualifier(VelmorTcam::qualifierL4DstPort, value & 0xFF, mask & 0xFF));
  }
}

}  // namespace tcamshow
