// Random operations against a model: their number, and the random numbers.
#pragma once

#include <cstdint>
#include <random>

namespace velmortest {

#ifdef NDEBUG
inline constexpr int manySteps = 1'000'000;
#else
inline constexpr int manySteps = 50'000;
#endif

/// Gives the same 32-bit numbers in every run.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t operator()() { return static_cast<std::uint32_t>(engine_()); }

 private:
  std::mt19937 engine_;
};

}  // namespace velmortest
