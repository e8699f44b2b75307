// Numbers of this machine and words as they lie on the wire.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <bit>

#include "Zel/Base/Types.h"

namespace Trelix {

using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;

/// The word whose bytes in memory are those of `number`, the most significant first. Its own
/// inverse.
constexpr U16 networkOrder(U16 number) noexcept {
  return std::endian::native == std::endian::big ? number : __builtin_bswap16(number);
}
constexpr U32 networkOrder(U32 number) noexcept {
  return std::endian::native == std::endian::big ? number : __builtin_bswap32(number);
}

}  // namespace Trelix
