#include "Halvo/RQueue.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "Sobrel.h"
#include "Zel/Assert.h"

namespace Halvo {

namespace {

constexpr const char* source = "platform/Halvo/RQueue";

bool isPowerOfTwo(U32 i) { return std::has_single_bit(i); }

}  // namespace

constinit MemoryTracker RQueueBase::blockTracker_{"Halvo::RQueueBlock"};

RQueueBlock::RQueueBlock(U32 capacity, U32 sequence, bool fromSystem) noexcept
    : bits_(static_cast<U32>(fromSystem) << (2 * indexBits) | (capacity & indexMask) << indexBits),
      sequence_(sequence) {
  Zel::assertThat(isPowerOfTwo(capacity),
                  {"isPowerOfTwo( i )", source, 0,
                   "Halvo::RQueueBlock::RQueueBlock(Halvo::U32, Halvo::U32, bool)"});
}

RQueueBlock::~RQueueBlock() {
  Zel::assertThat(!linked(), {"!linked()", source, 0, "Halvo::RQueueBlock::~RQueueBlock()"});
}

U32 RQueueBase::nextCapacity() const noexcept {
  U32 const count = size();
  if (count >= RQueueBlock::largest) return RQueueBlock::largest;
  // Copies: a reference to the header's constants would make each library export them.
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
  return new (got.memory) RQueueBlock(capacity, nextSequence_, got.fromSystem);
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
  if (tail_ == nullptr) {
    block->next_ = block;
  } else {
    block->next_ = tail_->next_;
    tail_->next_ = block;
  }
  tail_ = block;
}

RQueueBlock* RQueueBase::blockPop() noexcept {
  Zel::assertThat(tail_ != nullptr, {"tail_ != nullptr", source, 0,
                                     "Halvo::RQueueBlock* Halvo::RQueueBase::blockPop()"});
  RQueueBlock* const head = tail_->next_;
  if (head == tail_) {
    tail_ = nullptr;
  } else {
    tail_->next_ = head->next_;
  }
  head->next_ = nullptr;
  return head;
}

}  // namespace Halvo
