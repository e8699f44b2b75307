// The commands that print what uses the TCAM.
#pragma once

#include "io/LineReader.h"
#include "io/OutputBuffer.h"

namespace tcamshow {

/// Reads a snapshot to its end and prints its usage tree: stages, copies of groups and features,
/// each with the number of its entries; where `detail` is set, the entries too.
void showUsage(InputFile& snapshot, OutputBuffer& out, bool detail);

/// Reads a snapshot to its end and prints its groups by name, each with the features recorded for
/// it.
void showSummary(InputFile& snapshot, OutputBuffer& out);

}  // namespace tcamshow
