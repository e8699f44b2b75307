// The iterators of HashMap2018, which includes this.
#pragma once

#include <bit>
#include <cstddef>
#include <iterator>
#include <type_traits>

#include "Zel/DoOrRestore.h"
#include "Zel/HashMap2018.h"  // IWYU pragma: keep

namespace Zel {

/// Stands at an element, or at the end. See the map for what makes it stale.
template <class K, class V, class Hash>
template <bool isConst>
class HashMap2018<K, V, Hash>::BasicIterator {
  using Map = std::conditional_t<isConst, const HashMap2018, HashMap2018>;
  using MapValue = std::conditional_t<isConst, const V, V>;

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

  template <bool otherIsConst>
  requires(isConst && !otherIsConst) BasicIterator(const BasicIterator<otherIsConst>& other)
      : map_(other.map_),
        state_(other.state_),
        keys_(other.keys_),
        values_(other.values_),
        index_(other.index_),
        count_(other.count_),
        rest_(other.rest_),
        groupsLeft_(other.groupsLeft_),
        key_(other.key_) {}
  BasicIterator(const BasicIterator&) = default;
  BasicIterator(BasicIterator&&) noexcept = default;
  BasicIterator& operator=(const BasicIterator&) = default;
  BasicIterator& operator=(BasicIterator&&) noexcept = default;
  ~BasicIterator() = default;

  /// The key that the iterator holds, a copy of its own; the default key at the end.
  const K& key() const noexcept { return key_; }
  MapValue& value() const noexcept { return values_[slot()]; }
  Item operator*() const noexcept {
    if constexpr (byteKeys) {
      return {key_, value()};
    } else {
      return {keys_[slot()], value()};
    }
  }
  U32 generation() const noexcept { return static_cast<U32>(state_ >> 32); }
  /// Whether the iterator is not stale.
  bool isFresh() const noexcept {
    if (index_ == none || state_ == map_->state_) return true;
    // Insertions alone: did the table stay where it was?
    return generation() == map_->generation() &&
           map_->holdsAt(static_cast<U32>(index_), keys_ + slot(), key_) &&
           values_ + slot() == map_->valueAt(static_cast<U32>(index_));
  }

  /// A step that throws, as a key's copy may, leaves the iterator where it is.
  BasicIterator& operator++() {
    if constexpr (std::is_nothrow_copy_assignable_v<K>) {
      advance();
    } else {
      impl::doOrRestore([this] { advance(); }, state_, keys_, values_, index_, count_, rest_,
                        groupsLeft_);
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
    return a.index_ == b.index_;
  }

 private:
  friend HashMap2018;
  friend BasicIterator<true>;
  explicit BasicIterator(Map* map) noexcept : map_(map) {}
  BasicIterator(Map* map, U32 index) : map_(map) { standAt(index); }
  void advance() {
    if (state_ != map_->state_) [[unlikely]] {
      if (index_ == none) return;
      // Through a copy: the iterator itself stays in registers.
      K const held(key_);
      standAt(map_->resumed(held, static_cast<U32>(index_)));
    } else if constexpr (byteKeys) {
      if (++index_ < count_) {
        key_ = keys_[index_];
      } else {
        standAtEnd();
      }
    } else {
      while (rest_ == 0) {
        if (groupsLeft_ == 0) return standAtEnd();
        groupEnter();
      }
      index_ = (index_ & ~std::size_t{15}) | static_cast<U32>(std::countr_zero(rest_));
      rest_ &= rest_ - 1;
      key_ = keys_[slot()];
    }
  }
  std::size_t slot() const noexcept { return byteKeys ? index_ : index_ & 15; }

  void standAt(U32 index) {
    state_ = map_->state_;
    if (index == none) return standAtEnd();
    index_ = index;
    if constexpr (byteKeys) {
      keys_ = map_->shortKeys();
      values_ = map_->shortValues();
      count_ = sizeIn(state_);
    } else {
      U32 slots;
      if (map_->isShort()) {
        keys_ = map_->shortKeys();
        values_ = map_->shortValues();
        slots = (1U << map_->size()) - 1;
        groupsLeft_ = 0;
      } else {
        U8* const here = map_->group(index >> 4);
        keys_ = partAt<K>(here, Groups::keysAt);
        values_ = partAt<V>(here, Groups::valuesAt);
        slots = occupied(here);
        groupsLeft_ = map_->lastGroup() - (index >> 4);
      }
      rest_ = slots & (none << 1 << (index & 15));
    }
    key_ = keys_[slot()];
  }
  void standAtEnd() {
    key_ = K{};
    index_ = none;
    count_ = 0;
    rest_ = 0;
    groupsLeft_ = 0;
  }
  // To the front of the group that follows.
  void groupEnter() noexcept {
    U8* const here = map_->group(static_cast<U32>(index_ >> 4) + 1);
    keys_ = partAt<K>(here, Groups::keysAt);
    values_ = partAt<V>(here, Groups::valuesAt);
    rest_ = occupied(here);
    index_ = (index_ | 15) + 1;
    --groupsLeft_;
  }

  Map* map_;
  U64 state_ = 0;
  // Those of a short table, or of the group that it stands in.
  const K* keys_ = nullptr;
  MapValue* values_ = nullptr;
  std::size_t index_ = none;
  std::size_t count_ = 0;  // the elements, where keys are bytes; unused elsewhere
  U32 rest_ = 0;           // the slots that are still to come there; unused where keys are bytes
  U32 groupsLeft_ = 0;     // how many groups follow
  K key_{};
};

}  // namespace Zel
