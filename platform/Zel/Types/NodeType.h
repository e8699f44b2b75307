// What every described class of nodes declares.
//
// Threads: allocation is as Sobrel's.
#pragma once

#include <cstddef>
#include <new>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Node.h"
#include "Sobrel.h"

/// Declares, in the body of a class derived from Halvo::Node, its allocation (slab memory, counted
/// by the class's own tracker), its type descriptor and the tracker. The class defines
/// `memAllocationTracker_` and `typeData()` in its source file. A class derived further that does
/// not use the mark is allocated the same way and counted with its nearest base that does.
/// A class that is aligned to more than 16 bytes gets memory of the system with its alignment.
/// Leaves the access at `public`.
#define ZEL_NODE_TYPE                                                            \
 public:                                                                         \
  static void* operator new(std::size_t size) {                                  \
    return ::Sobrel::trackedAlloc(memAllocationTracker_, size);                  \
  }                                                                              \
  static void* operator new(std::size_t size, std::align_val_t alignment) {      \
    return ::Sobrel::trackedAlloc(memAllocationTracker_, size, alignment);       \
  }                                                                              \
  static void* operator new(std::size_t, void* place) noexcept { return place; } \
  static void operator delete(void* memory, std::size_t size) noexcept {         \
    ::Sobrel::trackedFree(memAllocationTracker_, memory, size);                  \
  }                                                                              \
  static void operator delete(void* memory, std::size_t size,                    \
                              std::align_val_t alignment) noexcept {             \
    ::Sobrel::trackedFree(memAllocationTracker_, memory, size, alignment);       \
  }                                                                              \
  static void operator delete(void*, void*) noexcept {}                          \
  const ::Zel::TypeDescriptor* typeData() const override;                        \
  static ::Zel::AllocationTracker memAllocationTracker_
