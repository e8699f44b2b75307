#include "io/Nearest.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tcamshow {
namespace {

char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// The fewest letters to change, to leave out, to put in or to swap with the next.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      bool const isSame = lower(a[i - 1]) == lower(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
      bool const isSwapped = i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                             lower(a[i - 2]) == lower(b[j - 1]);
      if (isSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[b.size()];
}

}  // namespace

std::string suggestion(std::string_view word, std::span<const std::string_view> known) {
  constexpr std::size_t most = 3;
  std::size_t smallest = word.size() > 3 ? 2 : 1;
  std::vector<std::string_view> nearest;
  for (std::string_view const name : known) {
    // Of a long word nothing is near; do not look at all of it.
    if (name.size() > word.size() + smallest || word.size() > name.size() + smallest) continue;
    std::size_t const each = distance(word, name);
    if (each > smallest) continue;
    if (each < smallest) nearest.clear();
    smallest = each;
    if (nearest.size() < most) nearest.push_back(name);
  }
  std::string text;
  for (std::size_t i = 0; i < nearest.size(); ++i) {
    text += i == 0 ? "; did you mean \"" : i + 1 == nearest.size() ? "\" or \"" : "\", \"";
    text += nearest[i];
  }
  return text.empty() ? text : text += "\"?";
}

}  // namespace tcamshow
