// Colours on a terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tcamshow {

enum class ColourWhen : std::uint8_t { automatic, always, never };

/// Whether to colour what goes to `descriptor`. Automatically, a terminal is coloured unless the
/// environment has NO_COLOR with any value, and anything is if it has CLICOLOR_FORCE with a value
/// other than "0". NO_COLOR wins.
bool isColoured(ColourWhen when, int descriptor) noexcept;

enum class Colour : std::uint8_t { none, good, bad, waiting, dim };

/// Puts `text` between the sequences of a colour (ECMA-48, SGR).
std::string coloured(Colour colour, std::string_view text);

/// permit and the like are good, deny and the like are bad, whatever the case and what follows the
/// first word; all others have no colour.
Colour colourOfAction(std::string_view action) noexcept;

}  // namespace tcamshow
