// Searches and walks a tree.
#include "Zel/Collections/RbTree.h"

#include <algorithm>
#include <utility>

#include "Zel/Collections/RbTreeBlocks.h"

namespace Zel::impl {

constinit Halvo::MemoryTracker RbTree::blockTracker_{"Zel::RbTreeBlock"};

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

// Fills in the inner blocks on the path to the key, and the leaf.
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
    // Keys that come in order often need the same leaf. Where hints are not exact, a key with the
    // hint of the leaf's first or last element may be in a neighbour.
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
  // Scattered keys are rarely in the leaf of the last one: for them, stop looking there first.
  keysRun_ =
      recent_ == nullptr || &leaf == recent_ || leaf.previous == recent_ || leaf.next == recent_;
  recent_ = &leaf;
  Place const place = placeIn(leaf, probe);
  path.at.index = place.index;
  leaf.recent = static_cast<U16>(place.index);
  return place.isTaken ? leaf.elements()[place.index] : nullptr;
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

}  // namespace Zel::impl
