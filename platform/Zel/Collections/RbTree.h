// RbTree: the part of the ordered maps and sets that knows nothing of their elements.
//
// Threads: one at a time; any number may read a tree that nobody changes.
#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <string_view>
#include <type_traits>

#include "Halvo/MemoryTracker.h"
#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// How a tree orders its keys by a number first.
///
/// `hint(key)` must agree with `Less`: hint(a) < hint(b) only if a is less than b. Where `exact`,
/// keys of equal hints are equal also, and the tree never calls `Less`; elsewhere `Less` decides
/// among keys of equal hints. The tree keeps the hints side by side, so a good hint spares it most
/// looks at elements. Specialise it for a type of your own before its first tree:
///
///     template <>
///     struct Zel::RbTreeOrder<Entry, std::less<Entry>> {
///       static constexpr bool exact = true;
///       static U64 hint(const Entry& e) noexcept { return U64{e.slot} << 32 | e.id; }
///     };
template <class K, class Less>
struct RbTreeOrder {
  static constexpr bool exact = (std::is_integral_v<K> || std::is_enum_v<K>)&&(
      std::is_same_v<Less, std::less<K>> || std::is_same_v<Less, std::less<>>);
  static U64 hint([[maybe_unused]] const K& key) noexcept {
    if constexpr (!exact) {
      return 0;
    } else if constexpr (std::is_signed_v<K>) {
      return static_cast<U64>(key) ^ U64 { 1 } << 63;
    } else {
      return static_cast<U64>(key);
    }
  }
  /// The number that has this hint.
  static K keyOf(U64 hint) noexcept requires exact {
    if constexpr (std::is_signed_v<K>) {
      return static_cast<K>(hint ^ U64{1} << 63);
    } else {
      return static_cast<K>(hint);
    }
  }
};
/// Strings: eight of their bytes, the first ones or, in a tree whose keys all begin alike, the
/// first behind that beginning. An order whose hints are not exact, and which goes by the bytes
/// from the first on, can have this if it has hintSize, hintBehind, commonSize and orderBehind.
template <>
struct RbTreeOrder<Halvo::String, std::less<Halvo::String>> {
  static constexpr bool exact = false;
  static constexpr U32 hintSize = 8;
  static U64 hint(std::string_view text) noexcept {
    U64 bytes = 0;
    std::memcpy(&bytes, text.data(), text.size() < 8 ? text.size() : 8);
    return __builtin_bswap64(bytes);
  }
  /// The hint of what stands behind the first `skip` bytes, which the text has.
  static U64 hintBehind(std::string_view text, U32 skip) noexcept {
    return hint({text.data() + skip, text.size() - skip});
  }
  /// How many bytes both begin with, at most `limit`.
  static U32 commonSize(std::string_view a, std::string_view b, U32 limit) noexcept {
    std::size_t const shorter = a.size() < b.size() ? a.size() : b.size();
    U32 const end = shorter < limit ? static_cast<U32>(shorter) : limit;
    U32 same = 0;
    while (same + 8 <= end && std::memcmp(a.data() + same, b.data() + same, 8) == 0) same += 8;
    while (same < end && a[same] == b[same]) ++same;
    return same;
  }
  /// Below, at or above zero as a is less than b, equal or greater. Their first `told` bytes, with
  /// zeros behind a shorter text, are known to be the same.
  static int orderBehind(std::string_view a, std::string_view b, U32 told) noexcept {
    std::size_t const shorter = a.size() < b.size() ? a.size() : b.size();
    std::size_t known = told;
    if (shorter >= known + 8) {
      U64 const nextOfA = wordAt(a, known);
      U64 const nextOfB = wordAt(b, known);
      if (nextOfA != nextOfB) return nextOfA < nextOfB ? -1 : 1;
      known += 8;
    }
    if (shorter > known) {
      int const order = std::memcmp(a.data() + known, b.data() + known, shorter - known);
      if (order != 0) return order;
    }
    // What one has behind the other's end is zeros, or not known yet.
    return static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size());
  }

 private:
  static U64 wordAt(std::string_view text, std::size_t offset) noexcept {
    U64 bytes;
    std::memcpy(&bytes, text.data() + offset, sizeof bytes);
    return __builtin_bswap64(bytes);
  }
};

namespace impl {

/// A run of elements in order, side by side: behind this head stand places for `capacity` hints,
/// then for as many pointers to elements. Those in use begin at place `begin`, so that a run which
/// grows or shrinks at either end moves nothing.
struct RbTreeLeaf {
  U16 count;
  U16 capacity;
  U16 begin;
  U16 recent;            ///< a guess: where locate() found an element; maybe behind the last one
  RbTreeLeaf* previous;  ///< null at the first
  RbTreeLeaf* next;      ///< null at the last

  U64* hints() noexcept { return places() + begin; }
  void** elements() noexcept {
    return static_cast<void**>(static_cast<void*>(places() + capacity)) + begin;
  }
  /// The hint of the element whose pointer stands there.
  U64 hintAt(void** place) const noexcept {
    return *static_cast<U64*>(static_cast<void*>(place - capacity));
  }

 private:
  U64* places() noexcept { return static_cast<U64*>(static_cast<void*>(this + 1)); }
};

/// What a search looks for.
struct RbTreeProbe {
  U64 hint;
  const void* key;
  /// Below, at or above zero as the element of that hint is less than the key, equal or greater.
  /// Null where hints are exact.
  int (*order)(const void* element, const RbTreeProbe& probe);
  /// How many first bytes, as of a text, equal hints show to be the same. Zero, where hints leave
  /// out what all keys begin with, tells that this key begins otherwise.
  U32 told;
};

/// Ordered pointers to elements: a tree whose leaves are runs of up to 62 elements, and whose inner
/// blocks have up to 42 children each.
///
/// Invariant: all leaves are equally deep and linked in order; none is empty. Each entry of an
/// inner block names the first element of the child it leads to; where hints are exact it may also
/// hold a hint that is lower, of an element now gone, but not below the elements before. Blocks but
/// those on the tree's edges are filled to a third or more. A tree of up to 62 elements is a single
/// leaf, which grows with them; an empty one has no block.
///
/// Elements never move; the places of their pointers do, with each insertion and removal, and
/// version() changes with each.
class VELMOR_PLATFORM_API RbTree {
 public:
  static constexpr U32 leafCapacity = 62;   // with the head, what the largest slab object holds
  static constexpr U32 innerCapacity = 42;  // likewise
  static constexpr U32 maxHeight = 12;      // levels of inner blocks; eight hold 2^32 elements

  struct Position {
    RbTreeLeaf* leaf = nullptr;  ///< null behind the last element
    U32 index = 0;
  };
  struct Inner;
  /// The way from the root to a place in a leaf.
  struct Path {
    Inner* inner[maxHeight];
    U32 child[maxHeight];
    Position at;
    bool isKnown;  ///< false where the leaf was found at hand, without a descent
  };

  constexpr RbTree() noexcept = default;
  RbTree(const RbTree&) = delete;
  RbTree& operator=(const RbTree&) = delete;

  U32 size() const noexcept { return size_; }
  U32 generation() const noexcept { return generation_; }
  U32 version() const noexcept { return version_; }
  void generationAdvance() noexcept { generation_ += 2; }
  /// How much of the beginning of every key the hints leave out.
  U32 skip() const noexcept { return skip_; }
  /// Any one of the elements, of which there is at least one.
  void* anyElement() const noexcept;
  /// Gives every element its hint anew.
  void rehint(U32 skip, U64 (*hintOf)(const void*, U32)) noexcept;
  /// Whether, after an insertion, the keys may be worth a look for a longer common beginning. At
  /// few sizes alone, and only as long as that has not happened too often.
  bool mayGrowSkip() const noexcept {
    return size_ >= 8 && (size_ & (size_ - 1)) == 0 && skipGrowths_ != 0xFF;
  }
  static constexpr U32 maxSkip = 0xF8;
  /// Bytes of all blocks, elements not counted.
  std::size_t blockBytes() const noexcept;

  /// The element of the key, null when there is none.
  void* find(const RbTreeProbe& probe) const noexcept;
  /// The same, where hints are exact.
  void* find(U64 hint) const noexcept;
  Position first() const noexcept;
  Position last() const noexcept;
  /// Where the element of the key stands; nowhere when there is none.
  Position positionOf(const RbTreeProbe& probe) const noexcept;
  /// The first element that is not less than the key.
  Position lowerBound(const RbTreeProbe& probe) const noexcept;
  /// The first element that is greater than the key.
  Position upperBound(const RbTreeProbe& probe) const noexcept;

  /// The element of the key; where there is none, null and the place for it.
  void* locate(const RbTreeProbe& probe, Path& path) noexcept;
  /// Adds an element at the place that locate() found. Throws std::bad_alloc before it changes
  /// anything.
  void insertAt(Path& path, U64 hint, void* element);
  /// Removes the pointer that locate() found. Leaves the generation to the caller.
  void removeAt(Path& path, bool hintsAreExact) noexcept;

  /// Exchanges the elements, not the generations.
  void contentsSwap(RbTree& other) noexcept;
  /// Frees all blocks; the elements are the caller's.
  void blocksFree() noexcept;

  /// Whether every invariant holds: for tests. Looks at hints only.
  bool isSound(bool hintsAreExact) const noexcept;

  /// Counts the blocks of all trees.
  static Halvo::MemoryTracker blockTracker_;

 private:
#define ZEL_RB_TREE_OWN [[gnu::visibility("hidden")]]
  ZEL_RB_TREE_OWN RbTreeLeaf* descend(const RbTreeProbe& probe) const noexcept;
  ZEL_RB_TREE_OWN void descendAlong(const RbTreeProbe& probe, Path& path) const noexcept;
  ZEL_RB_TREE_OWN void firstIs(U64 hint, void* element) noexcept;
  ZEL_RB_TREE_OWN void minimumChanged(const Path& path, U32 level, U64 hint,
                                      void* element) noexcept;
  ZEL_RB_TREE_OWN void leafSplit(Path& path, U64 hint, void* element);
  ZEL_RB_TREE_OWN void leafRemove(Path& path) noexcept;
  ZEL_RB_TREE_OWN void leafUnderflow(Path& path) noexcept;
  ZEL_RB_TREE_OWN void underflow(Path& path) noexcept;
#undef ZEL_RB_TREE_OWN

  // The leaf of the last look for a place, or of what was then done there. Null or valid.
  RbTreeLeaf* recent_ = nullptr;
  void* root_ = nullptr;  // an Inner, or the only leaf where the height is zero
  U32 size_ = 0;
  U32 generation_ = 1;
  U32 version_ = 0;
  U8 height_ = 0;        // levels of inner blocks
  bool keysRun_ = true;  // whether the last places stood in one leaf or in neighbours
  U8 skipGrowths_ = 0;
  U8 skip_ = 0;
};

}  // namespace impl
}  // namespace Zel
