// Duration: a length of time.
//
// Threads: plain values; distinct objects may be used from distinct threads, and one that nobody
// changes from any.
#pragma once

#include <chrono>
#include <compare>
#include <limits>

#include "Zel/Base/Types.h"

namespace Halvo {

/// A length of time with nanosecond resolution, about ±292 years. A value; zero by default.
///
///     Halvo::Duration(1.5).nanoseconds() == 1'500'000'000
class Duration {
 public:
  constexpr Duration() noexcept = default;
  /// From seconds, which may be a fraction and negative. What is beyond the range becomes the
  /// longest time of that sign; not a number becomes 0.
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
