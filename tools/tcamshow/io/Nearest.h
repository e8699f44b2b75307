// Suggestions for misspelt words.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tcamshow {

/// The end of a message about an unknown word, such as `; did you mean "ip" or "ip6"?`. It names
/// the words of `known` that need the fewest changes, at most three words. Empty if none is near.
///
/// A word is near if one change makes it of `word`, or two changes if `word` has more than three
/// letters. A change replaces, adds or removes a letter, or swaps two. Case does not count.
std::string suggestion(std::string_view word, std::span<const std::string_view> known);

}  // namespace tcamshow
