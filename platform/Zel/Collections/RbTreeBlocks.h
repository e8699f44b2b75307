// Internal: the blocks of an RbTree, and the operations on one block or on two neighbours.
//
// Threads: as RbTree.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "Sobrel.h"
#include "Zel/Collections/RbTree.h"

namespace Zel::impl {

using Leaf = RbTreeLeaf;
using Inner = RbTree::Inner;

struct RbTree::Inner {
  U16 count;
  U16 unused[3];
  U64 hints[innerCapacity];
  void* elements[innerCapacity];
  void* children[innerCapacity];
};
static_assert(sizeof(RbTree::Inner) <= Sobrel::largestSlabObject);

// The capacities of the only leaf as it grows. They start small: most trees have very few elements.
constexpr U16 leafRooms[] = {1, 4, 12, 30, RbTree::leafCapacity};
// A block that has fewer entries than its minimum takes some from a neighbour. If both together
// have no more than the merge limit, three quarters of a block, the two become one instead. Either
// way the result is not close to the next such step.
constexpr U32 leafMinimum = 22;
constexpr U32 leafMergeLimit = 46;
constexpr U32 innerMinimum = 14;
constexpr U32 innerMergeLimit = 32;

constexpr std::size_t leafBytes(U32 capacity) { return sizeof(Leaf) + capacity * std::size_t{16}; }
static_assert(leafBytes(RbTree::leafCapacity) <= Sobrel::largestSlabObject);

inline Leaf* leafNew(U16 capacity) {
  void* const memory = Sobrel::trackedAlloc(RbTree::blockTracker_, leafBytes(capacity));
  return new (memory) Leaf{0, capacity, 0, 0, nullptr, nullptr};
}
inline void leafDelete(Leaf* leaf) noexcept {
  Sobrel::trackedFree(RbTree::blockTracker_, leaf, leafBytes(leaf->capacity));
}
inline Inner* innerNew() {
  auto* const inner =
      static_cast<Inner*>(Sobrel::trackedAlloc(RbTree::blockTracker_, sizeof(Inner)));
  inner->count = 0;
  return inner;
}
inline void innerDelete(Inner* inner) noexcept {
  Sobrel::trackedFree(RbTree::blockTracker_, inner, sizeof(Inner));
}

// How many of the ordered numbers are below the limit. No branch depends on the numbers.
[[gnu::always_inline]] inline U32 countBelow(const U64* hints, U32 count, U64 limit) noexcept {
  const U64* from = hints;
  while (count > 1) {
    U32 const half = count / 2;
    const U64* const behind = from + half;
    from = behind[-1] < limit ? behind : from;
    count -= half;
  }
  return static_cast<U32>(from - hints) + static_cast<U32>(count == 1 && *from < limit);
}
[[gnu::always_inline]] inline U32 countUpTo(const U64* hints, U32 count, U64 limit) noexcept {
  return limit == ~U64{0} ? count : countBelow(hints, count, limit + 1);
}

// The entries with the hint that is looked for, where hints are not exact: most often one or none.
// Keys with a long common beginning may all have one hint; then the hints are not searched.
struct Range {
  U32 low;
  U32 high;
};
[[gnu::always_inline]] inline Range rangeOf(const U64* hints, U32 count, U64 hint) noexcept {
  if (count == 0 || (hints[0] == hint && hints[count - 1] == hint)) return {0, count};
  U32 const low = countBelow(hints, count, hint);
  if (low == count || hints[low] != hint) return {low, low};
  if (low + 1 == count || hints[low + 1] != hint) return {low, low + 1};
  return {low, low + countUpTo(hints + low, count - low, hint)};
}

// How many of the ordered entries are not greater than the key.
[[gnu::always_inline]] inline U32 rankUpTo(const U64* hints, void* const* elements, U32 count,
                                           const RbTreeProbe& probe) noexcept {
  if (probe.order == nullptr) return countUpTo(hints, count, probe.hint);
  Range range = rangeOf(hints, count, probe.hint);
  while (range.low < range.high) {
    U32 const middle = (range.low + range.high) / 2;
    if (probe.order(elements[middle], probe) > 0) {
      range.high = middle;
    } else {
      range.low = middle + 1;
    }
  }
  return range.low;
}

[[gnu::always_inline]] inline U32 childFor(const Inner& inner, const RbTreeProbe& probe) noexcept {
  return rankUpTo(inner.hints + 1, inner.elements + 1, inner.count - 1U, probe);
}

struct Place {
  U32 index;
  bool isTaken;  // whether the element of the key is there
};
// The place of the key in the leaf, or the place where it belongs.
[[gnu::always_inline]] inline Place placeIn(Leaf& leaf, const RbTreeProbe& probe) noexcept {
  const U64* const hints = leaf.hints();
  if (probe.order == nullptr) {
    U32 const index = countBelow(hints, leaf.count, probe.hint);
    return {index, index < leaf.count && hints[index] == probe.hint};
  }
  Range range = rangeOf(hints, leaf.count, probe.hint);
  while (range.low < range.high) {
    U32 const middle = (range.low + range.high) / 2;
    int const order = probe.order(leaf.elements()[middle], probe);
    if (order == 0) return {middle, true};
    if (order > 0) {
      range.high = middle;
    } else {
      range.low = middle + 1;
    }
  }
  return {range.low, false};
}

// Looks for the hint in the place of the last one and beside it. The hint must lie between the
// leaf's first and last hints. Keys that come in order, or the same key again, then need no search.
[[gnu::always_inline]] inline bool findNearRecent(Leaf& leaf, U64 hint, U32& index) noexcept {
  const U64* const hints = leaf.hints();
  U32 at = std::min<U32>(leaf.recent, leaf.count - 1U);
  if (hints[at] < hint) {
    ++at;
  } else if (hints[at] > hint) {
    --at;
  }
  if (hints[at] != hint) return false;
  leaf.recent = static_cast<U16>(at);
  index = at;
  return true;
}

template <class T>
inline void shift(T* array, U32 from, U32 to, U32 end) noexcept {
  // Keys that come in order move nothing.
  if (from != end) std::memmove(array + to, array + from, (end - from) * sizeof(T));
}
template <class T>
inline void copy(const T* from, U32 count, T* to) noexcept {
  std::memcpy(to, from, count * sizeof(T));
}

// Moves the run to the front of its places.
inline void align(Leaf& leaf) noexcept {
  U64* const hints = leaf.hints();
  void** const elements = leaf.elements();
  leaf.begin = 0;
  std::memmove(leaf.hints(), hints, leaf.count * sizeof *hints);
  std::memmove(leaf.elements(), elements, leaf.count * sizeof *elements);
}
inline void put(Leaf& leaf, U32 index, U64 hint, void* element) noexcept {
  if (leaf.begin != 0 && index * 2 < leaf.count) {
    --leaf.begin;
    shift(leaf.hints(), 1, 0, index + 1);
    shift(leaf.elements(), 1, 0, index + 1);
  } else {
    if (U32{leaf.begin} + leaf.count == leaf.capacity) align(leaf);
    shift(leaf.hints(), index, index + 1, leaf.count);
    shift(leaf.elements(), index, index + 1, leaf.count);
  }
  leaf.hints()[index] = hint;
  leaf.elements()[index] = element;
  ++leaf.count;
}
inline void erase(Leaf& leaf, U32 index) noexcept {
  if (index * 2 < leaf.count) {
    shift(leaf.hints(), 0, 1, index);
    shift(leaf.elements(), 0, 1, index);
    ++leaf.begin;
  } else {
    shift(leaf.hints(), index + 1, index, leaf.count);
    shift(leaf.elements(), index + 1, index, leaf.count);
  }
  --leaf.count;
}
inline void put(Inner& inner, U32 index, U64 hint, void* element, void* child) noexcept {
  shift(inner.hints, index, index + 1, inner.count);
  shift(inner.elements, index, index + 1, inner.count);
  shift(inner.children, index, index + 1, inner.count);
  inner.hints[index] = hint;
  inner.elements[index] = element;
  inner.children[index] = child;
  ++inner.count;
}
inline void erase(Inner& inner, U32 index) noexcept {
  shift(inner.hints, index + 1, index, inner.count);
  shift(inner.elements, index + 1, index, inner.count);
  shift(inner.children, index + 1, index, inner.count);
  --inner.count;
}

// Moves entries between two neighbours so that the left one has `leftCount`.
template <class Block, class Arrays>
inline void balance(Block& left, Block& right, U32 leftCount, Arrays arrays) noexcept {
  U32 const total = left.count + U32{right.count};
  arrays([&](auto* l, auto* r) {
    if (leftCount > left.count) {
      U32 const moved = leftCount - left.count;
      copy(r, moved, l + left.count);
      shift(r, moved, 0, right.count);
    } else {
      U32 const moved = left.count - leftCount;
      shift(r, 0, moved, right.count);
      copy(l + leftCount, moved, r);
    }
  });
  left.count = static_cast<U16>(leftCount);
  right.count = static_cast<U16>(total - leftCount);
}
inline void balance(Leaf& left, Leaf& right, U32 leftCount) noexcept {
  align(left);
  align(right);
  balance(left, right, leftCount, [&](auto move) {
    move(left.hints(), right.hints());
    move(left.elements(), right.elements());
  });
}
inline void balance(Inner& left, Inner& right, U32 leftCount) noexcept {
  balance(left, right, leftCount, [&](auto move) {
    move(left.hints, right.hints);
    move(left.elements, right.elements);
    move(left.children, right.children);
  });
}

}  // namespace Zel::impl
