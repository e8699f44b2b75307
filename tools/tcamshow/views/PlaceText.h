// How the answers name places and entries.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "pravo.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// Appends `ingress pipe 0 group 1 "acl-in" priority 20 copy 0`. An empty name is left out. The
/// text need not be safe.
void placeAppend(std::string& out, const Place& place, std::string_view name);

/// Appends the sequence, or `Drop` for the drop rule's, and the id: `10 (id 3)`.
void entryAppend(std::string& out, std::uint32_t sequence, std::uint64_t shadowId);

/// Prints the object that comes before the answers: its type and the version of its schema.
void printAnswerStart(std::string_view type, pravo::Printer& printer);

/// Prints the place's members under the names of a snapshot, and the name unless it is empty.
void printPlace(const Place& place, std::string_view name, pravo::Printer& printer);

}  // namespace tcamshow
