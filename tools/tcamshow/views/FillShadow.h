// Makes the shadow of a snapshot's entry, for the library's formatters.
#pragma once

#include "Halvo/Ptr.h"
#include "VelmorTcamEntryShadow.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The shadow of an entry: every qualifier and range checker with its status, and the status of the
/// counters.
Halvo::Ptr<const VelmorTcam::VelmorTcamEntryShadow> shadowOf(const Entry& entry);

}  // namespace tcamshow
