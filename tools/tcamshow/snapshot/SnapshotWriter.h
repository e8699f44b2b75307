// Snapshot lines as text.
#pragma once

#include <string>

#include "io/OutputBuffer.h"
#include "snapshot/Snapshot.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Each appends one line, its line break included, which openSnapshot() reads back as the same
/// values. The members stand in the order of `members`; those that are optional and have their
/// default are left out.
///
/// The texts are UTF-8 without control characters.
void appendLine(std::string& out, const Header& header);
void appendLine(std::string& out, const Group& group);
void appendLine(std::string& out, const Entry& entry);

/// Writes all that `source` gives as a snapshot, line by line.
void writeSnapshot(Source& source, OutputBuffer& out);

}  // namespace tcamshow
