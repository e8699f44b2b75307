// ThreadControl: the process-wide switch for threads. It makes reference counts, trackers and the
// slab allocator safe to use from several threads.
#pragma once

#include <atomic>

#include "VelmorPlatformExport.h"

namespace Halvo {

/// The thread-safety switch. It is off at start, so that an agent with one thread pays for no
/// atomic read-modify-write on its reference counts.
///
/// Threads: turn it on before you start a second thread that uses a Node, a MemoryTracker or the
/// slab allocator. Turn it off only after all but one of those threads have been joined. The switch
/// is a plain variable: starting and joining a thread synchronise it. Any thread may read it.
///
///     Halvo::ThreadControl::threadSafeIs(true);
///     std::thread reader(walkShadows);
class VELMOR_PLATFORM_API ThreadControl {
 public:
  /// Whether counts are now changed atomically.
  static bool threadSafe() noexcept { return threadSafe_; }
  static void threadSafeIs(bool on) noexcept { threadSafe_ = on; }

 private:
  // Not atomic, so that the compiler may read it once for several counts.
  static bool threadSafe_;
};

/// Adds to a counter and returns its old value. Uses one atomic instruction while the switch is on,
/// otherwise a load and a store.
template <class T>
T counterAdd(std::atomic<T>& counter, T amount) noexcept {
  if (ThreadControl::threadSafe()) [[unlikely]] {
    return counter.fetch_add(amount, std::memory_order_relaxed);
  }
  T const before = counter.load(std::memory_order_relaxed);
  counter.store(static_cast<T>(before + amount), std::memory_order_relaxed);
  return before;
}

/// Subtracts one from a counter and returns the new value. The thread that gets zero sees all that
/// other threads did before they subtracted theirs.
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
