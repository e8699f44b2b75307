// How full the copies of the groups are, as text and as JSON Lines.
#pragma once

#include <span>

#include "io/OutputBuffer.h"
#include "pravo.h"
#include "questions/Capacity.h"

namespace tcamshow {

struct CapacityOptions {
  double warn = 70;  ///< percent, from which on a copy is shown in yellow
  double fail = 85;  ///< percent, from which on it is shown in red
  bool isColoured = false;
};

/// Prints one line for each copy: its place and name, its numbers, and a bar. The sums of the
/// stages follow. `-` stands for a number that is not reported.
void showCapacity(std::span<const CopyUse> copies, const CapacityOptions& options,
                  OutputBuffer& out);

/// Prints the same as JSON Lines, without the sums. A number that is not reported is left out.
void showCapacityJson(std::span<const CopyUse> copies, OutputBuffer& out);

/// Prints the members of a copy: the used entries, and the reported numbers.
void printEntryNumbers(std::uint64_t used, const ReportedEntries& reported,
                       pravo::Printer& printer);

}  // namespace tcamshow
