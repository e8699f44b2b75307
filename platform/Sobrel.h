// Sobrel: the slab allocator that all nodes live in.
//
// Threads: all of it is for one thread, or for many while Halvo::ThreadControl's switch is on; an
// object may be given back on another thread than it was taken on.
#pragma once

#include <cstddef>
#include <new>

#include "Halvo/MemoryTracker.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Sobrel {

/// The largest size that comes from a slab; larger ones come from the system.
inline constexpr std::size_t largestSlabObject = 1024;

/// Memory for one object of `size` bytes. Sizes up to `largestSlabObject` are rounded up to a
/// multiple of 8 (16 above 256) and share 64-KiB slabs with others of that size, with no word of
/// overhead each. The memory is aligned to 16 bytes when the rounded size is a multiple of 16, else
/// to 8.
///
/// Throws std::bad_alloc when the system has no more.
[[nodiscard]] VELMOR_PLATFORM_API void* slabAlloc(std::size_t size);

/// Gives back what slabAlloc gave for the same `size`; null is allowed. A slab whose last object
/// goes returns to the system, but for one a size that is kept against thrashing.
VELMOR_PLATFORM_API void slabFree(void* memory, std::size_t size) noexcept;

/// As slabAlloc, for an object that is aligned to more than 16 bytes: memory of the system, aligned
/// to `alignment`.
[[nodiscard]] VELMOR_PLATFORM_API void* slabAlloc(std::size_t size, std::align_val_t alignment);
/// Gives back what that gave for the same `size` and `alignment`; null is allowed.
VELMOR_PLATFORM_API void slabFree(void* memory, std::size_t size,
                                  std::align_val_t alignment) noexcept;

/// Memory that came from the slabs or, when no slab could be had, from the system.
struct SlabOrSystem {
  void* memory;     ///< null when both had none
  bool fromSystem;  ///< whom to give it back to
};
/// As slabAlloc, but falls back to the system's allocator for this one object, and answers null
/// when that fails too.
[[nodiscard]] VELMOR_PLATFORM_API SlabOrSystem slabAllocOrSystem(std::size_t size) noexcept;
VELMOR_PLATFORM_API void slabFreeOrSystem(SlabOrSystem object, std::size_t size) noexcept;

/// What the allocator holds.
struct SlabUsage {
  Halvo::U64 slabs = 0;      ///< slabs taken from the system, spare ones included
  Halvo::U64 slabBytes = 0;  ///< their bytes
  Halvo::U64 liveBytes = 0;  ///< bytes of live objects in them, rounded sizes
};
VELMOR_PLATFORM_API SlabUsage slabUsage() noexcept;

/// Returns the spare slabs to the system.
VELMOR_PLATFORM_API void slabTrim() noexcept;

/// slabAlloc and the type's tracker in one: what a node class's operator new does.
inline void* trackedAlloc(Halvo::MemoryTracker& tracker, std::size_t size) {
  void* const memory = slabAlloc(size);
  tracker.allocated(size);
  return memory;
}
inline void trackedFree(Halvo::MemoryTracker& tracker, void* memory, std::size_t size) noexcept {
  tracker.released(size);
  slabFree(memory, size);
}
/// The same for a class that is aligned to more than 16 bytes.
inline void* trackedAlloc(Halvo::MemoryTracker& tracker, std::size_t size,
                          std::align_val_t alignment) {
  void* const memory = slabAlloc(size, alignment);
  tracker.allocated(size);
  return memory;
}
inline void trackedFree(Halvo::MemoryTracker& tracker, void* memory, std::size_t size,
                        std::align_val_t alignment) noexcept {
  tracker.released(size);
  slabFree(memory, size, alignment);
}

}  // namespace Sobrel
