#include "views/Colour.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace tcamshow {

bool isColoured(ColourWhen when, int descriptor) noexcept {
  if (when != ColourWhen::automatic) return when == ColourWhen::always;
  const char* const off = std::getenv("NO_COLOR");
  if (off != nullptr && *off != '\0') return false;
  const char* const force = std::getenv("CLICOLOR_FORCE");
  if (force != nullptr && *force != '\0' && std::string_view(force) != "0") return true;
  return ::isatty(descriptor) == 1;
}

std::string coloured(Colour colour, std::string_view text) {
  constexpr std::array<std::string_view, 5> sequences{"", "\x1B[32m", "\x1B[31m", "\x1B[33m",
                                                      "\x1B[2m"};
  if (colour == Colour::none) return std::string(text);
  std::string result(sequences[static_cast<std::size_t>(colour)]);
  result += text;
  result += "\x1B[0m";
  return result;
}

Colour colourOfAction(std::string_view action) noexcept {
  constexpr std::string_view good[] = {"permit", "accept", "allow", "forward"};
  constexpr std::string_view bad[] = {"deny", "drop", "discard", "reject"};
  std::string_view const first = action.substr(0, action.find_first_of(" ,:;"));
  auto const isWord = [first](std::string_view word) {
    return std::equal(first.begin(), first.end(), word.begin(), word.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
  };
  if (std::any_of(std::begin(good), std::end(good), isWord)) return Colour::good;
  return std::any_of(std::begin(bad), std::end(bad), isWord) ? Colour::bad : Colour::none;
}

}  // namespace tcamshow
