// The table of HashMap2018 for keys that are bytes.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "Zel/Base/Types.h"
#include "Zel/Collections/TableParts.h"

namespace Zel::impl {

template <class K>
inline constexpr bool isByte = sizeof(K) == 1 && (std::is_integral_v<K> || std::is_enum_v<K>);

/// Elements with keys of one byte, side by side in no order; see HashMap2018 for the guarantees.
/// They are in one block of slab memory: its capacity, the keys, the values. While there is no
/// block, a single element may be in the map object itself: if its value is no larger than a
/// pointer, and no tag's tracker must count it. A search compares 16 keys at once.
///
/// Each element has an index. The indices run from 0 without a gap.
///
/// Threads: as the map.
template <class K, class V, class Tag>
class ByteTable : public TableState {
  static constexpr U32 shortest = 16;  // the number of keys that one step compares
  static constexpr bool mayBeOne = std::is_void_v<Tag> && sizeof(V) <= sizeof(void*);
  struct NoValue {};
  using One = std::conditional_t<mayBeOne, V, NoValue>;

 public:
  static constexpr U32 none = 0xFFFFFFFF;
  static constexpr std::size_t limit = 256;  ///< a byte has no more values

  ByteTable() noexcept : block_(nullptr) {}
  ByteTable(const ByteTable&) = delete;
  ByteTable& operator=(const ByteTable&) = delete;
  ~ByteTable() {
    if (isOne()) {
      std::destroy_at(&one_);
    } else if (hasBlock()) {
      std::destroy_n(values(), size());
      TableMemory<Tag>::give(block_, bytesFor(capacity()));
    }
  }

  U32 size() const noexcept { return static_cast<U16>(state_); }
  std::size_t memoryBytes() const noexcept { return hasBlock() ? bytesFor(capacity()) : 0; }
  /// How many elements fit without a larger block.
  std::size_t room() const noexcept {
    if (hasBlock()) return capacity();
    return mayBeOne ? 1 : 0;
  }

  V* find(const K& key) const noexcept {
    U8 const byte = byteOf(key);
    // Branches, not conditional moves: the caller branches on the result too, and with branch
    // prediction need not wait for it.
    if (isOne()) {
      if (byte != oneByte()) [[unlikely]] {
        return nullptr;
      }
      return one();
    }
    // In an empty table this is the largest U32.
    U32 const last = size() - 1;
    if (last >= shortest) [[unlikely]] {
      return size() == 0 ? nullptr : farFind(byte);
    }
    // Behind the last element there may be old keys, and behind the block's room anything: those
    // hits do not count.
    U32 const hits = bytesEqual16(keys(), byte) | 1U << shortest;
    auto const index = static_cast<std::size_t>(std::countr_zero(hits));
    if (index > last) [[unlikely]] {
      return nullptr;
    }
    return values() + index;
  }
  /// As find(), but compares a few keys one by one. The last key may have been written just now,
  /// and a wide load would wait for that store.
  V* findBeforeInsert(const K& key) const noexcept {
    if (isOne() || size() > 8) return find(key);
    U8 const byte = byteOf(key);
    for (U32 i = 0; i < size(); ++i) {
      if (keys()[i] == byte) return values() + i;
    }
    return nullptr;
  }
  U32 indexOf(const K& key) const noexcept {
    const V* const value = find(key);
    return value == nullptr ? none : static_cast<U32>(value - valueAt(0));
  }
  /// The index of the first element at `index` or above; none when there is none.
  U32 occupiedFrom(U32 index) const noexcept { return index < size() ? index : none; }
  /// The index of the next element after the element at `index` was removed; none when there is
  /// none.
  U32 occupiedAfterRemovalAt(U32 index) const noexcept { return occupiedFrom(index); }
  K keyAt(U32 index) const noexcept { return keyOf(isOne() ? oneByte() : keys()[index]); }
  V* valueAt(U32 index) const noexcept { return isOne() ? one() : values() + index; }

  /// Adds an element. Its key must not be in the table. If this throws std::bad_alloc, nothing has
  /// changed.
  V* add(const K& key, V&& value) {
    U32 const index = size();
    if (index >= room()) [[unlikely]] {
      grow(nextRoom(room()));
    }
    U8 const byte = byteOf(key);
    if constexpr (mayBeOne) {
      if (!hasBlock()) {
        new (&one_) V(std::move(value));
        state_ += U64{oneMark | byte} << detailAt | 1;
        return one();
      }
    }
    V* const made = new (values() + index) V(std::move(value));
    keys()[index] = byte;
    ++state_;
    return made;
  }
  /// Removes the element and returns its value. The table no longer has the element when the value
  /// is destroyed: the value's destructor may look at the map.
  V removeAt(U32 index) noexcept {
    V removed(std::move(*valueAt(index)));
    std::destroy_at(valueAt(index));
    if (isOne()) {
      block_ = nullptr;
      state_ &= ~lowHalf;
    } else {
      U32 const last = size() - 1;
      if (index != last) {
        relocate(values() + last, values() + index);
        keys()[index] = keys()[last];
      }
      --state_;
    }
    generationAdvance();
    return removed;
  }
  /// Moves all elements to a block with room for `count` elements, at most `limit`.
  [[gnu::noinline]] void grow(std::size_t count) {
    ByteTable larger;
    larger.blockIs(count);
    for (U32 i = 0; i < size(); ++i) {
      // One byte at a time: a wide load of keys that were just written one at a time would wait for
      // all those stores.
      larger.keys()[i] = byteOf(keyAt(i));
      relocate(valueAt(i), larger.values() + i);
    }
    larger.state_ += size();
    // All elements have moved: the old block must not destroy any.
    if (isOne()) {
      block_ = nullptr;
      state_ &= ~lowHalf;
    } else {
      state_ &= ~sizeMask;
    }
    contentsSwap(larger);
  }
  /// Copies the elements of `other` into this table, which must be empty. Throws what copying a
  /// value throws.
  void copyFrom(const ByteTable& other) {
    ByteTable copy;
    if (other.size() > copy.room()) copy.blockIs(other.size());
    for (U32 i = 0; i < other.size(); ++i) {
      copy.add(other.keyAt(i), static_cast<V>(*other.valueAt(i)));
    }
    contentsSwap(copy);
  }
  /// Exchanges the elements, not the generations.
  void contentsSwap(ByteTable& other) noexcept {
    ByteTable third;
    third.contentsTake(*this);
    contentsTake(other);
    other.contentsTake(third);
  }

  /// Walks the elements of a table that does not change meanwhile. A new cursor is at the end.
  class Cursor {
   public:
    /// Moves to the element at `index` and returns its key.
    K standAt(const ByteTable& table, U32 index) noexcept {
      // The key of a single element is not in an array. It is not read again.
      keys_ = table.isOne() ? nullptr : table.keys();
      values_ = table.valueAt(0);
      index_ = index;
      count_ = table.size();
      return table.keyAt(index);
    }
    /// Moves to the next element. Returns false when there is none.
    bool advance(const ByteTable& /*table*/) noexcept {
      if (++index_ >= count_) return false;
      if (index_ == none) __builtin_unreachable();  // saves a loop the comparison with the end
      return true;
    }
    bool isAtEnd() const noexcept { return index_ == none; }
    bool isAt(const Cursor& other) const noexcept { return index_ == other.index_; }
    U32 index() const noexcept { return static_cast<U32>(index_); }
    /// Only after advance().
    K key() const noexcept { return keyOf(keys_[index_]); }
    V& value() const noexcept { return values_[index_]; }
    /// Whether the table still has the element with this key in this place. The table may have
    /// changed.
    bool isIn(const ByteTable& table, const K& key) const noexcept {
      return index_ < table.size() && table.valueAt(0) == values_ && table.keyAt(index()) == key;
    }

   private:
    const U8* keys_ = nullptr;
    V* values_ = nullptr;
    std::size_t index_ = none;
    std::size_t count_ = 0;
  };

 private:
  static constexpr std::size_t keysAt = sizeof(U16);
  // The low half of the state word. Its lower 16 bits are the size. Its upper 16 bits are the
  // offset of the values or, for a single element, the mark and the key. So a look at an element
  // needs at most one load besides the loads of the map object.
  static constexpr U64 sizeMask = 0xFFFF;
  static constexpr U32 detailAt = 16;
  static constexpr U32 oneMark = 0x8000;
  static constexpr std::size_t valuesAt(std::size_t capacity) noexcept {
    return roundUp(keysAt + capacity, alignof(V));
  }
  static_assert(valuesAt(limit) < oneMark);
  // A search reads 16 keys at a time: the last 16 must be within the block.
  static constexpr std::size_t bytesFor(std::size_t capacity) noexcept {
    return roundUp(
        larger(valuesAt(capacity) + capacity * sizeof(V), keysAt + roundUp(capacity, 16)),
        larger(8, alignof(V)));
  }
  static std::size_t nextRoom(std::size_t room) noexcept {
    return room < shortest ? nextShortRoom(room) : std::min(room * 2, limit);
  }

  static U8 byteOf(const K& key) noexcept { return std::bit_cast<U8>(key); }
  static K keyOf(U8 byte) noexcept { return std::bit_cast<K>(byte); }

  U32 detail() const noexcept { return static_cast<U16>(state_ >> detailAt); }
  bool isOne() const noexcept {
    // The mark is the sign bit of the low half: a sign is cheaper to test than another bit.
    static_assert(oneMark << detailAt == U32{1} << 31);
    if constexpr (mayBeOne) return static_cast<Halvo::S32>(state_) < 0;
    return false;
  }
  bool hasBlock() const noexcept { return detail() != 0 && !isOne(); }
  U8 oneByte() const noexcept { return static_cast<U8>(state_ >> detailAt); }
  V* one() const noexcept { return static_cast<V*>(static_cast<void*>(const_cast<One*>(&one_))); }

  U32 capacity() const noexcept { return *static_cast<U16*>(static_cast<void*>(block_)); }
  U8* keys() const noexcept { return block_ + keysAt; }
  V* values() const noexcept { return static_cast<V*>(static_cast<void*>(block_ + detail())); }
  void blockIs(std::size_t capacity) {
    block_ = static_cast<U8*>(TableMemory<Tag>::take(bytesFor(capacity)));
    new (block_) U16(static_cast<U16>(capacity));
    // A search also compares the keys of free slots, and ignores the result.
    std::memset(block_ + keysAt, 0, roundUp(capacity, 16));
    state_ |= U64{valuesAt(capacity)} << detailAt;
  }
  // As find(), for more keys than one step compares.
  [[gnu::noinline]] V* farFind(U8 byte) const noexcept {
    for (U32 from = 0; from < size(); from += shortest) {
      U32 const hits = bytesEqual16(keys() + from, byte);
      if (hits == 0) continue;
      U32 const index = from + static_cast<U32>(std::countr_zero(hits));
      return index < size() ? values() + index : nullptr;
    }
    return nullptr;
  }
  // Moves the elements of `from` into this table, which must be empty and without a block.
  void contentsTake(ByteTable& from) noexcept {
    if (from.isOne()) {
      relocate(from.one(), one());
    } else {
      block_ = from.block_;
    }
    from.block_ = nullptr;
    state_ |= from.state_ & lowHalf;
    from.state_ &= ~lowHalf;
  }

  union {
    U8* block_;
    One one_;
  };
};

}  // namespace Zel::impl
