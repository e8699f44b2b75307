// A global operator new that counts, for the test program and the libraries that it loads.
#pragma once

#include <cstddef>

namespace CountedNew {

/// Allocations larger than this are refused with std::bad_alloc.
inline constexpr std::size_t largest = std::size_t{1} << 30;

extern std::size_t allocations;
/// The size of the last allocation that was refused.
extern std::size_t lastRefused;

}  // namespace CountedNew
