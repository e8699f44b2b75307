#include "Halvo/Node.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Ptr.h"
#include "Sobrel.h"
#include "Zel/Types/NodeType.h"

namespace {

using Halvo::makePtr;
using Halvo::Node;
using Halvo::Ptr;

class Record : public Node {
  ZEL_NODE_TYPE;
  explicit Record(int* ended = nullptr) : ended_(ended) {}
  ~Record() override {
    if (ended_ != nullptr) ++*ended_;
  }
  int* ended_;
};
constinit Zel::AllocationTracker Record::memAllocationTracker_{"Record"};
const Zel::TypeDescriptor* Record::typeData() const { return nullptr; }

class Derived : public Record {
 public:
  using Record::Record;
  char more[100] = {};
};

TEST(Node, StartsAtOneAndEndsWithTheLastPointer) {
  int ended = 0;
  {
    Ptr<Record> a = makePtr<Record>(&ended);
    EXPECT_EQ(a->useCount(), 1U);
    Ptr<const Record> b = a;
    EXPECT_EQ(a->useCount(), 2U);
    Ptr<Node> c = std::move(a);
    EXPECT_EQ(b->useCount(), 2U);
    EXPECT_EQ(a, nullptr);
    c = nullptr;
    EXPECT_EQ(b->useCount(), 1U);
    EXPECT_EQ(ended, 0);
  }
  EXPECT_EQ(ended, 1);
}

TEST(Node, SelfAssignmentKeepsTheObject) {
  int ended = 0;
  Ptr<Record> a = makePtr<Record>(&ended);
  Ptr<Record>& same = a;
  a = same;
  a = std::move(same);
  EXPECT_EQ(ended, 0);
  EXPECT_EQ(a->useCount(), 1U);
}

TEST(Node, IsNotCopied) {
  static_assert(!std::is_copy_constructible_v<Record> && !std::is_copy_assignable_v<Record>);
  static_assert(!std::is_move_constructible_v<Record> && !std::is_move_assignable_v<Record>);
}

TEST(Node, CopyIsAnObjectOfItsOwnWhereAClassMeansToBeCopied) {
  struct Copied : Node {
    explicit Copied(int value_) : value(value_) {}
    Copied(const Copied& other) : Node(), value(other.value) {}
    int value;
  };
  Ptr<Copied> a = makePtr<Copied>(7);
  Ptr<Copied> const more = a;
  a->flagSet(Node::flagNotify);
  Copied const copy(*a);
  EXPECT_EQ(copy.value, 7);
  EXPECT_EQ(copy.useCount(), 1U);
  EXPECT_EQ(copy.flags(), 0U);
}

TEST(Ptr, TakesAPlainPointerByNameAlone) {
  static_assert(!std::is_constructible_v<Ptr<Record>, Record*>);
  static_assert(!std::is_convertible_v<Record*, Ptr<Record>>);
  int ended = 0;
  {
    Ptr<Record> const made = Ptr<Record>::adopt(new Record(&ended));
    EXPECT_EQ(made->useCount(), 1U);
    Ptr<Record> const more = Ptr<Record>::share(made.get());
    EXPECT_EQ(made->useCount(), 2U);
    EXPECT_EQ(more, made);
  }
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(Ptr<Record>::adopt(nullptr), nullptr);
  EXPECT_EQ(Ptr<Record>::share(nullptr), nullptr);
}

TEST(Node, GetsMemoryThatIsAlignedAsItsClassAsks) {
  class alignas(128) Wide : public Record {
   public:
    char bytes[200] = {};
  };
  auto const& tracker = Record::memAllocationTracker_;
  auto const live = tracker.liveBytes();
  {
    std::vector<Ptr<Node>> objects;
    for (int i = 0; i < 16; ++i) {
      // An object of another size in between, so that the alignment is no coincidence.
      objects.push_back(makePtr<Record>());
      objects.push_back(makePtr<Wide>());
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(objects.back().get()) % 128, 0U);
    }
    EXPECT_EQ(tracker.liveBytes(), live + 16 * (sizeof(Record) + sizeof(Wide)));
  }
  EXPECT_EQ(tracker.liveBytes(), live);
}

TEST(Node, AssignmentPutsTheNewValueInPlaceFirst) {
  struct Watcher : Node {
    Ptr<Watcher>* slot = nullptr;
    bool* sawNew = nullptr;
    ~Watcher() override {
      if (sawNew != nullptr) *sawNew = slot->get() != nullptr && slot->get() != this;
    }
  };
  bool sawNew = false;
  Ptr<Watcher> slot = makePtr<Watcher>();
  slot->slot = &slot;
  slot->sawNew = &sawNew;
  slot = makePtr<Watcher>();
  EXPECT_TRUE(sawNew);
}

TEST(Node, HasNoTypeWhereItsClassIsNotDescribed) {
  class Plain : public Node {};
  Ptr<Node> const node = makePtr<Plain>();
  EXPECT_EQ(node->typeData(), nullptr);
}

TEST(Node, TrackerCountsObjectsAndBytesOfTheClassAndWhatDerivesFromIt) {
  auto const& tracker = Record::memAllocationTracker_;
  auto const total = tracker.totalObjects();
  auto const live = tracker.liveBytes();
  {
    Ptr<Record> const a = makePtr<Record>();
    Ptr<Node> const b = makePtr<Derived>();
    EXPECT_EQ(tracker.totalObjects(), total + 2);
    EXPECT_EQ(tracker.liveBytes(), live + sizeof(Record) + sizeof(Derived));
  }
  EXPECT_EQ(tracker.liveBytes(), live);
  bool listed = false;
  for (auto* t = Halvo::MemoryTracker::first(); t != nullptr; t = t->next()) {
    listed |= t == &tracker;
  }
  EXPECT_TRUE(listed);
}

// Read before any test turns it on.
bool const threadSafeAtStart = Halvo::ThreadControl::threadSafe();

TEST(ThreadControl, IsOffUntilTheProgramTurnsItOn) {
  EXPECT_FALSE(threadSafeAtStart);
  Halvo::ThreadControl::threadSafeIs(true);
  EXPECT_TRUE(Halvo::ThreadControl::threadSafe());
  Halvo::ThreadControl::threadSafeIs(false);
  EXPECT_FALSE(Halvo::ThreadControl::threadSafe());
}

TEST(Node, CountsAreExactFromManyThreadsWhileTheSwitchIsOn) {
  Halvo::ThreadControl::threadSafeIs(true);
  int ended = 0;
  {
    Ptr<Record> const shared = makePtr<Record>(&ended);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&shared] {
        for (int n = 0; n < 50'000; ++n) {
          Ptr<const Record> const mine = shared;
          Ptr<Record> const own = makePtr<Record>();
        }
      });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(shared->useCount(), 1U);
  }
  EXPECT_EQ(ended, 1);
  Halvo::ThreadControl::threadSafeIs(false);
}

TEST(Sobrel, GivesAlignedMemoryOfEverySizeAndTakesItBack) {
  auto const before = Sobrel::slabUsage().liveBytes;
  std::vector<std::pair<char*, std::size_t>> objects;
  for (int round = 0; round < 3; ++round) {
    for (std::size_t size = 0; size < 3000; size += 7) {
      auto* const memory = static_cast<char*>(Sobrel::slabAlloc(size));
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 8, 0U);
      std::memset(memory, static_cast<int>(size), size);
      objects.emplace_back(memory, size);
    }
  }
  for (auto [memory, size] : objects) {
    for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(memory[i], static_cast<char>(size));
    Sobrel::slabFree(memory, size);
  }
  EXPECT_EQ(Sobrel::slabUsage().liveBytes, before);
}

TEST(Sobrel, ReturnsEmptySlabs) {
  Sobrel::slabTrim();
  auto const before = Sobrel::slabUsage().slabs;
  std::vector<void*> objects;
  for (int i = 0; i < 10'000; ++i) objects.push_back(Sobrel::slabAlloc(104));
  for (void* object : objects) Sobrel::slabFree(object, 104);
  EXPECT_LE(Sobrel::slabUsage().slabs, before + 1);
  Sobrel::slabTrim();
  EXPECT_EQ(Sobrel::slabUsage().slabs, before);
}

}  // namespace
