// The formats that entries can be read from.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// One format. To add one, write a file with its source, and add a line to Formats.cpp.
struct Format {
  std::string_view name;         ///< the name on the command line
  std::string_view description;  ///< for the help
  std::string_view thing;        ///< the name of such a file in messages: "a snapshot"
  /// Whether a file that begins with `start` is meant as a file of this format.
  bool (*resembles)(std::string_view start) noexcept;
  std::unique_ptr<Source> (*open)(InputFile file, Complaints& complaints);
};

/// The snapshot, which the views read.
const Format& snapshotFormat() noexcept;
/// The formats of `import`.
std::span<const Format> importFormats() noexcept;

/// Opens `file` as a file of `format`. Throws InputError. If the file is clearly of another known
/// kind, the message says which, and what to do with it.
std::unique_ptr<Source> openAs(const Format& format, InputFile file, Complaints& complaints);

}  // namespace tcamshow
