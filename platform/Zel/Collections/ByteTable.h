// What HashMap2018 keeps its elements in where keys are bytes.
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

/// Elements with keys of a byte, side by side in no order; see HashMap2018 for what it promises of
/// them. A single one whose value is no larger than a pointer stands in the map itself, unless a
/// tag's tracker is to count it. Otherwise there is one block of slab memory: its capacity, the
/// keys, the values. A search compares 16 keys
/// at once.
///
/// Elements have indices from 0 on without a gap.
///
/// Threads: as the map.
template <class K, class V, class Tag>
class ByteTable : public TableState {
  static constexpr U32 shortest = 16;  // keys that one step compares
  static constexpr bool mayBeOne = std::is_void_v<Tag> && sizeof(V) <= sizeof(void*);
  struct NoValue {};
  using One = std::conditional_t<mayBeOne, V, NoValue>;

 public:
  static constexpr U32 none = 0xFFFFFFFF;
  static constexpr std::size_t limit = 256;  ///< there are no more keys

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
  /// How many elements there is room for without a larger block.
  std::size_t room() const noexcept {
    if (hasBlock()) return capacity();
    return mayBeOne ? 1 : 0;
  }

  V* find(const K& key) const noexcept {
    U8 const byte = byteOf(key);
    // Branches, not selections: who asks branches on the answer too, and need not wait for it.
    if (isOne()) {
      if (byte != oneByte()) [[unlikely]] {
        return nullptr;
      }
      return one();
    }
    // Of an empty table, more than any index.
    U32 const last = size() - 1;
    if (last >= shortest) [[unlikely]] {
      return size() == 0 ? nullptr : farFind(byte);
    }
    // Behind the elements there may be old keys, and behind the block's room anything.
    U32 const hits = bytesEqual16(keys(), byte) | 1U << shortest;
    auto const index = static_cast<std::size_t>(std::countr_zero(hits));
    if (index > last) [[unlikely]] {
      return nullptr;
    }
    return values() + index;
  }
  /// As find, for few keys one by one: the last of them may have been written just now, and a wide
  /// load would wait for that store.
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
  /// The first element with this index or a higher one.
  U32 occupiedFrom(U32 index) const noexcept { return index < size() ? index : none; }
  /// The same once the element with this index has been removed.
  U32 occupiedAfterRemovalAt(U32 index) const noexcept { return occupiedFrom(index); }
  K keyAt(U32 index) const noexcept { return keyOf(isOne() ? oneByte() : keys()[index]); }
  V* valueAt(U32 index) const noexcept { return isOne() ? one() : values() + index; }

  /// Adds an element whose key is not there; throws std::bad_alloc before anything has changed.
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
  /// Removes the element and gives its value. When the value goes, and its destructor looks at the
  /// map, the element is gone.
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
  /// Moves all elements to a block with room for `count`, the limit at most.
  [[gnu::noinline]] void grow(std::size_t count) {
    ByteTable larger;
    larger.blockIs(count);
    for (U32 i = 0; i < size(); ++i) {
      // Byte by byte: a wide load of keys just written one at a time would wait for all the stores.
      larger.keys()[i] = byteOf(keyAt(i));
      relocate(valueAt(i), larger.values() + i);
    }
    larger.state_ += size();
    // Nothing is left to destroy.
    if (isOne()) {
      block_ = nullptr;
      state_ &= ~lowHalf;
    } else {
      state_ &= ~sizeMask;
    }
    contentsSwap(larger);
  }
  /// Into an empty table. Throws what copying a value does.
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

  /// Goes over the elements of a table that does not change. At the end until it stands somewhere.
  class Cursor {
   public:
    /// Stands at the element with this index from then on; gives its key.
    K standAt(const ByteTable& table, U32 index) noexcept {
      // The key of a single element stands in no memory of its own, and is not read again.
      keys_ = table.isOne() ? nullptr : table.keys();
      values_ = table.valueAt(0);
      index_ = index;
      count_ = table.size();
      return table.keyAt(index);
    }
    /// To the next element; false when there is none.
    bool advance(const ByteTable& /*table*/) noexcept {
      if (++index_ >= count_) return false;
      if (index_ == none) __builtin_unreachable();  // spares a loop its comparison with the end
      return true;
    }
    bool isAtEnd() const noexcept { return index_ == none; }
    bool isAt(const Cursor& other) const noexcept { return index_ == other.index_; }
    U32 index() const noexcept { return static_cast<U32>(index_); }
    /// Once it has advanced.
    K key() const noexcept { return keyOf(keys_[index_]); }
    V& value() const noexcept { return values_[index_]; }
    /// Whether the table, which may have changed, has the element of this key in this place.
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
  // The low half of the state: the offset of the values or, of a single element, the mark and the
  // key; then the size. A look at an element waits for one load after the map's own at most.
  static constexpr U64 sizeMask = 0xFFFF;
  static constexpr U32 detailAt = 16;
  static constexpr U32 oneMark = 0x8000;
  static constexpr std::size_t valuesAt(std::size_t capacity) noexcept {
    return roundUp(keysAt + capacity, alignof(V));
  }
  static_assert(valuesAt(limit) < oneMark);
  // Keys are read 16 at a time: the last ones must not be nearer than that to the end.
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
    // The low half's sign, which takes less to ask for than a bit.
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
    // The keys of free slots are compared too, though nobody looks at what comes of it.
    std::memset(block_ + keysAt, 0, roundUp(capacity, 16));
    state_ |= U64{valuesAt(capacity)} << detailAt;
  }
  // As find, for more keys than one step compares.
  [[gnu::noinline]] V* farFind(U8 byte) const noexcept {
    for (U32 from = 0; from < size(); from += shortest) {
      U32 const hits = bytesEqual16(keys() + from, byte);
      if (hits == 0) continue;
      U32 const index = from + static_cast<U32>(std::countr_zero(hits));
      return index < size() ? values() + index : nullptr;
    }
    return nullptr;
  }
  // Into an empty table without a block.
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
