// An entry as structured data.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The version of the JSON that the tables are printed as. It rises when a member changes its name
/// or meaning or goes away, not when one is added.
constexpr VelmorTcam::U64 jsonSchemaVersion = 1;

/// The object that comes before the entries of a table.
void printTableStart(Table table, pravo::Printer& printer);

/// The entry as one object: the members and values of its line in a snapshot. All of its own
/// members are there, also those that a snapshot leaves out because they are the default; of
/// qualifiers and range checkers those that the shadow holds, by ascending number.
void printEntry(const Entry& entry, const VelmorTcam::VelmorTcamEntryShadow& shadow,
                pravo::Printer& printer);

}  // namespace tcamshow
