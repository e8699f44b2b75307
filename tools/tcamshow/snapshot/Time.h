// Points in time, as a snapshot writes them.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace tcamshow {

/// A point in time, UTC. Its text is a view into what the source keeps.
struct Time {
  std::string_view text;          ///< as it was given; empty: no time was given
  std::int64_t seconds = 0;       ///< since 1970-01-01T00:00:00Z, leap seconds not counted
  std::uint32_t nanoseconds = 0;  ///< of the second; further digits are left out

  bool isGiven() const noexcept { return !text.empty(); }
  friend bool operator==(const Time& a, const Time& b) noexcept { return a.text == b.text; }
};

/// Reads a time in UTC as RFC 3339 writes it: `2026-01-31T12:30:00Z`, perhaps with a fraction of a
/// second, and `+00:00` in place of `Z`. False, and the result untouched, if it is no such time.
/// A leap second (`:60`) is the second after it.
bool timeFromText(std::string_view text, Time& time) noexcept;

}  // namespace tcamshow
