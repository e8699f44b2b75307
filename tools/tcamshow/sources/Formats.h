// The formats that entries can be read from.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// One format. A new one is a file with its source, and a line in Formats.cpp.
struct Format {
  std::string_view name;         ///< as the command line calls it
  std::string_view description;  ///< for the help
  std::string_view thing;        ///< a file of it, for messages: "a snapshot"
  /// Whether a file that begins with `start` is meant as one of this format.
  bool (*resembles)(std::string_view start) noexcept;
  std::unique_ptr<Source> (*open)(InputFile file, Complaints& complaints);
};

/// The snapshot, which the views read.
const Format& snapshotFormat() noexcept;
/// Those that `import` makes a snapshot of.
std::span<const Format> importFormats() noexcept;

/// Opens `file` as one of `format`. Throws InputError; where the file is plainly one of another
/// format, the message says which, and what to do with it.
std::unique_ptr<Source> openAs(const Format& format, InputFile file, Complaints& complaints);

}  // namespace tcamshow
