// The texts of the usage display, which the generic formatter shares.
//
// Threads: constants; safe from any thread.
#pragma once

#include "Halvo/String.h"
#include "Zel/Base/CharRange.h"

namespace VelmorTcam::displayStrings {

inline constexpr char stageHeaderFmt[] = "Stage %s";    ///< the stage's name
inline constexpr char pipeHeaderFmt[] = " in PIPE %d";  ///< the pipe's number
/// Group, pipeHeaderFmt's text or none, entries used, "entry" or "entries", entries available:
///     Zel::_fmt(groupInfoFmt, 7, Zel::_fmt(pipeHeaderFmt, 0), 2, "entries", 100)
inline constexpr char groupInfoFmt[] = "TCAM group %d%s uses %d %s and can use up to %d more.\n";
/// The feature's name, its entries.
inline constexpr char requestHeaderFmt[] = "  %s uses %d entries.\n";
/// Id, hits as a text of 12 columns, description:
///     Zel::_fmt(entryInfoFmt, id, Zel::_fmt("%12lu", hits), description)
inline constexpr char entryInfoFmt[] = "    0x%08x %s hits - %s\n";

}  // namespace VelmorTcam::displayStrings

namespace VelmorTcam {

/// The display's texts as a value: format strings for Zel::_fmt, always the same.
///
/// No state; all values are equal. The constants above let the compiler check a format.
class CliDisplayStrings {
 public:
  constexpr CliDisplayStrings() noexcept = default;
  /// The text form has no content: reads nothing.
  constexpr explicit CliDisplayStrings(Zel::CharRange&) noexcept {}

  Halvo::String stageHeaderFmt() const { return displayStrings::stageHeaderFmt; }
  Halvo::String pipeHeaderFmt() const { return displayStrings::pipeHeaderFmt; }
  Halvo::String groupInfoFmt() const { return displayStrings::groupInfoFmt; }
  Halvo::String requestHeaderFmt() const { return displayStrings::requestHeaderFmt; }
  Halvo::String entryInfoFmt() const { return displayStrings::entryInfoFmt; }

  friend constexpr bool operator==(const CliDisplayStrings&, const CliDisplayStrings&) = default;
};

inline void valueToSequence(Halvo::String&, const CliDisplayStrings&) {}

}  // namespace VelmorTcam
