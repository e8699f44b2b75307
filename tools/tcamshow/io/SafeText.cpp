#include "io/SafeText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tcamshow {
namespace {

/// Whether all of `size` bytes are safe ASCII: without a branch for each, so that the compiler can
/// take many at once.
bool areSafeAscii(const char* text, std::size_t size, LineBreaks lineBreaks) noexcept {
  auto const kept = static_cast<unsigned char>(lineBreaks == LineBreaks::kept ? '\n' : ' ');
  unsigned char unsafe = 0;
  for (std::size_t i = 0; i != size; ++i) {
    auto const c = static_cast<unsigned char>(text[i]);
    auto const above = static_cast<unsigned char>(c - 0x20);
    unsafe |= static_cast<unsigned char>(static_cast<unsigned char>(above >= 0x5F) &
                                         static_cast<unsigned char>(c != kept));
  }
  return unsafe == 0;
}

/// The same of eight bytes; a line feed counts as unsafe.
bool areSafeAscii(std::uint64_t word) noexcept {
  constexpr std::uint64_t ones = 0x0101010101010101U;
  constexpr std::uint64_t highs = ones * 0x80;
  std::uint64_t const deletes = word ^ ones * 0x7F;
  std::uint64_t const marks = word | ((word - ones * 0x20) & ~word) | ((deletes - ones) & ~deletes);
  return (marks & highs) == 0;
}

}  // namespace

std::size_t safeAsciiSize(std::string_view text, LineBreaks lineBreaks) noexcept {
  // Nearly every text is safe as a whole.
  constexpr std::size_t block = 64;
  std::size_t at = 0;
  if (text.size() >= block) {
    while (text.size() - at >= block && areSafeAscii(text.data() + at, block, lineBreaks)) {
      at += block;
    }
    // The last block may begin within the one before it.
    bool const isLast = text.size() - at < block;
    if (isLast && areSafeAscii(text.data() + text.size() - block, block, lineBreaks)) {
      return text.size();
    }
  }
  for (std::uint64_t word = 0; text.size() - at >= sizeof word; at += sizeof word) {
    std::memcpy(&word, text.data() + at, sizeof word);
    if (!areSafeAscii(word)) break;
  }
  while (at != text.size() && areSafeAscii(text.data() + at, 1, lineBreaks)) ++at;
  return at;
}

void appendSafe(std::string& out, std::string_view text, LineBreaks lineBreaks) {
  forEachSafePiece(text, lineBreaks, [&](std::string_view piece) { out += piece; });
}

std::string safeText(std::string_view text, LineBreaks lineBreaks) {
  std::string out;
  appendSafe(out, text, lineBreaks);
  return out;
}

std::string shown(std::string_view text, std::size_t longest) {
  std::string_view rest = text;
  std::string out;
  while (!rest.empty()) {
    std::size_t const size = std::max(frontCharacter(rest).size, std::size_t{1});
    if (out.size() >= longest) return out + "...";
    appendSafe(out, rest.substr(0, size));
    rest.remove_prefix(size);
  }
  return out;
}

std::string shownName(std::string_view name) { return shown(name, 1024); }

std::string inQuotes(std::string_view text) { return '"' + shown(text) + '"'; }

}  // namespace tcamshow
