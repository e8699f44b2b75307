// The parts that the tables of HashMap2018 share.
//
// Threads: as the map.
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

/// Tells which of the 16 bytes at `bytes` equal `value`: bit i of the result stands for byte i.
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

/// Tells which of the 16 bytes at `bytes` have their highest bit set: bit i of the result stands
/// for byte i.
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

/// The next capacity of a table of up to 16 elements as it grows: 1, 4, 10, 16. There are few
/// steps, since each one moves all elements.
constexpr std::size_t nextShortRoom(std::size_t room) noexcept {
  if (room < 4) return room == 0 ? 1 : 4;
  return room < 10 ? 10 : 16;
}

/// The memory of tables: slab memory. If there is a tag, its tracker counts it.
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

/// One word that changes whenever the table changes. Its high half is the generation. Its low half
/// belongs to the table, and includes the number of elements. As long as the word is the same, so
/// are the elements and their places: a step of an iterator compares only this word.
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
