// The canonical text of an IPv6 address, written from the rules of RFC 5952, group by group.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace velmorfuzz {

inline std::string ip6Text(const std::array<std::uint8_t, 16>& octets) {
  unsigned groups[8];
  for (unsigned i = 0; i < 8; ++i) groups[i] = octets[2 * i] * 256U + octets[2 * i + 1];
  bool const isMapped = std::memcmp(octets.data(), "\0\0\0\0\0\0\0\0\0\0\xFF\xFF", 12) == 0;
  unsigned const count = isMapped ? 6 : 8;
  unsigned bestAt = 8;
  unsigned best = 1;
  for (unsigned i = 0; i < count; ++i) {
    unsigned run = 0;
    while (i + run < count && groups[i + run] == 0) ++run;
    if (run > best) {
      best = run;
      bestAt = i;
    }
  }
  std::string text;
  for (unsigned i = 0; i < count; ++i) {
    if (i == bestAt) {
      text += "::";
      i += best - 1;
      continue;
    }
    if (!text.empty() && text.back() != ':') text += ':';
    char group[12];
    std::snprintf(group, sizeof group, "%x", groups[i]);
    text += group;
  }
  if (isMapped) {
    char quad[20];
    std::snprintf(quad, sizeof quad, "%u.%u.%u.%u", octets[12], octets[13], octets[14], octets[15]);
    if (text.back() != ':') text += ':';
    text += quad;
  }
  return text;
}

}  // namespace velmorfuzz
