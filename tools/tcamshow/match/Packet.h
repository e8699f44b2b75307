// Packets as people write them: 'tcp src=10.1.2.3 dst=192.0.2.80 dport=443 flags=+S-A'.
//
// Threads: plain values, and functions of their arguments alone.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "match/FieldText.h"
#include "match/Match.h"

namespace tcamshow {

/// A set of packets.
struct Packets {
  /// Disjoint; at least one, and none is empty.
  std::vector<Match> boxes;
  /// The fields that the text names.
  FieldMask named = 0;
};

/// Reads a set of packets: names of protocols and FIELD=VALUES, separated by blanks. A field that
/// is not named may have any value.
///
/// tcp, udp, icmp, icmp6, ip and ip6 are the protocols. src, dst, icmp and ip make packets IPv4;
/// src6, dst6, hoplimit, icmp6 and ip6 make them IPv6; any other name of a field above Ethernet
/// makes them one or the other, unless ethertype is named. icmp-type and icmp-code need icmp or
/// icmp6.
///
/// Throws TextFault for what cannot be read, names a field twice, or contradicts itself.
Packets packetsFromText(std::string_view text);

/// One packet of the match, as text that packetsFromText reads: a value for each of `named`, and
/// the words that make it IPv4 or IPv6.
std::string packetText(const Match& match, FieldMask named);

}  // namespace tcamshow
