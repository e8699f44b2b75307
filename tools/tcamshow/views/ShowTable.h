// The commands that print a row for each entry of a table.
#pragma once

#include "io/LineReader.h"
#include "io/OutputBuffer.h"

namespace tcamshow {

/// What a table is printed as.
enum class TableForm : unsigned char {
  text,
  jsonLines,  ///< a line that names the schema and the table, then an object for each entry
};

/// Each reads a snapshot to its end and prints one table: its header, then the row of each of its
/// entries, in file order. Entries of other tables are read and checked, not printed.
void showIp(InputFile& snapshot, OutputBuffer& out, TableForm form);
void showIp6(InputFile& snapshot, OutputBuffer& out, TableForm form);
void showMac(InputFile& snapshot, OutputBuffer& out, TableForm form);

/// Prints every entry, whatever its table, in the one-line form, in file order.
void showTcam(InputFile& snapshot, OutputBuffer& out, TableForm form);

}  // namespace tcamshow
