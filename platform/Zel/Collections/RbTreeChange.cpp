// Changes a tree: splits full blocks on insertion, balances or joins blocks on removal.
#include <algorithm>
#include <utility>

#include "Zel/Collections/RbTree.h"
#include "Zel/Collections/RbTreeBlocks.h"

namespace Zel::impl {

namespace {

// The blocks that a split needs, allocated before it changes anything. If one cannot be allocated,
// the others are freed.
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
  // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): a split reserves enough
  Inner* takeInner() noexcept { return inner_[--inners_]; }
  Leaf* leaf;

 private:
  Inner* inner_[RbTree::maxHeight + 1];
  U32 inners_ = 0;
};

}  // namespace

// Updates the entries above the first element of the tree, which is new.
void RbTree::firstIs(U64 hint, void* element) noexcept {
  void* block = root_;
  for (U32 level = height_; level != 0; --level) {
    auto* const inner = static_cast<Inner*>(block);
    inner->hints[0] = hint;
    inner->elements[0] = element;
    block = inner->children[0];
  }
}

// Updates the entries above the block at depth `level` of the path, which has a new first element.
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
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): the leaf has room to grow
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

  // Keys that come in order, ascending or descending, leave full blocks behind. Other keys leave
  // half-full blocks.
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
    // The entries above may still hold a lower hint for the old leaf, perhaps as low as the hint of
    // the new element, which now stands before it.
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
    // No inner block may have fewer than two children: otherwise a leaf that runs empty could leave
    // its parent without a child.
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
  // The first and the last leaf may run empty without a look at their neighbours, as in a queue.
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
  // A hint that is too low does no harm; a pointer to a removed element would.
  if (path.at.index == 0 && !hintsAreExact) {
    minimumChanged(path, height_, leaf.hints()[0], leaf.elements()[0]);
  }
  if (goesUnder) leafUnderflow(path);
}

// Removes the leaf at the end of the path, which has become empty.
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

// Joins or balances inner blocks after the lowest one on the path has lost a child.
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

}  // namespace Zel::impl
