#include "AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {
std::uint64_t count = 0;
}

namespace velmorbench {
std::uint64_t allocationsSoFar() noexcept { return count; }
}  // namespace velmorbench

void* operator new(std::size_t size) {
  ++count;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
