// The process-wide switch that makes reference counts, trackers and the slab allocator atomic.
#pragma once

#include <atomic>

#include "VelmorPlatformExport.h"

namespace Halvo {

/// The thread-safety switch. Off at start: a single-threaded agent then pays for no atomic
/// read-modify-write on any reference count.
///
/// Threads: turn it on before the second thread that touches a Node, a MemoryTracker or the slab
/// allocator starts, and off only after all but one of those threads have been joined: it is a
/// plain variable, which starting and joining a thread order. Reading it is safe from any thread.
///
///     Halvo::ThreadControl::threadSafeIs(true);
///     std::thread reader(walkShadows);
class VELMOR_PLATFORM_API ThreadControl {
 public:
  /// Whether counts are adjusted atomically now.
  static bool threadSafe() noexcept { return threadSafe_; }
  static void threadSafeIs(bool on) noexcept { threadSafe_ = on; }

 private:
  // Not atomic: the compiler may then read it once for several counts.
  static bool threadSafe_;
};

/// Adds to a counter: with one atomic instruction while the switch is on, with a load and a store
/// otherwise. Returns the value before.
template <class T>
T counterAdd(std::atomic<T>& counter, T amount) noexcept {
  if (ThreadControl::threadSafe()) [[unlikely]] {
    return counter.fetch_add(amount, std::memory_order_relaxed);
  }
  T const before = counter.load(std::memory_order_relaxed);
  counter.store(static_cast<T>(before + amount), std::memory_order_relaxed);
  return before;
}

/// Takes one from a counter and returns the value after. What other threads did before they took
/// theirs is visible to the one that sees zero.
template <class T>
T counterDrop(std::atomic<T>& counter) noexcept {
  if (ThreadControl::threadSafe()) [[unlikely]] {
    return static_cast<T>(counter.fetch_sub(1, std::memory_order_acq_rel) - 1);
  }
  T const after = static_cast<T>(counter.load(std::memory_order_relaxed) - 1);
  counter.store(after, std::memory_order_relaxed);
  return after;
}

}  // namespace Halvo
