// Halvo: the core runtime. Objects, pointers, strings, collections of records, memory tracking.
//
// Threads: each part says for itself.
#pragma once

#include "Halvo/Duration.h"
#include "Halvo/MemoryTracker.h"
#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "Halvo/ThreadControl.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/RQueue.h"
#include "Zel/Types/ModuleInspectData.h"
