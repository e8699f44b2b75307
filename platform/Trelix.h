// Trelix: network addresses as values, and their text.
//
// Every address is a small, trivially copyable value, zero by default. It has equality, std::hash,
// an order (as a number, so by its octets from the first), and these conversions:
//
//     fromHostOrder     from numbers in host byte order; the first octet is the most significant
//     fromNetworkOrder  from words whose bytes in memory are in wire order
//     fromBytes         from the octets, first to last
//     parse             from text, strictly; throws Zel::ParseError when the text is wrong
//     tryParse          as parse, but returns std::nullopt when the text is wrong
//     stringValue       the canonical text; parse returns the same address
//     write             the same text into a buffer, for hot paths
//     operator<<        the same text as one item of a stream: width, fill and adjustment apply
//
// Nothing here keeps state. Only returned strings and thrown errors allocate memory.
//
// Threads: different threads may use different objects at the same time. Several threads may read
// one object while no thread changes it.
//
//     Trelix::IpAddr::fromHostOrder(0x0A000001).stringValue() == "10.0.0.1"
#pragma once

#include "Trelix/EthAddr.h"
#include "Trelix/Ip6Addr.h"
#include "Trelix/IpAddr.h"
#include "Trelix/NetU16.h"
