// Faults that stop the process only where debugging is on. Compiled without NDEBUG in every build.
// Turns debugging on, whatever the build.
#undef NDEBUG

#include <gtest/gtest.h>

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

#ifdef NDEBUG
#error "debugging must be on here"
#endif

namespace VelmorTcam {
namespace {

using Feature = CliShowTcamUsageFeatureInfo;
using Group = CliShowTcamUsageGroupInfo;

TEST(DebugAssertionDeathTest, AnotherSetsIteratorRemovesNothing) {
  Feature mine("acl");
  Feature other("nat");
  mine.entrySetIs(CliShowTcamUsageEntryInfo(1, 1));
  other.entrySetIs(CliShowTcamUsageEntryInfo(1, 1));
  EXPECT_DEATH(mine.entrySetDel(other.entrySet().begin()),
               "^assertion failed: at.owner == this at platform/Zel/RbTreeMap:0 in "
               "bool Zel::RbTreeOf::del\\(const iterator&\\)\n$");
  EXPECT_DEATH(mine.entrySetDel(other.entrySet().end()), "^assertion failed: at.owner == this at ");
  EXPECT_TRUE(mine.entrySetDel(mine.entrySet().begin()));
  // An iterator that belongs to no set removes nothing, in any build.
  EXPECT_FALSE(mine.entrySetDel(Feature::EntrySet::iterator()));
}

TEST(DebugAssertionDeathTest, AnotherMapsIteratorRemovesNoChild) {
  auto const mine = Halvo::makePtr<Group>(1U);
  auto const other = Halvo::makePtr<Group>(2U);
  mine->groupPerCopyInfoIs(7);
  other->groupPerCopyInfoIs(7);
  EXPECT_DEATH(mine->groupPerCopyInfoDel(other->groupPerCopyInfo().begin()),
               "^assertion failed: at.owner == this at platform/Zel/RbTreeMap:0 in "
               "V Zel::RbTreeMap::take\\(const iterator&\\)\n$");
  EXPECT_NE(mine->groupPerCopyInfoDel(mine->groupPerCopyInfo().begin()), nullptr);
}

TEST(DebugAssertionDeathTest, AnotherHashMapsIteratorRemovesNothing) {
  Zel::HashMap2018<Halvo::U8, int> mine;
  Zel::HashMap2018<Halvo::U8, int> other;
  mine.insert(1, 1);
  other.insert(1, 1);
  EXPECT_DEATH(mine.del(other.begin()),
               "^assertion failed: at.map == this at platform/Zel/HashMap2018:0 in "
               "Zel::HashMap2018::iterator Zel::HashMap2018::del\\(const const_iterator&\\)\n$");
  mine.del(mine.begin());
  EXPECT_TRUE(mine.empty());
}

}  // namespace
}  // namespace VelmorTcam
