// The tables: a row for each entry.
#pragma once

#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// The form of a printed table.
enum class TableForm : unsigned char {
  text,
  jsonLines,  ///< a line that names the schema and the table, then an object for each entry
};

/// Prints the table's header, and then the rows of its entries, in the order of `source`. Entries
/// of other tables are read but not printed. Table::tcam prints every entry, whatever its table, in
/// one line and without a header.
void showTable(Source& source, OutputBuffer& out, Table table, TableForm form);

/// Prints the number of entries that the source gives, and nothing else.
void showCount(Source& source, OutputBuffer& out);

}  // namespace tcamshow
