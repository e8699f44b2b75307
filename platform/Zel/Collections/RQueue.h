// RQueue: a first-in, first-out queue.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "Halvo/MemoryTracker.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Halvo {

/// The header of one array block of a queue: 16 bytes. The slots of the block follow it in memory.
///
/// Invariant: the capacity is a power of two, at most 8192. Only noBlock_, which stands in for a
/// missing head, has capacity zero. The slots [firstIndex, capacity) are live; in the tail block,
/// only up to the queue's last element. Slot i holds the element with the sequence number
/// sequence() + i.
///
/// First index and capacity have 14 bits each and share a word. The index is in the lowest bits: to
/// take an element, the queue adds one to this word.
class VELMOR_PLATFORM_API RQueueBlock {
 public:
  static constexpr U32 smallest = 4;    ///< slots of a queue's first block
  static constexpr U32 largest = 8192;  ///< slots; 14 bits also hold the index behind the last

  /// Stops the process unless `capacity` is a power of two.
  RQueueBlock(U32 capacity, U32 sequence, bool fromSystem) noexcept;
  /// Stops the process if the block is still linked.
  constexpr ~RQueueBlock() {
    if (linked()) destroyedLinked();
  }
  RQueueBlock(const RQueueBlock&) = delete;
  RQueueBlock& operator=(const RQueueBlock&) = delete;

  U32 firstIndex() const noexcept { return firstIndexOf(state_); }
  U32 capacity() const noexcept { return state_ >> capacityAt & indexMask; }
  /// The sequence number of slot 0.
  U32 sequence() const noexcept { return sequence_; }
  bool fromSystem() const noexcept { return (state_ & fromSystemBit) != 0; }
  constexpr bool linked() const noexcept { return next_ != nullptr; }
  /// The next block. Behind the tail comes the head.
  const RQueueBlock* next() const noexcept { return next_; }

 private:
  friend class RQueueBase;
  static constexpr U32 indexBits = 14;
  static constexpr U32 indexMask = (U32{1} << indexBits) - 1;
  static constexpr U32 capacityAt = indexBits;
  static constexpr U32 fromSystemBit = U32{1} << 28;  // the memory is the system's, not a slab's
  static_assert(largest <= indexMask);

  // A block without slots.
  constexpr RQueueBlock() noexcept = default;
  void destroyedLinked() const noexcept;
  static constexpr U32 firstIndexOf(U32 state) noexcept { return state & indexMask; }

  RQueueBlock* next_ = nullptr;
  U32 state_ = 0;  // first index, capacity, fromSystemBit
  U32 sequence_ = 0;
};
static_assert(sizeof(RQueueBlock) == 16);

/// Walks a queue from front to back: the part that does not depend on the type of the elements.
///
/// It visits the elements that were in the queue when it was made. It stays valid as long as its
/// current element, and those still to come, stay in the queue. Elements that are added later do it
/// no harm; it does not visit them.
class RQueueBaseConstIter {
 public:
  /// Both must be iterators of one queue.
  friend bool operator==(const RQueueBaseConstIter& a, const RQueueBaseConstIter& b) noexcept {
    // Comparing the slots would be enough. But the block changes only at the end of a run: with
    // this order, compilers test for the end there, not at each element.
    return a.block_ == b.block_ && a.slot_ == b.slot_;
  }

 protected:
  RQueueBaseConstIter() noexcept = default;
  // `slotSize` is the same in all calls, and a constant of the caller.
  RQueueBaseConstIter(const RQueueBlock* head, U32 count, U32 slotSize) noexcept : behind_(count) {
    if (count != 0) runBegin(head, head->firstIndex(), slotSize);
  }
  U32 left(U32 slotSize) const noexcept {
    return behind_ + static_cast<U32>(end_ - slot_) / slotSize;
  }
  void step(U32 slotSize) noexcept {
    slot_ += slotSize;
    if (slot_ == end_) [[unlikely]] {
      if (behind_ == 0) {
        block_ = nullptr;
        slot_ = end_ = nullptr;
      } else {
        runBegin(block_->next(), 0, slotSize);
      }
    }
  }
  // Null at the end.
  const void* slot() const noexcept { return slot_; }

 private:
  void runBegin(const RQueueBlock* block, U32 index, U32 slotSize) noexcept {
    U32 const run = std::min(block->capacity() - index, behind_);
    block_ = block;
    slot_ = static_cast<const char*>(static_cast<const void*>(block + 1)) +
            std::size_t{index} * slotSize;
    end_ = slot_ + std::size_t{run} * slotSize;
    behind_ -= run;
  }

  const char* slot_ = nullptr;
  const char* end_ = nullptr;  // behind the last slot of this block that it will visit
  const RQueueBlock* block_ = nullptr;
  U32 behind_ = 0;  // elements that it will visit in the following blocks
};

/// The part of a queue that does not depend on the type of the elements: the ring of blocks.
///
/// Invariant: head_ and tail_ are blocks of a ring in which the head follows the tail. If there is
/// no block, tail_ is null and head_ is noBlock_, a block without slots that all queues share and
/// none changes. In a block that is not the tail all slots have been filled; in the tail at least
/// one has. Sequence numbers run on from block to block, modulo 2^32.
///
/// Adding reads only the queue object; taking reads the head's state too. Each takes one
/// comparison, the element, and a new index.
class VELMOR_PLATFORM_API RQueueBase {
 public:
  RQueueBase(const RQueueBase&) = delete;
  RQueueBase& operator=(const RQueueBase&) = delete;

  U32 size() const noexcept {
    return blockless() ? 0 : nextSequence() - (head_->sequence_ + head_->firstIndex());
  }
  bool empty() const noexcept {
    return blockless() || (head_ == tail_ && head_->firstIndex() == backIndex_);
  }
  /// The head block, for memory accounting; null when there is no block.
  const RQueueBlock* firstBlock() const noexcept { return blockless() ? nullptr : head_; }

  /// Counts the blocks of all queues, with the bytes of their headers.
  static MemoryTracker blockTracker_;

 protected:
  /// The front of a queue when isFrontAtHand() is false.
  enum class Front {
    none,    ///< no element
    inside,  ///< an element, and the head has a slot behind it
    last     ///< the element in the last slot of the head: the block goes with it
  };

  constexpr explicit RQueueBase(U32 firstSequence) noexcept
      : backIndex_(firstSequence), backCapacity_(firstSequence) {}
  ~RQueueBase() = default;

  bool blockless() const noexcept { return tail_ == nullptr; }
  /// The sequence number of the next element to be added.
  U32 nextSequence() const noexcept {
    return blockless() ? backIndex_ : tail_->sequence_ + backIndex_;
  }
  /// The capacity of the next block, which follows when the tail is full: the smallest power of two
  /// greater than the number of elements, from `smallest` to `largest`.
  U32 nextCapacity() const noexcept;
  /// Makes an unlinked block, and counts it and its slots, the slots in `slots`. Stops the process
  /// when there is no memory.
  RQueueBlock* blockNew(U32 capacity, std::size_t slotSize, MemoryTracker& slots) const noexcept;
  static void blockDelete(RQueueBlock* block, std::size_t slotSize, MemoryTracker& slots) noexcept;
  /// Links the block behind the tail. It becomes the tail, with no slot filled yet.
  void blockPush(RQueueBlock* block) noexcept;
  /// Unlinks the head block. Stops the process when there is no block.
  RQueueBlock* blockPop() noexcept;
  /// Tells what is at the front when the head's state has reached frontStop_. If that is
  /// Front::inside, moves frontStop_ on.
  Front frontAtStop() noexcept;

  /// Whether the front element can be taken with a look at the head alone.
  bool isFrontAtHand() const noexcept { return head_->state_ != frontStop_; }
  /// Moves the first index past the front element and returns the index of that element.
  U32 firstIndexAdvance() noexcept {
    U32 const state = head_->state_;
    head_->state_ = state + 1;
    return RQueueBlock::firstIndexOf(state);
  }
  void swap(RQueueBase& other) noexcept {
    std::swap(head_, other.head_);
    std::swap(tail_, other.tail_);
    std::swap(frontStop_, other.frontStop_);
    std::swap(backIndex_, other.backIndex_);
    std::swap(backCapacity_, other.backCapacity_);
  }

  // head_ points here while there is no block. The state of this block equals frontStop_: deq()
  // need not test first whether there is a head.
  static const RQueueBlock noBlock_;

  RQueueBlock* head_ = const_cast<RQueueBlock*>(&noBlock_);
  RQueueBlock* tail_ = nullptr;
  // The state of the head at which deq() must look closer. All elements before its first index are
  // in the head block, but none is in the last slot. So deq() can take them without a look at
  // anything else. 0 while there is no block.
  U32 frontStop_ = 0;
  // The index of the tail's first slot that was never filled, and the tail's capacity. While there
  // is no block, both are the sequence number of the next element.
  U32 backIndex_;
  U32 backCapacity_;
};

/// A queue of T. Elements are added at the back and taken from the front. They are in blocks that
/// never move.
///
/// A queue that never held an element has no memory beside its own 32 bytes. The first block has 4
/// slots. Each further block has about as many slots as the queue has elements, at most 8192. A
/// block is freed when its last slot has been taken.
///
/// `Tag` names the elements for memory accounting: it has a static `Halvo::MemoryTracker
/// memAllocationTracker_`. The tracker counts the slots of each block as one object, and their
/// bytes.
///
/// A reference to an element stays valid until the element is taken. T must be movable without
/// throwing. If copying an element throws, enq() passes the exception on, and the queue is
/// unchanged. When there is no memory for a block, the process stops.
///
/// Threads: one thread at a time. Several threads may read one queue while no thread changes it.
/// Queues of different threads share the block tracker: ThreadControl's switch must then be on.
///
///     Halvo::RQueue<Halvo::String, QE_Name> names;
///     names.enq("acl-1");
///     for (auto const& name : names) std::cout << name;
///     Halvo::String first = names.deq();
template <class T, class Tag>
class RQueue : public RQueueBase {
  static_assert(std::is_nothrow_move_constructible_v<T>);
  static_assert(alignof(T) <= 8, "slots begin 16 bytes into a block that is aligned to 8");

 public:
  using value_type = T;

  class const_iterator : public RQueueBaseConstIter {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using reference = const T&;
    using pointer = const T*;

    const_iterator() noexcept = default;
    /// The number of elements still to come, the current one included.
    U32 left() const noexcept { return RQueueBaseConstIter::left(sizeof(T)); }
    reference operator*() const noexcept { return *static_cast<pointer>(slot()); }
    pointer operator->() const noexcept { return static_cast<pointer>(slot()); }
    const_iterator& operator++() noexcept {
      step(sizeof(T));
      return *this;
    }
    const_iterator operator++(int) noexcept {
      const_iterator const before = *this;
      step(sizeof(T));
      return before;
    }

   private:
    friend RQueue;
    const_iterator(const RQueueBlock* head, U32 count) noexcept
        : RQueueBaseConstIter(head, count, sizeof(T)) {}
  };
  using iterator = const_iterator;

  constexpr RQueue() noexcept : RQueueBase(0) {}
  /// A queue whose first element gets this sequence number.
  constexpr explicit RQueue(U32 firstSequence) noexcept : RQueueBase(firstSequence) {}
  RQueue(RQueue&& other) noexcept : RQueueBase(0) { RQueueBase::swap(other); }
  RQueue& operator=(RQueue&& other) noexcept {
    RQueue taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~RQueue() { delAll(); }
  void swap(RQueue& other) noexcept { RQueueBase::swap(other); }
  friend void swap(RQueue& a, RQueue& b) noexcept { a.swap(b); }

  /// Adds an element at the back. `element` may be one of this queue.
  void enq(const T& element) { add(element); }
  void enq(T&& element) { add(std::move(element)); }

  /// Removes the element at the front and returns it; T{} when there is none.
  T deq() {
    if (isFrontAtHand()) [[likely]] {
      return take();
    }
    switch (frontAtStop()) {
      case Front::none:
        return T{};
      case Front::inside:
        return take();
      case Front::last:
        break;
    }
    return takeLast();
  }

  /// A pointer to the element at the front; null when there is none.
  const T* frontPeek() const noexcept {
    return empty() ? nullptr : slots(head_) + head_->firstIndex();
  }
  /// A pointer to the element at the back; null when there is none.
  const T* backPeek() const noexcept { return empty() ? nullptr : slots(tail_) + backIndex_ - 1; }
  /// A copy of the element at the front; T{} when there is none.
  T front() const { return copyOf(frontPeek()); }
  /// A copy of the element at the back; T{} when there is none.
  T back() const { return copyOf(backPeek()); }

  /// Removes all elements and frees the blocks.
  void delAll() noexcept {
    if (blockless()) return;
    // Empties the queue before it destroys the first element: a destructor may look at the queue.
    RQueue old(nextSequence());
    swap(old);
    while (!old.blockless()) {
      RQueueBlock* const head = old.head_;
      U32 const end = head == old.tail_ ? old.backIndex_ : head->capacity();
      std::destroy(slots(head) + head->firstIndex(), slots(head) + end);
      old.release(old.blockPop());
    }
  }

  const_iterator begin() const noexcept { return const_iterator(firstBlock(), size()); }
  const_iterator end() const noexcept { return const_iterator(); }

 private:
  static T* slots(const RQueueBlock* block) noexcept {
    return static_cast<T*>(static_cast<void*>(const_cast<RQueueBlock*>(block) + 1));
  }
  static T copyOf(const T* element) { return element == nullptr ? T{} : *element; }
  static void release(RQueueBlock* block) noexcept {
    blockDelete(block, sizeof(T), Tag::memAllocationTracker_);
  }

  // Moves the front element out of its slot.
  T take() noexcept {
    T* const slot = slots(head_) + firstIndexAdvance();
    T element(std::move(*slot));
    std::destroy_at(slot);
    if constexpr (sizeof(T) <= sizeof(void*)) {
      // Moves once more, from a local object that a register holds. The compiler then sees that the
      // slot is empty, and that its destructor has nothing to do.
      return T(std::move(element));
    }
    return element;
  }
  T takeLast() noexcept {
    T element(take());
    release(blockPop());
    return element;
  }

  template <class Arg>
  void add(Arg&& element) {
    if (backIndex_ == backCapacity_) [[unlikely]] {
      return addInNewBlock(std::forward<Arg>(element));
    }
    // Constructs first and counts afterwards: a copy that throws leaves nothing behind.
    U32 const next = backIndex_ + 1;
    new (slots(tail_) + next - 1) T(std::forward<Arg>(element));
    backIndex_ = next;
  }
  template <class Arg>
  [[gnu::noinline]] void addInNewBlock(Arg&& element) {
    RQueueBlock* const block = blockNew(nextCapacity(), sizeof(T), Tag::memAllocationTracker_);
    if constexpr (std::is_nothrow_constructible_v<T, Arg>) {
      new (slots(block)) T(std::forward<Arg>(element));
    } else {
      try {
        new (slots(block)) T(std::forward<Arg>(element));
      } catch (...) {
        release(block);
        throw;
      }
    }
    blockPush(block);
    backIndex_ = 1;
  }
};

}  // namespace Halvo
