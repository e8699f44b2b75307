// The ACLs of a SONiC switch, from the dumps of its databases.
#pragma once

#include <memory>
#include <string>

#include "snapshot/Source.h"

namespace tcamshow {

/// Gives the ACL tables of the directory `path` as groups, and their entries. The directory holds
/// ASIC_DB.json, and perhaps CONFIG_DB.json, COUNTERS_DB.json and STATE_DB.json, as sonic-db-dump
/// writes them. Names may be in lower case, and files compressed with gzip.
///
/// An entry is one of the ASIC, with its rule's name and its counts where they are known, or a rule
/// of the configuration that the ASIC lacks. Everything is read and checked at once: if there is a
/// fault, nothing is given. Rows that have nothing to do with ACLs are skipped unread. Memory: at
/// most eight times the files, unpacked.
std::unique_ptr<Source> openSonic(const std::string& path, Complaints& complaints);

}  // namespace tcamshow
