// What uses the TCAM.
#pragma once

#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Prints the usage tree of all that `source` gives: stages, copies of groups and features,
/// each with the number of its entries; where `detail` is set, the entries too.
void showUsage(Source& source, OutputBuffer& out, bool detail);

/// Prints the groups that `source` gives by name, each with the features recorded for it.
void showSummary(Source& source, OutputBuffer& out);

}  // namespace tcamshow
