// Compact tables with keys that come from outside.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace tcamshow {

/// A table of small items, which are never removed. It holds an array of slots, each of the size of
/// an item. A filled table has between 1.3 and 2.7 slots for each item.
///
/// An Item has `isEmpty()`, which is true only for Item(); `hash()`, a keyedHash() of its key; and
/// `hasKeyOf(item)`.
template <class Item>
class KeyedTable {
 public:
  std::size_t size() const noexcept { return size_; }

  /// The item with the key of `item`, or null. The pointer is valid until the next insert().
  Item* find(const Item& item) noexcept {
    if (capacity_ == 0) return nullptr;
    Item* const slot = slotOf(item, slots_.get(), capacity_);
    return slot->isEmpty() ? nullptr : slot;
  }
  /// Calls `use` for each item that a search for `item` passes. All items with the same hash are
  /// among them.
  template <class Use>
  void eachOnPath(const Item& item, const Use& use) const {
    if (capacity_ == 0) return;
    for (std::size_t at = placeOf(item, capacity_); !slots_[at].isEmpty();
         at = (at + 1) & (capacity_ - 1)) {
      use(slots_[at]);
    }
  }

  /// Inserts `item` if there is no item with its key. Returns the item with that key, and whether
  /// it is new. The pointer is valid until the next insert(). If memory runs out (std::bad_alloc),
  /// nothing has changed.
  std::pair<Item*, bool> insert(const Item& item) {
    if (size_ >= capacity_ / 4 * 3) grow();
    Item* const slot = slotOf(item, slots_.get(), capacity_);
    bool const isNew = slot->isEmpty();
    if (isNew) {
      *slot = item;
      ++size_;
    }
    return {slot, isNew};
  }

 private:
  static std::size_t placeOf(const Item& item, std::size_t capacity) noexcept {
    return static_cast<std::size_t>(item.hash()) & (capacity - 1);
  }
  static Item* slotOf(const Item& item, Item* slots, std::size_t capacity) noexcept {
    std::size_t at = placeOf(item, capacity);
    while (!slots[at].isEmpty() && !slots[at].hasKeyOf(item)) at = (at + 1) & (capacity - 1);
    return slots + at;
  }

  void grow() {
    std::size_t const capacity = capacity_ == 0 ? 8 : 2 * capacity_;
    std::unique_ptr<Item[]> slots(new Item[capacity]());
    for (std::size_t i = 0; i < capacity_; ++i) {
      if (!slots_[i].isEmpty()) *slotOf(slots_[i], slots.get(), capacity) = slots_[i];
    }
    slots_ = std::move(slots);
    capacity_ = capacity;
  }

  std::unique_ptr<Item[]> slots_;
  std::size_t capacity_ = 0;  // 0, or a power of two
  std::size_t size_ = 0;
};

}  // namespace tcamshow
