// The option --color.
#pragma once

#include <string>

#include "commands/Options.h"
#include "io/OutputBuffer.h"

namespace tcamshow {

class ColourOption {
 public:
  void declare(Options& options);
  /// Whether to colour what goes to `out`.
  bool isColoured(const OutputBuffer& out) const;

 private:
  std::string when_ = "auto";
};

}  // namespace tcamshow
