// What somebody may have meant.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tcamshow {

/// For a message about a word that is not known: `; did you mean "ip" or "ip6"?`, with those of
/// `known` that are nearest to it, three at most; empty where none is near. Near is a word that one
/// or, where it has more than three letters, two changed, missing, needless or swapped letters make
/// of the other, whatever their case.
std::string suggestion(std::string_view word, std::span<const std::string_view> known);

}  // namespace tcamshow
