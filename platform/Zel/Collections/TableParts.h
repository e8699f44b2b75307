// What the tables of HashMap2018 have in common.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "Sobrel.h"
#include "Zel/Base/Types.h"

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

constexpr std::size_t roundUp(std::size_t size, std::size_t multiple) noexcept {
  return (size + multiple - 1) / multiple * multiple;
}
constexpr std::size_t larger(std::size_t a, std::size_t b) noexcept { return a < b ? b : a; }

/// The sizes that a table of up to 16 elements goes through as it grows: few, since every step
/// moves all elements.
constexpr std::size_t nextShortRoom(std::size_t room) noexcept {
  if (room < 4) return room == 0 ? 1 : 4;
  return room < 10 ? 10 : 16;
}

/// The memory of tables: slab memory, which is counted by the tag's tracker, where there is a tag.
template <class Tag>
struct TableMemory {
  static void* take(std::size_t bytes) {
    if constexpr (std::is_void_v<Tag>) {
      return Sobrel::slabAlloc(bytes);
    } else {
      return Sobrel::trackedAlloc(Tag::memAllocationTracker_, bytes);
    }
  }
  static void give(void* block, std::size_t bytes) noexcept {
    if constexpr (std::is_void_v<Tag>) {
      Sobrel::slabFree(block, bytes);
    } else {
      Sobrel::trackedFree(Tag::memAllocationTracker_, block, bytes);
    }
  }
};

template <class T>
void relocate(T* from, T* to) noexcept {
  new (to) T(std::move(*from));
  std::destroy_at(from);
}

/// One word that tells a table's changes: the generation in the high half; in the low one what the
/// table keeps there, the number of elements included. Of one value of this word there is one
/// table, unmoved: a step of an iterator compares this alone.
class TableState {
 public:
  /// Changes with every insertion and removal, and when elements move.
  U64 state() const noexcept { return state_; }
  U32 generation() const noexcept { return static_cast<U32>(state_ >> 32); }
  void generationAdvance() noexcept { state_ += U64{2} << 32; }

 protected:
  static constexpr U64 lowHalf = 0xFFFFFFFF;

  TableState() noexcept = default;
  ~TableState() = default;

  U64 state_ = U64{1} << 32;
};

}  // namespace Zel::impl
