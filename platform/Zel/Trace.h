// The short name of Zel/Trace/Trace.h: trace handles and sites.
#pragma once

#include "Zel/Trace/Trace.h"  // IWYU pragma: export
