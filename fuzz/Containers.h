// Shared by the parts of the target `containers`.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>

#include "Halvo/MemoryTracker.h"
#include "Halvo/String.h"
#include "Target.h"

namespace velmorfuzz {

using Halvo::String;

/// The tag under which all elements of this target are counted.
struct ItemTag {
  static Zel::AllocationTracker memAllocationTracker_;
};

/// Keys that begin alike, so that a comparison has to read far.
template <class K>
K keyNumbered(unsigned number) {
  if constexpr (std::is_same_v<K, String>) {
    static constexpr std::string_view beginnings[] = {"", "acl", "a rather long name of a group",
                                                      "a rather long name of a group, and longer "
                                                      "still than a short string holds: "};
    return String(std::string(beginnings[number % 4]) + std::to_string(number / 4));
  } else {
    return static_cast<K>(number);
  }
}

template <class K>
K keyOf(Input& in) {
  unsigned const shape = in.u8();
  if (shape < 192) return keyNumbered<K>(shape);
  if constexpr (std::is_same_v<K, String>) {
    return String(in.text(shape - 192));
  } else {
    return in.oddNumber<K>();
  }
}

void orderedMapOfNumbers(Input& in);
void orderedMapOfTexts(Input& in);
void orderedSet(Input& in);

}  // namespace velmorfuzz
