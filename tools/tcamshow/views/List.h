// The view for people: every entry on one line, in match order, with all that it matches on.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "io/OutputBuffer.h"
#include "questions/Listing.h"
#include "questions/Since.h"

namespace tcamshow {

class ListColumn;

/// Reads names of columns with commas between them. Throws TextFault.
std::vector<const ListColumn*> listColumnsFromText(std::string_view text);
/// The columns that are shown when nobody chooses.
std::vector<const ListColumn*> usualListColumns();
/// The same beside an older snapshot: with a mark for entries that are new or were set back.
std::vector<const ListColumn*> usualListColumnsSince();
/// Prints the names of all columns, each with what it shows.
void showListColumns(OutputBuffer& out);

struct ListOptions {
  std::vector<const ListColumn*> columns = usualListColumns();
  bool isColoured = false;
  /// The older snapshot that the entries were compared with, or null. It outlives the view.
  const Since* baseline = nullptr;
};

/// Prints the entries by place, behind a line with both times if there is a baseline. Each place
/// under a line that names it. A column is as wide as its widest cell of the place.
void showList(const Listing& listing, const ListOptions& options, OutputBuffer& out);

/// The same entries in the same order as JSON Lines: `{"type":"list","schema":1}`, then each as
/// `--json tcam` prints it, with its state.
void showListJson(const Listing& listing, OutputBuffer& out);

}  // namespace tcamshow
