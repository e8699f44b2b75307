// The library's trace handle and its trace sites.
#pragma once

#include "Zel/Trace/Trace.h"

namespace VelmorTcam {

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wexit-time-destructors"
#endif
/// Made on first use. Hidden: it is destroyed with this library, and no other library binds to it.
inline Zel::TraceHandle& traceHandle() {
  static Zel::TraceHandle handle("VelmorTcamCliTypes", false);
  return handle;
}
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

}  // namespace VelmorTcam

/// Writes a level-8 trace line of this library. PIECES is streamed, as in `"prefix" << "text"`, and
/// is evaluated only while the level is on. Keep each LINE as it is: readers of the trace know it.
#define VELMOR_TCAM_TRACE(LINE, FUNCTION, PIECES)                                             \
  ZEL_TRACE(::VelmorTcam::traceHandle(), 8, "VelmorTcamManagerBase/VelmorTcamCliTypes", LINE, \
            FUNCTION, PIECES)
