// The runtimes' promises to several threads.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Halvo.h"
#include "Sobrel.h"
#include "Threads.h"
#include "Trelix.h"
#include "VelmorTcamEntryShadow.h"
#include "Zel.h"

namespace {

using Halvo::Ptr;
using Halvo::String;
using Halvo::U64;
using velmortest::onThreads;
using velmortest::threadCount;

constexpr int rounds = 500;

struct Tag {
  static inline constinit Halvo::MemoryTracker memAllocationTracker_{"Threads::Tag"};
};

// Its members are plain. Only the count orders the writes before it falls to zero.
class Shared : public Halvo::Node {
 public:
  explicit Shared(std::atomic<int>& sum) : sum_(sum) {}
  ~Shared() override {
    int sum = 0;
    for (int const part : parts) sum += part;
    sum_ = sum;
    ++destroyed;
  }

  std::array<int, threadCount> parts{};
  static inline std::atomic<int> destroyed{0};

 private:
  std::atomic<int>& sum_;
};

TEST_F(Threads, TheLastPtrEndsANodeWhateverThreadItIsOn) {
  for (int round = 0; round < 100; ++round) {
    Shared::destroyed = 0;
    std::atomic<int> sum{0};
    auto shared = Halvo::makePtr<Shared>(sum);
    std::vector<Ptr<Shared>> held(threadCount, shared);
    shared.reset();
    onThreads([&](unsigned i) {
      Ptr<Shared> const own = std::move(held[i]);
      own->parts[i] = static_cast<int>(i) + 1;
      for (int n = 0; n < 50; ++n) {
        Ptr<Shared> const copy = own;
        Ptr<const Shared> const reader = copy;
        EXPECT_GE(reader->useCount(), 3U);
      }
    });
    EXPECT_EQ(Shared::destroyed, 1);
    EXPECT_EQ(sum, static_cast<int>(threadCount * (threadCount + 1) / 2));
  }
}

TEST_F(Threads, NoReferenceIsLost) {
  std::atomic<int> sum{0};
  auto const shared = Halvo::makePtr<Shared>(sum);
  onThreads([&](unsigned) {
    for (int n = 0; n < 10 * rounds; ++n) shared->refNew();
  });
  EXPECT_EQ(shared->useCount(), 1 + threadCount * 10 * rounds);
  onThreads([&](unsigned) {
    for (int n = 0; n < 10 * rounds; ++n) shared->refDelete();
  });
  EXPECT_EQ(shared->useCount(), 1U);
}

TEST_F(Threads, OneStringIsReadAndCopiedByAll) {
  for (std::size_t const size : {5U, 63U, 64U, 5000U}) {
    String const shared(std::string(size, 'x'));
    onThreads([&](unsigned i) {
      for (int n = 0; n < rounds; ++n) {
        String copy = shared;
        EXPECT_EQ(copy, shared);
        copy += static_cast<char>('a' + i);
        EXPECT_EQ(std::strlen(shared.c_str()), size);
        EXPECT_EQ(copy.size(), size + 1);
      }
    });
  }
}

TEST_F(Threads, SlabMemoryIsGivenBackByAnyThread) {
  constexpr std::size_t sizes[] = {1, 8, 24, 64, 72, 256, 257, 1024, 1025, 5000};
  auto const before = Sobrel::slabUsage().liveBytes;
  struct Object {
    unsigned char* memory = nullptr;
    std::size_t size = 0;
  };
  std::mutex lock;
  std::vector<Object> passed;
  std::atomic<unsigned> running{threadCount};
  onThreads([&](unsigned i) {
    auto const fill = static_cast<unsigned char>(i + 1);
    for (std::size_t n = 0; n < 4 * rounds; ++n) {
      std::size_t const size = sizes[(n + i) % std::size(sizes)];
      auto* const memory = static_cast<unsigned char*>(Sobrel::slabAlloc(size));
      std::memset(memory, fill, size);
      Object other{memory, size};
      {
        // Every second object ends on another thread than the one that made it.
        std::lock_guard<std::mutex> const guard(lock);
        passed.push_back(other);
        if (n % 2 != 0 || passed.size() < 100) continue;
        std::swap(passed.front(), passed.back());
        other = passed.back();
        passed.pop_back();
      }
      EXPECT_EQ(std::count(other.memory, other.memory + other.size, other.memory[0]),
                static_cast<std::ptrdiff_t>(other.size));
      Sobrel::slabFree(other.memory, other.size);
      if (n % 64 == 0) {
        Sobrel::slabTrim();
        EXPECT_GE(Sobrel::slabUsage().slabBytes, Sobrel::slabUsage().slabs);
      }
    }
    if (--running != 0) return;
    for (const Object& object : passed) Sobrel::slabFree(object.memory, object.size);
  });
  EXPECT_EQ(Sobrel::slabUsage().liveBytes, before);
}

TEST_F(Threads, TrackersLoseNothingAndMayBeListedMeanwhile) {
  static constinit Halvo::MemoryTracker trackers[] = {
      Halvo::MemoryTracker("Threads::A"), Halvo::MemoryTracker("Threads::B"),
      Halvo::MemoryTracker("Threads::C"), Halvo::MemoryTracker("Threads::D")};
  onThreads([&](unsigned i) {
    for (int n = 0; n < rounds; ++n) {
      trackers[(i + static_cast<unsigned>(n)) % std::size(trackers)].allocated(16);
      if (n % 50 == 0) {
        for (auto* t = Halvo::MemoryTracker::first(); t != nullptr; t = t->next()) {
          EXPECT_LE(t->liveObjects(), U64{threadCount} * rounds * 100);
          EXPECT_NE(t->typeName(), nullptr);
        }
      }
      trackers[(i + static_cast<unsigned>(n)) % std::size(trackers)].released(16);
    }
  });
  U64 total = 0;
  for (auto& tracker : trackers) {
    EXPECT_EQ(tracker.liveObjects(), 0U);
    EXPECT_EQ(tracker.liveBytes(), 0U);
    EXPECT_EQ(tracker.totalBytes(), tracker.totalObjects() * 16);
    total += tracker.totalObjects();
    tracker.unlist();
  }
  EXPECT_EQ(total, U64{threadCount} * rounds);
}

TEST_F(Threads, EachHasQueuesAndMapsOfItsOwn) {
  onThreads([](unsigned i) {
    Halvo::RQueue<String, Tag> queue;
    Zel::RbTreeMap<Halvo::U32, String, Tag> ordered;
    Zel::HashMap2018<Halvo::U32, String> hashed;
    for (Halvo::U32 n = 0; n < rounds; ++n) {
      queue.enq(String(100, static_cast<char>('a' + i)));
      ordered.insert(n, "x");
      hashed.insert(n, "y");
    }
    for (Halvo::U32 n = 0; n < rounds; ++n) {
      EXPECT_EQ(queue.deq().size(), 100U);
      EXPECT_EQ(ordered.take(n), "x");
      EXPECT_EQ(hashed.take(n), "y");
    }
  });
  EXPECT_EQ(Tag::memAllocationTracker_.liveObjects(), 0U);
  Tag::memAllocationTracker_.unlist();
}

TEST_F(Threads, ReadOneMapThatNobodyChanges) {
  {
    Halvo::RQueue<String, Tag> queue;
    Zel::RbTreeMap<String, Halvo::U32, Tag> ordered;
    Zel::HashMap2018<Halvo::U32, String> hashed;
    for (Halvo::U32 n = 0; n < 300; ++n) {
      queue.enq(String(100, 'q'));
      ordered.insert(String(100, static_cast<char>(n % 100 + 1)) + String(n, 'x'), n);
      hashed.insert(n, "h");
    }
    onThreads([&](unsigned) {
      for (int n = 0; n < 5; ++n) {
        std::size_t met = 0;
        for (auto const& name : queue) met += name.size();
        for (auto const& item : std::as_const(ordered)) met += item.value;
        for (auto const& item : std::as_const(hashed)) met += item.value.size();
        EXPECT_EQ(met, 30000U + 300 * 299 / 2 + 300);
        EXPECT_EQ(queue.front(), queue.back());
        EXPECT_EQ(*std::as_const(ordered).find(String(100, 1)), 0U);
        EXPECT_EQ(*std::as_const(hashed).find(7), "h");
      }
    });
  }
  Tag::memAllocationTracker_.unlist();
}

TEST_F(Threads, TraceWhileLevelsAndSinksChange) {
  // The sink is called by one thread at a time, so its data needs no lock.
  int seen = 0;
  static constexpr auto count = [](const Zel::TraceRecord&, void* context) {
    ++*static_cast<int*>(context);
  };
  Zel::TraceControl::sinkIs(count, &seen);
  Zel::TraceControl::levelIs("Threads.always", 1, true);
  onThreads([&](unsigned i) {
    for (int n = 0; n < rounds; ++n) {
      static Zel::TraceHandle always("Threads.always", false);
      static Zel::TraceHandle sometimes("Threads.sometimes", false);
      ZEL_TRACE(always, 1, "Threads", 1, "traced", "record " << n);
      if (i == 0) {
        Zel::TraceControl::levelIs("Threads.sometimes", 2, n % 2 != 0);
        if (n % 16 == 0) Zel::TraceControl::sinkIs(count, &seen);
      } else if (i == 1) {
        Zel::TraceHandle const brief("Threads.sometimes", true);
        int handles = 0;
        Zel::TraceControl::forEachHandle(
            [](const char*, Halvo::U32, void* context) { ++*static_cast<int*>(context); },
            &handles);
        EXPECT_GE(handles, 3);
      } else {
        // Another thread may turn the level off after the check. The record still comes then.
        EXPECT_FALSE(sometimes.enabled(3));
      }
    }
  });
  Zel::TraceControl::sinkIs(nullptr, nullptr);
  Zel::TraceControl::levelIs("Threads.always", 1, false);
  Zel::TraceControl::levelIs("Threads.sometimes", 2, false);
  EXPECT_EQ(seen, static_cast<int>(threadCount) * rounds);
}

TEST_F(Threads, LogThroughOneHandleAndMakeOthers) {
  static constexpr Zel::LogDescriptor descriptor{"THREADS", "thread %s", "Explained.", "\x01", 6};
  Zel::LogHandle shared(descriptor, Halvo::Duration(), 1.0, 0, 0);
  Zel::LogHandle limited(descriptor, Halvo::Duration(3600.0), 1.0, 4, 0);
  int seen = 0;
  Zel::LogHandle::sinkIs(
      [](const Zel::LogRecord&, void* context) { ++*static_cast<int*>(context); }, &seen);
  onThreads([&](unsigned i) {
    for (int n = 0; n < rounds; ++n) {
      shared.log(String(i % 2 == 0 ? 3 : 200, 'x'));
      limited.log("limited");
      if (i == 0) {
        Zel::LogHandle own(descriptor, Halvo::Duration(), 1.0, 0, 0);
        own.log("own");
      }
    }
  });
  Zel::LogHandle::sinkIs(nullptr, nullptr);
  EXPECT_EQ(seen, static_cast<int>(threadCount + 1) * rounds + 5);
}

TEST_F(Threads, LogHandlesMayBeWalkedTogether) {
  static constexpr Zel::LogDescriptor descriptor{"THREADS", "thread %s", "Explained.", "\x01", 6};
  Zel::LogHandle const a(descriptor, Halvo::Duration(), 1.0, 0, 0);
  Zel::LogHandle const b(descriptor, Halvo::Duration(), 1.0, 0, 0);
  onThreads([](unsigned) {
    int handles = 0;
    for (auto* h = Zel::LogHandle::first(); h != nullptr; h = h->next()) ++handles;
    EXPECT_GE(handles, 2);
  });
}

TEST_F(Threads, ConvertAndFormatTogether) {
  onThreads([](unsigned i) {
    for (int n = 0; n < rounds; ++n) {
      for (auto const& value : VelmorTcam::qualifierTypeValues()) {
        EXPECT_EQ(VelmorTcam::QualifierTypeInstance(String(value.name)), value.number);
      }
      EXPECT_EQ(Zel::_fmt("%5u|%s", i, "x"), Zel::_fmt(Zel::runtimeFormat("%5u|%s"), i, "x"));
      EXPECT_THROW(VelmorTcam::StageTypeInstance("none"), Zel::ParseError);
      EXPECT_EQ(Trelix::IpAddr::parse("10.0.0.1").stringValue(), "10.0.0.1");
      EXPECT_EQ(Trelix::Ip6Addr::parse("2001:db8::1").stringValue(), "2001:db8::1");
    }
  });
}

constexpr Zel::TypeModule loadedModules[] = {
    {"Threads.a", {}}, {"Threads.b", {}}, {"Threads.c", {}}, {"Threads.d", {}},
    {"Threads.e", {}}, {"Threads.f", {}}, {"Threads.g", {}}, {"Threads.h", {}}};
static_assert(std::size(loadedModules) == threadCount);

TEST_F(Threads, ModulesAreLoadedWhileOthersWalkThem) {
  std::vector<std::unique_ptr<Halvo::ModuleInspectData>> data;
  for (auto const& module : loadedModules) {
    data.push_back(std::make_unique<Halvo::ModuleInspectData>(module));
  }
  onThreads([&](unsigned i) {
    EXPECT_NE(Zel::findType("VelmorTcam::RuleId"), nullptr);
    data[i]->loaded();
    int modules = 0;
    for (auto* m = Halvo::ModuleInspectData::first(); m != nullptr; m = m->next()) ++modules;
    EXPECT_GE(modules, 2);
    EXPECT_EQ(Zel::findType("VelmorTcam::NoSuchType"), nullptr);
  });
  int modules = 0;
  for (auto* m = Halvo::ModuleInspectData::first(); m != nullptr; m = m->next()) ++modules;
  EXPECT_GE(modules, static_cast<int>(threadCount) + 1);
}

}  // namespace
