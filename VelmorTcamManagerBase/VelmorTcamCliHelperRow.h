// Joins cells to a row.
#pragma once

#include <cstddef>
#include <cstring>

#include "Halvo/String.h"

namespace VelmorTcam {

/// Joins the cells of each line and ends each line with a line feed. Allocates once, for the row's
/// text.
///
/// The caller makes all cells before this copies the first one. A copy right after the cell was
/// written would wait for the store buffer.
template <std::size_t... counts>
Halvo::String joinLines(const Halvo::String (&... lines)[counts]) {
  constexpr std::size_t most = Halvo::String::inlineCapacity;
  std::size_t size = sizeof...(lines);
  auto const measure = [&size](const auto& line) {
    for (const Halvo::String& cell : line) size += cell.size();
  };
  (measure(lines), ...);

  Halvo::String row;
  char* at = row.appendUninitialized(size);
  char* const end = at + size;
  auto const copy = [&at, end](const auto& line) {
    for (const Halvo::String& cell : line) {
      std::size_t const cellSize = cell.size();
      if (cellSize <= most && static_cast<std::size_t>(end - at) >= most) [[likely]] {
        // A copy of fixed size is faster. The next cell overwrites the bytes that are too many.
        std::memcpy(at, cell.data(), most);
      } else {
        std::memcpy(at, cell.data(), cellSize);
      }
      at += cellSize;
    }
    *at++ = '\n';
  };
  (copy(lines), ...);
  return row;
}

}  // namespace VelmorTcam
