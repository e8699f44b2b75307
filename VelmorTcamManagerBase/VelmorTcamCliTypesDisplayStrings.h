// The formats of the usage display. VelmorTcamCliFormat uses the same ones.
//
// Threads: constants; safe from any thread.
#pragma once

#include "Halvo/String.h"
#include "Zel/Base/CharRange.h"

namespace VelmorTcam::displayStrings {

inline constexpr char stageHeaderFmt[] = "Stage %s";    ///< the stage's name
inline constexpr char pipeHeaderFmt[] = " in PIPE %d";  ///< the pipe's number
/// Arguments: the group's number, the text of pipeHeaderFmt or "", used entries, "entry" or
/// "entries", available entries.
///
///     Zel::_fmt(groupInfoFmt, 7, Zel::_fmt(pipeHeaderFmt, 0), 2, "entries", 100)
inline constexpr char groupInfoFmt[] = "TCAM group %d%s uses %d %s and can use up to %d more.\n";
/// Arguments: the feature's name, the number of its entries.
inline constexpr char requestHeaderFmt[] = "  %s uses %d entries.\n";
/// Arguments: the entry's id, its hits as a text of 12 columns, its description.
///
///     Zel::_fmt(entryInfoFmt, id, Zel::_fmt("%12lu", hits), description)
inline constexpr char entryInfoFmt[] = "    0x%08x %s hits - %s\n";

}  // namespace VelmorTcam::displayStrings

namespace VelmorTcam {

/// The same formats as a value type, for reflection. They never change.
///
/// The class has no state, so all values are equal. Prefer the constants above: with them the
/// compiler checks a format against its arguments.
class CliDisplayStrings {
 public:
  constexpr CliDisplayStrings() noexcept = default;
  /// Reads nothing: the text form is empty.
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
