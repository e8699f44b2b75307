// The program's own allocation functions, of which a chosen one fails.
#pragma once

#include <cstdint>

/// Every way to memory of the libraries and of what they are built on comes by here: operator new
/// in all its forms, and aligned_alloc, where the slabs come from. One thread.
namespace FailingMemory {

/// Allocation number `at`, from 1, fails from now on, and with `all` every later one too.
void failAt(std::uint64_t at, bool all) noexcept;
/// None fails, none is counted, until resume().
void pause() noexcept;
void resume() noexcept;

/// Every one fails from now on, and is counted apart; false: back to what failAt() said.
void exhaustedIs(bool exhausted) noexcept;
/// Allocations that failed for that.
std::uint64_t refused() noexcept;

/// Allocations since failAt(), the failed ones included.
std::uint64_t seen() noexcept;
/// How many of them failed.
std::uint64_t failed() noexcept;
/// What operator new gave and has not got back.
std::int64_t live() noexcept;

}  // namespace FailingMemory
