// From a snapshot's entry to what the library formats.
#pragma once

#include "Halvo/Ptr.h"
#include "VelmorTcamEntryShadow.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The shadow of an entry: every qualifier and range checker with its status, the counters with
/// theirs.
Halvo::Ptr<const VelmorTcam::VelmorTcamEntryShadow> shadowOf(const Entry& entry);

}  // namespace tcamshow
