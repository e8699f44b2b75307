// Checks the invariants of a tree, for tests.
#include "Zel/Collections/RbTree.h"
#include "Zel/Collections/RbTreeBlocks.h"

namespace Zel::impl {

namespace {

// Checks a tree's blocks from the first to the last.
class Inspection {
 public:
  explicit Inspection(bool hintsAreExact) noexcept : hintsAreExact_(hintsAreExact) {}

  /// The number of elements that were checked, and the last leaf.
  U32 size() const noexcept { return size_; }
  const Leaf* last() const noexcept { return previous_; }

  /// Whether one block, and all below it, is sound. `hint` and `element` are its entry in the block
  /// above. Only the root is at both edges.
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
