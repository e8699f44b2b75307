// The table of HashMap2018 for keys that are not bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "Zel/Base/Types.h"
#include "Zel/Collections/TableParts.h"

namespace Zel::impl {

/// Spreads a hash over all 64 bits. The hash may be the key itself. Uses both halves of a 128-bit
/// product: keys that differ only in high bits are spread as well as keys that differ in low bits.
inline U64 hashMix(U64 hash) noexcept {
  __extension__ using Wide = unsigned __int128;
  Wide const product = static_cast<Wide>(hash ^ 0x9AE16A3B2F90404FU) * 0x9E3779B97F4A7C15U;
  return static_cast<U64>(product) ^ static_cast<U64>(product >> 64);
}

/// The first word of a HashTable's block. In a short table, `capacity` is the number of elements
/// that it has room for. In a table of groups, `capacity` is zero.
struct TableHead {
  U16 capacity;
  U16 detail;  ///< short: offset of the values; groups: log2 of their number
};

/// The layout of a short table: head, one tag byte for each slot, keys, values. The elements stand
/// side by side from the front.
template <class K, class V>
struct ShortLayout {
  static constexpr std::size_t tagsAt = sizeof(TableHead);
  static constexpr std::size_t keysAt(std::size_t capacity) noexcept {
    return roundUp(tagsAt + capacity, alignof(K));
  }
  static constexpr std::size_t valuesAt(std::size_t capacity) noexcept {
    return roundUp(keysAt(capacity) + capacity * sizeof(K), alignof(V));
  }
  // A search reads 16 tags at a time, even when there are fewer.
  static constexpr std::size_t bytes(std::size_t capacity) noexcept {
    return roundUp(larger(valuesAt(capacity) + capacity * sizeof(V), tagsAt + 16),
                   larger(8, larger(alignof(K), alignof(V))));
  }
};

/// The layout of a table of groups. A group has 15 slots: 15 tags, the overflow count, keys,
/// values. The tag of an empty slot is zero. The tag of a used slot is 7 bits of the hash and the
/// mark 0x80. The overflow count is the number of elements that found this group full and went on
/// to another one. While it is zero, a search ends here. Once it is 255, it stays there.
template <class K, class V>
struct GroupLayout {
  static constexpr U32 slots = 15;
  static constexpr U32 slotMask = (1U << slots) - 1;
  static constexpr U32 fill = 13;  // average elements for each group before the table grows
  static constexpr std::size_t groupsAt = 16;
  static constexpr std::size_t overflowAt = 15;
  static constexpr std::size_t keysAt = roundUp(16, alignof(K));
  static constexpr std::size_t valuesAt = roundUp(keysAt + slots * sizeof(K), alignof(V));
  static constexpr std::size_t stride =
      roundUp(valuesAt + slots * sizeof(V), larger(alignof(K), alignof(V)));
  static constexpr U32 maxLogGroups = 27;  // the number of a slot fits 32 bits
  static constexpr std::size_t bytes(U32 logGroups) noexcept {
    return groupsAt + (stride << logGroups);
  }
};

/// Elements with keys of any type; see HashMap2018 for the guarantees. The table is one block of
/// slab memory:
///
/// - With room for up to 16 elements the table is short. The elements stand side by side in no
///   order, and a search compares one byte of all their hashes at once.
/// - With more room it consists of groups of 15 slots; the number of groups is a power of two. A
///   search begins with the group that the hash names. There are no tombstones: each group counts
///   the elements that it was too full to take.
///
/// Each element has an index. In a short table the indices run from 0 without a gap. In a table of
/// groups the four lowest bits are the number of the slot, and the bits above are the number of the
/// group.
///
/// Threads: as the map.
template <class K, class V, class Hash, class Tag>
class HashTable : public TableState {
  using Short = ShortLayout<K, V>;
  using Groups = GroupLayout<K, V>;
  static constexpr U32 shortLimit = 16;  // the number of tags that one step compares

 public:
  static constexpr U32 none = 0xFFFFFFFF;
  static constexpr std::size_t limit = ~std::size_t{0};  ///< no limit here: grow() has its own

  HashTable() noexcept = default;
  HashTable(const HashTable&) = delete;
  HashTable& operator=(const HashTable&) = delete;
  ~HashTable() {
    if (block_ == nullptr) return;
    if (isShort()) {
      std::destroy_n(shortValues(), size());
      std::destroy_n(shortKeys(), size());
    } else if constexpr (!std::is_trivially_destructible_v<K> ||
                         !std::is_trivially_destructible_v<V>) {
      for (U32 index = occupiedFrom(0); index != none; index = occupiedFrom(index + 1)) {
        std::destroy_at(valueAt(index));
        std::destroy_at(placeOfKey(index));
      }
    }
    TableMemory<Tag>::give(block_, memoryBytes());
  }

  U32 size() const noexcept { return static_cast<U32>(state_); }
  std::size_t memoryBytes() const noexcept {
    if (block_ == nullptr) return 0;
    return isShort() ? Short::bytes(head().capacity) : Groups::bytes(head().detail);
  }
  /// How many elements fit without a larger block.
  std::size_t room() const noexcept {
    if (block_ == nullptr) return 0;
    return isShort() ? head().capacity : std::size_t{Groups::fill} << head().detail;
  }

  V* find(const K& key) const {
    U32 const index = indexOf(key);
    return index == none ? nullptr : valueAt(index);
  }
  V* findBeforeInsert(const K& key) const { return find(key); }
  U32 indexOf(const K& key) const {
    if (block_ == nullptr) return none;
    return isShort() ? shortIndexOf(key) : groupIndexOf(key);
  }
  /// The index of the first element at `index` or above; none when there is none.
  U32 occupiedFrom(U32 index) const noexcept {
    if (block_ == nullptr) return none;
    if (isShort()) return index < size() ? index : none;
    return groupOccupiedFrom(index);
  }
  /// The index of the next element after the element at `index` was removed; none when there is
  /// none.
  U32 occupiedAfterRemovalAt(U32 index) const noexcept {
    return occupiedFrom(isShort() ? index : index + 1);
  }
  const K& keyAt(U32 index) const noexcept { return *placeOfKey(index); }
  V* valueAt(U32 index) const noexcept {
    if (isShort()) return shortValues() + index;
    return partAt<V>(group(index >> 4), Groups::valuesAt) + (index & 15);
  }

  /// Adds an element. Its key must not be in the table. If this throws (memory, copying the key),
  /// all elements are as before.
  template <class KeyArg>
  V* add(KeyArg&& key, V&& value) {
    if (size() < room()) [[likely]] {
      return place(std::forward<KeyArg>(key), std::move(value));
    }
    grow(room() < shortLimit ? nextShortRoom(room()) : room() + 1);
    try {
      return place(std::forward<KeyArg>(key), std::move(value));
    } catch (...) {
      // The elements are the same but have moved: the state word must change.
      generationAdvance();
      throw;
    }
  }
  /// Removes the element and returns its value. The table no longer has the element when the value
  /// is destroyed: the value's destructor may look at the map.
  V removeAt(U32 index) {
    if (isShort()) return shortRemoveAt(index);
    U32 const number = index >> 4;
    U64 const hash = hashOf(keyAt(index));
    V* const value = valueAt(index);
    V removed(std::move(*value));
    std::destroy_at(value);
    std::destroy_at(placeOfKey(index));
    group(number)[index & 15] = 0;
    --state_;
    generationAdvance();
    if ((homeGroup(hash) & lastGroup()) != number) overflowAdd(hash, number, -1);
    return removed;
  }
  /// Moves all elements to a block with room for `count` elements.
  [[gnu::noinline]] void grow(std::size_t count) {
    HashTable larger;
    larger.block_ = blockFor(count);
    if (block_ != nullptr) {
      if (isShort() && larger.isShort()) {
        shortRelocate(larger);
      } else {
        for (U32 index = occupiedFrom(0); index != none; index = occupiedFrom(index + 1)) {
          larger.place(std::move(*placeOfKey(index)), std::move(*valueAt(index)));
        }
      }
    }
    contentsSwap(larger);
  }
  /// Copies the elements of `other` into this table, which must be empty. Throws what copying a key
  /// or a value throws.
  void copyFrom(const HashTable& other) {
    if (other.size() == 0) return;
    HashTable copy;
    copy.block_ = other.isShort() ? blockFor(other.size()) : groupBlock(other.head().detail);
    for (U32 index = other.occupiedFrom(0); index != none; index = other.occupiedFrom(index + 1)) {
      copy.place(other.keyAt(index), static_cast<V>(*other.valueAt(index)));
    }
    contentsSwap(copy);
  }
  /// Exchanges the elements, not the generations.
  void contentsSwap(HashTable& other) noexcept {
    std::swap(block_, other.block_);
    U64 const differing = (state_ ^ other.state_) & lowHalf;
    state_ ^= differing;
    other.state_ ^= differing;
  }

  /// Walks the elements of a table that does not change meanwhile. A new cursor is at the end.
  class Cursor {
   public:
    /// Moves to the element at `index` and returns its key.
    const K& standAt(const HashTable& table, U32 index) noexcept {
      U32 slots;
      if (table.isShort()) {
        keys_ = table.shortKeys();
        values_ = table.shortValues();
        slots = (1U << table.size()) - 1;
        groupsLeft_ = 0;
      } else {
        slots = groupIs(table, index >> 4);
        groupsLeft_ = table.lastGroup() - (index >> 4);
      }
      index_ = index;
      rest_ = slots & (none << 1 << (index & 15));
      return key();
    }
    /// Moves to the next element. Returns false when there is none.
    bool advance(const HashTable& table) noexcept {
      while (rest_ == 0) {
        if (groupsLeft_ == 0) return false;
        --groupsLeft_;
        index_ = (index_ | 15) + 1;
        rest_ = groupIs(table, index_ >> 4);
      }
      index_ = (index_ & ~15U) | static_cast<U32>(std::countr_zero(rest_));
      rest_ &= rest_ - 1;
      return true;
    }
    bool isAtEnd() const noexcept { return index_ == none; }
    bool isAt(const Cursor& other) const noexcept { return index_ == other.index_; }
    U32 index() const noexcept { return index_; }
    const K& key() const noexcept { return keys_[index_ & 15]; }
    V& value() const noexcept { return values_[index_ & 15]; }
    /// Whether the table still has the element with this key in this place. The table may have
    /// changed.
    bool isIn(const HashTable& table, const K& key) const noexcept {
      return table.isOccupied(index_) && table.placeOfKey(index_) == keys_ + (index_ & 15) &&
             table.valueAt(index_) == values_ + (index_ & 15) && this->key() == key;
    }

   private:
    // Moves to a group and returns a bit mask of its occupied slots.
    U32 groupIs(const HashTable& table, U32 number) noexcept {
      U8* const here = table.group(number);
      keys_ = partAt<K>(here, Groups::keysAt);
      values_ = partAt<V>(here, Groups::valuesAt);
      return occupied(here);
    }

    // The keys and values of a short table, or of the group where the cursor is.
    const K* keys_ = nullptr;
    V* values_ = nullptr;
    U32 index_ = none;
    U32 rest_ = 0;        // bit mask of the slots that still follow there
    U32 groupsLeft_ = 0;  // how many groups follow
  };

 private:
  template <class T>
  static T* partAt(U8* block, std::size_t offset) noexcept {
    return static_cast<T*>(static_cast<void*>(block + offset));
  }
  TableHead& head() const noexcept { return *partAt<TableHead>(block_, 0); }
  bool isShort() const noexcept { return head().capacity != 0; }
  K* shortKeys() const noexcept { return partAt<K>(block_, Short::keysAt(head().capacity)); }
  V* shortValues() const noexcept { return partAt<V>(block_, head().detail); }
  U32 lastGroup() const noexcept { return (1U << head().detail) - 1; }
  U8* group(U32 number) const noexcept {
    return block_ + Groups::groupsAt + number * Groups::stride;
  }
  static U32 occupied(const U8* group) noexcept { return bytesMarked16(group) & Groups::slotMask; }
  bool isOccupied(U32 index) const noexcept {
    if (block_ == nullptr) return false;
    if (isShort()) return index < size();
    return index >> 4 <= lastGroup() && (occupied(group(index >> 4)) >> (index & 15) & 1) != 0;
  }
  K* placeOfKey(U32 index) const noexcept {
    if (isShort()) return shortKeys() + index;
    return partAt<K>(group(index >> 4), Groups::keysAt) + (index & 15);
  }

  static U64 hashOf(const K& key) { return hashMix(static_cast<U64>(Hash{}(key))); }
  static U8 tagOf(U64 hash) noexcept { return static_cast<U8>(hash | 0x80); }
  static U32 homeGroup(U64 hash) noexcept { return static_cast<U32>(hash >> 7); }

  U32 shortIndexOf(const K& key) const {
    U32 hits = bytesEqual16(block_ + Short::tagsAt, tagOf(hashOf(key))) & ((1U << size()) - 1);
    for (; hits != 0; hits &= hits - 1) {
      U32 const index = static_cast<U32>(std::countr_zero(hits));
      if (shortKeys()[index] == key) return index;
    }
    return none;
  }
  U32 groupIndexOf(const K& key) const {
    U64 const hash = hashOf(key);
    U8 const tag = tagOf(hash);
    U32 const last = lastGroup();
    U32 number = homeGroup(hash) & last;
    for (U32 step = 0; step <= last;) {
      U8* const here = group(number);
      const K* const keys = partAt<K>(here, Groups::keysAt);
      for (U32 hits = bytesEqual16(here, tag) & Groups::slotMask; hits != 0; hits &= hits - 1) {
        U32 const slot = static_cast<U32>(std::countr_zero(hits));
        if (keys[slot] == key) [[likely]] {
          return number << 4 | slot;
        }
      }
      if (here[Groups::overflowAt] == 0) [[likely]] {
        return none;
      }
      number = (number + ++step) & last;
    }
    return none;
  }
  U32 groupOccupiedFrom(U32 index) const noexcept {
    U32 number = index >> 4;
    U32 const last = lastGroup();
    if (number > last) return none;
    const U8* here = group(number);
    U32 found = occupied(here) & (none << (index & 15));
    while (found == 0) {
      if (number == last) return none;
      ++number;
      here += Groups::stride;
      found = occupied(here);
    }
    return number << 4 | static_cast<U32>(std::countr_zero(found));
  }

  // Makes an empty block with room for `count` elements.
  static U8* blockFor(std::size_t count) {
    if (count <= shortLimit) {
      auto* const block = static_cast<U8*>(TableMemory<Tag>::take(Short::bytes(count)));
      new (block) TableHead{static_cast<U16>(count), static_cast<U16>(Short::valuesAt(count))};
      // A search also compares the tags of free slots, and ignores the result.
      std::memset(block + Short::tagsAt, 0, 16);
      return block;
    }
    U32 logGroups = 1;
    while (std::size_t{Groups::fill} << logGroups < count) {
      if (++logGroups > Groups::maxLogGroups) throw std::length_error("HashMap2018");
    }
    return groupBlock(logGroups);
  }
  static U8* groupBlock(U32 logGroups) {
    auto* const block = static_cast<U8*>(TableMemory<Tag>::take(Groups::bytes(logGroups)));
    new (block) TableHead{0, static_cast<U16>(logGroups)};
    U8* tags = block + Groups::groupsAt;
    for (std::size_t n = std::size_t{1} << logGroups; n != 0; --n, tags += Groups::stride) {
      std::memset(tags, 0, 16);
    }
    return block;
  }

  // As add(), when there is room. If copying the key throws, nothing has changed.
  template <class KeyArg>
  V* place(KeyArg&& key, V&& value) {
    U64 const hash = hashOf(key);
    if (isShort()) {
      U32 const index = size();
      new (shortKeys() + index) K(std::forward<KeyArg>(key));
      V* const made = new (shortValues() + index) V(std::move(value));
      block_[Short::tagsAt + index] = tagOf(hash);
      ++state_;
      return made;
    }
    U32 const last = lastGroup();
    U32 number = homeGroup(hash) & last;
    U32 step = 0;
    while (occupied(group(number)) == Groups::slotMask) number = (number + ++step) & last;
    U8* const here = group(number);
    U32 const slot = static_cast<U32>(std::countr_one(occupied(here)));
    new (partAt<K>(here, Groups::keysAt) + slot) K(std::forward<KeyArg>(key));
    V* const made = new (partAt<V>(here, Groups::valuesAt) + slot) V(std::move(value));
    here[slot] = tagOf(hash);
    ++state_;
    if (number != (homeGroup(hash) & last)) [[unlikely]] {
      overflowAdd(hash, number, 1);
    }
    return made;
  }
  // Adds `amount` to the overflow counts of the groups that were full when an element was on its
  // way to group `to`.
  void overflowAdd(U64 hash, U32 to, int amount) noexcept {
    U32 const last = lastGroup();
    U32 step = 0;
    for (U32 number = homeGroup(hash) & last; number != to; number = (number + ++step) & last) {
      U8& count = group(number)[Groups::overflowAt];
      if (count != 0xFF) count = static_cast<U8>(count + amount);
    }
  }
  V shortRemoveAt(U32 index) noexcept {
    K* const keys = shortKeys();
    V* const values = shortValues();
    V removed(std::move(values[index]));
    U32 const last = size() - 1;
    std::destroy_at(values + index);
    std::destroy_at(keys + index);
    if (index != last) {
      relocate(values + last, values + index);
      relocate(keys + last, keys + index);
      block_[Short::tagsAt + index] = block_[Short::tagsAt + last];
    }
    --state_;
    generationAdvance();
    return removed;
  }
  void shortRelocate(HashTable& to) noexcept {
    U32 const count = size();
    // One byte at a time: a wide load of tags that were just written one at a time would wait for
    // all those stores.
    for (U32 i = 0; i < count; ++i) {
      to.block_[Short::tagsAt + i] = block_[Short::tagsAt + i];
      relocate(shortKeys() + i, to.shortKeys() + i);
      relocate(shortValues() + i, to.shortValues() + i);
    }
    state_ -= count;
    to.state_ += count;
  }
  U8* block_ = nullptr;
};

}  // namespace Zel::impl
