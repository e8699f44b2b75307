// The measures of a snapshot in the text formats of metrics systems.
#pragma once

#include <cstdint>
#include <span>

#include "io/OutputBuffer.h"
#include "questions/Measures.h"
#include "snapshot/Time.h"

namespace tcamshow {

enum class MetricsFormat : std::uint8_t {
  openmetrics,  ///< OpenMetrics 1.0
  prometheus,   ///< the older text format, which the textfile collector reads
};

/// Prints the measures as gauges and counters without time stamps. Equal labels give one series,
/// the sum. There is no series for what is not reported. `lintClasses` are those that were looked
/// for.
void showMetrics(std::span<const PlaceMeasures> places, const Time& takenAt,
                 LintClasses lintClasses, MetricsFormat format, OutputBuffer& out);

}  // namespace tcamshow
