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
#include "Halvo/Types.h"
#include "VelmorPlatformExport.h"

namespace Halvo {

/// The head of one array block of a queue; its slots follow it in memory.
///
/// Invariant: the capacity is a power of two, at most 8192; slots [firstIndex, capacity) are live,
/// in the tail block as far as the queue's last element. Slot i holds the element with the sequence
/// number sequence() + i.
class VELMOR_PLATFORM_API RQueueBlock {
 public:
  static constexpr U32 smallest = 4;    ///< slots of a queue's first block
  static constexpr U32 largest = 8192;  ///< slots; 14 bits hold the index behind the last one too

  /// Stops the process unless `capacity` is a power of two.
  RQueueBlock(U32 capacity, U32 sequence, bool fromSystem) noexcept;
  /// Stops the process while the block is linked.
  ~RQueueBlock();
  RQueueBlock(const RQueueBlock&) = delete;
  RQueueBlock& operator=(const RQueueBlock&) = delete;

  U32 firstIndex() const noexcept { return bits_ & indexMask; }
  U32 capacity() const noexcept { return bits_ >> indexBits & indexMask; }
  /// The sequence number of slot 0.
  U32 sequence() const noexcept { return sequence_; }
  bool fromSystem() const noexcept { return bits_ >> (2 * indexBits) != 0; }
  bool linked() const noexcept { return next_ != nullptr; }
  /// The block behind this one; behind the tail stands the head.
  const RQueueBlock* next() const noexcept { return next_; }

 private:
  friend class RQueueBase;
  static constexpr U32 indexBits = 14;
  static constexpr U32 indexMask = (1U << indexBits) - 1;

  RQueueBlock* next_ = nullptr;
  U32 bits_;  // from the low end: first index, capacity, whether the memory is the system's
  U32 sequence_;
};
static_assert(sizeof(RQueueBlock) == 16);

/// Walks a queue from front to back, knowing nothing of the elements.
///
/// It meets the elements that were in the queue when it was made. It stays valid as long as the
/// element it stands at, and those that are still to come, stay in the queue; what is added later
/// does not harm it, and is not met.
class RQueueBaseConstIter {
 public:
  /// Elements still to come, the one it stands at included.
  U32 left() const noexcept { return behind_ + (end_ - index_); }
  /// Both must be iterators of one queue.
  friend bool operator==(const RQueueBaseConstIter& a, const RQueueBaseConstIter& b) noexcept {
    return a.block_ == b.block_ && a.index_ == b.index_;
  }

 protected:
  RQueueBaseConstIter() noexcept = default;
  RQueueBaseConstIter(const RQueueBlock* head, U32 count) noexcept : behind_(count) {
    if (count != 0) runBegin(head, head->firstIndex());
  }
  void step() noexcept {
    if (++index_ == end_) [[unlikely]] {
      if (behind_ == 0) {
        block_ = nullptr;
        index_ = end_ = 0;
      } else {
        runBegin(block_->next(), 0);
      }
    }
  }

  // Null at the end.
  const RQueueBlock* block_ = nullptr;
  U32 index_ = 0;

 private:
  void runBegin(const RQueueBlock* block, U32 index) noexcept {
    U32 const run = std::min(block->capacity() - index, behind_);
    block_ = block;
    index_ = index;
    end_ = index + run;
    behind_ -= run;
  }

  U32 end_ = 0;     // the index behind the last element of this block that is to be met
  U32 behind_ = 0;  // elements in the blocks that follow
};

/// The part of a queue that knows nothing of its elements: the ring of blocks.
///
/// Invariant: tail_ is null or points into a ring of linked blocks, in which the tail is followed
/// by the head. All slots of a block that is not the tail have been filled, and the tail has at
/// least one filled slot. Sequence numbers run on from block to block, modulo 2^32.
class VELMOR_PLATFORM_API RQueueBase {
 public:
  RQueueBase(const RQueueBase&) = delete;
  RQueueBase& operator=(const RQueueBase&) = delete;

  U32 size() const noexcept {
    if (tail_ == nullptr) return 0;
    const RQueueBlock* const head = tail_->next_;
    return nextSequence_ - (head->sequence_ + head->firstIndex());
  }
  bool empty() const noexcept { return size() == 0; }
  /// The head block, null while there is none: for those who account for memory.
  const RQueueBlock* firstBlock() const noexcept {
    return tail_ == nullptr ? nullptr : tail_->next_;
  }

  /// Counts the blocks of all queues, with the bytes of their heads.
  static MemoryTracker blockTracker_;

 protected:
  constexpr explicit RQueueBase(U32 firstSequence) noexcept : nextSequence_(firstSequence) {}
  ~RQueueBase() = default;

  /// The capacity of the block that follows when the tail is full: the smallest power of two
  /// greater than the number of elements, within the limits.
  U32 nextCapacity() const noexcept;
  /// An unlinked block; counts it, and its slots under `slots`. Stops the process when there is no
  /// memory.
  RQueueBlock* blockNew(U32 capacity, std::size_t slotSize, MemoryTracker& slots) const noexcept;
  static void blockDelete(RQueueBlock* block, std::size_t slotSize, MemoryTracker& slots) noexcept;
  /// Links the block behind the tail; it is the new tail.
  void blockPush(RQueueBlock* block) noexcept;
  /// Unlinks the head block. Stops the process when there is no block.
  RQueueBlock* blockPop() noexcept;

  // Whether the tail has a free slot behind its last element.
  bool tailHasRoom() const noexcept {
    return tail_ != nullptr && nextSequence_ - tail_->sequence_ < tail_->capacity();
  }
  static void firstIndexAdvance(RQueueBlock& block) noexcept { ++block.bits_; }
  void swap(RQueueBase& other) noexcept {
    std::swap(tail_, other.tail_);
    std::swap(nextSequence_, other.nextSequence_);
    std::swap(frontLeft_, other.frontLeft_);
  }

  RQueueBlock* tail_ = nullptr;
  U32 nextSequence_;  // of the element that will be added next
  // So many elements at the front, or more, are in the head block and not in its last slot: they
  // can be taken without a look at anything else.
  U32 frontLeft_ = 0;
};

/// A queue of T: added at the back, taken from the front, in blocks that never move.
///
/// A queue that never held anything has no memory but its 16 bytes. Its first block has 4 slots;
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
    reference operator*() const noexcept { return slots(block_)[index_]; }
    pointer operator->() const noexcept { return slots(block_) + index_; }
    const_iterator& operator++() noexcept {
      step();
      return *this;
    }
    const_iterator operator++(int) noexcept {
      const_iterator const before = *this;
      step();
      return before;
    }

   private:
    friend RQueue;
    using RQueueBaseConstIter::RQueueBaseConstIter;
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
    if (frontLeft_ == 0) [[unlikely]] {
      return deqAtBorder();
    }
    --frontLeft_;
    RQueueBlock& head = *const_cast<RQueueBlock*>(tail_->next());
    return take(head, head.firstIndex());
  }

  /// The element at the front, in place; null when there is none.
  const T* frontPeek() const noexcept {
    return empty() ? nullptr : slots(tail_->next()) + tail_->next()->firstIndex();
  }
  /// The element at the back, in place; null when there is none.
  const T* backPeek() const noexcept {
    return empty() ? nullptr : slots(tail_) + (nextSequence_ - 1 - tail_->sequence());
  }
  /// A copy of the element at the front; T{} when there is none.
  T front() const { return copyOf(frontPeek()); }
  /// A copy of the element at the back; T{} when there is none.
  T back() const { return copyOf(backPeek()); }

  /// Removes all and frees the blocks.
  void delAll() noexcept {
    if (tail_ == nullptr) return;
    // The queue is empty before the first element goes: a destructor may look at it.
    RQueue old(nextSequence_);
    swap(old);
    while (old.tail_ != nullptr) {
      const RQueueBlock* const head = old.tail_->next();
      U32 const end = head == old.tail_ ? old.nextSequence_ - head->sequence() : head->capacity();
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

  // The element in this slot, the head's first live one.
  static T take(RQueueBlock& head, U32 index) noexcept {
    T* const slot = slots(&head) + index;
    T element(std::move(*slot));
    std::destroy_at(slot);
    firstIndexAdvance(head);
    return element;
  }
  // deq, where there may be no element, or the head may go.
  [[gnu::noinline]] T deqAtBorder() noexcept(std::is_nothrow_default_constructible_v<T>) {
    if (tail_ == nullptr) return T{};
    RQueueBlock& head = *const_cast<RQueueBlock*>(tail_->next());
    U32 const index = head.firstIndex();
    // Only the tail can be empty.
    U32 const end = &head == tail_ ? nextSequence_ - head.sequence() : head.capacity();
    if (index == end) return T{};
    T element(take(head, index));
    if (index + 1 == head.capacity()) {
      release(blockPop());
    } else {
      frontLeft_ = std::min(end, head.capacity() - 1) - (index + 1);
    }
    return element;
  }

  template <class Arg>
  void add(Arg&& element) {
    if (!tailHasRoom()) [[unlikely]] {
      return addInNewBlock(std::forward<Arg>(element));
    }
    // Constructed first, counted after: a copy that throws leaves nothing behind.
    new (slots(tail_) + (nextSequence_ - tail_->sequence())) T(std::forward<Arg>(element));
    ++nextSequence_;
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
    ++nextSequence_;
  }
};

}  // namespace Halvo
