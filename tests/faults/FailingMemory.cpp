#include "FailingMemory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit bool isOn = false;
constinit bool failsOn = false;
constinit std::uint64_t target = 0;
constinit std::uint64_t seenCount = 0;
constinit std::uint64_t failedCount = 0;
constinit std::int64_t liveCount = 0;
constinit bool isExhausted = false;
constinit std::uint64_t refusedCount = 0;

bool failsNow() noexcept {
  if (isExhausted) {
    ++refusedCount;
    return true;
  }
  if (!isOn) return false;
  ++seenCount;
  if (seenCount != target && (!failsOn || seenCount < target)) return false;
  ++failedCount;
  return true;
}

void* aligned(std::size_t alignment, std::size_t size) noexcept {
  void* memory = nullptr;
  return ::posix_memalign(&memory, alignment, size) == 0 ? memory : nullptr;
}

// Null if the allocation fails.
void* taken(std::size_t size, std::size_t alignment = 0) noexcept {
  if (failsNow()) return nullptr;
  std::size_t const bytes = size != 0 ? size : 1;
  void* const memory = alignment == 0 ? std::malloc(bytes) : aligned(alignment, bytes);
  if (memory != nullptr) ++liveCount;
  return memory;
}

void* takenOrThrown(std::size_t size, std::size_t alignment = 0) {
  void* const memory = taken(size, alignment);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void given(void* memory) noexcept {
  if (memory != nullptr) --liveCount;
  std::free(memory);
}

}  // namespace

namespace FailingMemory {

void failAt(std::uint64_t at, bool all) noexcept {
  target = at;
  failsOn = all;
  seenCount = failedCount = 0;
}
void pause() noexcept { isOn = false; }
void resume() noexcept { isOn = true; }
void exhaustedIs(bool exhausted) noexcept { isExhausted = exhausted; }
std::uint64_t refused() noexcept { return refusedCount; }
std::uint64_t seen() noexcept { return seenCount; }
std::uint64_t failed() noexcept { return failedCount; }
std::int64_t live() noexcept { return liveCount; }

}  // namespace FailingMemory

// The program's definition is found before the C library's.
extern "C" __attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment,
                                                                      std::size_t size) noexcept {
  return failsNow() ? nullptr : aligned(alignment, size);
}

void* operator new(std::size_t size) { return takenOrThrown(size); }
void* operator new[](std::size_t size) { return takenOrThrown(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return taken(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return taken(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return takenOrThrown(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return takenOrThrown(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { given(memory); }
void operator delete[](void* memory) noexcept { given(memory); }
void operator delete(void* memory, std::size_t) noexcept { given(memory); }
void operator delete[](void* memory, std::size_t) noexcept { given(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { given(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { given(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { given(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { given(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { given(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { given(memory); }
