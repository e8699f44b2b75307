// What HashMap2018 keeps its elements in where keys are larger than a byte.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "Halvo/Types.h"
#include "Sobrel.h"
#include "Zel/HashGroup.h"

namespace Zel::impl {

/// Elements of any keys; see HashMap2018 for what it promises of them. The table is one block of
/// slab memory:
///
/// - short, up to 16 elements: they stand side by side in no order, and a search compares a byte of
///   all their hashes at once;
/// - beyond that, a power of two of groups of 15 slots, searched from the group that the hash
///   names. There are no tombstones: a group counts the elements that it was too full to take.
///
/// Elements have indices: from 0 on without a gap in a short table, else the group's number and,
/// in the four lowest bits, the slot's.
///
/// Threads: as the map.
template <class K, class V, class Hash>
class HashTable {
  using Short = ShortLayout<K, V>;
  using Groups = GroupLayout<K, V>;
  static constexpr U32 shortLimit = 16;  // tags that one step compares

 public:
  static constexpr U32 none = 0xFFFFFFFF;
  static constexpr std::size_t limit = ~std::size_t{0};  ///< grow() has one of its own

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
    Sobrel::slabFree(block_, memoryBytes());
  }

  U32 size() const noexcept { return static_cast<U32>(state_); }
  /// Changes with every insertion and removal, and when elements move.
  U64 state() const noexcept { return state_; }
  U32 generation() const noexcept { return static_cast<U32>(state_ >> 32); }
  void generationAdvance() noexcept { state_ += U64{2} << 32; }
  std::size_t memoryBytes() const noexcept {
    if (block_ == nullptr) return 0;
    return isShort() ? Short::bytes(head().capacity) : Groups::bytes(head().detail);
  }
  /// How many elements there is room for without a larger block.
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
  /// The first element with this index or a higher one.
  U32 occupiedFrom(U32 index) const noexcept {
    if (block_ == nullptr) return none;
    if (isShort()) return index < size() ? index : none;
    return groupOccupiedFrom(index);
  }
  /// The same once the element with this index has been removed.
  U32 occupiedAfterRemovalAt(U32 index) const noexcept {
    return occupiedFrom(isShort() ? index : index + 1);
  }
  const K& keyAt(U32 index) const noexcept { return *placeOfKey(index); }
  V* valueAt(U32 index) const noexcept {
    if (isShort()) return shortValues() + index;
    return partAt<V>(group(index >> 4), Groups::valuesAt) + (index & 15);
  }

  /// Adds an element whose key is not there. Throws (memory, what copying the key does) with all
  /// elements as they were.
  template <class KeyArg>
  V* add(KeyArg&& key, V&& value) {
    if (size() < room()) [[likely]] {
      return place(std::forward<KeyArg>(key), std::move(value));
    }
    grow(nextRoom(room()));
    try {
      return place(std::forward<KeyArg>(key), std::move(value));
    } catch (...) {
      // The elements are the same, and have moved: that must show in the word of state.
      generationAdvance();
      throw;
    }
  }
  /// Removes the element and gives its value. When the value goes, and its destructor looks at the
  /// map, the element is gone.
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
  /// Moves all elements to a block with room for `count`.
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
  /// Into an empty table. Throws what copying a key or a value does.
  void copyFrom(const HashTable& other) {
    if (other.size() == 0) return;
    HashTable copy;
    copy.block_ = other.isShort() ? blockFor(other.size()) : groupBlock(other.head().detail);
    for (U32 index = other.occupiedFrom(0); index != none; index = other.occupiedFrom(index + 1)) {
      copy.place(other.keyAt(index), V(*other.valueAt(index)));
    }
    contentsSwap(copy);
  }
  /// Exchanges the elements, not the generations.
  void contentsSwap(HashTable& other) noexcept {
    std::swap(block_, other.block_);
    U64 const differing = (state_ ^ other.state_) & none;
    state_ ^= differing;
    other.state_ ^= differing;
  }

  /// Goes over the elements of a table that does not change. At the end until it stands somewhere.
  class Cursor {
   public:
    /// Stands at the element with this index from then on; gives its key.
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
    /// To the next element; false when there is none.
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
    /// Whether the table, which may have changed, has the element of this key in this place.
    bool isIn(const HashTable& table, const K& key) const noexcept {
      return table.isOccupied(index_) && table.placeOfKey(index_) == keys_ + (index_ & 15) &&
             table.valueAt(index_) == values_ + (index_ & 15) && this->key() == key;
    }

   private:
    // Goes to a group; gives its occupied slots.
    U32 groupIs(const HashTable& table, U32 number) noexcept {
      U8* const here = table.group(number);
      keys_ = partAt<K>(here, Groups::keysAt);
      values_ = partAt<V>(here, Groups::valuesAt);
      return occupied(here);
    }

    // Those of a short table, or of the group that it stands in.
    const K* keys_ = nullptr;
    V* values_ = nullptr;
    U32 index_ = none;
    U32 rest_ = 0;        // the slots that are still to come there
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

  // The sizes that a table goes through as it grows: few, since every step moves all elements.
  static std::size_t nextRoom(std::size_t room) noexcept {
    if (room < 4) return room == 0 ? 1 : 4;
    if (room < 10) return 10;
    return room < shortLimit ? shortLimit : room + 1;
  }
  // A block with room for `count` elements, without any.
  static U8* blockFor(std::size_t count) {
    if (count <= shortLimit) {
      auto* const block = static_cast<U8*>(Sobrel::slabAlloc(Short::bytes(count)));
      new (block) TableHead{static_cast<U16>(count), static_cast<U16>(Short::valuesAt(count))};
      // The tags of free slots are compared too, though nobody looks at what comes of it.
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
    auto* const block = static_cast<U8*>(Sobrel::slabAlloc(Groups::bytes(logGroups)));
    new (block) TableHead{0, static_cast<U16>(logGroups)};
    U8* tags = block + Groups::groupsAt;
    for (std::size_t n = std::size_t{1} << logGroups; n != 0; --n, tags += Groups::stride) {
      std::memset(tags, 0, 16);
    }
    return block;
  }

  // As add, where there is room. Throws what copying the key does, before anything has changed.
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
    if (step != 0) [[unlikely]] {
      overflowAdd(hash, number, 1);
    }
    return made;
  }
  // Counts an element in or out of the groups that it did not fit in, on its way to group `to`.
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
    // Byte by byte: a wide load of tags just written one at a time would wait for all the stores.
    for (U32 i = 0; i < count; ++i) {
      to.block_[Short::tagsAt + i] = block_[Short::tagsAt + i];
      relocate(shortKeys() + i, to.shortKeys() + i);
      relocate(shortValues() + i, to.shortValues() + i);
    }
    state_ -= count;
    to.state_ += count;
  }
  template <class T>
  static void relocate(T* from, T* to) noexcept {
    new (to) T(std::move(*from));
    std::destroy_at(from);
  }

  U8* block_ = nullptr;
  // The generation in the high half, the size in the low one. Of one value of this word there is
  // one table, unmoved: a step of an iterator compares this alone.
  U64 state_ = U64{1} << 32;
};

}  // namespace Zel::impl
