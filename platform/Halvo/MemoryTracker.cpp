#include "Halvo/MemoryTracker.h"

#include <mutex>

namespace Halvo {

namespace {

constinit std::mutex listLock;
constinit std::atomic<MemoryTracker*> head{nullptr};

}  // namespace

MemoryTracker* MemoryTracker::first() noexcept { return head.load(std::memory_order_acquire); }

void MemoryTracker::list() noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  if (listed_.load(std::memory_order_relaxed)) return;
  next_.store(head.load(std::memory_order_relaxed), std::memory_order_relaxed);
  head.store(this, std::memory_order_release);
  listed_.store(true, std::memory_order_relaxed);
}

void MemoryTracker::unlist() noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  if (!listed_.load(std::memory_order_relaxed)) return;
  std::atomic<MemoryTracker*>* link = &head;
  while (link->load(std::memory_order_relaxed) != this) {
    link = &link->load(std::memory_order_relaxed)->next_;
  }
  link->store(next_.load(std::memory_order_relaxed), std::memory_order_release);
  listed_.store(false, std::memory_order_relaxed);
}

}  // namespace Halvo
