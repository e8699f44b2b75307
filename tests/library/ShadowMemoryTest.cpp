// Shadows while memory runs out.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <vector>

#include "../platform/FailingNew.h"
#include "ShadowFixture.h"

// The slabs come from here: the program's definition is found before the C library's.
extern "C" __attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment,
                                                                      std::size_t size) noexcept {
  void* memory = nullptr;
  if (memoryIsOut || ::posix_memalign(&memory, alignment, size) != 0) return nullptr;
  return memory;
}

namespace VelmorTcam {
namespace {

using velmortest::makePtr;
using velmortest::Ptr;
using velmortest::Shadow;

TEST(EntryShadow, KeepsNoKeyWithoutAChildWhenMemoryRunsOut) {
  auto const types = qualifierTypeValues();
  int failures = 0;
  // Each round uses up one more object of the slabs first. So each allocation in a shadow's life is
  // the one that fails in some round.
  for (std::size_t round = 0; round < 400; ++round) {
    std::vector<Ptr<Shadow>> shadows;
    shadows.reserve(10'000);
    for (std::size_t i = 0; i < round; ++i) shadows.push_back(makePtr<Shadow>(U64{i}));
    try {
      memoryIsOut = true;
      for (std::size_t i = 0; i < 10'000; ++i) {
        shadows.push_back(makePtr<Shadow>(U64{i}));
        for (std::size_t t = 0; t < 1 + round % types.size(); ++t) {
          shadows.back()->hwQualIs(static_cast<QualifierType>(types[t].number), Qualifier(1, 2));
        }
      }
      memoryIsOut = false;
    } catch (const std::bad_alloc&) {
      memoryIsOut = false;
      ++failures;
    }
    for (auto const& shadow : shadows) {
      for (auto const& member : shadow->qualifier()) {
        ASSERT_NE(member.value, nullptr);
        for (auto const& data : member.value->hwQualData()) ASSERT_NE(data.value, nullptr);
      }
      EXPECT_GE(shadow->tableBytes(), 0U);
      for (auto const& type : types) {
        auto const t = static_cast<QualifierType>(type.number);
        if (shadow->getHwQualStatus(t, t) == 7) {
          EXPECT_EQ(shadow->qualifier(t)->hwQualData(t)->qual(), Qualifier(1, 2));
        }
      }
    }
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(Shadow::memAllocationTracker_.liveObjects(), 0U);
  EXPECT_EQ(QualifierStatus::memAllocationTracker_.liveObjects(), 0U);
  EXPECT_EQ(QualifierData::memAllocationTracker_.liveObjects(), 0U);
}

}  // namespace
}  // namespace VelmorTcam
