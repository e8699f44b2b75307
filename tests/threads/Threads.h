// Shared by the tests of threads.
#pragma once

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "Halvo/ThreadControl.h"

namespace velmortest {

inline constexpr unsigned threadCount = 8;

/// Runs `work(i)` for i from 0 on, each in its own thread. All begin together, and all have ended
/// when this returns.
template <class Work>
void onThreads(const Work& work, unsigned count = threadCount) {
  std::latch start(count);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < count; ++i) {
    threads.emplace_back([&work, &start, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace velmortest

/// A test with the thread-safety switch on. All such tests are one suite, so that a build for
/// ThreadSanitizer can select them by name.
class Threads : public testing::Test {
 protected:
  void SetUp() override { Halvo::ThreadControl::threadSafeIs(true); }
  void TearDown() override { Halvo::ThreadControl::threadSafeIs(false); }
};
