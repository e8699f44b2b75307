// MemoryTracker: counts the objects and bytes of one type.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "Halvo/ThreadControl.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Halvo {

/// Counts the live and the total objects and bytes of one type.
///
/// Define a tracker with static storage and `constinit`: then it costs nothing at load. It enters
/// the list of trackers when it first counts an allocation, and stays there until unlist(). A
/// library that may be unloaded must unlist its trackers when it goes. ModuleInspectData does so
/// for the trackers of its module. Bytes are the requested bytes; the allocator may round them up.
///
/// Threads: any thread may count and read. A single thread never loses a count. Several threads at
/// once lose none while ThreadControl's switch is on. A live count is exact only if no other thread
/// allocates or releases while it is read. Walking the list is safe while trackers enter it, but
/// not during unlist().
///
///     constinit Halvo::MemoryTracker tracker{"Agent::Flow"};
///     for (auto* t = Halvo::MemoryTracker::first(); t; t = t->next())
///       std::cout << t->typeName() << ' ' << t->liveObjects() << '\n';
class VELMOR_PLATFORM_API MemoryTracker {
 public:
  /// `typeName` is kept, not copied.
  constexpr explicit MemoryTracker(const char* typeName) noexcept : typeName_(typeName) {}
  MemoryTracker(const MemoryTracker&) = delete;
  MemoryTracker& operator=(const MemoryTracker&) = delete;

  void allocated(std::size_t bytes) noexcept {
    if (!listed_.load(std::memory_order_relaxed)) [[unlikely]] {
      list();
    }
    counterAdd(allocatedObjects_, U64{1});
    counterAdd(allocatedBytes_, U64{bytes});
  }
  void released(std::size_t bytes) noexcept {
    counterAdd(releasedObjects_, U64{1});
    counterAdd(releasedBytes_, U64{bytes});
  }

  const char* typeName() const noexcept { return typeName_; }
  U64 totalObjects() const noexcept { return allocatedObjects_.load(std::memory_order_relaxed); }
  U64 totalBytes() const noexcept { return allocatedBytes_.load(std::memory_order_relaxed); }
  U64 liveObjects() const noexcept { return live(allocatedObjects_, releasedObjects_); }
  U64 liveBytes() const noexcept { return live(allocatedBytes_, releasedBytes_); }

  /// The first tracker of the list, which holds all trackers that have counted something, newest
  /// first. Walking the list is safe while trackers enter it, but not during unlist().
  static MemoryTracker* first() noexcept;
  MemoryTracker* next() const noexcept { return next_.load(std::memory_order_acquire); }

  /// Removes the tracker from the list. It enters again when it next counts an allocation.
  void unlist() noexcept;

 private:
  // Reads the released count first: an allocation in between then makes the difference too large,
  // not too small. A release on another thread may still become visible before its allocation. The
  // result is then 0, not negative.
  static U64 live(const std::atomic<U64>& allocated, const std::atomic<U64>& released) noexcept {
    U64 const gone = released.load(std::memory_order_acquire);
    U64 const all = allocated.load(std::memory_order_acquire);
    return all >= gone ? all - gone : 0;
  }
  void list() noexcept;

  const char* typeName_;
  std::atomic<MemoryTracker*> next_{nullptr};
  std::atomic<bool> listed_{false};
  std::atomic<U64> allocatedObjects_{0};
  std::atomic<U64> allocatedBytes_{0};
  std::atomic<U64> releasedObjects_{0};
  std::atomic<U64> releasedBytes_{0};
};

}  // namespace Halvo

namespace Zel {
/// Counts the objects of one class.
using AllocationTracker = Halvo::MemoryTracker;
}  // namespace Zel
