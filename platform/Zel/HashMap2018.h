// HashMap2018: the unordered map of small memory.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "Halvo/Types.h"
#include "Sobrel.h"
#include "Zel/HashGroup.h"

namespace Zel {

/// A map without order from K to V, made for very many maps of very few elements.
///
/// Invariant: each key is in the map once. The map itself is a pointer to its table, the number of
/// elements and the generation, 16 bytes; a map that never held anything has no table. A table is
/// one block of slab memory:
///
/// - short, up to 16 elements (256 where keys are bytes): the elements stand side by side in no
///   order. All are compared at once, by a byte of their hash or, where keys are integers or
///   enumerations of 8 bits, by the key itself. One such key to a pointer takes 24 bytes, ten 96.
/// - beyond that, a power of two of groups of 15 slots, searched from the group that the hash
/// names.
///   There are no tombstones: a group counts the elements that it was too full to take.
///
/// Order of iteration is the table's: it may change with every insertion and removal.
///
/// What stays valid:
/// - A pointer or reference to a value or key: until the next insertion or removal.
/// - An iterator: for everything, until a removal that was not its own, clear(), an assignment, a
///   move, a swap, or an insertion or reserve() that makes the table grow. Then it is stale. A
///   stale iterator still has key(), the key that it last held, and `del(iterator)` goes by that
///   key; `++` goes on behind that key in today's table or, when the key is gone, somewhere in it
///   (elements may be met twice or not at all); value() and `*` must not be used.
/// - The end iterator: always. `++` leaves it there.
/// An iterator must not be used once its map is gone.
///
/// generation() starts at 1 and goes up by 2 with each removal of an element, each clear() (of an
/// empty map also), assignment, move from and swap, and when elements move though none was added:
/// by reserve(), or by an insertion that threw. Insertions leave it alone.
///
/// Both K and V must be movable without throwing; neither may be aligned to more than 16 bytes. A
/// function that throws (memory, a copy that throws) leaves the elements as they were. `Hash` may
/// be poor: its result is mixed here. It is not used where keys are bytes.
///
/// Threads: one at a time; any number may read a map that nobody changes.
///
/// Operations through a null pointer to a map fault at their first read of it: there is no check.
///
///     Zel::HashMap2018<StageType, Halvo::Ptr<StageInfo>> stages;
///     stages.insert(stage, Halvo::makePtr<StageInfo>(stage));
///     if (auto* info = stages.find(stage)) (*info)->print();
///     for (auto [key, value] : stages) value->print();
template <class K, class V, class Hash = std::hash<K>>
class HashMap2018 {
  static_assert(std::is_nothrow_move_constructible_v<K> && std::is_nothrow_move_constructible_v<V>);
  static_assert(alignof(K) <= 16 && alignof(V) <= 16);

  template <bool isConst>
  class BasicIterator;

 public:
  using Key = K;
  using Value = V;
  using iterator = BasicIterator<false>;
  using const_iterator = BasicIterator<true>;

  HashMap2018() noexcept = default;
  HashMap2018(const HashMap2018& other) { copyFrom(other); }
  HashMap2018(HashMap2018&& other) noexcept {
    contentsSwap(other);
    other.generationAdvance();
  }
  HashMap2018& operator=(const HashMap2018& other) {
    if (this != &other) {
      HashMap2018 copy(other);
      contentsSwap(copy);
      generationAdvance();
    }
    return *this;
  }
  HashMap2018& operator=(HashMap2018&& other) noexcept {
    if (this != &other) {
      clear();
      contentsSwap(other);
      other.generationAdvance();
    }
    return *this;
  }
  ~HashMap2018() { tableRelease(); }
  void swap(HashMap2018& other) noexcept {
    contentsSwap(other);
    generationAdvance();
    other.generationAdvance();
  }
  friend void swap(HashMap2018& a, HashMap2018& b) noexcept { a.swap(b); }

  U32 size() const noexcept { return sizeIn(state_); }
  bool empty() const noexcept { return size() == 0; }
  U32 generation() const noexcept { return static_cast<U32>(state_ >> 32); }
  /// Bytes of the table, as asked for of the allocator; the map's own 16 come on top.
  std::size_t memoryBytes() const noexcept {
    if (table_ == nullptr) return 0;
    return isShort() ? Short::bytes(head().capacity) : Groups::bytes(head().detail);
  }

  /// The value of `key`, null when the map has none.
  V* find(const K& key) noexcept { return found(key); }
  const V* find(const K& key) const noexcept { return found(key); }
  /// A copy of the value of `key`; V{} when the map has none.
  V get(const K& key) const {
    const V* const value = found(key);
    if (value == nullptr) return V{};
    return *value;
  }
  bool has(const K& key) const noexcept { return found(key) != nullptr; }

  /// Adds the element unless the key is there; then the present value stays and `value` is dropped.
  /// Gives the value that the map now holds and whether it is the new one.
  std::pair<V*, bool> insert(const K& key, V value) {
    if (V* const present = foundBeforeInsert(key)) return {present, false};
    return {add(key, std::move(value)), true};
  }
  std::pair<V*, bool> insert(K&& key, V value) {
    if (V* const present = foundBeforeInsert(key)) return {present, false};
    return {add(std::move(key), std::move(value)), true};
  }
  /// The value of `key`, which is added with a default value when it is not there.
  V& getOrCreate(const K& key) {
    if (V* const present = foundBeforeInsert(key)) return *present;
    return *add(key, V{});
  }

  /// Removes the element; false when there is none.
  bool del(const K& key) {
    U32 const index = indexOf(key);
    if (index == none) return false;
    removeAt(index);
    return true;
  }
  /// Removes the element under the iterator or, by a stale one, that of the key it last held, and
  /// gives the iterator of the next. At the end, or when that key is gone: changes nothing, end().
  iterator del(const const_iterator& at) {
    if (at.index_ == none) return end();
    U32 const index = at.state_ == state_ ? static_cast<U32>(at.index_) : indexOf(at.key_);
    if (index == none) return end();
    removeAt(index);
    return iterator(this, occupiedFrom(isShort() ? index : index + 1));
  }
  /// Removes the element and gives its value; V{} when there is none.
  V take(const K& key) {
    U32 const index = indexOf(key);
    if (index == none) return V{};
    return removeAt(index);
  }
  /// Removes all and frees the table.
  void clear() noexcept {
    generationAdvance();
    // The map is empty before the first value goes: a destructor may look at it.
    HashMap2018 old;
    contentsSwap(old);
  }
  /// Makes room for `count` elements in all; never shrinks.
  void reserve(std::size_t count) {
    // There are no more keys of a byte, nor a table for more.
    if (byteKeys && count > shortLimit) count = shortLimit;
    if (count <= room()) return;
    grow(count);
    if (!empty()) generationAdvance();
  }

  iterator begin() { return iterator(this, occupiedFrom(0)); }
  iterator end() noexcept { return iterator(this); }
  const_iterator begin() const { return const_iterator(this, occupiedFrom(0)); }
  const_iterator end() const noexcept { return const_iterator(this); }

  /// An iterator at the key; end() when it is not there.
  iterator at(const K& key) { return iterator(this, indexOf(key)); }
  const_iterator at(const K& key) const { return const_iterator(this, indexOf(key)); }

 private:
  static constexpr bool byteKeys = sizeof(K) == 1 && (std::is_integral_v<K> || std::is_enum_v<K>);
  using Short = impl::ShortTable<K, V, byteKeys>;
  using Groups = impl::GroupTable<K, V>;
  static constexpr U32 shortest = 16;  // compared in one step
  static constexpr U32 shortLimit = byteKeys ? 256 : shortest;
  static constexpr U32 none = 0xFFFFFFFF;
  static_assert(Short::valuesAt(shortLimit) <= 0xFFFF);

  impl::TableHead& head() const noexcept { return *partAt<impl::TableHead>(table_, 0); }
  bool isShort() const noexcept { return byteKeys || head().capacity != 0; }
  template <class T>
  static T* partAt(U8* table, std::size_t offset) noexcept {
    return static_cast<T*>(static_cast<void*>(table + offset));
  }
  static U32 sizeIn(U64 state) noexcept {
    return byteKeys ? static_cast<U16>(state) : static_cast<U32>(state);
  }
  void sizeIs(U32 size) noexcept { state_ = (state_ & ~U64{byteKeys ? 0xFFFFU : none}) | size; }
  void generationAdvance() noexcept { state_ += U64{2} << 32; }

  static U8 byteOf(const K& key) noexcept {
    U8 byte;
    std::memcpy(&byte, &key, 1);
    return byte;
  }
  static U64 hashOf(const K& key) { return impl::hashMix(static_cast<U64>(Hash{}(key))); }
  static U8 tagOf(U64 hash) noexcept { return static_cast<U8>(hash | 0x80); }
  static U8 tagOfKey(const K& key) {
    if constexpr (byteKeys) {
      return byteOf(key);
    } else {
      return tagOf(hashOf(key));
    }
  }

  K* shortKeys() const noexcept { return partAt<K>(table_, Short::keysAt(head().capacity)); }
  V* shortValues() const noexcept {
    return partAt<V>(table_, byteKeys ? static_cast<U16>(state_ >> 16) : head().detail);
  }
  // Makes an empty table that of a map which has none.
  void tableIs(U8* table) noexcept {
    table_ = table;
    if constexpr (byteKeys) state_ |= U64{head().detail} << 16;
  }

  U32 lastGroup() const noexcept { return (1U << head().detail) - 1; }
  U8* group(U32 number) const noexcept {
    return table_ + Groups::groupsAt + number * Groups::stride;
  }
  static U32 homeGroup(U64 hash) noexcept { return static_cast<U32>(hash >> 7); }
  static U32 occupied(const U8* group) noexcept {
    return impl::bytesMarked16(group) & Groups::slotMask;
  }

  K* keyAt(U32 index) const noexcept {
    if (isShort()) return shortKeys() + index;
    return partAt<K>(group(index >> 4), Groups::keysAt) + (index & 15);
  }
  V* valueAt(U32 index) const noexcept {
    if (isShort()) return shortValues() + index;
    return partAt<V>(group(index >> 4), Groups::valuesAt) + (index & 15);
  }
  U32 shortIndexOf(const K& key) const {
    U8 const tag = tagOfKey(key);
    const U8* const tags = table_ + Short::tagsAt;
    if constexpr (byteKeys) {
      // A map of one element is common, and needs no wide comparison.
      if (size() == 1) return tags[0] == tag ? 0 : none;
      if (size() > shortest) [[unlikely]] {
        return farIndexOf(tag);
      }
      // Behind the elements there may be old keys, and behind the table's room anything.
      U32 const index =
          static_cast<U32>(std::countr_zero(impl::bytesEqual16(tags, tag) | 1U << shortest));
      return index < size() ? index : none;
    } else {
      U32 hits = impl::bytesEqual16(tags, tag) & ((1U << size()) - 1);
      for (; hits != 0; hits &= hits - 1) {
        U32 const index = static_cast<U32>(std::countr_zero(hits));
        if (shortKeys()[index] == key) return index;
      }
      return none;
    }
  }
  U32 farIndexOf(U8 tag) const noexcept {
    for (U32 from = 0; from < size(); from += 16) {
      U32 const hits = impl::bytesEqual16(table_ + Short::tagsAt + from, tag);
      if (hits == 0) continue;
      U32 const index = from + static_cast<U32>(std::countr_zero(hits));
      return index < size() ? index : none;
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
      for (U32 hits = impl::bytesEqual16(here, tag) & Groups::slotMask; hits != 0;
           hits &= hits - 1) {
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
  U32 indexOf(const K& key) const {
    if (table_ == nullptr) return none;
    return isShort() ? shortIndexOf(key) : groupIndexOf(key);
  }
  V* found(const K& key) const noexcept {
    if (table_ == nullptr) return nullptr;
    if (isShort()) {
      U32 const index = shortIndexOf(key);
      return index == none ? nullptr : shortValues() + index;
    }
    U32 const index = groupIndexOf(key);
    return index == none ? nullptr : partAt<V>(group(index >> 4), Groups::valuesAt) + (index & 15);
  }
  // As found, for few keys one by one: the last of them may have been written just now, and a wide
  // load would wait for that store.
  V* foundBeforeInsert(const K& key) const noexcept {
    if constexpr (byteKeys) {
      if (size() <= 8) {
        U8 const byte = byteOf(key);
        for (U32 i = 0; i < size(); ++i) {
          if (table_[Short::tagsAt + i] == byte) return shortValues() + i;
        }
        return nullptr;
      }
    }
    return found(key);
  }
  // The first element at this place of the table or behind it.
  U32 occupiedFrom(U32 index) const noexcept {
    if (table_ == nullptr) return none;
    if (isShort()) return index < size() ? index : none;
    return groupOccupiedFrom(index);
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
  // Whether the element at this place is there, and has this key.
  bool holdsAt(U32 index, const K* place, const K& key) const noexcept {
    if (table_ == nullptr) return false;
    if (isShort()) {
      if (index >= size()) return false;
    } else if (index >> 4 > lastGroup() || (occupied(group(index >> 4)) >> (index & 15) & 1) == 0) {
      return false;
    }
    return keyAt(index) == place && *place == key;
  }
  // Where a stale iterator goes on that stood at this place and key.
  [[gnu::noinline]] U32 resumed(const K& key, U32 index) const {
    U32 const today = indexOf(key);
    return occupiedFrom(today == none ? index : today + 1);
  }

  std::size_t room() const noexcept {
    if (table_ == nullptr) return 0;
    return isShort() ? head().capacity : std::size_t{Groups::fill} << head().detail;
  }
  // The sizes that a table goes through as it grows: few, since every step moves all elements.
  static std::size_t nextRoom(std::size_t room) noexcept {
    if (room < 4) return room == 0 ? 1 : 4;
    if (room < 10) return 10;
    if (room < 16) return 16;
    return room + 1 <= shortLimit ? std::size_t{room * 2 < shortLimit ? room * 2 : shortLimit}
                                  : room + 1;
  }

  // A table with room for `count` elements, without any.
  static U8* tableFor(std::size_t count) {
    if (count <= shortLimit) {
      std::size_t const values = Short::valuesAt(count);
      auto* const table = static_cast<U8*>(Sobrel::slabAlloc(Short::bytes(count)));
      new (table) impl::TableHead{static_cast<U16>(count), static_cast<U16>(values)};
      // The tags of free slots are compared too, though nobody looks at what comes of it.
      for (std::size_t i = 0; i < count; i += 16) std::memset(table + Short::tagsAt + i, 0, 16);
      return table;
    }
    U32 logGroups = 1;
    while (std::size_t{Groups::fill} << logGroups < count) {
      if (++logGroups > Groups::maxLogGroups) throw std::length_error("HashMap2018");
    }
    return groupTable(logGroups);
  }
  static U8* groupTable(U32 logGroups) {
    auto* const table = static_cast<U8*>(Sobrel::slabAlloc(Groups::bytes(logGroups)));
    new (table) impl::TableHead{0, static_cast<U16>(logGroups)};
    U8* tags = table + Groups::groupsAt;
    for (std::size_t n = std::size_t{1} << logGroups; n != 0; --n, tags += Groups::stride) {
      std::memset(tags, 0, 16);
    }
    return table;
  }

  // Adds an element whose key is not in the map.
  template <class KeyArg>
  V* add(KeyArg&& key, V&& value) {
    if (size() >= room()) [[unlikely]] {
      return addInLarger(std::forward<KeyArg>(key), std::move(value));
    }
    return place(std::forward<KeyArg>(key), std::move(value));
  }
  template <class KeyArg>
  V* addInLarger(KeyArg&& key, V&& value) {
    grow(nextRoom(room()));
    if constexpr (byteKeys) {
      return place(std::forward<KeyArg>(key), std::move(value));
    } else {
      try {
        return place(std::forward<KeyArg>(key), std::move(value));
      } catch (...) {
        // The elements are the same, and have moved: that must show in the word of state.
        generationAdvance();
        throw;
      }
    }
  }
  // As add, where there is room. Throws what copying the key does, before anything has changed.
  template <class KeyArg>
  V* place(KeyArg&& key, V&& value) {
    if (isShort()) {
      U8 const tag = tagOfKey(key);
      U32 const index = size();
      if constexpr (!byteKeys) new (shortKeys() + index) K(std::forward<KeyArg>(key));
      V* const made = new (shortValues() + index) V(std::move(value));
      // Last, where keys are bytes: the key itself.
      table_[Short::tagsAt + index] = tag;
      ++state_;
      return made;
    }
    U64 const hash = hashOf(key);
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

  // Removes the element and gives its value. When the value goes, and its destructor looks at this
  // map, the element is gone.
  V removeAt(U32 index) {
    U8* const table = table_;
    if (isShort()) {
      K* const keys = shortKeys();
      V* const values = shortValues();
      V removed(std::move(values[index]));
      U32 const last = size() - 1;
      std::destroy_at(values + index);
      if constexpr (!byteKeys) std::destroy_at(keys + index);
      if (index != last) {
        new (values + index) V(std::move(values[last]));
        std::destroy_at(values + last);
        if constexpr (!byteKeys) {
          new (keys + index) K(std::move(keys[last]));
          std::destroy_at(keys + last);
        }
        table[Short::tagsAt + index] = table[Short::tagsAt + last];
      }
      --state_;
      generationAdvance();
      return removed;
    }
    U32 const number = index >> 4;
    U64 const hash = hashOf(*keyAt(index));
    U8* const here = group(number);
    K* const key = keyAt(index);
    V* const value = valueAt(index);
    V removed(std::move(*value));
    std::destroy_at(value);
    std::destroy_at(key);
    here[index & 15] = 0;
    --state_;
    generationAdvance();
    if ((homeGroup(hash) & lastGroup()) != number) overflowAdd(hash, number, -1);
    return removed;
  }

  // Moves all elements to a table with room for `count`.
  [[gnu::noinline]] void grow(std::size_t count) {
    HashMap2018 larger;
    larger.tableIs(tableFor(count));
    if (table_ != nullptr) {
      if (isShort() && larger.isShort()) {
        shortRelocate(larger);
      } else {
        for (U32 index = occupiedFrom(0); index != none; index = occupiedFrom(index + 1)) {
          larger.place(std::move(*keyAt(index)), std::move(*valueAt(index)));
        }
      }
    }
    contentsSwap(larger);
  }
  void shortRelocate(HashMap2018& to) noexcept {
    U32 const count = size();
    sizeIs(0);
    // Byte by byte: a wide load of tags just written one at a time would wait for all the stores.
    for (U32 i = 0; i < count; ++i) {
      to.table_[Short::tagsAt + i] = table_[Short::tagsAt + i];
      if constexpr (!byteKeys) relocate(shortKeys() + i, to.shortKeys() + i);
      relocate(shortValues() + i, to.shortValues() + i);
    }
    to.sizeIs(count);
  }
  template <class T>
  static void relocate(T* from, T* to) noexcept {
    new (to) T(std::move(*from));
    std::destroy_at(from);
  }
  void copyFrom(const HashMap2018& other) {
    if (other.size() == 0) return;
    HashMap2018 copy;
    if (other.isShort()) {
      copy.tableIs(tableFor(other.size()));
    } else {
      copy.tableIs(groupTable(other.head().detail));
    }
    for (U32 index = other.occupiedFrom(0); index != none; index = other.occupiedFrom(index + 1)) {
      copy.place(*other.keyAt(index), V{*other.valueAt(index)});
    }
    contentsSwap(copy);
  }
  void contentsSwap(HashMap2018& other) noexcept {
    std::swap(table_, other.table_);
    U64 const differing = (state_ ^ other.state_) & none;
    state_ ^= differing;
    other.state_ ^= differing;
  }
  void tableRelease() noexcept {
    if (table_ == nullptr) return;
    if (isShort()) {
      std::destroy_n(shortValues(), size());
      if constexpr (!byteKeys) std::destroy_n(shortKeys(), size());
    } else if constexpr (!std::is_trivially_destructible_v<K> ||
                         !std::is_trivially_destructible_v<V>) {
      for (U32 index = occupiedFrom(0); index != none; index = occupiedFrom(index + 1)) {
        std::destroy_at(valueAt(index));
        std::destroy_at(keyAt(index));
      }
    }
    Sobrel::slabFree(table_, memoryBytes());
  }

  U8* table_ = nullptr;
  // The generation in the high half, the size in the low one; where keys are bytes, a half of that
  // for each of size and the offset of the values. A look at an element then waits for one load
  // after the map's own. Of one value of this word there is one table, unmoved: a step of an
  // iterator compares this alone.
  U64 state_ = U64{1} << 32;
};

static_assert(sizeof(HashMap2018<U8, void*>) == 16);

}  // namespace Zel

#include "Zel/HashMapIterator.h"  // IWYU pragma: export
