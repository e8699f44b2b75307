#include "Zel/Collections/RQueue.h"

#include <gtest/gtest.h>

#include <csignal>
#include <deque>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"

namespace {

using Halvo::RQueue;
using Halvo::RQueueBase;
using Halvo::RQueueBlock;
using Halvo::String;
using Halvo::U32;

struct QE_Test {
  static Halvo::MemoryTracker memAllocationTracker_;
};
constinit Halvo::MemoryTracker QE_Test::memAllocationTracker_{"RQueueTest::QE_Test"};

template <class T>
using Queue = RQueue<T, QE_Test>;

struct Record : Halvo::Node {
  explicit Record(int n) : number(n) {}
  int number;
};

std::vector<U32> capacitiesOf(const RQueueBase& queue) {
  std::vector<U32> capacities;
  const RQueueBlock* block = queue.firstBlock();
  if (block == nullptr) return capacities;
  do {
    capacities.push_back(block->capacity());
    block = block->next();
  } while (block != queue.firstBlock());
  return capacities;
}

// The destructor checks that no block is left.
class RQueueTest : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(RQueueBase::blockTracker_.liveObjects(), 0U);
    EXPECT_EQ(RQueueBase::blockTracker_.liveBytes(), 0U);
    EXPECT_EQ(QE_Test::memAllocationTracker_.liveObjects(), 0U);
    EXPECT_EQ(QE_Test::memAllocationTracker_.liveBytes(), 0U);
  }
};

TEST_F(RQueueTest, EmptyQueueGivesDefaultsAndHasNoBlock) {
  Queue<String> strings;
  Queue<Halvo::Ptr<Record>> records;
  EXPECT_EQ(sizeof strings, 32U);
  EXPECT_EQ(strings.deq(), "");
  EXPECT_EQ(strings.front(), "");
  EXPECT_EQ(strings.back(), "");
  EXPECT_EQ(strings.frontPeek(), nullptr);
  EXPECT_EQ(records.deq(), nullptr);
  EXPECT_EQ(records.front(), nullptr);
  EXPECT_EQ(records.back(), nullptr);
  EXPECT_EQ(records.backPeek(), nullptr);
  EXPECT_TRUE(strings.empty());
  EXPECT_TRUE(strings.begin() == strings.end());
  strings.delAll();
  EXPECT_EQ(strings.firstBlock(), nullptr);
}

TEST_F(RQueueTest, GivesElementsInTheOrderOfTheirArrival) {
  Queue<String> queue;
  for (const char* text : {"A", "B", "C"}) queue.enq(String(text));
  EXPECT_EQ(queue.front(), "A");
  EXPECT_EQ(queue.back(), "C");
  EXPECT_EQ(queue.size(), 3U);
  EXPECT_EQ(queue.deq(), "A");
  EXPECT_EQ(queue.deq(), "B");
  const String* const front = queue.frontPeek();
  ASSERT_NE(front, nullptr);
  EXPECT_EQ(*front, "C");
  EXPECT_EQ(queue.backPeek(), front);
  EXPECT_EQ(queue.deq(), "C");
  EXPECT_EQ(queue.deq(), "");
  EXPECT_TRUE(queue.empty());
}

TEST_F(RQueueTest, HoldsAReferenceOnEachElement) {
  Queue<Halvo::Ptr<Record>> queue;
  auto const record = Halvo::makePtr<Record>(1);
  queue.enq(record);
  queue.enq(record);
  EXPECT_EQ(record->useCount(), 3U);
  EXPECT_EQ(queue.front()->useCount(), 4U);
  {
    auto const taken = queue.deq();
    EXPECT_EQ(record->useCount(), 3U);
  }
  EXPECT_EQ(record->useCount(), 2U);
  queue.delAll();
  EXPECT_EQ(record->useCount(), 1U);
}

TEST_F(RQueueTest, BlocksGrowWithTheNumberOfElements) {
  struct Row {
    int enq;  // then
    int deq;  // then
    int enqMore;
    std::vector<U32> capacities;
  } rows[] = {
      {0, 0, 0, {}},
      {1, 0, 0, {4}},
      {4, 0, 0, {4}},
      {5, 0, 0, {4, 8}},
      {12, 0, 0, {4, 8}},
      {13, 0, 0, {4, 8, 16}},
      {28, 0, 0, {4, 8, 16}},
      {29, 0, 0, {4, 8, 16, 32}},
      // A block stays until its last slot has been taken, even when it holds nothing.
      {3, 3, 0, {4}},
      {4, 4, 0, {}},
      {4, 4, 1, {4}},
      {5, 4, 0, {8}},
      {5, 5, 0, {8}},
      // The capacity depends on the number of elements that are in the queue now.
      {4, 3, 1, {4, 4}},
      {4, 1, 1, {4, 4}},
      {12, 7, 1, {8, 8}},   // 5 elements
      {12, 4, 1, {8, 16}},  // 8 elements
      {12, 11, 1, {8, 4}},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(testing::Message() << row.enq << '-' << row.deq << '+' << row.enqMore);
    Queue<int> queue;
    for (int i = 0; i < row.enq; ++i) queue.enq(i);
    for (int i = 0; i < row.deq; ++i) EXPECT_EQ(queue.deq(), i);
    for (int i = 0; i < row.enqMore; ++i) queue.enq(row.enq + i);
    EXPECT_EQ(capacitiesOf(queue), row.capacities);
    int expected = row.deq;
    for (int element : queue) EXPECT_EQ(element, expected++);
    EXPECT_EQ(expected, row.enq + row.enqMore);
  }
}

TEST_F(RQueueTest, NoBlockHasMoreThan8192Slots) {
  Queue<int> queue;
  for (int i = 0; i < 40'000; ++i) queue.enq(i);
  std::vector<U32> const expected{4,    8,    16,   32,   64,   128,  256, 512,
                                  1024, 2048, 4096, 8192, 8192, 8192, 8192};
  EXPECT_EQ(capacitiesOf(queue), expected);
  EXPECT_EQ(queue.size(), 40'000U);
  for (int i = 0; i < 40'000; ++i) ASSERT_EQ(queue.deq(), i);
  EXPECT_TRUE(queue.empty());
}

TEST_F(RQueueTest, StartsAgainWithFourSlotsAfterDelAll) {
  Queue<String> queue;
  for (int i = 0; i < 100; ++i) queue.enq(String(80, 'x'));
  queue.delAll();
  EXPECT_EQ(queue.firstBlock(), nullptr);
  EXPECT_TRUE(queue.empty());
  queue.enq("again");
  EXPECT_EQ(capacitiesOf(queue), std::vector<U32>{4});
  EXPECT_EQ(queue.front(), "again");
}

TEST_F(RQueueTest, BlockHeaderHasIndexAndCapacityInOneWord) {
  static_assert(sizeof(RQueueBlock) == 16);
  // 8192 slots give the largest capacity and the largest index behind the last slot.
  for (U32 const capacity : {1U, 4U, 4096U, 8192U}) {
    for (bool const fromSystem : {false, true}) {
      RQueueBlock const block(capacity, 0xFFFFFFFE, fromSystem);
      EXPECT_EQ(block.capacity(), capacity);
      EXPECT_EQ(block.firstIndex(), 0U);
      EXPECT_EQ(block.sequence(), 0xFFFFFFFE);
      EXPECT_EQ(block.fromSystem(), fromSystem);
      EXPECT_FALSE(block.linked());
    }
  }
}

TEST_F(RQueueTest, IndexReachesTheEndOfTheLargestBlock) {
  Queue<U32> queue;
  U32 const count = 3 * RQueueBlock::largest;
  for (U32 i = 0; i < count; ++i) queue.enq(i);
  U32 largestIndex = 0;
  for (U32 i = 0; i < count; ++i) {
    ASSERT_EQ(queue.size(), count - i);
    largestIndex = std::max(largestIndex, queue.firstBlock()->firstIndex());
    U32 const capacity = queue.firstBlock()->capacity();
    ASSERT_EQ(capacity & (capacity - 1), 0U);
    ASSERT_EQ(queue.deq(), i);
  }
  EXPECT_EQ(largestIndex, RQueueBlock::largest - 1);
  queue.delAll();
}

TEST_F(RQueueTest, TrackersCountBlocksAndSlots) {
  Queue<String> queue;
  for (int i = 0; i < 5; ++i) queue.enq("x");
  EXPECT_EQ(RQueueBase::blockTracker_.liveObjects(), 2U);
  EXPECT_EQ(RQueueBase::blockTracker_.liveBytes(), 2 * sizeof(RQueueBlock));
  EXPECT_EQ(QE_Test::memAllocationTracker_.liveObjects(), 2U);
  EXPECT_EQ(QE_Test::memAllocationTracker_.liveBytes(), 12 * sizeof(String));
}

TEST_F(RQueueTest, SequenceNumbersMayPassTheEndOf32Bits) {
  for (U32 before : {0U, 1U, 3U, 4U, 5U, 100U, 20'000U}) {
    SCOPED_TRACE(before);
    Queue<int> queue(0U - before);
    for (int i = 0; i < 30'000; ++i) {
      queue.enq(i);
      ASSERT_EQ(queue.size(), static_cast<U32>(i + 1));
    }
    EXPECT_EQ(queue.front(), 0);
    EXPECT_EQ(queue.back(), 29'999);
    int expected = 0;
    for (int element : queue) ASSERT_EQ(element, expected++);
    for (int i = 0; i < 30'000; ++i) ASSERT_EQ(queue.deq(), i);
    EXPECT_EQ(queue.size(), 0U);
  }
}

TEST_F(RQueueTest, BlockTellsItsFirstLiveSlotAtAnyTime) {
  Queue<int> queue;
  int taken = 0;
  for (int i = 0; i < 30; ++i) queue.enq(i);
  while (const RQueueBlock* const block = queue.firstBlock()) {
    U32 const sequence = block->sequence();
    for (U32 index = 0; block == queue.firstBlock(); ++index) {
      EXPECT_EQ(block->firstIndex(), index);
      EXPECT_EQ(sequence + index, static_cast<U32>(taken));
      EXPECT_EQ(queue.size(), static_cast<U32>(30 - taken));
      // The last block has room left and stays.
      if (queue.empty()) {
        queue.delAll();
        break;
      }
      EXPECT_EQ(queue.deq(), taken++);
    }
  }
  EXPECT_EQ(taken, 30);
}

TEST_F(RQueueTest, SequenceNumbersRunOnWhileThereIsNoBlock) {
  Queue<int> queue(7);
  for (int i = 0; i < 4; ++i) queue.enq(i);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(queue.deq(), i);
  ASSERT_EQ(queue.firstBlock(), nullptr);
  EXPECT_EQ(queue.deq(), 0);
  queue.enq(4);
  EXPECT_EQ(queue.firstBlock()->sequence(), 11U);
  queue.delAll();
  EXPECT_EQ(queue.size(), 0U);
  Queue<int> other(std::move(queue));
  EXPECT_EQ(other.deq(), 0);
  other.enq(5);
  EXPECT_EQ(other.firstBlock()->sequence(), 12U);
}

TEST_F(RQueueTest, MovesButDoesNotCopy) {
  static_assert(!std::is_copy_constructible_v<Queue<int>>);
  static_assert(!std::is_copy_assignable_v<Queue<int>>);
  Queue<int> a;
  for (int i = 0; i < 10; ++i) a.enq(i);
  Queue<int> b(std::move(a));
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(b.size(), 10U);
  a.enq(7);
  b = std::move(a);
  EXPECT_EQ(b.size(), 1U);
  EXPECT_EQ(b.deq(), 7);
  a.enq(8);
  EXPECT_EQ(a.deq(), 8);
}

TEST_F(RQueueTest, TakesInOrderAcrossSwapsAndMoves) {
  // The numbers of elements added and taken before the swap: within a block, at its end, and
  // beyond.
  for (auto const& [added, taken] :
       {std::pair{4, 0}, {4, 1}, {4, 3}, {4, 4}, {5, 3}, {5, 4}, {40, 7}}) {
    SCOPED_TRACE(testing::Message() << added << ' ' << taken);
    Queue<int> queue;
    Queue<int> other;
    for (int i = 0; i < added; ++i) queue.enq(i);
    for (int i = 0; i < taken; ++i) EXPECT_EQ(queue.deq(), i);
    other.enq(-1);
    swap(queue, other);
    EXPECT_EQ(queue.deq(), -1);
    EXPECT_EQ(queue.deq(), 0);
    queue = std::move(other);
    EXPECT_EQ(other.deq(), 0);
    for (int i = added; i < added + 10; ++i) queue.enq(i);
    for (int i = taken; i < added + 10; ++i) EXPECT_EQ(queue.deq(), i);
    EXPECT_EQ(queue.deq(), 0);
    EXPECT_TRUE(queue.empty());
  }
}

TEST_F(RQueueTest, SwapsWithItselfAndWithoutBlocks) {
  Queue<int> queue(7);
  Queue<int> other(40);
  queue.swap(queue);
  swap(queue, other);
  EXPECT_EQ(queue.deq(), 0);
  EXPECT_EQ(other.firstBlock(), nullptr);
  queue.enq(1);
  other.enq(2);
  queue.swap(queue);
  ASSERT_NE(queue.firstBlock(), nullptr);
  ASSERT_NE(other.firstBlock(), nullptr);
  EXPECT_EQ(queue.firstBlock()->sequence(), 40U);
  EXPECT_EQ(other.firstBlock()->sequence(), 7U);
  EXPECT_EQ(queue.deq(), 1);
  EXPECT_EQ(other.deq(), 2);
}

constinit Queue<int> queueOfTheProgram;

TEST_F(RQueueTest, NeedsNoCodeAtLoad) {
  EXPECT_EQ(queueOfTheProgram.deq(), 0);
  for (int i = 1; i <= 5; ++i) queueOfTheProgram.enq(i);
  for (int i = 1; i <= 5; ++i) EXPECT_EQ(queueOfTheProgram.deq(), i);
  EXPECT_EQ(queueOfTheProgram.deq(), 0);
  queueOfTheProgram.delAll();
}

TEST_F(RQueueTest, ElementOfTheQueueItselfMayBeAdded) {
  Queue<String> queue;
  queue.enq("first, and longer than what a string keeps within itself: yes, much longer");
  const String* const first = queue.frontPeek();
  ASSERT_NE(first, nullptr);
  for (int i = 0; i < 20; ++i) queue.enq(*first);
  EXPECT_EQ(queue.size(), 21U);
  for (auto const& text : queue) EXPECT_EQ(text, *first);
}

struct ThrowingCopy {
  static int live;
  static bool throws;
  explicit ThrowingCopy(int n = 0) : number(n) { ++live; }
  ThrowingCopy(const ThrowingCopy& other) : number(other.number) {
    if (throws) throw std::runtime_error("copy");
    ++live;
  }
  ThrowingCopy(ThrowingCopy&& other) noexcept : number(other.number) { ++live; }
  ~ThrowingCopy() { --live; }
  int number;
};
int ThrowingCopy::live = 0;
bool ThrowingCopy::throws = false;

TEST_F(RQueueTest, CopyThatThrowsLeavesTheQueueAsItWas) {
  {
    Queue<ThrowingCopy> queue;
    ThrowingCopy const element(5);
    for (U32 i = 0; i < 30; ++i) {
      auto const capacities = capacitiesOf(queue);
      ThrowingCopy::throws = true;
      EXPECT_THROW(queue.enq(element), std::runtime_error);
      ThrowingCopy::throws = false;
      EXPECT_EQ(queue.size(), i);
      EXPECT_EQ(capacitiesOf(queue), capacities);
      queue.enq(element);
      EXPECT_EQ(queue.back().number, 5);
    }
    EXPECT_EQ(ThrowingCopy::live, 31);
    queue.deq();
    EXPECT_EQ(ThrowingCopy::live, 30);
  }
  EXPECT_EQ(ThrowingCopy::live, 0);
}

TEST_F(RQueueTest, ElementMayLookAtTheQueueAsItGoes) {
  struct Looker : Halvo::Node {
    Queue<Halvo::Ptr<Looker>>* queue = nullptr;
    U32* seen = nullptr;
    ~Looker() override { *seen += queue->size() + 1; }
  };
  Queue<Halvo::Ptr<Looker>> queue;
  U32 seen = 0;
  for (int i = 0; i < 6; ++i) {
    auto looker = Halvo::makePtr<Looker>();
    looker->queue = &queue;
    looker->seen = &seen;
    queue.enq(std::move(looker));
  }
  queue.delAll();
  EXPECT_EQ(seen, 6U);
}

TEST_F(RQueueTest, ElementMayUseTheQueueAsItGoes) {
  struct Leaver : Halvo::Node {
    Queue<Halvo::Ptr<Leaver>>* queue = nullptr;
    ~Leaver() override {
      if (queue == nullptr) return;
      if (queue->empty()) {
        EXPECT_EQ(queue->frontPeek(), nullptr);
        EXPECT_EQ(queue->backPeek(), nullptr);
        EXPECT_TRUE(queue->begin() == queue->end());
        EXPECT_TRUE(queue->deq() == nullptr);
      }
      queue->enq(Halvo::makePtr<Leaver>());
    }
  };
  for (auto const& [added, taken] : {std::pair{1U, 0U}, {4U, 3U}, {5U, 4U}, {6U, 0U}, {40U, 9U}}) {
    SCOPED_TRACE(testing::Message() << added << ' ' << taken);
    Queue<Halvo::Ptr<Leaver>> queue;
    for (U32 i = 0; i < added; ++i) {
      auto leaver = Halvo::makePtr<Leaver>();
      if (i >= taken) leaver->queue = &queue;
      queue.enq(std::move(leaver));
    }
    for (U32 i = 0; i < taken; ++i) queue.deq();
    queue.delAll();
    EXPECT_EQ(queue.size(), added - taken);
  }
}

TEST_F(RQueueTest, IteratorMeetsWhatWasThereWhenItWasMade) {
  Queue<int> queue;
  for (int i = 0; i < 4; ++i) queue.enq(i);
  auto it = queue.begin();
  for (int i = 4; i < 40; ++i) queue.enq(i);
  EXPECT_EQ(it.left(), 4U);
  int met = 0;
  for (; it != queue.end(); ++it) EXPECT_EQ(*it, met++);
  EXPECT_EQ(met, 4);
  // Across several blocks, with part of the first one taken.
  queue.deq();
  U32 left = 39;
  for (it = queue.begin(); it != queue.end(); ++it) EXPECT_EQ(it.left(), left--);
  EXPECT_EQ(left, 0U);
  EXPECT_EQ(it.left(), 0U);
  EXPECT_EQ(std::distance(queue.begin(), queue.end()), 39);
}

template <class T, class Make>
void liveRandomly(int steps, U32 firstSequence, unsigned seed, Make make) {
  std::mt19937 engine(seed);
  auto const random = [&engine](U32 range) { return static_cast<U32>(engine()) % range; };
  Queue<T> queue(firstSequence);
  std::deque<T> oracle;
  int next = 0;
  U32 bias = 5;
  for (int step = 0; step < steps; ++step) {
    if (step % 20'000 == 0) bias = 2 + random(7);
    if (random(10) < bias) {
      T const element = make(next++);
      queue.enq(element);
      oracle.push_back(element);
    } else if (oracle.empty()) {
      ASSERT_EQ(queue.deq(), T{});
    } else {
      ASSERT_EQ(queue.deq(), oracle.front());
      oracle.pop_front();
    }
    ASSERT_EQ(queue.size(), oracle.size());
    ASSERT_EQ(queue.front(), oracle.empty() ? T{} : oracle.front());
    ASSERT_EQ(queue.back(), oracle.empty() ? T{} : oracle.back());
    if (step % 50'000 == 0) {
      ASSERT_TRUE(std::equal(queue.begin(), queue.end(), oracle.begin(), oracle.end()));
    }
    if (random(100'000) == 0) {
      queue.delAll();
      oracle.clear();
    }
  }
}

TEST_F(RQueueTest, AgreesWithAnOracleForAMillionSteps) {
  liveRandomly<int>(600'000, 0, 1, [](int n) { return n; });
  liveRandomly<int>(200'000, 0xFFFFF000, 2, [](int n) { return n; });
  liveRandomly<Halvo::Ptr<Record>>(100'000, 0, 3, [](int n) { return Halvo::makePtr<Record>(n); });
  liveRandomly<String>(100'000, 0, 4, [](int n) { return String(std::to_string(n)); });
}

// Makes the ring of blocks accessible to the tests of its assertions.
class Ring : public RQueueBase {
 public:
  Ring() : RQueueBase(0) {}
  using RQueueBase::blockDelete;
  using RQueueBase::blockNew;
  using RQueueBase::blockPop;
  using RQueueBase::blockPush;
};

using RQueueDeathTest = RQueueTest;

TEST_F(RQueueDeathTest, PoppingABlockFromAnEmptyRing) {
  Ring ring;
  EXPECT_DEATH(ring.blockPop(),
               "^assertion failed: tail_ != nullptr at platform/Halvo/RQueue:0 in "
               "Halvo::RQueueBlock\\* Halvo::RQueueBase::blockPop\\(\\)\n$");
}

TEST_F(RQueueDeathTest, DestroyingALinkedBlock) {
  Ring ring;
  RQueueBlock* const block = ring.blockNew(4, 8, QE_Test::memAllocationTracker_);
  ring.blockPush(block);
  EXPECT_DEATH(Ring::blockDelete(block, 8, QE_Test::memAllocationTracker_),
               "^assertion failed: !linked\\(\\) at platform/Halvo/RQueue:0 in "
               "Halvo::RQueueBlock::~RQueueBlock\\(\\)\n$");
  Ring::blockDelete(ring.blockPop(), 8, QE_Test::memAllocationTracker_);
}

TEST_F(RQueueDeathTest, NoMemoryForABlock) {
  Queue<String> queue;
  for (int i = 0; i < 12; ++i) queue.enq("x");
  EXPECT_EXIT(
      {
        memoryIsOut = true;
        queue.enq("x");  // needs a block of 16, too large for the slabs
      },
      testing::KilledBySignal(SIGABRT), "");
}

TEST_F(RQueueDeathTest, CapacityThatIsNotAPowerOfTwo) {
  for (U32 capacity : {0U, 3U, 5U, 12U, 8191U}) {
    EXPECT_DEATH(RQueueBlock(capacity, 0, false),
                 "^assertion failed: isPowerOfTwo\\( i \\) at platform/Halvo/RQueue:0 in "
                 "Halvo::RQueueBlock::RQueueBlock\\(Halvo::U32, Halvo::U32, bool\\)\n$");
  }
  for (U32 capacity = 1; capacity <= RQueueBlock::largest; capacity *= 2) {
    RQueueBlock const block(capacity, 0, false);
    EXPECT_EQ(block.capacity(), capacity);
    EXPECT_EQ(block.firstIndex(), 0U);
  }
}

}  // namespace
