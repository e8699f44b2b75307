#include "Zel/Collections/RQueue.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "Sobrel.h"
#include "Zel/Base/Assert.h"

namespace Halvo {

namespace {

constexpr const char* source = "platform/Halvo/RQueue";

bool isPowerOfTwo(U32 i) { return std::has_single_bit(i); }

}  // namespace

// constexpr, so that g++ does not register the destructor, which does nothing. clang needs
// no_destroy for that.
#if defined(__clang__)
[[clang::no_destroy]]
#endif
constexpr RQueueBlock RQueueBase::noBlock_;

constinit MemoryTracker RQueueBase::blockTracker_{"Halvo::RQueueBlock"};

RQueueBlock::RQueueBlock(U32 capacity, U32 sequence, bool fromSystem) noexcept
    : state_(capacity << capacityAt | (fromSystem ? fromSystemBit : 0)), sequence_(sequence) {
  Zel::assertThat(isPowerOfTwo(capacity),
                  {"isPowerOfTwo( i )", source, 0,
                   "Halvo::RQueueBlock::RQueueBlock(Halvo::U32, Halvo::U32, bool)"});
}

void RQueueBlock::destroyedLinked() const noexcept {
  Zel::assertThat(!linked(), {"!linked()", source, 0, "Halvo::RQueueBlock::~RQueueBlock()"});
}

U32 RQueueBase::nextCapacity() const noexcept {
  U32 const count = size();
  if (count >= RQueueBlock::largest) return RQueueBlock::largest;
  // Copies: with references to these constants of the header, each library would export them.
  return std::clamp(std::bit_ceil(count + 1), U32{RQueueBlock::smallest},
                    U32{RQueueBlock::largest});
}

RQueueBlock* RQueueBase::blockNew(U32 capacity, std::size_t slotSize,
                                  MemoryTracker& slots) const noexcept {
  std::size_t const slotBytes = capacity * slotSize;
  Sobrel::SlabOrSystem const got = Sobrel::slabAllocOrSystem(sizeof(RQueueBlock) + slotBytes);
  if (got.memory == nullptr) std::abort();
  blockTracker_.allocated(sizeof(RQueueBlock));
  slots.allocated(slotBytes);
  return new (got.memory) RQueueBlock(capacity, nextSequence(), got.fromSystem);
}

void RQueueBase::blockDelete(RQueueBlock* block, std::size_t slotSize,
                             MemoryTracker& slots) noexcept {
  std::size_t const slotBytes = block->capacity() * slotSize;
  bool const fromSystem = block->fromSystem();
  block->~RQueueBlock();
  blockTracker_.released(sizeof(RQueueBlock));
  slots.released(slotBytes);
  Sobrel::slabFreeOrSystem({block, fromSystem}, sizeof(RQueueBlock) + slotBytes);
}

void RQueueBase::blockPush(RQueueBlock* block) noexcept {
  if (blockless()) {
    head_ = block;
    frontStop_ = head_->state_;
  } else {
    tail_->next_ = block;
  }
  block->next_ = head_;
  tail_ = block;
  backIndex_ = 0;
  backCapacity_ = block->capacity();
}

RQueueBlock* RQueueBase::blockPop() noexcept {
  Zel::assertThat(tail_ != nullptr, {"tail_ != nullptr", source, 0,
                                     "Halvo::RQueueBlock* Halvo::RQueueBase::blockPop()"});
  RQueueBlock* const head = head_;
  if (head == tail_) {
    backIndex_ = backCapacity_ = nextSequence();
    head_ = const_cast<RQueueBlock*>(&noBlock_);
    tail_ = nullptr;
  } else {
    head_ = tail_->next_ = head->next_;
  }
  frontStop_ = head_->state_;
  head->next_ = nullptr;
  return head;
}

RQueueBase::Front RQueueBase::frontAtStop() noexcept {
  if (empty()) return Front::none;
  U32 const lastSlot = head_->capacity() - 1;
  if (head_->firstIndex() == lastSlot) return Front::last;
  // Only the tail has slots that were never filled.
  U32 const stop = head_ == tail_ ? std::min(backIndex_, lastSlot) : lastSlot;
  frontStop_ = (head_->state_ & ~RQueueBlock::indexMask) | stop;
  return Front::inside;
}

}  // namespace Halvo
