// Halvo: the core runtime. Objects, pointers, strings, collections of records, memory tracking.
//
// Threads: each part says for itself.
#pragma once

#include "Halvo/Duration.h"
#include "Halvo/MemoryTracker.h"
#include "Halvo/ModuleInspectData.h"
#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/RQueue.h"
#include "Halvo/String.h"
#include "Halvo/ThreadControl.h"
#include "Halvo/Types.h"
