// Snapshots, read line by line.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Reads a snapshot: JSON Lines, the header first, then groups and entries in any order. The header
/// is read at once.
///
/// Every member of every line is checked before the line is given, and nothing is skipped but
/// blank lines. The first fault throws InputError, which names the file, the line and the member.
/// Memory does not grow with the snapshot, but for 24 to 48 bytes for each of its groups, of which
/// there may be 1,048,576: no place may have two. Doubtful values are warned of.
std::unique_ptr<Source> openSnapshot(InputFile file, Complaints& complaints);

/// Whether a file that begins so is a snapshot.
bool resemblesSnapshot(std::string_view start) noexcept;

}  // namespace tcamshow
