// RQueue: the first-in, first-out queue of records.
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

/// The header of one array block of a queue: 16 bytes. The block's slots follow it in memory.
///
/// Invariant: the capacity is a power of two, at most 8192. It is zero in the one block that stands
/// in for a missing head. Slots [firstIndex, capacity) are live; in the tail block, those up to the
/// queue's last element. Slot i holds the element with the sequence number sequence() + i.
///
/// First index and capacity have 14 bits each and share a word, the index in its lowest bits:
/// taking an element reads this word and writes it back, one higher.
class VELMOR_PLATFORM_API RQueueBlock {
 public:
  static constexpr U32 smallest = 4;    ///< slots of a queue's first block
  static constexpr U32 largest = 8192;  ///< slots; 14 bits hold the index behind the last one too

  /// Stops the process unless `capacity` is a power of two.
  RQueueBlock(U32 capacity, U32 sequence, bool fromSystem) noexcept;
  /// Stops the process while the block is linked.
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
  /// The block behind this one; behind the tail stands the head.
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

/// Walks a queue from front to back, knowing nothing of the elements.
///
/// It meets the elements that were in the queue when it was made. It stays valid as long as the
/// element it stands at, and those that are still to come, stay in the queue; what is added later
/// does not harm it, and is not met.
class RQueueBaseConstIter {
 public:
  /// Both must be iterators of one queue.
  friend bool operator==(const RQueueBaseConstIter& a, const RQueueBaseConstIter& b) noexcept {
    // The slots alone would tell, but the block changes at the end of a run only: a compiler then
    // looks for the end there, and not at each element.
    return a.block_ == b.block_ && a.slot_ == b.slot_;
  }

 protected:
  RQueueBaseConstIter() noexcept = default;
  // `slotSize` is the same wherever it is asked for: a constant to the caller.
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
  const char* end_ = nullptr;  // behind the last slot of this block that is to be met
  const RQueueBlock* block_ = nullptr;
  U32 behind_ = 0;  // elements in the blocks that follow
};

/// The part of a queue that knows nothing of its elements: the ring of blocks.
///
/// Invariant: head_ and tail_ are blocks of a ring in which the head follows the tail, or there is
/// no block, tail_ is null, and head_ is a block without slots that all queues share and none
/// writes to. All slots of a block that is not the tail have been filled, and the tail has at least
/// one filled slot. Sequence numbers run on from block to block, modulo 2^32.
///
/// Adding looks at the queue alone, and taking at the head's state: each is a comparison, the
/// element, and a new index.
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
  /// The head block, null while there is none: for those who account for memory.
  const RQueueBlock* firstBlock() const noexcept { return blockless() ? nullptr : head_; }

  /// Counts the blocks of all queues, with the bytes of their heads.
  static MemoryTracker blockTracker_;

 protected:
  /// What a queue that cannot take its front element at once has there.
  enum class Front {
    none,    ///< no element
    inside,  ///< an element behind which the head has another slot
    last     ///< the element in the head's last slot: the block goes with it
  };

  constexpr explicit RQueueBase(U32 firstSequence) noexcept
      : backIndex_(firstSequence), backCapacity_(firstSequence) {}
  ~RQueueBase() = default;

  bool blockless() const noexcept { return tail_ == nullptr; }
  /// The sequence number of the element that will be added next.
  U32 nextSequence() const noexcept {
    return blockless() ? backIndex_ : tail_->sequence_ + backIndex_;
  }
  /// The capacity of the block that follows when the tail is full: the smallest power of two
  /// greater than the number of elements, within the limits.
  U32 nextCapacity() const noexcept;
  /// An unlinked block; counts it, and its slots under `slots`. Stops the process when there is no
  /// memory.
  RQueueBlock* blockNew(U32 capacity, std::size_t slotSize, MemoryTracker& slots) const noexcept;
  static void blockDelete(RQueueBlock* block, std::size_t slotSize, MemoryTracker& slots) noexcept;
  /// Links the block behind the tail; it is the new tail, with no filled slot yet.
  void blockPush(RQueueBlock* block) noexcept;
  /// Unlinks the head block. Stops the process when there is no block.
  RQueueBlock* blockPop() noexcept;
  /// Looks what is at the front once the head's state has come to frontStop_, and moves that on.
  Front frontAtStop() noexcept;

  /// Whether the front element can be taken without a look at anything but the head.
  bool isFrontAtHand() const noexcept { return head_->state_ != frontStop_; }
  /// Moves the first index behind the front element; gives that element's index.
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

  // What head_ is while there is no block: taking asks for its state alone, which is frontStop_,
  // and need not ask first whether there is a head.
  static const RQueueBlock noBlock_;

  RQueueBlock* head_ = const_cast<RQueueBlock*>(&noBlock_);
  RQueueBlock* tail_ = nullptr;
  // A state of the head, with the same capacity. The elements before its first index are in the
  // head block and none of them in its last slot: they can be taken without a look at anything
  // else. 0 while there is no block.
  U32 frontStop_ = 0;
  // The tail's slot behind the last element, and the tail's capacity; while there is no block, both
  // are the sequence number of the next element.
  U32 backIndex_;
  U32 backCapacity_;
};

/// A queue of T: added at the back, taken from the front, in blocks that never move.
///
/// A queue that never held anything has no memory but its 32 bytes. Its first block has 4 slots;
/// each further one has room for about as many elements as there are, up to 8192. A block is given
/// back when the last of its slots has been taken.
///
/// `Tag` names the queue's elements for memory accounting: it has a static
/// `Halvo::MemoryTracker memAllocationTracker_`, which counts the runs of slots and their bytes.
///
/// References stay valid until their element is taken. T must move without throwing; enq throws
/// what copying the element does, and leaves the queue as it was. The process stops when there is
/// no memory.
///
/// Threads: one at a time; any number may read a queue that nobody changes. Queues of distinct
/// threads share the block tracker: ThreadControl's switch must be on then.
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
    /// Elements still to come, the one it stands at included.
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

  /// Adds an element at the back. It may be a reference to one in this queue.
  void enq(const T& element) { add(element); }
  void enq(T&& element) { add(std::move(element)); }

  /// Takes the element at the front; T{} when there is none.
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

  /// The element at the front, in place; null when there is none.
  const T* frontPeek() const noexcept {
    return empty() ? nullptr : slots(head_) + head_->firstIndex();
  }
  /// The element at the back, in place; null when there is none.
  const T* backPeek() const noexcept { return empty() ? nullptr : slots(tail_) + backIndex_ - 1; }
  /// A copy of the element at the front; T{} when there is none.
  T front() const { return copyOf(frontPeek()); }
  /// A copy of the element at the back; T{} when there is none.
  T back() const { return copyOf(backPeek()); }

  /// Removes all and frees the blocks.
  void delAll() noexcept {
    if (blockless()) return;
    // The queue is empty before the first element goes: a destructor may look at it.
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

  // The element at the front.
  T take() noexcept {
    T* const slot = slots(head_) + firstIndexAdvance();
    T element(std::move(*slot));
    std::destroy_at(slot);
    if constexpr (sizeof(T) <= sizeof(void*)) {
      // Moved on from a local object, which a register holds: the compiler sees then that the slot
      // has been left empty, and nothing remains to destroy there.
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
    // Constructed first, counted after: a copy that throws leaves nothing behind.
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
