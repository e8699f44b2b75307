// HashMap2018: the unordered map of small memory.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Zel/Base/Assert.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/ByteTable.h"
#include "Zel/Collections/HashTable.h"

namespace Zel {

/// A map without order from K to V, made for very many maps of very few elements.
///
/// Invariant: each key is in the map once. The map itself takes 16 bytes: room for a pointer, the
/// number of elements and the generation. Where keys are integers or enumerations of 8 bits, a
/// single value no larger than a pointer is held in them; all else stands in one block of slab
/// memory, which a map that never held anything does not have. Ten byte keys to pointers take 96
/// bytes beside the map.
///
/// Order of iteration is the table's: it may change with every insertion and removal.
///
/// What stays valid:
/// - A pointer or reference to a value or key: until the next insertion or removal, or until the
///   map is moved from, swapped or destroyed.
/// - An iterator: for everything, until a removal that was not its own, clear(), an assignment, a
///   move, a swap, or an insertion or reserve() that makes the table grow. Then it is stale. A
///   stale iterator still has key(), the key that it last held, and `del(iterator)` goes by that
///   key; `++` goes on behind that key in today's table or, when the key is gone, somewhere in it;
///   either way elements may be met twice or not at all, since a removal may move the last element
///   into the hole. value() and `*` must not be used.
/// - The end iterator: always. `++` leaves it there.
/// An iterator must not be used once its map is gone.
///
/// generation() starts at 1 and goes up by 2 with each removal of an element, each clear() (of an
/// empty map also), assignment, move from and swap, and when elements move though none was added:
/// by reserve(), or by an insertion that threw. Insertions leave it alone.
///
/// Both K and V must be movable without throwing; neither may be aligned to more than 16 bytes.
/// `Hash` and the keys' `==` must not throw. `Hash` may be poor: its result is mixed here. It is
/// not used where keys are bytes. A function that throws (std::bad_alloc, what copying a key or
/// value does, std::length_error beyond 13 * 2^27 elements) leaves the elements as they were.
///
/// `Tag` names the map for memory accounting: it has a static
/// `Halvo::MemoryTracker memAllocationTracker_`, which counts the blocks and their bytes. A map
/// with a tag holds also a single value in a block, so that the tracker sees every map that is not
/// empty. void: nothing is counted.
///
/// Threads: one at a time; any number may read a map that nobody changes. Maps of distinct threads
/// that share a Tag share its tracker: Halvo::ThreadControl's switch must be on then.
///
/// Operations through a null pointer to a map fault at their first read of it: there is no check.
///
///     Zel::HashMap2018<StageType, Halvo::Ptr<StageInfo>> stages;
///     stages.insert(stage, Halvo::makePtr<StageInfo>(stage));
///     if (auto* info = stages.find(stage)) (*info)->print();
///     for (auto [key, value] : stages) value->print();
template <class K, class V, class Hash = std::hash<K>, class Tag = void>
class HashMap2018 {
  static_assert(std::is_nothrow_move_constructible_v<K> && std::is_nothrow_move_constructible_v<V>);
  static_assert(alignof(K) <= 16 && alignof(V) <= 16);

  static constexpr bool byteKeys = impl::isByte<K>;
  using Table =
      std::conditional_t<byteKeys, impl::ByteTable<K, V, Tag>, impl::HashTable<K, V, Hash, Tag>>;
  static constexpr U32 none = Table::none;

  template <bool isConst>
  class BasicIterator;

 public:
  using Key = K;
  using Value = V;
  using iterator = BasicIterator<false>;
  using const_iterator = BasicIterator<true>;

  HashMap2018() noexcept = default;
  HashMap2018(const HashMap2018& other) { table_.copyFrom(other.table_); }
  HashMap2018(HashMap2018&& other) noexcept {
    table_.contentsSwap(other.table_);
    other.table_.generationAdvance();
  }
  HashMap2018& operator=(const HashMap2018& other) {
    if (this != &other) {
      HashMap2018 copy(other);
      table_.contentsSwap(copy.table_);
      table_.generationAdvance();
    }
    return *this;
  }
  HashMap2018& operator=(HashMap2018&& other) noexcept {
    if (this != &other) {
      clear();
      table_.contentsSwap(other.table_);
      other.table_.generationAdvance();
    }
    return *this;
  }
  ~HashMap2018() = default;
  void swap(HashMap2018& other) noexcept {
    table_.contentsSwap(other.table_);
    table_.generationAdvance();
    other.table_.generationAdvance();
  }
  friend void swap(HashMap2018& a, HashMap2018& b) noexcept { a.swap(b); }

  U32 size() const noexcept { return table_.size(); }
  bool empty() const noexcept { return size() == 0; }
  U32 generation() const noexcept { return table_.generation(); }
  /// Bytes of the block, as asked for of the allocator; the map's own 16 come on top.
  std::size_t memoryBytes() const noexcept { return table_.memoryBytes(); }

  /// The value of `key`, null when the map has none.
  V* find(const K& key) noexcept { return table_.find(key); }
  const V* find(const K& key) const noexcept { return table_.find(key); }
  /// A copy of the value of `key`; V{} when the map has none.
  V get(const K& key) const {
    const V* const value = find(key);
    if (value == nullptr) return V{};
    return *value;
  }
  bool has(const K& key) const noexcept { return find(key) != nullptr; }

  /// Adds the element unless the key is there; then the present value stays and `value` is dropped.
  /// Gives the value that the map now holds and whether it is the new one.
  std::pair<V*, bool> insert(const K& key, V value) {
    if (V* const present = table_.findBeforeInsert(key)) return {present, false};
    return {table_.add(key, std::move(value)), true};
  }
  std::pair<V*, bool> insert(K&& key, V value) {
    if (V* const present = table_.findBeforeInsert(key)) return {present, false};
    return {table_.add(std::move(key), std::move(value)), true};
  }
  /// The value of `key`, which is added with a default value when it is not there.
  V& getOrCreate(const K& key) {
    if (V* const present = table_.findBeforeInsert(key)) return *present;
    return *table_.add(key, V{});
  }

  /// Removes the element; false when there is none.
  bool del(const K& key) {
    U32 const index = table_.indexOf(key);
    if (index == none) return false;
    table_.removeAt(index);
    return true;
  }
  /// Removes the element under the iterator or, by a stale one, that of the key it last held, and
  /// gives the iterator of the next. At the end, or when that key is gone: changes nothing, end().
  /// Where debugging is on, another map's iterator stops the process (assertion "at.map == this").
  iterator del(const const_iterator& at) {
    assertWhenDebugging(at.map_ == this, {"at.map == this", "platform/Zel/HashMap2018", 0,
                                          "Zel::HashMap2018::iterator Zel::HashMap2018::del("
                                          "const const_iterator&)"});
    U32 const index = at.indexToday();
    if (index == none) return end();
    table_.removeAt(index);
    return iterator(this, table_.occupiedAfterRemovalAt(index));
  }
  /// Removes the element and gives its value; V{} when there is none.
  V take(const K& key) {
    U32 const index = table_.indexOf(key);
    if (index == none) return V{};
    return table_.removeAt(index);
  }
  /// Removes all and frees the block.
  void clear() noexcept {
    table_.generationAdvance();
    // The map is empty before the first value goes: a destructor may look at it.
    Table old;
    old.contentsSwap(table_);
  }
  /// Makes room for `count` elements in all, or for as many as there are keys; never shrinks.
  void reserve(std::size_t count) {
    if (count > Table::limit) count = Table::limit;
    if (count <= table_.room()) return;
    table_.grow(count);
    if (!empty()) table_.generationAdvance();
  }

  iterator begin() { return iterator(this, table_.occupiedFrom(0)); }
  iterator end() noexcept { return iterator(this); }
  const_iterator begin() const { return const_iterator(this, table_.occupiedFrom(0)); }
  const_iterator end() const noexcept { return const_iterator(this); }

  /// An iterator at the key; end() when it is not there.
  iterator at(const K& key) { return iterator(this, table_.indexOf(key)); }
  const_iterator at(const K& key) const { return const_iterator(this, table_.indexOf(key)); }

 private:
  Table table_;
};

/// Stands at an element, or at the end. See the map for what makes it stale.
template <class K, class V, class Hash, class Tag>
template <bool isConst>
class HashMap2018<K, V, Hash, Tag>::BasicIterator {
  using Map = std::conditional_t<isConst, const HashMap2018, HashMap2018>;
  using MapValue = std::conditional_t<isConst, const V, V>;
  using Cursor = typename Table::Cursor;

 public:
  /// An element as range-for sees it: references into the table, but for a key that is a byte.
  struct Item {
    std::conditional_t<byteKeys, K, const K&> key;
    MapValue& value;
  };
  using iterator_category = std::input_iterator_tag;
  using value_type = Item;
  using difference_type = std::ptrdiff_t;
  using reference = Item;
  using pointer = void;

  /// Stands nowhere: to be assigned to and destroyed only.
  BasicIterator() = default;
  BasicIterator(const BasicIterator&) = default;
  BasicIterator(BasicIterator&&) noexcept = default;
  BasicIterator& operator=(const BasicIterator&) = default;
  BasicIterator& operator=(BasicIterator&&) noexcept = default;
  ~BasicIterator() = default;
  template <bool otherIsConst>
  requires(isConst && !otherIsConst) BasicIterator(const BasicIterator<otherIsConst>& other)
      : map_(other.map_), state_(other.state_), cursor_(other.cursor_), key_(other.key_) {}

  /// The key that the iterator holds, a copy of its own; the default key at the end.
  const K& key() const noexcept { return key_; }
  MapValue& value() const noexcept { return cursor_.value(); }
  Item operator*() const noexcept {
    if constexpr (byteKeys) {
      return {key_, value()};
    } else {
      return {cursor_.key(), value()};
    }
  }
  U32 generation() const noexcept { return static_cast<U32>(state_ >> 32); }
  /// Whether the iterator is not stale.
  bool isFresh() const noexcept {
    if (cursor_.isAtEnd() || state_ == map_->table_.state()) return true;
    // Insertions alone: did the table stay where it was?
    return generation() == map_->generation() && cursor_.isIn(map_->table_, key_);
  }

  /// A step that throws, as a key's copy may, leaves the iterator where it is; provided that a copy
  /// assignment of a key which throws leaves the key.
  BasicIterator& operator++() {
    if (state_ != map_->table_.state()) [[unlikely]] {
      resume();
      return *this;
    }
    // The key first: only its copy can throw.
    Cursor next = cursor_;
    if (next.advance(map_->table_)) {
      key_ = next.key();
      cursor_ = next;
    } else {
      standAt(none);
    }
    return *this;
  }
  BasicIterator operator++(int) {
    BasicIterator const before(*this);
    ++*this;
    return before;
  }
  /// Whether both stand at the same place.
  friend bool operator==(const BasicIterator& a, const BasicIterator& b) noexcept {
    return a.cursor_.isAt(b.cursor_);
  }

 private:
  friend HashMap2018;
  friend BasicIterator<true>;

  struct Place {
    U32 index;
    U64 state;  // the table's for which the index holds
  };

  explicit BasicIterator(Map* map) noexcept : map_(map) {}
  BasicIterator(Map* map, U32 index) : map_(map) { standAt(index); }

  void standAt(U32 index) { standAt({index, map_->table_.state()}); }
  void standAt(Place place) {
    auto const [index, state] = place;
    Cursor next;
    if (index == none) {
      key_ = K{};
    } else {
      key_ = next.standAt(map_->table_, index);
    }
    cursor_ = next;
    state_ = state;
  }
  // `++` after the map has changed.
  void resume() {
    if (cursor_.isAtEnd()) return;
    // Through a copy: the iterator itself stays in registers.
    K const held(key_);
    standAt(placeBehind(map_->table_, held, cursor_.index()));
  }
  // Where an iterator goes on that held this key and stood at this index.
  [[gnu::noinline]] static Place placeBehind(const Table& table, const K& key, U32 index) {
    U32 const today = table.indexOf(key);
    return {table.occupiedFrom(today == none ? index : today + 1), table.state()};
  }
  // Where its element now is, none at the end and when the key is gone.
  U32 indexToday() const {
    if (cursor_.isAtEnd()) return none;
    return state_ == map_->table_.state() ? cursor_.index() : map_->table_.indexOf(key_);
  }

  Map* map_ = nullptr;
  U64 state_ = 0;
  Cursor cursor_;
  K key_{};
};

static_assert(sizeof(HashMap2018<U8, void*>) == 16);

}  // namespace Zel
