// Cells that more than one table uses, beside the virtual ones.
#pragma once

#include "Halvo/String.h"
#include "VelmorTcamEntryShadow.h"
#include "Zel/Base/Assert.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

/// The hits, with no bar, where the counters are programmed; else nothing. The number is the
/// caller's; the counters are only held while their status is read.
inline Halvo::String formatHits(const VelmorTcamEntryShadow::PtrConst& entryShadow, U64 hits) {
  [[maybe_unused]] CounterSet const counters = entryShadow->counters();
  if (entryShadow->counterStatus() != hwQualStatusProgrammed) return {};
  return Zel::_fmt("%11lu", hits);
}

/// The DSCP cell of both IP tables.
Halvo::String formatDscp(const VelmorTcamEntryShadow::PtrConst& entryShadow,
                         const Zel::AssertionSite& unset);

}  // namespace VelmorTcam
