// The text form of packets: 'tcp src=10.1.2.3 dst=192.0.2.80 dport=443 flags=+S-A'.
//
// Threads: plain values. The functions keep no state; any thread may call them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "match/FieldText.h"
#include "match/Match.h"

namespace tcamshow {

/// A set of packets.
struct Packets {
  /// The packets in disjoint parts: at least one part, and no empty part.
  std::vector<Match> boxes;
  /// The fields that the text names.
  FieldMask named = 0;
};

/// Reads a set of packets: protocols and FIELD=VALUES, separated by blanks. A field that is not
/// named may have any value.
///
/// The protocols are tcp, udp, icmp, icmp6, ip and ip6. src, dst, icmp and ip make the packets
/// IPv4; src6, dst6, hoplimit, icmp6 and ip6 make them IPv6. Any other field above Ethernet makes
/// them IPv4 or IPv6, unless ethertype is named. icmp-type and icmp-code need icmp or icmp6.
///
/// Throws TextFault if the text cannot be read, names a field twice, or contradicts itself.
Packets packetsFromText(std::string_view text);

/// One packet of the match, as text for packetsFromText: a value for each field of `named`, and the
/// words that make it IPv4 or IPv6.
std::string packetText(const Match& match, FieldMask named);

/// One packet of a match that is not empty: of each field of `named` and of each that the match
/// limits, it has one value. If the kind of packet decides what `named` means, the packet is of one
/// kind: IPv4 if the match allows it, else IPv6 if it allows that.
Match onePacketOf(const Match& match, FieldMask named) noexcept;

/// All packets of a match, as text for packetsFromText as far as that can say them. The text of
/// every packet is "any", the text of no packet is "none".
std::string matchText(const Match& match);

}  // namespace tcamshow
