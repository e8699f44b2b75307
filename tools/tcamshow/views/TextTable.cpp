#include "views/TextTable.h"

#include <algorithm>
#include <utility>

namespace tcamshow {

// Every byte that does not continue a character begins one.
std::size_t textWidth(std::string_view text) noexcept {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {
  std::vector<Cell> headings;
  headings.reserve(columns_.size());
  for (const Column& column : columns_) headings.push_back({column.heading});
  rows_.push_back(std::move(headings));
}

void TextTable::add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }

void TextTable::write(OutputBuffer& out) const {
  std::vector<std::size_t> widths(columns_.size());
  for (auto const& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], textWidth(row[i].text));
    }
  }
  std::string line;
  for (auto const& row : rows_) {
    line.clear();
    std::size_t owed = 0;  // blanks that the line has only if a text follows
    for (std::size_t i = 0; i < row.size(); ++i) {
      std::size_t const blanks = widths[i] - textWidth(row[i].text);
      if (i != 0) owed += 2;
      if (columns_[i].isNumber) owed += blanks;
      if (!row[i].text.empty()) {
        line.append(owed, ' ');
        owed = 0;
        line += coloured(row[i].colour, row[i].text);
      }
      if (!columns_[i].isNumber) owed += blanks;
    }
    out.write(line += '\n');
  }
}

}  // namespace tcamshow
