// Short path of Zel/Trace/Log.h: log descriptors and handles.
#pragma once

#include "Zel/Trace/Log.h"  // IWYU pragma: export
