#include "CountedNew.h"

#include <cstdlib>
#include <new>

namespace CountedNew {

std::size_t allocations = 0;
std::size_t lastRefused = 0;

}  // namespace CountedNew

void* operator new(std::size_t size) {
  ++CountedNew::allocations;
  if (size > CountedNew::largest) {
    CountedNew::lastRefused = size;
    throw std::bad_alloc();
  }
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
