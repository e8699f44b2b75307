// Counts all heap allocations, ours and the standard library's. See AllocationCount.cpp.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace velmorbench {

/// The calls of operator new so far, in the whole process.
std::uint64_t allocationsSoFar() noexcept;

/// Counts the allocations since the object was made.
class AllocationCount {
 public:
  AllocationCount() noexcept : before_(allocationsSoFar()) {}
  double perIteration(const benchmark::State& state) const noexcept {
    return static_cast<double>(allocationsSoFar() - before_) /
           static_cast<double>(state.iterations());
  }

 private:
  std::uint64_t before_;
};

}  // namespace velmorbench
