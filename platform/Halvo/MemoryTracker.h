// MemoryTracker: counts the objects and bytes of one type.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "Halvo/ThreadControl.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Halvo {

/// Live and total objects and bytes of one type.
///
/// Define one with static storage and `constinit`: it costs nothing at load. It enters the list of
/// trackers when it first counts something, and stays there until unlist(); a library that may be
/// unloaded unlists its trackers as it goes (ModuleInspectData does so for those that it is given).
/// Bytes are those that were asked for; the allocator may round them up.
///
/// Threads: any may count and read. No count is lost from one thread, nor from many while
/// ThreadControl's switch is on; live counts that are read while other threads allocate are of that
/// moment, not exact. Walking the list is safe beside trackers that enter it, not beside unlist().
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

  /// The trackers that have counted something, the newest first. Safe beside trackers that enter;
  /// not beside unlist().
  static MemoryTracker* first() noexcept;
  MemoryTracker* next() const noexcept { return next_.load(std::memory_order_acquire); }

  /// Takes the tracker off the list; it enters again should it count again.
  void unlist() noexcept;

 private:
  // The released ones first: beside threads that allocate, the difference then errs upwards. An
  // object that is released between the two readings by a thread that this one does not wait for
  // could still make it negative, which is told as none.
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
/// The tracker of one class of nodes.
using AllocationTracker = Halvo::MemoryTracker;
}  // namespace Zel
