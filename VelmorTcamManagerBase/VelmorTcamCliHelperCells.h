// Cells that several tables share and that are not virtual.
#pragma once

#include "Halvo/String.h"
#include "VelmorTcamEntryShadow.h"
#include "Zel/Base/Assert.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

/// The hits cell, without a bar: `hits` if the entry's counters are programmed, else empty. Holds a
/// copy of the counters while it reads their status, but does not show them.
inline Halvo::String formatHits(const VelmorTcamEntryShadow::PtrConst& entryShadow, U64 hits) {
  [[maybe_unused]] CounterSet const counters = entryShadow->counters();
  if (entryShadow->counterStatus() != hwQualStatusProgrammed) return {};
  return Zel::_fmt("%11lu", hits);
}

/// The DSCP cell of both IP tables. `unset` is the assertion for a record that is not set.
Halvo::String formatDscp(const VelmorTcamEntryShadow::PtrConst& entryShadow,
                         const Zel::AssertionSite& unset);

}  // namespace VelmorTcam
