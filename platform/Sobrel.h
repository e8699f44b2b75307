// Sobrel: the slab allocator, which gives all nodes their memory.
//
// Threads: for one thread, or for several while Halvo::ThreadControl's switch is on. One thread may
// free what another allocated.
#pragma once

#include <cstddef>
#include <new>

#include "Halvo/MemoryTracker.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Sobrel {

/// The largest size, in bytes, that comes from a slab. Larger objects come from the system.
inline constexpr std::size_t largestSlabObject = 1024;

/// Allocates memory for one object of `size` bytes. A size up to `largestSlabObject` is rounded up
/// to a multiple of 8, above 256 to a multiple of 16. Objects of the same rounded size share slabs
/// of 64 KiB, with no overhead for each object. The memory is aligned to 16 bytes when the rounded
/// size is a multiple of 16, otherwise to 8.
///
/// Throws std::bad_alloc when the system has no more memory.
[[nodiscard]] VELMOR_PLATFORM_API void* slabAlloc(std::size_t size);

/// Frees memory that slabAlloc returned for the same `size`. Null is allowed. A slab whose last
/// object is freed goes back to the system; one empty slab of each size is kept as a spare, to
/// avoid thrashing.
VELMOR_PLATFORM_API void slabFree(void* memory, std::size_t size) noexcept;

/// As slabAlloc, for an object that needs an alignment of more than 16 bytes. The memory comes from
/// the system and is aligned to `alignment`.
[[nodiscard]] VELMOR_PLATFORM_API void* slabAlloc(std::size_t size, std::align_val_t alignment);
/// Frees memory that the slabAlloc above returned for the same `size` and `alignment`. Null is
/// allowed.
VELMOR_PLATFORM_API void slabFree(void* memory, std::size_t size,
                                  std::align_val_t alignment) noexcept;

/// Memory from a slab or from the system.
struct SlabOrSystem {
  void* memory;     ///< null when neither had any left
  bool fromSystem;  ///< tells slabFreeOrSystem where to return it
};
/// As slabAlloc, but never throws. When no slab can be allocated, it takes this one object from the
/// system; when that fails too, `memory` is null.
[[nodiscard]] VELMOR_PLATFORM_API SlabOrSystem slabAllocOrSystem(std::size_t size) noexcept;
VELMOR_PLATFORM_API void slabFreeOrSystem(SlabOrSystem object, std::size_t size) noexcept;

/// The memory that the allocator holds.
struct SlabUsage {
  Halvo::U64 slabs = 0;      ///< slabs taken from the system, spares included
  Halvo::U64 slabBytes = 0;  ///< bytes of these slabs
  Halvo::U64 liveBytes = 0;  ///< bytes of live objects in the slabs, by their rounded sizes
};
VELMOR_PLATFORM_API SlabUsage slabUsage() noexcept;

/// Returns the spare slabs to the system.
VELMOR_PLATFORM_API void slabTrim() noexcept;

/// Allocates with slabAlloc and counts it in the tracker. The operator new of a node class calls
/// this.
inline void* trackedAlloc(Halvo::MemoryTracker& tracker, std::size_t size) {
  void* const memory = slabAlloc(size);
  tracker.allocated(size);
  return memory;
}
inline void trackedFree(Halvo::MemoryTracker& tracker, void* memory, std::size_t size) noexcept {
  tracker.released(size);
  slabFree(memory, size);
}
/// The same for a class that needs an alignment of more than 16 bytes.
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
