// Short path of Zel/Trace/Trace.h: trace handles and trace sites.
#pragma once

#include "Zel/Trace/Trace.h"  // IWYU pragma: export
