// The texts of the usage display, which the generic formatter shares.
#pragma once

namespace VelmorTcam::displayStrings {

inline constexpr char stageHeaderFmt[] = "Stage %s";
inline constexpr char pipeHeaderFmt[] = " in PIPE %d";
inline constexpr char groupInfoFmt[] = "TCAM group %d%s uses %d %s and can use up to %d more.\n";
inline constexpr char requestHeaderFmt[] = "  %s uses %d entries.\n";
inline constexpr char entryInfoFmt[] = "    0x%08x %s hits - %s\n";

}  // namespace VelmorTcam::displayStrings
