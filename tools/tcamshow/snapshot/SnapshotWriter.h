// Snapshot lines as text.
#pragma once

#include <string>

#include "snapshot/Snapshot.h"

namespace tcamshow {

/// Each appends one line, its line break included, which SnapshotReader reads back as the same
/// values. Members stand in a fixed order; those at their default are left out, but a header always
/// has its type and version, and an entry its table, id, sequence and priority.
///
/// The texts are UTF-8 without control characters.
void appendLine(std::string& out, const Header& header);
void appendLine(std::string& out, const GroupLine& group);
void appendLine(std::string& out, const EntryLine& entry);

}  // namespace tcamshow
