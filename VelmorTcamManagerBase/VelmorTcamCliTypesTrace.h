// The library's trace handle and its trace sites.
#pragma once

#include "Zel/Trace/Trace.h"

namespace VelmorTcam {

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wexit-time-destructors"
#endif
/// Made on first use. Hidden, so that it dies with this library and no other binds to it.
inline Zel::TraceHandle& traceHandle() {
  static Zel::TraceHandle handle("VelmorTcamCliTypes", false);
  return handle;
}
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

}  // namespace VelmorTcam

/// A level-8 trace line of this library; PIECES is what is streamed: `"prefix" << "text"`. The line
/// number is part of the output's contract. PIECES is not evaluated while the level is off.
#define VELMOR_TCAM_TRACE(LINE, FUNCTION, PIECES)                                             \
  ZEL_TRACE(::VelmorTcam::traceHandle(), 8, "VelmorTcamManagerBase/VelmorTcamCliTypes", LINE, \
            FUNCTION, PIECES)
