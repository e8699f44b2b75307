// Shared by the targets that read files: snapshots must read back, and errors must name their
// place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "io/InputError.h"

namespace velmorfuzz {

/// A snapshot as it is read.
struct ReadSnapshot {
  std::string text;           ///< each line before the end line, written anew
  std::uint32_t version = 0;  ///< 0 where the header is bad
  std::uint64_t groups = 0;
  std::uint64_t entries = 0;
  std::string error;  ///< of the first bad line, empty when all are good

  /// The text with the end line that its version asks for.
  std::string whole() const;
};

/// Reads a snapshot and checks that its error, if there is one, names the place.
ReadSnapshot readSnapshot(std::string_view snapshot);

/// Checks that the error is one line of safe text that names the file and a line that the input
/// has, or, unless `needsLine` is set, no line. Of a compressed input nobody knows the lines.
void checkError(const tcamshow::InputError& error, const std::string& file, std::string_view input,
                bool needsLine);

/// Checks that a text that goes to a terminal, or a file that somebody may show on one, has nothing
/// in it but whole lines of UTF-8 without control, bidirectional and invisible characters.
void checkIsSafe(std::string_view text);

/// Checks that a snapshot that a command wrote is read as it was written.
ReadSnapshot checkWrittenSnapshot(const std::string& snapshot);

/// Checks a snapshot whose writing ended early: its lines are good, but it is refused as cut.
void checkCutSnapshot(const std::string& snapshot);

}  // namespace velmorfuzz
