// The commands that print a row for each entry of a table.
#pragma once

#include "LineReader.h"
#include "OutputBuffer.h"

namespace tcamshow {

/// Reads a snapshot to its end and prints the IPv4 table: its header, then the row of each of its
/// entries, in file order. Entries of other tables are read and checked, not printed.
void showIp(InputFile& snapshot, OutputBuffer& out);

/// Prints every entry, whatever its table, in the one-line form, in file order.
void showTcam(InputFile& snapshot, OutputBuffer& out);

}  // namespace tcamshow
