#include "Sobrel.h"

#include <array>
#include <cstdlib>
#include <mutex>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define SOBREL_EVERY_OBJECT_ALONE 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SOBREL_EVERY_OBJECT_ALONE 1
#endif
#endif

namespace Sobrel {

namespace {

using Halvo::U32;

// Under AddressSanitizer each object is a separate allocation, so that the sanitizer sees every
// overrun, use after free and leak of a node.
#ifdef SOBREL_EVERY_OBJECT_ALONE
constexpr bool everyObjectAlone = true;
#else
constexpr bool everyObjectAlone = false;
#endif

constexpr std::size_t slabBytes = std::size_t{64} * 1024;
constexpr std::size_t fineLimit = 256;  // sizes are multiples of 8 up to here, of 16 above
constexpr std::size_t fineClasses = fineLimit / 8;
constexpr std::size_t classCount = fineClasses + (largestSlabObject - fineLimit) / 16;

constexpr std::size_t classOf(std::size_t size) {
  if (size <= fineLimit) return size == 0 ? 0 : (size - 1) / 8;
  return fineClasses + (size - fineLimit - 1) / 16;
}
constexpr std::size_t sizeOfClass(std::size_t index) {
  return index < fineClasses ? (index + 1) * 8 : fineLimit + (index - fineClasses + 1) * 16;
}
static_assert(sizeOfClass(classOf(1)) == 8 && sizeOfClass(classOf(8)) == 8);
static_assert(sizeOfClass(classOf(256)) == 256 && sizeOfClass(classOf(257)) == 272);
static_assert(classOf(largestSlabObject) == classCount - 1);
static_assert(sizeOfClass(classCount - 1) == largestSlabObject);

struct FreeObject {
  FreeObject* next;
};

// The head of a slab. A slab is aligned to its own size: masking an object's address gives its
// slab. Objects come from the free list first, then from the part that was never used. So the pages
// of a slab come into memory one by one.
struct alignas(64) Slab {
  FreeObject* free;
  char* fresh;  // where the part begins that was never used
  char* end;    // where the last whole object ends
  Slab* next;   // in the class's list of slabs with room
  Slab* previous;
  U32 live;
  U32 classIndex;
};

bool hasRoom(const Slab& slab) { return slab.free != nullptr || slab.fresh != slab.end; }

struct SizeClass {
  Slab* withRoom = nullptr;  // slabs with room for an object, the one in use first
  Slab* spare = nullptr;     // one empty slab, kept off the list
};

struct Heap {
  std::mutex lock;
  std::array<SizeClass, classCount> classes;
  Halvo::U64 slabs = 0;
  Halvo::U64 liveBytes = 0;
};

// Constant-initialised and never destroyed: nodes may be released while the process exits.
constinit Heap heap;

// Takes the lock only while several threads may be running.
class HeapGuard {
 public:
  HeapGuard() : locked_(Halvo::ThreadControl::threadSafe()) {
    if (locked_) heap.lock.lock();
  }
  ~HeapGuard() {
    if (locked_) heap.lock.unlock();
  }
  HeapGuard(const HeapGuard&) = delete;
  HeapGuard& operator=(const HeapGuard&) = delete;

 private:
  bool const locked_;
};

void link(SizeClass& sizeClass, Slab* slab) {
  slab->previous = nullptr;
  slab->next = sizeClass.withRoom;
  if (slab->next != nullptr) slab->next->previous = slab;
  sizeClass.withRoom = slab;
}

void unlink(SizeClass& sizeClass, Slab* slab) {
  (slab->previous != nullptr ? slab->previous->next : sizeClass.withRoom) = slab->next;
  if (slab->next != nullptr) slab->next->previous = slab->previous;
}

void empty(Slab* slab) {
  std::size_t const size = sizeOfClass(slab->classIndex);
  slab->free = nullptr;
  slab->fresh = reinterpret_cast<char*>(slab + 1);
  slab->end = slab->fresh + (slabBytes - sizeof(Slab)) / size * size;
}

Slab* slabWithRoom(SizeClass& sizeClass, std::size_t index) {
  Slab* slab = sizeClass.withRoom;
  if (slab != nullptr) return slab;
  slab = sizeClass.spare;
  if (slab != nullptr) {
    sizeClass.spare = nullptr;
  } else {
    slab = static_cast<Slab*>(std::aligned_alloc(slabBytes, slabBytes));
    if (slab == nullptr) return nullptr;
    slab->live = 0;
    slab->classIndex = static_cast<U32>(index);
    ++heap.slabs;
  }
  empty(slab);
  link(sizeClass, slab);
  return slab;
}

void releaseSpare(SizeClass& sizeClass) {
  if (sizeClass.spare == nullptr) return;
  std::free(sizeClass.spare);
  sizeClass.spare = nullptr;
  --heap.slabs;
}

// Returns null when the system has no memory for a slab.
void* takeObject(std::size_t size) {
  std::size_t const index = classOf(size);
  HeapGuard const guard;
  SizeClass& sizeClass = heap.classes[index];
  Slab* const slab = slabWithRoom(sizeClass, index);
  if (slab == nullptr) return nullptr;
  void* object = slab->free;
  if (object != nullptr) {
    slab->free = slab->free->next;
  } else {
    object = slab->fresh;
    slab->fresh += sizeOfClass(index);
  }
  ++slab->live;
  heap.liveBytes += sizeOfClass(index);
  if (!hasRoom(*slab)) unlink(sizeClass, slab);
  return object;
}

void giveObject(void* memory) {
  std::uintptr_t const offset = reinterpret_cast<std::uintptr_t>(memory) & (slabBytes - 1);
  auto* const slab = static_cast<Slab*>(static_cast<void*>(static_cast<char*>(memory) - offset));
  HeapGuard const guard;
  SizeClass& sizeClass = heap.classes[slab->classIndex];
  if (!hasRoom(*slab)) link(sizeClass, slab);
  slab->free = new (memory) FreeObject{slab->free};
  heap.liveBytes -= sizeOfClass(slab->classIndex);
  if (--slab->live != 0) return;
  unlink(sizeClass, slab);
  releaseSpare(sizeClass);
  sizeClass.spare = slab;
}

constexpr bool fromSlab(std::size_t size) { return !everyObjectAlone && size <= largestSlabObject; }

}  // namespace

void* slabAlloc(std::size_t size) {
  if (!fromSlab(size)) return ::operator new(size);
  void* const memory = takeObject(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void slabFree(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return;
  if (fromSlab(size)) {
    giveObject(memory);
  } else {
    ::operator delete(memory);
  }
}

void* slabAlloc(std::size_t size, std::align_val_t alignment) {
  return ::operator new(size, alignment);
}

void slabFree(void* memory, std::size_t /*size*/, std::align_val_t alignment) noexcept {
  ::operator delete(memory, alignment);
}

SlabOrSystem slabAllocOrSystem(std::size_t size) noexcept {
  if (fromSlab(size)) {
    if (void* const memory = takeObject(size)) return {memory, false};
  }
  return {::operator new(size, std::nothrow), true};
}

void slabFreeOrSystem(SlabOrSystem object, std::size_t size) noexcept {
  if (object.fromSystem) {
    ::operator delete(object.memory);
  } else {
    slabFree(object.memory, size);
  }
}

SlabUsage slabUsage() noexcept {
  HeapGuard const guard;
  return {heap.slabs, heap.slabs * slabBytes, heap.liveBytes};
}

void slabTrim() noexcept {
  HeapGuard const guard;
  for (SizeClass& sizeClass : heap.classes) releaseSpare(sizeClass);
}

namespace {

// Frees the spare slabs when the library is unloaded or the process exits. This is not an object's
// destructor: registering one would be code that runs at load. Objects may still be allocated and
// freed afterwards.
[[gnu::destructor]] void returnSpareSlabs() { slabTrim(); }

}  // namespace

}  // namespace Sobrel
