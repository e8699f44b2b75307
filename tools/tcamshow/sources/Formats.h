// The formats that entries can be read from.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// One format. To add one, write a file with its source, and add a line to Formats.cpp.
struct Format {
  std::string_view name;         ///< the name on the command line
  std::string_view description;  ///< for the help
  std::string_view thing;        ///< the name of such a file in messages: "a snapshot"
  /// Why a file that begins with `start` is not of this format. Empty if it is meant as such a
  /// file. Null if the format is a directory.
  std::string_view (*ruledOut)(std::string_view start) noexcept;
  /// Opens a file of the format. Null if the format is a directory.
  std::unique_ptr<Source> (*open)(InputFile file, Complaints& complaints);
  /// Opens a directory of the format; null where it is a file.
  std::unique_ptr<Source> (*openDirectory)(const std::string& path, Complaints& complaints);
  /// Whether `import` reads it to its end before it writes: nothing is to be written when there is
  /// a fault, and the source gives what stands before one.
  bool isReadFirst;
};

/// Every format, the snapshot first.
std::span<const Format> allFormats() noexcept;
/// Null if no format has that name.
const Format* formatByName(std::string_view name) noexcept;

struct OpenedSource {
  std::unique_ptr<Source> source;
  const Format* format;
};

/// Opens a file or a directory; "-" is standard input. If `format` is null, the format is
/// recognised by the content. Throws InputError. If the content is of no known format, the message
/// says why each format was ruled out. If it is clearly of another format, the message says which.
OpenedSource openSource(const std::string& path, const Format* format, Complaints& complaints);

}  // namespace tcamshow
