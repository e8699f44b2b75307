// The library's promises to several threads.
#include <cstdio>
#include <string>
#include <vector>

#include "../library/ShadowFixture.h"
#include "Threads.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "Zel/Trace/Trace.h"
#include "Zel/Types/Reflect.h"

namespace VelmorTcam {
namespace {

using velmortest::fullShadow;
using velmortest::makePtr;
using velmortest::onThreads;
using velmortest::Ptr;
using velmortest::Shadow;
using velmortest::ShadowOf;
using velmortest::threadCount;
using velmortest::useCounts;

constexpr int rounds = 200;

TEST_F(Threads, PrintRowsOfOneShadow) {
  Ptr<const Shadow> const shadow = fullShadow();
  std::vector<Ptr<CliFormat>> const formats = {
      makePtr<velmortest::IpFormat>(), makePtr<velmortest::Ip6Format>(),
      makePtr<velmortest::MacCellsFormat>(), makePtr<VelmorTcamCliFormat>()};
  std::vector<std::string> expected;
  for (auto const& format : formats) {
    expected.push_back(velmortest::rowOf(*format, shadow));
    EXPECT_GT(expected.back().size(), 30U);
  }
  auto const before = useCounts(*shadow);
  onThreads([&](unsigned i) {
    // The reader's own reference, and rows over the shared one too.
    Ptr<const Shadow> const own = shadow;
    for (unsigned n = 0; n < rounds; ++n) {
      std::size_t const which = (n + i) % formats.size();
      Ptr<CliFormat> const format = formats[which];
      EXPECT_EQ(velmortest::rowOf(*format, n % 2 == 0 ? own : shadow), expected[which]);
    }
  });
  EXPECT_EQ(useCounts(*shadow), before);
}

TEST_F(Threads, DisplayRowsOnOneDescriptor) {
  Ptr<const Shadow> const shadow = fullShadow();
  auto const format = makePtr<velmortest::IpFormat>();
  std::string const row = velmortest::rowOf(*format, shadow);
  std::FILE* const file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  onThreads([&](unsigned) {
    for (int n = 0; n < 20; ++n) {
      format->displayEntryRequest(static_cast<U32>(fileno(file)), RequestKey("acl"), RuleId(10),
                                  "text", shadow, 42, nullptr);
    }
  });
  std::fseek(file, 0, SEEK_END);
  EXPECT_EQ(std::ftell(file), static_cast<long>(threadCount * 20 * row.size()));
  std::fclose(file);
}

TEST_F(Threads, ReadHeadersOnceTheTableIsFilled) {
  initializeCliHeaders();
  onThreads([](unsigned) {
    for (int n = 0; n < rounds; ++n) {
      EXPECT_EQ(getCliHeader(cliHeaderTypeIp).size(), 186U);
      EXPECT_EQ(getCliHeader(cliHeaderTypeIp6).size(), 303U);
      EXPECT_EQ(getCliHeader(cliHeaderTypeMac).size(), 118U);
      initializeCliHeaders();  // the table is full already
    }
  });
}

TEST_F(Threads, ReachTheTraceHandleFirstTogether) {
  struct Seen {
    int initialized = 0;
    int rows = 0;
  } seen;
  Zel::TraceControl::sinkIs(
      [](const Zel::TraceRecord& record, void* context) {
        auto* const counts = static_cast<Seen*>(context);
        ++(record.sourceLine == 638 ? counts->initialized : counts->rows);
      },
      &seen);
  Zel::TraceControl::levelIs("VelmorTcamCliTypes", 8, true);
  Ptr<const Shadow> const shadow = ShadowOf(5);
  onThreads([&](unsigned) {
    auto const format = makePtr<VelmorTcamCliFormat>();
    format->initializedIs(true);
    EXPECT_NE(velmortest::rowOf(*format, shadow), "");
  });
  Zel::TraceControl::levelIs("VelmorTcamCliTypes", 8, false);
  Zel::TraceControl::sinkIs(nullptr, nullptr);
  EXPECT_EQ(seen.initialized, static_cast<int>(threadCount));
  EXPECT_EQ(seen.rows, static_cast<int>(threadCount));
  int handles = 0;
  Zel::TraceControl::forEachHandle(
      [](const char* name, U32, void* context) {
        if (std::string(name) == "VelmorTcamCliTypes") ++*static_cast<int*>(context);
      },
      &handles);
  EXPECT_EQ(handles, 1);
}

Ptr<CliShowTcamUsageChipInfo> smallTree(U32 features) {
  auto chip = makePtr<CliShowTcamUsageChipInfo>();
  auto const copy = chip->stageInfoIs(stageTypeIngress)
                        ->pipeInfoIs(-1)
                        ->groupPrioBucketIs(1)
                        ->groupInfoIs(2)
                        ->groupPerCopyInfoIs(3);
  for (U32 f = 0; f < features; ++f) {
    auto const feature =
        cliShowTcamUsageFeatureInfoFactory(Halvo::String(70, static_cast<char>('a' + f % 26)));
    for (U32 e = 0; e < 10; ++e) feature->entrySetIs(CliShowTcamUsageEntryInfo(e, e));
    copy->featurePrioBucketIs(f % 3)->featureInfoEnq(feature);
  }
  return chip;
}

U32 entriesOf(const CliShowTcamUsageChipInfo& chip) {
  U32 entries = 0;
  for (auto const& [stage, stageInfo] : chip.stageInfo())
    for (auto const& [pipe, pipeInfo] : stageInfo->pipeInfo())
      for (auto const& [prio, bucket] : pipeInfo->groupPrioBucket())
        for (auto const& [id, group] : bucket->groupInfo())
          for (auto const& [copyId, copy] : group->groupPerCopyInfo())
            for (auto const& [featurePrio, features] : copy->featurePrioBucket())
              for (auto const& feature : features->featureInfo())
                for (auto const& entry : feature->entrySet()) entries += U32{entry.entryId() < 10};
  return entries;
}

TEST_F(Threads, BuildATreeAndASummaryEach) {
  onThreads([](unsigned i) {
    for (int n = 0; n < 10; ++n) {
      EXPECT_EQ(entriesOf(*smallTree(20 + i)), (20 + i) * 10);
      auto const summary = makePtr<CliShowTcamSummaryOrdered>();
      for (int g = 0; g < 50; ++g) {
        auto const group = summary->tcamSummaryIs(Halvo::String(std::to_string(g)));
        group->tcamSummaryGroupNameEnq(Halvo::String(100, 'x'));
        group->pipeFinishedIs(true);
        EXPECT_TRUE(group->isGroupPipeDuplicate(Halvo::String(100, 'x')));
      }
      EXPECT_EQ(summary->tcamSummary().size(), 50U);
    }
  });
  EXPECT_EQ(CliShowTcamUsageChipInfo::memAllocationTracker_.liveObjects(), 0U);
  EXPECT_EQ(CliShowTcamUsageFeatureInfo::memAllocationTracker_.liveObjects(), 0U);
  EXPECT_EQ(CliShowTcamSummaryGroupName::memAllocationTracker_.liveObjects(), 0U);
}

TEST_F(Threads, WalkOneTreeThatNobodyChanges) {
  auto const chip = smallTree(30);
  onThreads([&](unsigned) {
    for (int n = 0; n < 20; ++n) {
      EXPECT_EQ(entriesOf(*chip), 300U);
      // The same by reflection: the stage's key, and a walk over its pipes.
      auto const stage = chip->stageInfo(stageTypeIngress);
      Zel::Value result;
      const Halvo::Node& node = *stage;
      EXPECT_EQ(Zel::attributeOp(node, 130, Zel::Op::read, {}, result), Zel::OpResult::done);
      EXPECT_EQ(result.text(), Halvo::String("ingress"));
      EXPECT_EQ(Zel::attributeOp(node, 131, Zel::Op::iterate, {}, result), Zel::OpResult::done);
      auto const cursor = result.as<Ptr<Zel::Cursor>>();
      Zel::Value key;
      Zel::Value element;
      EXPECT_TRUE(cursor->next(key, element));
      EXPECT_EQ(key.as<S16>(), -1);
      EXPECT_FALSE(cursor->next(key, element));
    }
  });
}

TEST_F(Threads, HandATreeFromOneToTheNext) {
  auto tree = smallTree(10);
  std::thread([&] { tree->stageInfo(stageTypeIngress)->pipeInfoIs(5); }).join();
  std::thread([&] {
    EXPECT_EQ(tree->stageInfo(stageTypeIngress)->pipeInfo().size(), 2U);
    tree.reset();
  }).join();
  EXPECT_EQ(CliShowTcamUsageChipInfo::memAllocationTracker_.liveObjects(), 0U);
}

}  // namespace
}  // namespace VelmorTcam
