// Duration: a length of time.
//
// Threads: plain values. Different threads may use different objects at the same time. Several
// threads may read one object while no thread changes it.
#pragma once

#include <chrono>
#include <compare>
#include <limits>

#include "Zel/Base/Types.h"

namespace Halvo {

/// A length of time in nanoseconds, up to about ±292 years. A value, zero by default.
///
///     Halvo::Duration(1.5).nanoseconds() == 1'500'000'000
class Duration {
 public:
  constexpr Duration() noexcept = default;
  /// From seconds, which may be fractional or negative. A time beyond the range becomes the longest
  /// one of its sign; NaN becomes 0.
  constexpr Duration(double seconds) noexcept : nanoseconds_(fromSeconds(seconds)) {}
  template <class Rep, class Period>
  constexpr Duration(std::chrono::duration<Rep, Period> d) noexcept
      : nanoseconds_(std::chrono::duration_cast<std::chrono::nanoseconds>(d).count()) {}

  constexpr S64 nanoseconds() const noexcept { return nanoseconds_; }
  constexpr double seconds() const noexcept { return static_cast<double>(nanoseconds_) / 1e9; }
  constexpr std::chrono::nanoseconds chrono() const noexcept {
    return std::chrono::nanoseconds(nanoseconds_);
  }
  friend constexpr auto operator<=>(const Duration&, const Duration&) = default;

 private:
  static constexpr S64 fromSeconds(double seconds) noexcept {
    double const nanoseconds = seconds * 1e9;
    if (nanoseconds != nanoseconds) return 0;
    if (nanoseconds >= 9223372036854775808.0) return std::numeric_limits<S64>::max();
    if (nanoseconds < -9223372036854775808.0) return std::numeric_limits<S64>::min();
    return static_cast<S64>(nanoseconds);
  }

  S64 nanoseconds_ = 0;
};

}  // namespace Halvo
