// What iterators need to stay where they are when a step throws.
#pragma once

#include <tuple>

namespace Zel::impl {

/// Does `step()`. When it throws, gives `state` the values from before; copies of them must not
/// throw.
///
/// Threads: as `step` and the state allow.
template <class Step, class... State>
void doOrRestore(Step step, State&... state) {
  auto const before = std::tuple(state...);
  try {
    step();
  } catch (...) {
    std::tie(state...) = before;
    throw;
  }
}

}  // namespace Zel::impl
