// HashMap2018: an unordered map that takes little memory.
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

/// An unordered map from K to V, made for very many maps with very few elements each.
///
/// Invariant: each key is in the map once. The map object takes 16 bytes: room for a pointer, the
/// number of elements and the generation. The elements are in one block of slab memory. A map that
/// never held or reserved anything has no block. There is one exception, for keys that are integers
/// or enumerations of 8 bits: while there is no block, a single element is in the map object
/// itself, if its value is no larger than a pointer. Ten byte keys to pointers take 96 bytes beside
/// the map object.
///
/// The order of iteration is arbitrary: it may change with every insertion and removal.
///
/// How long things stay valid:
/// - A pointer or reference to a value or key: until an insertion, a removal, clear(), an
///   assignment, a move, a swap, a reserve() that makes the table grow, or the end of the map.
/// - An iterator: until a removal, clear(), an assignment, a move, a swap, or an insertion or
///   reserve() that makes the table grow. Then it is stale. del(iterator) returns a fresh one.
/// - A stale iterator: key() still returns the key that it last held, and `del(iterator)` removes
///   the element of that key. `++` goes on behind that key in the present table or, when the key is
///   gone, at some place in the table. The walk may then visit elements twice or not at all, since
///   a removal may move the last element into the hole. value() and `*` must not be used.
/// - The end iterator: always. `++` leaves it at the end.
///
/// No iterator may be used after its map was destroyed.
///
/// generation() starts at 1. It goes up by 2 with each removal of an element, each clear() (also of
/// an empty map), each assignment to the map, each move from it and each swap. It also goes up by 2
/// when elements move and none is added: by reserve(), or by an insertion that throws. Other
/// insertions do not change it.
///
/// K and V must be movable without throwing, and must not need an alignment of more than 16 bytes.
/// The keys' `==` and `Hash` must not throw. `Hash` may be poor: the map mixes its result. Where
/// keys are bytes, `Hash` is not used. A function may throw std::bad_alloc, what copying a key or
/// value throws, and std::length_error beyond 13 * 2^27 elements; the elements are then unchanged.
///
/// `Tag` names the map for memory accounting: it has a static `Halvo::MemoryTracker
/// memAllocationTracker_`, which counts the blocks and their bytes. A map with a tag keeps even a
/// single element in a block, so that the tracker sees every map that is not empty. With `void`
/// nothing is counted.
///
/// Threads: one thread at a time. Several threads may read one map while no thread changes it. Maps
/// of different threads that have the same Tag share its tracker: Halvo::ThreadControl's switch
/// must then be on.
///
/// A call through a null pointer to a map is not checked: it faults at its first read of the map.
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
  /// The bytes of the block, as requested from the allocator. The 16 bytes of the map object are
  /// not included.
  std::size_t memoryBytes() const noexcept { return table_.memoryBytes(); }

  /// A pointer to the value of `key`; null when the map has none.
  V* find(const K& key) noexcept { return table_.find(key); }
  const V* find(const K& key) const noexcept { return table_.find(key); }
  /// A copy of the value of `key`; V{} when the map has none.
  V get(const K& key) const {
    const V* const value = find(key);
    if (value == nullptr) return V{};
    return *value;
  }
  bool has(const K& key) const noexcept { return find(key) != nullptr; }

  /// Adds the element if the key is not in the map. Otherwise the present value stays, and `value`
  /// is dropped. Returns a pointer to the value that is now in the map, and whether it is the new
  /// one.
  std::pair<V*, bool> insert(const K& key, V value) {
    if (V* const present = table_.findBeforeInsert(key)) return {present, false};
    return {table_.add(key, std::move(value)), true};
  }
  std::pair<V*, bool> insert(K&& key, V value) {
    if (V* const present = table_.findBeforeInsert(key)) return {present, false};
    return {table_.add(std::move(key), std::move(value)), true};
  }
  /// The value of `key`. Adds the key with a default value if it is not in the map.
  V& getOrCreate(const K& key) {
    if (V* const present = table_.findBeforeInsert(key)) return *present;
    return *table_.add(key, V{});
  }

  /// Removes the element. Returns false when there is none.
  bool del(const K& key) {
    U32 const index = table_.indexOf(key);
    if (index == none) return false;
    table_.removeAt(index);
    return true;
  }
  /// Removes the element at the iterator and returns an iterator at the next one. A stale iterator
  /// removes the element of the key that it last held. At the end, or when that key is gone,
  /// nothing is changed and end() is returned. Where debugging is on, an iterator of another map
  /// stops the process (assertion "at.map == this").
  iterator del(const const_iterator& at) {
    assertWhenDebugging(at.map_ == this, {"at.map == this", "platform/Zel/HashMap2018", 0,
                                          "Zel::HashMap2018::iterator Zel::HashMap2018::del("
                                          "const const_iterator&)"});
    U32 const index = at.indexToday();
    if (index == none) return end();
    table_.removeAt(index);
    return iterator(this, table_.occupiedAfterRemovalAt(index));
  }
  /// Removes the element and returns its value; V{} when there is none.
  V take(const K& key) {
    U32 const index = table_.indexOf(key);
    if (index == none) return V{};
    return table_.removeAt(index);
  }
  /// Removes all elements and frees the block.
  void clear() noexcept {
    table_.generationAdvance();
    // Empties the map before it destroys the first value: a destructor may look at the map.
    Table old;
    old.contentsSwap(table_);
  }
  /// Makes room for `count` elements in all, or for as many as there can be keys if that is less.
  /// Never shrinks.
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

  /// An iterator at the element of the key; end() when there is none.
  iterator at(const K& key) { return iterator(this, table_.indexOf(key)); }
  const_iterator at(const K& key) const { return const_iterator(this, table_.indexOf(key)); }

 private:
  Table table_;
};

/// Stands at an element or at the end. HashMap2018 says when it becomes stale.
template <class K, class V, class Hash, class Tag>
template <bool isConst>
class HashMap2018<K, V, Hash, Tag>::BasicIterator {
  using Map = std::conditional_t<isConst, const HashMap2018, HashMap2018>;
  using MapValue = std::conditional_t<isConst, const V, V>;
  using Cursor = typename Table::Cursor;

 public:
  /// An element, as a range-for loop gets it: references into the table, but a copy of a key that
  /// is a byte.
  struct Item {
    std::conditional_t<byteKeys, K, const K&> key;
    MapValue& value;
  };
  using iterator_category = std::input_iterator_tag;
  using value_type = Item;
  using difference_type = std::ptrdiff_t;
  using reference = Item;
  using pointer = void;

  /// Stands nowhere. It may only be assigned to and destroyed.
  BasicIterator() = default;
  BasicIterator(const BasicIterator&) = default;
  BasicIterator(BasicIterator&&) noexcept = default;
  BasicIterator& operator=(const BasicIterator&) = default;
  BasicIterator& operator=(BasicIterator&&) noexcept = default;
  ~BasicIterator() = default;
  template <bool otherIsConst>
  requires(isConst && !otherIsConst) BasicIterator(const BasicIterator<otherIsConst>& other)
      : map_(other.map_), state_(other.state_), cursor_(other.cursor_), key_(other.key_) {}

  /// The key of the element, in a copy that the iterator owns. At the end, the default key.
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
    // There were only insertions. Did the table stay where it was?
    return generation() == map_->generation() && cursor_.isIn(map_->table_, key_);
  }

  /// Copying the key may throw. The iterator then stays where it is, provided that a copy
  /// assignment which throws leaves the key as it was.
  BasicIterator& operator++() {
    if (state_ != map_->table_.state()) [[unlikely]] {
      resume();
      return *this;
    }
    // Copies the key first: only that can throw.
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
    U64 state;  // the table's state for which the index is valid
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
    // Passes a copy of the key, so that the iterator itself can stay in registers.
    K const held(key_);
    standAt(placeBehind(map_->table_, held, cursor_.index()));
  }
  // The place where an iterator goes on that held `key` and stood at `index`.
  [[gnu::noinline]] static Place placeBehind(const Table& table, const K& key, U32 index) {
    U32 const today = table.indexOf(key);
    return {table.occupiedFrom(today == none ? index : today + 1), table.state()};
  }
  // The present index of its element; none at the end and when the key is gone.
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
