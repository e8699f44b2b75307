// Reads the flags of an object after its destruction.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <new>

#include "Halvo/Node.h"

namespace velmortest {

/// Makes a Class from `args`, sets its flag word to `before`, destroys it, and expects that the
/// word is `left`.
template <class Class, class... Args>
void expectFlagsLeft(Halvo::U32 before, Halvo::U32 left, const Args&... args) {
  using Halvo::U32;
  // The object lies in this memory, so that its flag word can be read after its destruction.
  alignas(Class) unsigned char place[sizeof(Class)];
  auto* const object = new (place) Class(args...);
  U32 const all = 0xFFFFFFFF;
  auto const offset = [&] {
    // Find the flag word by writing a known pattern.
    object->flagClear(all);
    object->flagSet(0x5A5A5A5A);
    for (std::size_t at = 0; at + 4 <= sizeof(Class); at += 4) {
      U32 word;
      std::memcpy(&word, place + at, 4);
      if (word == 0x5A5A5A5A) return at;
    }
    return sizeof(Class);
  }();
  object->flagClear(all);
  object->flagSet(before);
  std::launder(object)->~Class();
  ASSERT_LT(offset, sizeof(Class));
  unsigned char const volatile* const bytes = place + offset;
  U32 word = 0;
  for (int byte = 3; byte >= 0; --byte) word = word << 8 | bytes[byte];
  EXPECT_EQ(word, left) << "of " << before;
}

}  // namespace velmortest
