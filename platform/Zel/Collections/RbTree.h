// RbTree: the part of the ordered maps and sets that does not depend on the type of the elements.
//
// Threads: one thread at a time. Several threads may read one tree while no thread changes it.
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

/// Gives each key a hint, a 64-bit number that a tree compares first.
///
/// `hint(key)` must agree with `Less`: hint(a) < hint(b) only if a is less than b. If `exact` is
/// true, keys with equal hints are equal, and the tree never calls `Less`. Otherwise `Less` decides
/// between keys with equal hints. The tree keeps the hints side by side: a good hint saves most
/// looks at elements. To give a type of your own a hint, specialise this template before the first
/// tree of that type:
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
  /// The key that has this hint.
  static K keyOf(U64 hint) noexcept requires exact {
    if constexpr (std::is_signed_v<K>) {
      return static_cast<K>(hint ^ U64{1} << 63);
    } else {
      return static_cast<K>(hint);
    }
  }
};
/// Strings: the hint is the first eight bytes. If all keys of a tree begin with the same bytes, the
/// hint is the first eight bytes behind that common beginning. Another order gets the same if its
/// hints are not exact, it compares bytes from the first one on, and it has hintSize, hintBehind,
/// commonSize and orderBehind.
template <>
struct RbTreeOrder<Halvo::String, std::less<Halvo::String>> {
  static constexpr bool exact = false;
  static constexpr U32 hintSize = 8;
  static U64 hint(std::string_view text) noexcept {
    U64 bytes = 0;
    std::memcpy(&bytes, text.data(), text.size() < 8 ? text.size() : 8);
    return __builtin_bswap64(bytes);
  }
  /// The hint of the text behind its first `skip` bytes. The text must have that many.
  static U64 hintBehind(std::string_view text, U32 skip) noexcept {
    return hint({text.data() + skip, text.size() - skip});
  }
  /// How many bytes are the same at the beginning of both, at most `limit`.
  static U32 commonSize(std::string_view a, std::string_view b, U32 limit) noexcept {
    std::size_t const shorter = a.size() < b.size() ? a.size() : b.size();
    U32 const end = shorter < limit ? static_cast<U32>(shorter) : limit;
    U32 same = 0;
    while (same + 8 <= end && std::memcmp(a.data() + same, b.data() + same, 8) == 0) same += 8;
    while (same < end && a[same] == b[same]) ++same;
    return same;
  }
  /// Negative when a is less than b, zero when both are equal, positive when a is greater. Their
  /// first `told` bytes are known to be the same; a shorter text counts as if zeros followed it.
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
    // The shorter text is the beginning of the longer one: the longer one is greater.
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

/// A leaf block: a run of elements in order. Behind this head there is room for `capacity` hints,
/// then for as many pointers to elements. The places in use begin at `begin`, so that a run which
/// grows or shrinks at either end moves nothing.
struct RbTreeLeaf {
  U16 count;
  U16 capacity;
  U16 begin;
  U16 recent;            ///< a guess for locate(): its last place; may be behind the last element
  RbTreeLeaf* previous;  ///< null at the first
  RbTreeLeaf* next;      ///< null at the last

  U64* hints() noexcept { return places() + begin; }
  void** elements() noexcept {
    return static_cast<void**>(static_cast<void*>(places() + capacity)) + begin;
  }
  /// The hint of the element whose pointer is at `place`.
  U64 hintAt(void** place) const noexcept {
    return *static_cast<U64*>(static_cast<void*>(place - capacity));
  }

 private:
  U64* places() noexcept { return static_cast<U64*>(static_cast<void*>(this + 1)); }
};

/// The key that a search looks for.
struct RbTreeProbe {
  U64 hint;
  const void* key;
  /// Compares an element with the key when their hints are equal. Negative when the element is
  /// less, zero when it is equal, positive when it is greater. Null where hints are exact.
  int (*order)(const void* element, const RbTreeProbe& probe);
  /// Texts: how many bytes at the beginning are known to be the same when hints are equal. Where
  /// hints leave out the common beginning of all keys, zero means that this key begins differently.
  U32 told;
};

/// Pointers to elements in order: a tree whose leaves hold up to 62 elements each, and whose inner
/// blocks have up to 42 children each.
///
/// Invariant: all leaves have the same depth and are linked in order; none is empty. Each entry of
/// an inner block holds the hint and the pointer of the first element of one child. Where hints are
/// exact, the entry may still be of an element that was removed. Its hint is then lower than those
/// in the child, but never as low as those before the child. Every block is at least a third full,
/// except at the edges of the tree. A tree that never had more than 62 elements is a single leaf,
/// which grows with them. An empty tree has no block.
///
/// Elements never move. Their pointers move with each insertion and removal; version() changes each
/// time.
class VELMOR_PLATFORM_API RbTree {
 public:
  static constexpr U32 leafCapacity = 62;   // with the head, this fills the largest slab object
  static constexpr U32 innerCapacity = 42;  // this fits the largest slab object
  static constexpr U32 maxHeight = 12;      // levels of inner blocks; eight hold 2^32 elements

  struct Position {
    RbTreeLeaf* leaf = nullptr;  ///< null behind the last element
    U32 index = 0;
  };
  struct Inner;
  /// The path from the root to a place in a leaf.
  struct Path {
    Inner* inner[maxHeight];
    U32 child[maxHeight];
    Position at;
    bool isKnown;  ///< false when only `at` is set: locate() found the leaf without a descent
  };

  constexpr RbTree() noexcept = default;
  RbTree(const RbTree&) = delete;
  RbTree& operator=(const RbTree&) = delete;

  U32 size() const noexcept { return size_; }
  U32 generation() const noexcept { return generation_; }
  U32 version() const noexcept { return version_; }
  void generationAdvance() noexcept { generation_ += 2; }
  /// The number of bytes that the hints leave out at the beginning of every key.
  U32 skip() const noexcept { return skip_; }
  /// Any one of the elements. The tree must not be empty.
  void* anyElement() const noexcept;
  /// Computes the hints of all elements again.
  void rehint(U32 skip, U64 (*hintOf)(const void*, U32)) noexcept;
  /// Whether to look, after an insertion, for a longer common beginning of the keys. True only at
  /// few sizes, and never again once the hints have changed too often.
  bool mayGrowSkip() const noexcept {
    return size_ >= 8 && (size_ & (size_ - 1)) == 0 && skipGrowths_ != 0xFF;
  }
  static constexpr U32 maxSkip = 0xF8;
  /// The bytes of all blocks. Elements are not counted.
  std::size_t blockBytes() const noexcept;

  /// The element of the key; null when there is none.
  void* find(const RbTreeProbe& probe) const noexcept;
  /// The same for trees with exact hints.
  void* find(U64 hint) const noexcept;
  Position first() const noexcept;
  Position last() const noexcept;
  /// The position of the element of the key; a null leaf when there is none.
  Position positionOf(const RbTreeProbe& probe) const noexcept;
  /// The position of the first element that is not less than the key.
  Position lowerBound(const RbTreeProbe& probe) const noexcept;
  /// The position of the first element that is greater than the key.
  Position upperBound(const RbTreeProbe& probe) const noexcept;

  /// The element of the key, or null. Sets `path` to its place, or to the place where an element of
  /// this key belongs.
  void* locate(const RbTreeProbe& probe, Path& path) noexcept;
  /// Adds an element at the place that locate() found. If this throws std::bad_alloc, nothing has
  /// changed.
  void insertAt(Path& path, U64 hint, void* element);
  /// Removes the pointer that locate() found. The caller must advance the generation.
  void removeAt(Path& path, bool hintsAreExact) noexcept;

  /// Exchanges the elements, not the generations.
  void contentsSwap(RbTree& other) noexcept;
  /// Frees all blocks, but no elements.
  void blocksFree() noexcept;

  /// For tests: whether every invariant holds. Looks only at hints.
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

  // The leaf that locate() or a change after it last used. Null or valid.
  RbTreeLeaf* recent_ = nullptr;
  void* root_ = nullptr;  // an Inner, or the only leaf when the height is zero
  U32 size_ = 0;
  U32 generation_ = 1;
  U32 version_ = 0;
  U8 height_ = 0;        // levels of inner blocks
  bool keysRun_ = true;  // whether the last two places were in one leaf or in neighbours
  U8 skipGrowths_ = 0;
  U8 skip_ = 0;
};

}  // namespace impl
}  // namespace Zel
