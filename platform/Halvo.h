// Halvo: the core runtime: objects, pointers, strings, queues, memory tracking.
//
// Threads: see each header.
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
