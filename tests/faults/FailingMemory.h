// The program's own allocation functions. A chosen allocation fails.
#pragma once

#include <cstdint>

/// All memory of the libraries, and of the libraries that they use, comes through here: operator
/// new in all its forms, and aligned_alloc, which the slabs use. For one thread.
namespace FailingMemory {

/// From now on allocation number `at`, counted from 1, fails. With `all` every later one fails too.
void failAt(std::uint64_t at, bool all) noexcept;
/// Until resume(), no allocation fails or is counted.
void pause() noexcept;
void resume() noexcept;

/// True: from now on every allocation fails and is counted apart. False: failAt() applies again.
void exhaustedIs(bool exhausted) noexcept;
/// The number of allocations that failed because of exhaustedIs().
std::uint64_t refused() noexcept;

/// The number of allocations since failAt(), with the failed ones.
std::uint64_t seen() noexcept;
/// The number of failed ones among them.
std::uint64_t failed() noexcept;
/// The number of blocks of operator new that are not yet deleted.
std::int64_t live() noexcept;

}  // namespace FailingMemory
