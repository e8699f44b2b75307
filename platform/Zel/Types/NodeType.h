// ZEL_NODE_TYPE: the declarations of every node class that has a type descriptor.
//
// Threads: memory is allocated as by Sobrel.
#pragma once

#include <cstddef>
#include <new>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Node.h"
#include "Sobrel.h"

/// Put this into the body of a class that derives from Halvo::Node. It declares the allocation of
/// the class (slab memory, counted by the class's own tracker), its type descriptor and its
/// tracker. The class defines `memAllocationTracker_` and `typeData()` in its source file. A
/// derived class that does not use the macro is allocated in the same way, and counted with its
/// nearest base class that uses it. A class that needs an alignment of more than 16 bytes gets
/// memory from the system, with that alignment. After the macro, the access is `public`.
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
