// A small table of text, with aligned columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "io/OutputBuffer.h"
#include "views/Colour.h"

namespace tcamshow {

/// The columns of a terminal that a text takes: one for each character.
std::size_t textWidth(std::string_view text) noexcept;

/// A table that is written when all rows are known. A column is as wide as its widest cell. No line
/// ends in blanks.
///
///     TextTable table({{"NAME"}, {"USED", true}});
///     table.add({{name}, {used}});
///     table.write(out);
class TextTable {
 public:
  struct Column {
    std::string heading;
    bool isNumber = false;  ///< its cells stand at the right
  };
  /// The text is safe.
  struct Cell {
    std::string text;
    Colour colour = Colour::none;
  };

  explicit TextTable(std::vector<Column> columns);

  /// One cell for each column.
  void add(std::vector<Cell> row);
  void write(OutputBuffer& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace tcamshow
