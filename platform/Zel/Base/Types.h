// The fixed-width integer names that every header of the platform uses.
//
// Threads: only names of types.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Halvo {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
using S8 = std::int8_t;
using S16 = std::int16_t;
using S32 = std::int32_t;
using S64 = std::int64_t;

}  // namespace Halvo

namespace Zel {
using Halvo::S16;
using Halvo::S32;
using Halvo::S64;
using Halvo::S8;
using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;
}  // namespace Zel
