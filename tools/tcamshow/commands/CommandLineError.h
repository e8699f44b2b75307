// A command line that is wrong in a way that shows only when the command runs.
#pragma once

#include <stdexcept>

namespace tcamshow {

/// The message need not be safe text.
struct CommandLineError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace tcamshow
