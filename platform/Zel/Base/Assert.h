// Assertions: a programming error prints one line and stops the process.
//
// Threads: safe from any thread.
#pragma once

#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// The texts of one assertion. They are fixed data, not __FILE__ and __LINE__: the message stays
/// the same when the code moves to another file.
struct AssertionSite {
  const char* expression;
  const char* source;
  U32 line;  ///< 0 when the line is not fixed
  const char* function;
};

/// Prints "assertion failed: EXPRESSION at SOURCE:LINE in FUNCTION" and a line break to standard
/// error in one write, then aborts. Allocates nothing.
[[noreturn]] VELMOR_PLATFORM_API void assertionFailed(const AssertionSite& site) noexcept;

/// Stops the process unless `holds` is true, in every build.
inline void assertThat(bool holds, const AssertionSite& site) noexcept {
  if (!holds) [[unlikely]] {
    assertionFailed(site);
  }
}

/// Stops the process unless `holds` is true, where debugging is on: in sources that are compiled
/// without NDEBUG. Meant for a caller's mistakes whose check would cost time in every build.
inline void assertWhenDebugging([[maybe_unused]] bool holds,
                                [[maybe_unused]] const AssertionSite& site) noexcept {
#ifndef NDEBUG
  assertThat(holds, site);
#endif
}

}  // namespace Zel
