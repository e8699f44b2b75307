// Trelix: network addresses as values, and their text.
//
// Every address is a small trivially copyable value, zero by default, with equality, order (by the
// address's number, so by its octets from the first), std::hash, and the same ways in and out:
//
//     fromHostOrder     from numbers of this machine, the first octet most significant
//     fromNetworkOrder  from words whose bytes lie in memory as on the wire
//     fromBytes         from the octets, first to last
//     parse, tryParse   from text, strictly: throws Zel::ParseError, or answers std::nullopt
//     stringValue       the canonical text; parse gives the same address back
//     write             the same text into a buffer, for hot paths
//     operator<<        the same text as one item of a stream: width, fill and adjustment apply
//
// Nothing here keeps state or allocates, but for the strings that are returned and thrown.
//
// Threads: distinct objects may be used from distinct threads, and one that nobody changes from
// any.
//
//     Trelix::IpAddr::fromHostOrder(0x0A000001).stringValue() == "10.0.0.1"
#pragma once

#include "Trelix/EthAddr.h"
#include "Trelix/Ip6Addr.h"
#include "Trelix/IpAddr.h"
#include "Trelix/NetU16.h"
