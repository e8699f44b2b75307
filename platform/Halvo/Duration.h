// Duration: a length of time.
#pragma once

#include <chrono>
#include <compare>

#include "Halvo/Types.h"

namespace Halvo {

/// A length of time with nanosecond resolution, about ±292 years. A value; zero by default.
///
///     Halvo::Duration(1.5).nanoseconds() == 1'500'000'000
class Duration {
 public:
  constexpr Duration() noexcept = default;
  /// From seconds, which may be a fraction and negative.
  constexpr Duration(double seconds) noexcept : nanoseconds_(static_cast<S64>(seconds * 1e9)) {}
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
  S64 nanoseconds_ = 0;
};

}  // namespace Halvo
