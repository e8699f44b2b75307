// From cells to a row.
#pragma once

#include <cstddef>
#include <cstring>

#include "Halvo/String.h"

namespace VelmorTcam {

/// The cells of each line, one after the other, with a line break behind each line. The row's text
/// is the only allocation.
///
/// The cells of a row are all built before the first is copied: a copy right behind the writing of
/// a cell would wait for the store buffer.
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
        // A move of fixed size: what it carries too far is written over by what follows.
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
