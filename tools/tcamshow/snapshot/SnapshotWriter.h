// Snapshot lines as text.
#pragma once

#include <string>

#include "io/OutputBuffer.h"
#include "snapshot/Members.h"
#include "snapshot/Snapshot.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Each function appends one line with its line feed. openSnapshot() reads the same values back.
/// The members have the order of `members`. Optional members with their default are left out.
///
/// The texts must be UTF-8 without control characters.
void appendLine(std::string& out, const Header& header);
void appendLine(std::string& out, const Group& group);
void appendLine(std::string& out, const Entry& entry);
void appendLine(std::string& out, const SnapshotEnd& end);

/// Writes everything that `source` gives as a snapshot of the newest version, line by line. The end
/// line follows only if the source ends without a fault.
void writeSnapshot(Source& source, OutputBuffer& out);

}  // namespace tcamshow
