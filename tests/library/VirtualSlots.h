// The slots of virtual operations in their class's table.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

namespace velmortest {

/// A pointer to a virtual member function holds the offset of its slot in the table, plus one.
template <class Member>
std::size_t slotOf(Member member) {
  std::ptrdiff_t words[2];
  static_assert(sizeof member == sizeof words);
  std::memcpy(words, &member, sizeof words);
  EXPECT_EQ(words[0] % 8, 1) << "not virtual";
  EXPECT_EQ(words[1], 0);
  return static_cast<std::size_t>(words[0] - 1) / sizeof(void*);
}

template <class Class>
struct OneMore : Class {
  virtual void oneMore() {}
};
/// The number of slots of a class: the slot that the next operation would take.
template <class Class>
std::size_t slotCount() {
  return slotOf(&OneMore<Class>::oneMore);
}

}  // namespace velmortest
