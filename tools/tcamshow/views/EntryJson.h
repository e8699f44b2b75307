// An entry as structured data.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The version of the tables' JSON. It rises when a member is renamed, removed, or changes its
/// meaning, but not when a member is added.
constexpr VelmorTcam::U64 jsonSchemaVersion = 1;

/// The object that comes before the entries of a table.
void printTableStart(Table table, pravo::Printer& printer);

/// The entry as one object, with the members and values of its line in a snapshot. Every member of
/// version 1 is printed, even with its default, which a snapshot may leave out. A member of a later
/// version is printed if it is given. The qualifiers and range checkers are those of the shadow, in
/// ascending order of their numbers. Beside an older snapshot, what has been counted since comes
/// last.
void printEntry(const Entry& entry, const VelmorTcam::VelmorTcamEntryShadow& shadow,
                pravo::Printer& printer);

}  // namespace tcamshow
