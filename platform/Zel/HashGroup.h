// The pieces below HashMap2018 that know nothing of its keys and values.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

#include "Halvo/Types.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Zel::impl {

/// Which of the 16 bytes from `bytes` on equal `value`: bit i stands for byte i.
inline U32 bytesEqual16(const U8* bytes, U8 value) noexcept {
#if defined(__SSE2__)
  __m128i const all = _mm_loadu_si128(static_cast<const __m128i*>(static_cast<const void*>(bytes)));
  __m128i const equal = _mm_cmpeq_epi8(all, _mm_set1_epi8(static_cast<char>(value)));
  return static_cast<U32>(_mm_movemask_epi8(equal));
#else
  U32 mask = 0;
  for (U32 i = 0; i < 16; ++i) mask |= static_cast<U32>(bytes[i] == value) << i;
  return mask;
#endif
}

/// Which of the 16 bytes from `bytes` on have their highest bit set.
inline U32 bytesMarked16(const U8* bytes) noexcept {
#if defined(__SSE2__)
  __m128i const all = _mm_loadu_si128(static_cast<const __m128i*>(static_cast<const void*>(bytes)));
  return static_cast<U32>(_mm_movemask_epi8(all));
#else
  U32 mask = 0;
  for (U32 i = 0; i < 16; ++i) mask |= static_cast<U32>(bytes[i] >> 7) << i;
  return mask;
#endif
}

/// Spreads a hash, which may be the key itself, over all 64 bits: both halves of a wide product, so
/// that keys which differ in their high bits alone part as well as those which differ in the low.
inline U64 hashMix(U64 hash) noexcept {
  __extension__ using Wide = unsigned __int128;
  Wide const product = static_cast<Wide>(hash ^ 0x9AE16A3B2F90404FU) * 0x9E3779B97F4A7C15U;
  return static_cast<U64>(product) ^ static_cast<U64>(product >> 64);
}

constexpr std::size_t roundUp(std::size_t size, std::size_t multiple) noexcept {
  return (size + multiple - 1) / multiple * multiple;
}
constexpr std::size_t larger(std::size_t a, std::size_t b) noexcept { return a < b ? b : a; }

/// The first word of a HashTable's block. A short one tells how many elements it has room for; one
/// of groups has a capacity of zero there and tells the logarithm of the number of its groups.
struct TableHead {
  U16 capacity;
  U16 detail;  ///< short: the offset of the values; groups: the logarithm of their number
};

/// Where things lie in a short table, one whose elements stand side by side from the front: head,
/// one tag byte a slot, keys, values.
template <class K, class V>
struct ShortLayout {
  static constexpr std::size_t tagsAt = sizeof(TableHead);
  static constexpr std::size_t keysAt(std::size_t capacity) noexcept {
    return roundUp(tagsAt + capacity, alignof(K));
  }
  static constexpr std::size_t valuesAt(std::size_t capacity) noexcept {
    return roundUp(keysAt(capacity) + capacity * sizeof(K), alignof(V));
  }
  // Tags are read 16 at a time, whatever their number.
  static constexpr std::size_t bytes(std::size_t capacity) noexcept {
    return roundUp(larger(valuesAt(capacity) + capacity * sizeof(V), tagsAt + 16),
                   larger(8, larger(alignof(K), alignof(V))));
  }
};

/// Where things lie in a table of groups. A group has 15 slots: 15 tags, the overflow count, keys,
/// values. A tag is zero for an empty slot, else 7 bits of the hash and the mark 0x80. The overflow
/// count tells how many elements had this group on their way and found it full; while it is zero a
/// search ends here. At 255 it sticks.
template <class K, class V>
struct GroupLayout {
  static constexpr U32 slots = 15;
  static constexpr U32 slotMask = (1U << slots) - 1;
  static constexpr U32 fill = 13;  // elements a group, on average, before the table grows
  static constexpr std::size_t groupsAt = 16;
  static constexpr std::size_t overflowAt = 15;
  static constexpr std::size_t keysAt = roundUp(16, alignof(K));
  static constexpr std::size_t valuesAt = roundUp(keysAt + slots * sizeof(K), alignof(V));
  static constexpr std::size_t stride =
      roundUp(valuesAt + slots * sizeof(V), larger(alignof(K), alignof(V)));
  static constexpr U32 maxLogGroups = 27;  // a slot's number fits 32 bits
  static constexpr std::size_t bytes(U32 logGroups) noexcept {
    return groupsAt + (stride << logGroups);
  }
};

}  // namespace Zel::impl
