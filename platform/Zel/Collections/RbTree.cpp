#include "Zel/Collections/RbTree.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Sobrel.h"

namespace Zel::impl {

using Leaf = RbTreeLeaf;
using Inner = RbTree::Inner;

constinit Halvo::MemoryTracker RbTree::blockTracker_{"Zel::RbTreeBlock"};

struct RbTree::Inner {
  U16 count;
  U16 unused[3];
  U64 hints[innerCapacity];
  void* elements[innerCapacity];
  void* children[innerCapacity];
};
static_assert(sizeof(RbTree::Inner) <= Sobrel::largestSlabObject);

namespace {

// The room of the only leaf as it grows: most trees have very few elements.
constexpr U16 leafRooms[] = {1, 4, 12, 30, RbTree::leafCapacity};
// Below these a block takes from a neighbour, or the two become one when they fill no more than
// three quarters: neither is then near to the next such step.
constexpr U32 leafMinimum = 22;
constexpr U32 leafMergeLimit = 46;
constexpr U32 innerMinimum = 14;
constexpr U32 innerMergeLimit = 32;

constexpr std::size_t leafBytes(U32 capacity) { return sizeof(Leaf) + capacity * std::size_t{16}; }
static_assert(leafBytes(RbTree::leafCapacity) <= Sobrel::largestSlabObject);

Leaf* leafNew(U16 capacity) {
  void* const memory = Sobrel::trackedAlloc(RbTree::blockTracker_, leafBytes(capacity));
  return new (memory) Leaf{0, capacity, 0, 0, nullptr, nullptr};
}
void leafDelete(Leaf* leaf) noexcept {
  Sobrel::trackedFree(RbTree::blockTracker_, leaf, leafBytes(leaf->capacity));
}
Inner* innerNew() {
  auto* const inner =
      static_cast<Inner*>(Sobrel::trackedAlloc(RbTree::blockTracker_, sizeof(Inner)));
  inner->count = 0;
  return inner;
}
void innerDelete(Inner* inner) noexcept {
  Sobrel::trackedFree(RbTree::blockTracker_, inner, sizeof(Inner));
}

// How many of the ordered numbers are below the limit. No branch depends on them.
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

// The entries that may be the sought one where hints are not exact: those of its hint, most often
// one or none. Keys with a long common beginning have one hint; then the hints are not searched.
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
  bool isTaken;  // by the element of the key
};
// Where the key stands in the leaf, or would stand.
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

// Finds the hint, which lies between the leaf's first and last, where the last one was found or
// beside it: keys in order, and a key again and again, need no search.
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
void shift(T* array, U32 from, U32 to, U32 end) noexcept {
  // Nothing moves where keys come in order.
  if (from != end) std::memmove(array + to, array + from, (end - from) * sizeof(T));
}
template <class T>
void copy(const T* from, U32 count, T* to) noexcept {
  std::memcpy(to, from, count * sizeof(T));
}

// Moves the run to the front of its places.
void align(Leaf& leaf) noexcept {
  U64* const hints = leaf.hints();
  void** const elements = leaf.elements();
  leaf.begin = 0;
  std::memmove(leaf.hints(), hints, leaf.count * sizeof *hints);
  std::memmove(leaf.elements(), elements, leaf.count * sizeof *elements);
}
void put(Leaf& leaf, U32 index, U64 hint, void* element) noexcept {
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
void erase(Leaf& leaf, U32 index) noexcept {
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
void put(Inner& inner, U32 index, U64 hint, void* element, void* child) noexcept {
  shift(inner.hints, index, index + 1, inner.count);
  shift(inner.elements, index, index + 1, inner.count);
  shift(inner.children, index, index + 1, inner.count);
  inner.hints[index] = hint;
  inner.elements[index] = element;
  inner.children[index] = child;
  ++inner.count;
}
void erase(Inner& inner, U32 index) noexcept {
  shift(inner.hints, index + 1, index, inner.count);
  shift(inner.elements, index + 1, index, inner.count);
  shift(inner.children, index + 1, index, inner.count);
  --inner.count;
}

// Moves entries between neighbours so that the left one has `leftCount`.
template <class Block, class Arrays>
void balance(Block& left, Block& right, U32 leftCount, Arrays arrays) noexcept {
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
void balance(Leaf& left, Leaf& right, U32 leftCount) noexcept {
  align(left);
  align(right);
  balance(left, right, leftCount, [&](auto move) {
    move(left.hints(), right.hints());
    move(left.elements(), right.elements());
  });
}
void balance(Inner& left, Inner& right, U32 leftCount) noexcept {
  balance(left, right, leftCount, [&](auto move) {
    move(left.hints, right.hints);
    move(left.elements, right.elements);
    move(left.children, right.children);
  });
}

// Blocks at hand before a split begins: what it does not use goes back.
class Spare {
 public:
  explicit Spare(U32 inners) {
    leaf = leafNew(RbTree::leafCapacity);
    try {
      while (inners_ < inners) {
        inner_[inners_] = innerNew();
        ++inners_;
      }
    } catch (...) {
      while (inners_ > 0) innerDelete(inner_[--inners_]);
      leafDelete(leaf);
      throw;
    }
  }
  // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): as many as were reserved
  Inner* takeInner() noexcept { return inner_[--inners_]; }
  Leaf* leaf;

 private:
  Inner* inner_[RbTree::maxHeight + 1];
  U32 inners_ = 0;
};

}  // namespace

RbTreeLeaf* RbTree::descend(const RbTreeProbe& probe) const noexcept {
  void* block = root_;
  for (U32 level = height_; level != 0; --level) {
    auto* const inner = static_cast<Inner*>(block);
    block = inner->children[childFor(*inner, probe)];
  }
  return static_cast<Leaf*>(block);
}

void* RbTree::find(const RbTreeProbe& probe) const noexcept {
  if (size_ == 0) return nullptr;
  Leaf& leaf = *descend(probe);
  Place const place = placeIn(leaf, probe);
  return place.isTaken ? leaf.elements()[place.index] : nullptr;
}

void* RbTree::find(U64 hint) const noexcept {
  if (size_ == 0) return nullptr;
  void* block = root_;
  for (U32 level = height_; level != 0; --level) {
    auto* const inner = static_cast<Inner*>(block);
    block = inner->children[countUpTo(inner->hints + 1, inner->count - 1U, hint)];
  }
  auto* const leaf = static_cast<Leaf*>(block);
  U32 const index = countBelow(leaf->hints(), leaf->count, hint);
  if (index == leaf->count || leaf->hints()[index] != hint) return nullptr;
  return leaf->elements()[index];
}

void* RbTree::anyElement() const noexcept {
  return height_ == 0 ? static_cast<Leaf*>(root_)->elements()[0]
                      : static_cast<Inner*>(root_)->elements[0];
}

namespace {

void rehintBlock(void* block, U32 height, U32 skip, U64 (*hintOf)(const void*, U32)) noexcept {
  if (height == 0) {
    Leaf& leaf = *static_cast<Leaf*>(block);
    for (U32 i = 0; i < leaf.count; ++i) leaf.hints()[i] = hintOf(leaf.elements()[i], skip);
    return;
  }
  Inner& inner = *static_cast<Inner*>(block);
  for (U32 i = 0; i < inner.count; ++i) {
    inner.hints[i] = hintOf(inner.elements[i], skip);
    rehintBlock(inner.children[i], height - 1, skip, hintOf);
  }
}

}  // namespace

void RbTree::rehint(U32 skip, U64 (*hintOf)(const void*, U32)) noexcept {
  if (skip > skip_) ++skipGrowths_;
  skip_ = static_cast<U8>(skip);
  if (root_ != nullptr) rehintBlock(root_, height_, skip, hintOf);
}

RbTree::Position RbTree::first() const noexcept {
  void* block = root_;
  for (U32 level = height_; level != 0; --level) block = static_cast<Inner*>(block)->children[0];
  return {static_cast<Leaf*>(block), 0};
}

RbTree::Position RbTree::last() const noexcept {
  if (size_ == 0) return {};
  void* block = root_;
  for (U32 level = height_; level != 0; --level) {
    auto* const inner = static_cast<Inner*>(block);
    block = inner->children[inner->count - 1];
  }
  auto* const leaf = static_cast<Leaf*>(block);
  return {leaf, leaf->count - 1U};
}

RbTree::Position RbTree::positionOf(const RbTreeProbe& probe) const noexcept {
  if (size_ == 0) return {};
  Leaf* const leaf = descend(probe);
  Place const place = placeIn(*leaf, probe);
  return place.isTaken ? Position{leaf, place.index} : Position{};
}

RbTree::Position RbTree::lowerBound(const RbTreeProbe& probe) const noexcept {
  if (size_ == 0) return {};
  Leaf* const leaf = descend(probe);
  U32 const index = placeIn(*leaf, probe).index;
  return index < leaf->count ? Position{leaf, index} : Position{leaf->next, 0};
}

RbTree::Position RbTree::upperBound(const RbTreeProbe& probe) const noexcept {
  if (size_ == 0) return {};
  Leaf* const leaf = descend(probe);
  U32 const index = rankUpTo(leaf->hints(), leaf->elements(), leaf->count, probe);
  return index < leaf->count ? Position{leaf, index} : Position{leaf->next, 0};
}

// Fills in the inner blocks on the way to the key, and the leaf.
void RbTree::descendAlong(const RbTreeProbe& probe, Path& path) const noexcept {
  void* block = root_;
  for (U32 level = 0; level < height_; ++level) {
    auto* const inner = static_cast<Inner*>(block);
    U32 const child = childFor(*inner, probe);
    path.inner[level] = inner;
    path.child[level] = child;
    block = inner->children[child];
  }
  path.at.leaf = static_cast<Leaf*>(block);
  path.isKnown = true;
}

void* RbTree::locate(const RbTreeProbe& probe, Path& path) noexcept {
  path.at = {};
  path.isKnown = true;
  if (size_ == 0) return nullptr;
  if (recent_ != nullptr && keysRun_) {
    // Keys in order stay in a leaf for long. Where hints are not exact, the key may stand in a
    // neighbour when its hint is that of the leaf's first or last element.
    Leaf& leaf = *recent_;
    U64* const hints = leaf.hints();
    U32 const last = leaf.count - 1U;
    bool const isExact = probe.order == nullptr;
    path.at.leaf = &leaf;
    path.isKnown = false;
    if (hints[0] == probe.hint) {
      if (isExact) return leaf.elements()[0];
    } else if (probe.hint < hints[0]) {
      if (leaf.previous == nullptr) return nullptr;
    } else if (probe.hint < hints[last]) {
      if (isExact && findNearRecent(leaf, probe.hint, path.at.index)) {
        return leaf.elements()[path.at.index];
      }
      Place const place = placeIn(leaf, probe);
      leaf.recent = static_cast<U16>(place.index);
      path.at.index = place.index;
      return place.isTaken ? leaf.elements()[place.index] : nullptr;
    } else if (probe.hint == hints[last]) {
      path.at.index = last;
      if (isExact) return leaf.elements()[last];
    } else if (leaf.next == nullptr) {
      path.at.index = last + 1;
      return nullptr;
    }
  }
  descendAlong(probe, path);
  Leaf& leaf = *path.at.leaf;
  // Scattered keys would pay for the look at a leaf that is never theirs.
  keysRun_ =
      recent_ == nullptr || &leaf == recent_ || leaf.previous == recent_ || leaf.next == recent_;
  recent_ = &leaf;
  Place const place = placeIn(leaf, probe);
  path.at.index = place.index;
  leaf.recent = static_cast<U16>(place.index);
  return place.isTaken ? leaf.elements()[place.index] : nullptr;
}

// The tree has a new first element.
void RbTree::firstIs(U64 hint, void* element) noexcept {
  void* block = root_;
  for (U32 level = height_; level != 0; --level) {
    auto* const inner = static_cast<Inner*>(block);
    inner->hints[0] = hint;
    inner->elements[0] = element;
    block = inner->children[0];
  }
}

// The block below `level` that the path leads through has a new first element.
void RbTree::minimumChanged(const Path& path, U32 level, U64 hint, void* element) noexcept {
  while (level-- > 0) {
    U32 const child = path.child[level];
    path.inner[level]->hints[child] = hint;
    path.inner[level]->elements[child] = element;
    if (child != 0) return;
  }
}

void RbTree::insertAt(Path& path, U64 hint, void* element) {
  Leaf* leaf = path.at.leaf;
  if (leaf == nullptr) {
    leaf = leafNew(leafRooms[0]);
    root_ = leaf;
  } else if (leaf->count == leaf->capacity) {
    if (leaf->capacity == leafCapacity) {
      if (!path.isKnown) {
        U32 const index = path.at.index;
        descendAlong({hint, nullptr, nullptr, 0}, path);
        path.at.index = index;
      }
      leafSplit(path, hint, element);
      ++size_;
      ++version_;
      return;
    }
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): the leaf is not of the largest room
    Leaf* const larger = leafNew(*std::upper_bound(leafRooms, std::end(leafRooms), leaf->count));
    copy(leaf->hints(), leaf->count, larger->hints());
    copy(leaf->elements(), leaf->count, larger->elements());
    larger->count = leaf->count;
    leafDelete(leaf);
    leaf = larger;
    root_ = leaf;
  }
  put(*leaf, path.at.index, hint, element);
  if (path.at.index == 0 && leaf->previous == nullptr) firstIs(hint, element);
  recent_ = leaf;
  ++size_;
  ++version_;
}

void RbTree::leafSplit(Path& path, U64 hint, void* element) {
  U32 full = 0;
  while (full < height_ && path.inner[height_ - 1 - full]->count == innerCapacity) ++full;
  Spare spare(full + (full == height_ ? 1 : 0));

  // Input in order, from either side, leaves full blocks behind; other input leaves halves.
  Leaf* const leaf = path.at.leaf;
  Leaf* const fresh = spare.leaf;
  U32 const index = path.at.index;
  bool freshIsLeft = false;
  recent_ = fresh;
  if (index == leaf->count && leaf->next == nullptr) {
    put(*fresh, 0, hint, element);
  } else if (index == 0 && leaf->previous == nullptr) {
    fresh->begin = leafCapacity - 1;  // the run grows towards the front
    fresh->hints()[0] = hint;
    fresh->elements()[0] = element;
    fresh->count = 1;
    freshIsLeft = true;
    // The leaf's entries above may hold a hint as low as that of the element that goes before it.
    minimumChanged(path, height_, leaf->hints()[0], leaf->elements()[0]);
  } else {
    constexpr U32 half = leafCapacity / 2;
    balance(*leaf, *fresh, half);
    if (index <= half) {
      put(*leaf, index, hint, element);
    } else {
      put(*fresh, index - half, hint, element);
    }
  }
  Leaf* const left = freshIsLeft ? leaf->previous : leaf;
  Leaf* const right = freshIsLeft ? leaf : leaf->next;
  fresh->previous = left;
  fresh->next = right;
  if (left != nullptr) left->next = fresh;
  if (right != nullptr) right->previous = fresh;

  void* added = fresh;
  U64 addedHint = fresh->hints()[0];
  void* addedElement = fresh->elements()[0];
  for (U32 level = height_; level-- > 0;) {
    Inner& inner = *path.inner[level];
    U32 const at = path.child[level] + (freshIsLeft ? 0 : 1);
    if (inner.count < innerCapacity) {
      put(inner, at, addedHint, addedElement, added);
      if (at == 0) minimumChanged(path, level, addedHint, addedElement);
      return;
    }
    // No inner block has less than two children, or an empty leaf could find itself alone.
    Inner& freshInner = *spare.takeInner();
    if (at == 0) {
      balance(freshInner, inner, 1);
      put(freshInner, 0, addedHint, addedElement, added);
      if (level > 0) {
        path.inner[level - 1]->hints[0] = inner.hints[0];
        path.inner[level - 1]->elements[0] = inner.elements[0];
      }
      freshIsLeft = true;
    } else {
      U32 const kept =
          at == innerCapacity && right == nullptr ? innerCapacity - 1 : innerCapacity / 2;
      balance(inner, freshInner, kept);
      if (at <= kept) {
        put(inner, at, addedHint, addedElement, added);
      } else {
        put(freshInner, at - kept, addedHint, addedElement, added);
      }
      freshIsLeft = false;
    }
    added = &freshInner;
    addedHint = freshInner.hints[0];
    addedElement = freshInner.elements[0];
  }

  Inner& root = *spare.takeInner();
  void* const old = root_;
  U64 const oldHint = height_ == 0 ? leaf->hints()[0] : static_cast<Inner*>(old)->hints[0];
  void* const oldElement =
      height_ == 0 ? leaf->elements()[0] : static_cast<Inner*>(old)->elements[0];
  put(root, 0, oldHint, oldElement, old);
  put(root, freshIsLeft ? 0 : 1, addedHint, addedElement, added);
  root_ = &root;
  ++height_;
}

void RbTree::removeAt(Path& path, bool hintsAreExact) noexcept {
  Leaf& leaf = *path.at.leaf;
  // The leaves at the edges may drain, as a queue does, without a look at their neighbours.
  bool const isAtEdge = leaf.previous == nullptr || leaf.next == nullptr;
  bool const goesUnder = !isAtEdge && leaf.count <= leafMinimum;
  if (!path.isKnown && (goesUnder || leaf.count == 1)) {
    U32 const index = path.at.index;
    descendAlong({leaf.hints()[index], nullptr, nullptr, 0}, path);
    path.at.index = index;
  }
  erase(leaf, path.at.index);
  --size_;
  ++version_;
  recent_ = &leaf;
  if (leaf.count == 0) return leafRemove(path);
  if (height_ == 0) return;
  // A hint that is too low does no harm; a pointer to an element that is gone would.
  if (path.at.index == 0 && !hintsAreExact) {
    minimumChanged(path, height_, leaf.hints()[0], leaf.elements()[0]);
  }
  if (goesUnder) leafUnderflow(path);
}

// The leaf at the end of the path has lost its last element.
void RbTree::leafRemove(Path& path) noexcept {
  Leaf* const leaf = path.at.leaf;
  recent_ = nullptr;
  if (leaf->previous != nullptr) leaf->previous->next = leaf->next;
  if (leaf->next != nullptr) leaf->next->previous = leaf->previous;
  leafDelete(leaf);
  if (height_ == 0) {
    root_ = nullptr;
    skip_ = 0;
    skipGrowths_ = 0;
    return;
  }
  U32 const level = height_ - 1;
  Inner& parent = *path.inner[level];
  erase(parent, path.child[level]);
  if (path.child[level] == 0) minimumChanged(path, level, parent.hints[0], parent.elements[0]);
  underflow(path);
}

void RbTree::leafUnderflow(Path& path) noexcept {
  U32 const level = height_ - 1;
  Inner& parent = *path.inner[level];
  U32 const at = path.child[level] == 0 ? 0 : path.child[level] - 1;
  Leaf& left = *static_cast<Leaf*>(parent.children[at]);
  Leaf& right = *static_cast<Leaf*>(parent.children[at + 1]);
  U32 const total = left.count + U32{right.count};
  bool const merges = total <= leafMergeLimit;
  balance(left, right, merges ? total : total / 2);
  recent_ = &left;
  if (!merges) {
    parent.hints[at + 1] = right.hints()[0];
    parent.elements[at + 1] = right.elements()[0];
    return;
  }
  left.next = right.next;
  if (right.next != nullptr) right.next->previous = &left;
  leafDelete(&right);
  erase(parent, at + 1);
  underflow(path);
}

// After a child of the lowest inner block on the path has gone.
void RbTree::underflow(Path& path) noexcept {
  for (U32 level = height_ - 1; level > 0; --level) {
    if (path.inner[level]->count >= innerMinimum) return;
    Inner& parent = *path.inner[level - 1];
    U32 const at = path.child[level - 1] == 0 ? 0 : path.child[level - 1] - 1;
    Inner& left = *static_cast<Inner*>(parent.children[at]);
    Inner& right = *static_cast<Inner*>(parent.children[at + 1]);
    U32 const total = left.count + U32{right.count};
    if (total > innerMergeLimit) {
      balance(left, right, total / 2);
      parent.hints[at + 1] = right.hints[0];
      parent.elements[at + 1] = right.elements[0];
      return;
    }
    balance(left, right, total);
    innerDelete(&right);
    erase(parent, at + 1);
  }
  auto* const root = static_cast<Inner*>(root_);
  if (root->count == 1) {
    root_ = root->children[0];
    --height_;
    innerDelete(root);
  }
}

void RbTree::contentsSwap(RbTree& other) noexcept {
  std::swap(recent_, other.recent_);
  std::swap(root_, other.root_);
  std::swap(size_, other.size_);
  std::swap(height_, other.height_);
  std::swap(keysRun_, other.keysRun_);
  std::swap(skip_, other.skip_);
  std::swap(skipGrowths_, other.skipGrowths_);
  ++version_;
  ++other.version_;
}

namespace {

void blockFree(void* block, U32 height) noexcept {
  if (height == 0) return leafDelete(static_cast<Leaf*>(block));
  auto* const inner = static_cast<Inner*>(block);
  for (U32 i = 0; i < inner->count; ++i) blockFree(inner->children[i], height - 1);
  innerDelete(inner);
}

std::size_t bytesOf(void* block, U32 height) noexcept {
  if (height == 0) return leafBytes(static_cast<Leaf*>(block)->capacity);
  auto* const inner = static_cast<Inner*>(block);
  std::size_t bytes = sizeof(Inner);
  for (U32 i = 0; i < inner->count; ++i) bytes += bytesOf(inner->children[i], height - 1);
  return bytes;
}

// Checks a tree's blocks from the first to the last.
class Inspection {
 public:
  explicit Inspection(bool hintsAreExact) noexcept : hintsAreExact_(hintsAreExact) {}

  /// The elements, and the last leaf, that it has met.
  U32 size() const noexcept { return size_; }
  const Leaf* last() const noexcept { return previous_; }

  /// Whether one block, and what is below it, is sound; `hint` and `element` are what the block
  /// above says of it. Only the root is at both edges.
  bool isSound(void* block, U32 height, bool isAtFront, bool isAtBack, U64 hint,
               void* element) noexcept {
    bool const isAtEdge = isAtFront || isAtBack;
    if (height == 0) {
      auto* const leaf = static_cast<Leaf*>(block);
      bool const isRoot = isAtFront && isAtBack;
      return isLeafSound(*leaf, hint, element) && (isAtEdge || leaf->count >= leafMinimum) &&
             (isRoot || leaf->capacity == RbTree::leafCapacity);
    }
    auto* const inner = static_cast<Inner*>(block);
    U32 const last = inner->count - 1U;
    bool sound = inner->count >= (isAtEdge ? 2 : innerMinimum) &&
                 inner->count <= RbTree::innerCapacity && inner->hints[0] == hint &&
                 inner->elements[0] == element &&
                 std::is_sorted(inner->hints, inner->hints + inner->count);
    for (U32 i = 0; sound && i <= last; ++i) {
      sound = isSound(inner->children[i], height - 1, isAtFront && i == 0, isAtBack && i == last,
                      inner->hints[i], inner->elements[i]);
    }
    return sound;
  }

 private:
  bool isLeafSound(Leaf& leaf, U64 hint, void* element) noexcept {
    bool sound = leaf.count != 0 && leaf.begin + leaf.count <= leaf.capacity &&
                 leaf.previous == previous_ && hint <= leaf.hints()[0] &&
                 std::is_sorted(leaf.hints(), leaf.hints() + leaf.count);
    if (!hintsAreExact_) {
      sound = sound && leaf.hints()[0] == hint && leaf.elements()[0] == element;
    }
    if (previous_ != nullptr) {
      sound = sound && previous_->next == &leaf && previous_->hints()[previous_->count - 1] <= hint;
    }
    previous_ = &leaf;
    size_ += leaf.count;
    return sound;
  }

  bool const hintsAreExact_;
  Leaf* previous_ = nullptr;
  U32 size_ = 0;
};

}  // namespace

void RbTree::blocksFree() noexcept {
  if (root_ != nullptr) blockFree(root_, height_);
  recent_ = nullptr;
  root_ = nullptr;
  height_ = 0;
  skip_ = 0;
  skipGrowths_ = 0;
  size_ = 0;
  ++version_;
}

std::size_t RbTree::blockBytes() const noexcept {
  return root_ == nullptr ? 0 : bytesOf(root_, height_);
}

bool RbTree::isSound(bool hintsAreExact) const noexcept {
  if (root_ == nullptr) return size_ == 0 && height_ == 0;
  bool const isLeaf = height_ == 0;
  Leaf* const leaf = first().leaf;
  U64 const hint = isLeaf ? leaf->hints()[0] : static_cast<Inner*>(root_)->hints[0];
  void* const element = isLeaf ? leaf->elements()[0] : static_cast<Inner*>(root_)->elements[0];
  Inspection inspection(hintsAreExact);
  return inspection.isSound(root_, height_, true, true, hint, element) &&
         inspection.size() == size_ && inspection.last() == last().leaf &&
         inspection.last()->next == nullptr;
}

}  // namespace Zel::impl
