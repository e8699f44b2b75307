#include "FailingNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>

bool memoryIsOut = false;

void* operator new(std::size_t size) {
  void* const memory = memoryIsOut ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memoryIsOut ? nullptr : std::malloc(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
