// Shared by the tests of hash maps.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Halvo/String.h"
#include "Zel/Collections/HashMap2018.h"

namespace velmortest {

using Halvo::String;
using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;
using Zel::HashMap2018;

enum Kind : U8 { kindNone = 0, kindSome = 8, kindOther = 20, kindLast = 255 };

// Carries a number and counts the live objects. Copying throws on demand.
struct Counted {
  static int live;
  static int copiesLeft;  // below zero: no limit
  explicit Counted(int n = 0) : number(n) { ++live; }
  Counted(const Counted& other) : number(other.number) {
    if (copiesLeft == 0) throw std::runtime_error("copy");
    if (copiesLeft > 0) --copiesLeft;
    ++live;
  }
  Counted(Counted&& other) noexcept : number(std::exchange(other.number, -1)) { ++live; }
  Counted& operator=(const Counted&) = default;
  Counted& operator=(Counted&&) = default;
  ~Counted() { --live; }
  friend bool operator==(const Counted& a, const Counted& b) { return a.number == b.number; }
  int number;
};
inline int Counted::live = 0;
inline int Counted::copiesLeft = -1;

struct CountedHash {
  std::size_t operator()(const Counted& key) const { return static_cast<std::size_t>(key.number); }
};
struct SameHash {
  std::size_t operator()(U64) const { return 42; }
};
struct FewHashes {
  std::size_t operator()(U64 key) const { return key % 3; }
};

template <class Map>
std::vector<typename Map::Key> keysOf(const Map& map) {
  std::vector<typename Map::Key> keys;
  for (auto [key, value] : map) keys.push_back(key);
  std::sort(keys.begin(), keys.end());
  return keys;
}

}  // namespace velmortest
