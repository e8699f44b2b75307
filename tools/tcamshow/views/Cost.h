// The costs of ranges, for `cost`.
#pragma once

#include <span>

#include "io/OutputBuffer.h"
#include "questions/Cost.h"

namespace tcamshow {

/// One line for each place, as text or as JSON Lines.
void showCosts(std::span<const PlaceCost> costs, OutputBuffer& out, bool isJson);

}  // namespace tcamshow
