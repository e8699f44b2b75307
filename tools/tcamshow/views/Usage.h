// The views `usage` and `summary`.
#pragma once

#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Prints the usage tree of everything that `source` gives: stages, copies of groups, and features.
/// Copies and features have the number of their entries. With `detail`, prints the entries too.
void showUsage(Source& source, OutputBuffer& out, bool detail);

/// Prints the groups of `source`, ordered by name, each with its features.
void showSummary(Source& source, OutputBuffer& out);

/// The same in the same order as JSON Lines, one object for each copy or each name of a group. A
/// number that is not reported is left out.
void showUsageJson(Source& source, OutputBuffer& out, bool detail);
void showSummaryJson(Source& source, OutputBuffer& out);

}  // namespace tcamshow
