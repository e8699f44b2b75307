#include "commands/ColourOption.h"

#include <string_view>

#include "views/Colour.h"

namespace tcamshow {

void ColourOption::declare(Options& options) {
  static constexpr std::string_view whens[] = {"auto", "always", "never"};
  options.choice("--color", when_, whens, "Whether to colour the text; auto: on a terminal");
}

bool ColourOption::isColoured(const OutputBuffer& out) const {
  ColourWhen const when = when_ == "always"  ? ColourWhen::always
                          : when_ == "never" ? ColourWhen::never
                                             : ColourWhen::automatic;
  return tcamshow::isColoured(when, out.descriptor());
}

}  // namespace tcamshow
