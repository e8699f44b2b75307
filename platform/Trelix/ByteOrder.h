// Conversion between host byte order and network byte order.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <bit>

#include "Zel/Base/Types.h"

namespace Trelix {

using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;

/// Converts a number to the word whose bytes in memory are its bytes, the most significant first.
/// The same function converts back.
constexpr U16 networkOrder(U16 number) noexcept {
  return std::endian::native == std::endian::big ? number : __builtin_bswap16(number);
}
constexpr U32 networkOrder(U32 number) noexcept {
  return std::endian::native == std::endian::big ? number : __builtin_bswap32(number);
}

}  // namespace Trelix
