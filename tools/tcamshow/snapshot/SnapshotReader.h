// Snapshots, read line by line.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Reads a snapshot of version 1 or 2: JSON Lines, the header first, then groups and entries in any
/// order, and from version 2 on an end line that counts them. The header is read at once. Where the
/// end line is missing or counts others, the snapshot was cut: a fault, once all before it was
/// given.
///
/// A line is given only after every member has been checked. Only blank lines are skipped. The
/// first fault throws InputError, which names the file, the line and the member. Doubtful values
/// give a warning.
///
/// Memory does not grow with the entries. Each group takes 24 to 48 bytes, because no place may
/// have two; there may be 1,048,576 groups.
std::unique_ptr<Source> openSnapshot(InputFile file, Complaints& complaints);

/// Why a file that begins with `start` is no snapshot. Empty if it is meant as one.
std::string_view snapshotRuledOut(std::string_view start) noexcept;

}  // namespace tcamshow
