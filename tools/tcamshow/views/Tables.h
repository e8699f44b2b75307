// The tables: a row for each entry.
#pragma once

#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// What a table is printed as.
enum class TableForm : unsigned char {
  text,
  jsonLines,  ///< a line that names the schema and the table, then an object for each entry
};

/// Prints the entries of `table` that `source` gives, in their order: the table's header, then
/// their rows. Entries of other tables are read, not printed. Table::tcam prints every entry,
/// whatever its table, in the one-line form without a header.
void showTable(Source& source, OutputBuffer& out, Table table, TableForm form);

}  // namespace tcamshow
