// Assertion support: how a programming fault stops the process.
//
// Threads: safe from any thread.
#pragma once

#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// What an assertion says about itself. The texts are data, not the compiler's, so that a report
/// names the same place whatever file the code has moved to.
struct AssertionSite {
  const char* expression;
  const char* source;
  U32 line;  ///< 0 where no line is fixed
  const char* function;
};

/// Prints "assertion failed: EXPRESSION at SOURCE:LINE in FUNCTION" and a line break on standard
/// error, in one write, then aborts. Allocates nothing.
[[noreturn]] VELMOR_PLATFORM_API void assertionFailed(const AssertionSite& site) noexcept;

/// Stops the process unless `holds`. On in every build.
inline void assertThat(bool holds, const AssertionSite& site) noexcept {
  if (!holds) [[unlikely]] {
    assertionFailed(site);
  }
}

/// Stops the process unless `holds`, where debugging is on: in sources that are compiled without
/// NDEBUG. For mistakes of a caller that cannot be told in every build at no cost.
inline void assertWhenDebugging([[maybe_unused]] bool holds,
                                [[maybe_unused]] const AssertionSite& site) noexcept {
#ifndef NDEBUG
  assertThat(holds, site);
#endif
}

}  // namespace Zel
