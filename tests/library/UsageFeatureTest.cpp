// Entry records and the feature that owns them.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "DestroyedFlags.h"
#include "Random.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Types/Record.h"

namespace VelmorTcam {
namespace {

using Entry = CliShowTcamUsageEntryInfo;
using Feature = CliShowTcamUsageFeatureInfo;
using Halvo::String;
using Halvo::U8;

constexpr U32 most32 = std::numeric_limits<U32>::max();
constexpr U64 most64 = std::numeric_limits<U64>::max();

Entry entryOf(U32 priority, U32 id, std::string_view description = "", U64 hits = 0) {
  Entry entry(priority, id);
  entry.descriptionIs(String(description));
  entry.hitsIs(hits);
  return entry;
}

TEST(UsageEntry, IsMadeOfPriorityAndId) {
  Entry entry(10, 5);
  EXPECT_EQ(entry.entryPriority(), 10U);
  EXPECT_EQ(entry.entryId(), 5U);
  EXPECT_EQ(entry.description(), "");
  EXPECT_EQ(entry.hits(), 0U);
  entry.descriptionIs("a");
  entry.hitsIs(most64);
  Entry copy = entry;
  EXPECT_EQ(copy.description(), "a");
  EXPECT_EQ(copy.hits(), most64);
  copy = Entry(1, 2);
  EXPECT_EQ(copy.entryPriority(), 1U);
  EXPECT_EQ(copy.description(), "");
}

TEST(UsageEntry, OrdersByFallingPriorityThenRisingId) {
  struct Row {
    Entry a;
    Entry b;
    int order;
  };
  Row const rows[] = {
      {entryOf(10, 5, "a", 3), entryOf(10, 5, "b", 9), 0},
      {Entry(20, 1), Entry(10, 1), -1},
      {Entry(10, 1), Entry(20, 1), 1},
      {Entry(7, 1), Entry(7, 3), -1},
      {Entry(7, 3), Entry(7, 1), 1},
      {Entry(20, 9), Entry(10, 1), -1},
      {Entry(most32, 1), Entry(1, 1), -1},
      {Entry(0x80000000, 1), Entry(0x7FFFFFFF, 1), -1},
      {Entry(1, 0x7FFFFFFF), Entry(1, 0x80000000), -1},
      {Entry(0, most32), Entry(0, 0), 1},
      {Entry(0, 0), Entry(0, 0), 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.a.entryPriority() << ',' << row.a.entryId() << " and "
                                    << row.b.entryPriority() << ',' << row.b.entryId());
    EXPECT_EQ(row.a < row.b, row.order < 0);
    EXPECT_EQ(row.b<row.a, row.order> 0);
    EXPECT_EQ(row.a == row.b, row.order == 0);
    EXPECT_EQ(row.a != row.b, row.order != 0);
    // The number that the set orders by gives the same order.
    using Order = Zel::RbTreeOrder<Entry, std::less<Entry>>;
    EXPECT_EQ(Order::hint(row.a) < Order::hint(row.b), row.order < 0);
    EXPECT_EQ(Order::hint(row.a) == Order::hint(row.b), row.order == 0);
  }
}

TEST(UsageEntry, WritesAsARecord) {
  EXPECT_EQ(ZelHalvo::Impl::valueToStrep(entryOf(10, 5, "a", 3)),
            "VelmorTcam::CliShowTcamUsageEntryInfo{entryPriority=10,entryId=5,description=\"a\","
            "hits=3}");
  EXPECT_EQ(ZelHalvo::Impl::valueToStrep(entryOf(most32, 0, "say \"no\"\\\n\x01\xff", most64)),
            "VelmorTcam::CliShowTcamUsageEntryInfo{entryPriority=4294967295,entryId=0,"
            "description=\"say \\\"no\\\"\\\\\\n\\x01\\xff\",hits=18446744073709551615}");
}

TEST(UsageEntry, ReadsBackUnchanged) {
  velmortest::Random random(1);
  for (int step = 0; step < 20'000; ++step) {
    std::string description(random() % 100, '\0');
    for (char& c : description) c = static_cast<char>(random());
    Entry const entry = entryOf(random() >> random() % 32, random() >> random() % 32, description,
                                (U64{random()} << 32 | random()) >> random() % 64);
    String const text = ZelHalvo::Impl::valueToStrep(entry);
    Entry const read = Zel::strepToValue<Entry>(text);
    ASSERT_TRUE(read == entry) << text;
    ASSERT_EQ(read.description(), entry.description());
    ASSERT_EQ(read.hits(), entry.hits());
  }
}

TEST(UsageEntry, ReadsOffTheFrontOfLongerText) {
  String const text = ZelHalvo::Impl::valueToStrep(entryOf(1, 2, "x", 3)) + "rest";
  Zel::CharRange in(text.view());
  Entry const entry(in);
  EXPECT_TRUE(entry == Entry(1, 2));
  EXPECT_EQ(in.view(), "rest");
}

TEST(UsageEntry, TellsWhatIsWrongWithText) {
#define TYPE "VelmorTcam::CliShowTcamUsageEntryInfo"
  struct Row {
    const char* text;
    const char* error;
  };
  Row const rows[] = {
      {"", "expected " TYPE "{, found the end, at byte 0"},
      {"Agent::Other{", "expected " TYPE "{, found 'Agent::Other{', at byte 0"},
      {TYPE, "expected " TYPE "{, found '" TYPE "', at byte 0"},
      {TYPE "{entryId=1}",
       "entryPriority: expected entryPriority=, found 'entryId=1}', at byte 38"},
      {TYPE "{entryPriority=}", "entryPriority: expected a number, found '}', at byte 52"},
      {TYPE "{entryPriority=-1,", "entryPriority: expected a number, found '-1,', at byte 52"},
      {TYPE "{entryPriority=4294967296,",
       "entryPriority: expected a number up to 4294967295, found '4294967296,', at byte 52"},
      {TYPE "{entryPriority=99999999999999999999999,",
       "entryPriority: expected a number up to 4294967295, found '99999999999999999999999,', at "
       "byte 52"},
      {TYPE "{entryPriority=1 ,", "entryId: expected ',', found ' ,', at byte 53"},
      {TYPE "{entryPriority=1,entryId=2}", "description: expected ',', found '}', at byte 63"},
      {TYPE "{entryPriority=1,entryId=2,description=a",
       "description: expected a string in double quotes, found 'a', at byte 76"},
      {TYPE "{entryPriority=1,entryId=2,description=\"a",
       "description: expected the string's closing quote, found the end, at byte 78"},
      {TYPE "{entryPriority=1,entryId=2,description=\"a\\q\"",
       "description: expected one of \\\" \\\\ \\n \\r \\t \\xHH, found '\\q\"', at byte 78"},
      {TYPE "{entryPriority=1,entryId=2,description=\"\",hits=18446744073709551616}",
       "hits: expected a number up to 18446744073709551615, found '18446744073709551616}', at "
       "byte 84"},
      {TYPE "{entryPriority=1,entryId=2,description=\"\",hits=3",
       "expected '}', found the end, at byte 85"},
      {TYPE "{entryPriority=1,entryId=2,description=\"\",hits=3} ",
       "expected the end, found ' ', at byte 86"},
  };
#undef TYPE
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    try {
      static_cast<void>(Zel::strepToValue<Entry>(row.text));
      ADD_FAILURE() << "read";
    } catch (const Zel::ParseError& error) {
      EXPECT_STREQ(error.what(), row.error);
    }
  }
}

using Pairs = std::vector<std::pair<U32, U32>>;
Pairs pairsOf(const Feature& feature) {
  Pairs pairs;
  for (const Entry& entry : feature.entrySet()) {
    pairs.emplace_back(entry.entryPriority(), entry.entryId());
  }
  return pairs;
}

class UsageFeature : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(Feature::memAllocationTracker_.liveObjects(), 0U);
    EXPECT_EQ(Feature::TN_EntrySet::memAllocationTracker_.liveObjects(), 0U);
    EXPECT_EQ(Feature::TN_EntrySet::memAllocationTracker_.liveBytes(), 0U);
  }
  static void expectGenerations(const Feature& feature, U32 generation) {
    EXPECT_EQ(feature.entrySet().generation(), generation);
    EXPECT_EQ(feature.entrySet().removalGeneration(), generation);
  }
};

TEST_F(UsageFeature, IsBornByEitherFactory) {
  for (auto const& feature :
       {cliShowTcamUsageFeatureInfoFactory("acl"), Feature::CliShowTcamUsageFeatureInfoIs("acl")}) {
    EXPECT_EQ(feature->cliFeatureName(), "acl");
    EXPECT_EQ(feature->usedEntries(), 0U);
    EXPECT_EQ(feature->reservedEntries(), 0U);
    EXPECT_EQ(feature->entrySet().size(), 0U);
    EXPECT_TRUE(feature->entrySet().begin() == feature->entrySet().end());
    EXPECT_STREQ(feature->typeData()->name, "VelmorTcam::CliShowTcamUsageFeatureInfo");
    EXPECT_EQ(feature->typeData()->tracker, &Feature::memAllocationTracker_);
    expectGenerations(*feature, 1);
  }
  for (auto const factory :
       {cliShowTcamUsageFeatureInfoFactory, Feature::CliShowTcamUsageFeatureInfoIs}) {
    auto const one = factory("one");
    EXPECT_EQ(one->useCount(), 1U);
    EXPECT_EQ(Feature::memAllocationTracker_.liveObjects(), 1U);
    EXPECT_EQ(Feature::memAllocationTracker_.liveBytes(), sizeof(Feature));
  }
  auto const one = cliShowTcamUsageFeatureInfoFactory("one");
  one->usedEntriesIs(most32);
  one->reservedEntriesIs(7);
  EXPECT_EQ(one->usedEntries(), most32);
  EXPECT_EQ(one->reservedEntries(), 7U);
}

TEST_F(UsageFeature, MayStandInPlace) {
  Feature feature("acl");
  feature.entrySetIs(Entry(1, 1));
  EXPECT_EQ(feature.cliFeatureName(), "acl");
  EXPECT_EQ(Feature::memAllocationTracker_.liveObjects(), 0U);
}

TEST_F(UsageFeature, IsMarkedAsItGoes) {
  velmortest::expectFlagsLeft<Feature>(0, Feature::flagBeingDestroyed, "acl");
  velmortest::expectFlagsLeft<Feature>(~Feature::flagBeingDestroyed, 0xFFFFFFFF, "acl");
}

TEST_F(UsageFeature, KeepsTheEntryThatIsThere) {
  Feature feature("acl");
  feature.entrySetIs(entryOf(10, 5, "a", 3));
  feature.entrySetIs(entryOf(10, 5, "b", 9));
  ASSERT_EQ(feature.entrySet().size(), 1U);
  EXPECT_EQ(feature.entrySet().begin().key().description(), "a");
  EXPECT_EQ(feature.entrySet().begin().key().hits(), 3U);
  EXPECT_TRUE(feature.entrySetHas(entryOf(10, 5, "other", 0)));
  EXPECT_FALSE(feature.entrySetHas(Entry(10, 6)));
  EXPECT_FALSE(feature.entrySetHas(Entry(11, 5)));
  EXPECT_EQ(feature.entrySet().find(Entry(10, 5))->hits(), 3U);
  EXPECT_EQ(feature.entrySet().find(Entry(1, 1)), nullptr);
  expectGenerations(feature, 1);
}

TEST_F(UsageFeature, WalksInOrder) {
  struct Row {
    Pairs in;
    Pairs out;
  };
  Row const rows[] = {
      {{{5, 1}, {20, 1}, {10, 1}}, {{20, 1}, {10, 1}, {5, 1}}},
      {{{7, 3}, {7, 1}}, {{7, 1}, {7, 3}}},
      {{{0, 0}, {most32, most32}, {most32, 0}}, {{most32, 0}, {most32, most32}, {0, 0}}},
  };
  for (const Row& row : rows) {
    Feature feature("acl");
    for (auto const& [priority, id] : row.in) feature.entrySetIs(Entry(priority, id));
    EXPECT_EQ(pairsOf(feature), row.out);
  }
}

TEST_F(UsageFeature, CountsRealRemovalsOnly) {
  Feature feature("acl");
  feature.entrySetIs(entryOf(10, 5, "a"));
  EXPECT_FALSE(feature.entrySetDel(Entry(10, 6)));
  expectGenerations(feature, 1);
  EXPECT_TRUE(feature.entrySetDel(entryOf(10, 5, "other")));
  expectGenerations(feature, 3);
  EXPECT_FALSE(feature.entrySetDel(Entry(10, 5)));
  expectGenerations(feature, 3);
  feature.entrySetDelAll();
  expectGenerations(feature, 5);
  feature.entrySetIs(Entry(1, 1));
  feature.entrySetIs(Entry(1, 2));
  feature.entrySetDelAll();
  expectGenerations(feature, 7);
  EXPECT_EQ(feature.entrySet().size(), 0U);
}

TEST_F(UsageFeature, DeletesByIterator) {
  Feature feature("acl");
  for (U32 id = 1; id <= 5; ++id) feature.entrySetIs(Entry(1, id));
  // At the end it removes nothing.
  EXPECT_FALSE(feature.entrySetDel(feature.entrySet().end()));
  expectGenerations(feature, 1);
  // A fresh iterator removes the entry under it. The walk goes on behind it.
  auto at = feature.entrySet().begin();
  EXPECT_EQ(at.generation(), 1U);
  ++at;
  EXPECT_TRUE(feature.entrySetDel(at));
  expectGenerations(feature, 3);
  ++at;
  EXPECT_EQ(at.key().entryId(), 3U);
  // A step does not change the generation at which the iterator was made.
  EXPECT_EQ(at.generation(), 1U);
  // A stale iterator removes the entry of the key that it last held: here it is present,
  EXPECT_TRUE(feature.entrySetDel(Entry(1, 1)));
  EXPECT_TRUE(feature.entrySetDel(at));
  expectGenerations(feature, 7);
  // here it is gone,
  EXPECT_FALSE(feature.entrySetDel(at));
  expectGenerations(feature, 7);
  // and here it was added again.
  feature.entrySetIs(Entry(1, 3));
  EXPECT_TRUE(feature.entrySetDel(at));
  EXPECT_EQ(pairsOf(feature), (Pairs{{1, 4}, {1, 5}}));
  // An insertion makes no iterator stale.
  auto first = feature.entrySet().begin();
  feature.entrySetIs(Entry(2, 1));
  EXPECT_TRUE(feature.entrySetDel(first));
  EXPECT_EQ(pairsOf(feature), (Pairs{{2, 1}, {1, 5}}));
  // An iterator that walked to the end removes nothing while it is fresh.
  at = feature.entrySet().at(Entry(1, 5));
  ++at;
  ASSERT_TRUE(at == feature.entrySet().end());
  EXPECT_FALSE(feature.entrySetDel(at));
  EXPECT_EQ(feature.entrySet().size(), 2U);
  // Once it is stale, it removes by the key that it last held,
  EXPECT_TRUE(feature.entrySetDel(Entry(2, 1)));
  EXPECT_TRUE(feature.entrySetDel(at));
  EXPECT_TRUE(feature.entrySet().empty());
  // also if the other removal came before the step to the end,
  feature.entrySetIs(Entry(1, 1));
  feature.entrySetIs(Entry(1, 2));
  at = feature.entrySet().at(Entry(1, 2));
  EXPECT_TRUE(feature.entrySetDel(Entry(1, 1)));
  ++at;
  ASSERT_TRUE(at == feature.entrySet().end());
  EXPECT_TRUE(feature.entrySetDel(at));
  EXPECT_TRUE(feature.entrySet().empty());
  // and also if all entries were removed.
  feature.entrySetIs(Entry(1, 1));
  at = feature.entrySet().begin();
  feature.entrySetDelAll();
  EXPECT_FALSE(feature.entrySetDel(at));
  feature.entrySetIs(Entry(1, 1));
  EXPECT_TRUE(feature.entrySetDel(at));
  EXPECT_TRUE(feature.entrySet().empty());
}

TEST_F(UsageFeature, OwnsItsEntries) {
  auto feature = cliShowTcamUsageFeatureInfoFactory(String(200, 'n'));
  for (U32 id = 0; id < 1000; ++id) feature->entrySetIs(entryOf(1, id, std::string(200, 'd')));
  EXPECT_EQ(Feature::TN_EntrySet::memAllocationTracker_.liveObjects(), 1000U);
  auto const held = feature;
  feature.reset();
  EXPECT_EQ(held->entrySet().size(), 1000U);
}

// The model is a std::set and the two generations as documented.
TEST_F(UsageFeature, DoesAsTheModel) {
  struct ModelIterator {
    Feature::EntrySet::iterator at;
    std::optional<Entry> key;  // last held
    bool isAtEnd = false;
    U32 generation = 1;  // when it was made
  };
  velmortest::Random random(7);
  Feature feature("acl");
  std::set<Entry> model;
  U32 generation = 1;
  std::vector<ModelIterator> iterators;
  auto const iteratorMade = [&](Feature::EntrySet::iterator at) {
    ModelIterator made{at, {}, at == feature.entrySet().end(), generation};
    if (!made.isAtEnd) {
      made.key = at.key();
    } else if (!model.empty()) {
      made.key = *model.rbegin();  // where it has walked to the end
    }
    return made;
  };
  for (int step = 0; step < velmortest::manySteps; ++step) {
    U32 const range = step / 1000 % 2 == 0 ? 8 : 64;
    Entry const entry = entryOf(random() % 4, random() % range, "d", random());
    switch (random() % 16) {
      case 0:
      case 1:
      case 2:
      case 3:
      case 4:
      case 5:
        feature.entrySetIs(entry);
        model.insert(entry);
        break;
      case 6:
      case 7:
      case 8: {
        bool const isGone = model.erase(entry) != 0;
        ASSERT_EQ(feature.entrySetDel(entry), isGone);
        if (isGone) generation += 2;
        break;
      }
      case 9: {
        if (iterators.size() > 8) iterators.erase(iterators.begin());
        auto at = feature.entrySet().begin();
        for (U32 n = random() % (feature.entrySet().size() + 1); n != 0; --n) ++at;
        iterators.push_back(iteratorMade(at));
        break;
      }
      case 10: {
        if (iterators.empty()) break;
        ModelIterator& it = iterators[random() % iterators.size()];
        ASSERT_EQ(it.at.generation(), it.generation);
        // A stale iterator removes by its key. A fresh one at the end removes nothing.
        bool expected = false;
        if (it.key && !(it.isAtEnd && it.generation == generation)) {
          expected = model.erase(*it.key) != 0;
        }
        ASSERT_EQ(feature.entrySetDel(it.at), expected);
        if (expected) generation += 2;
        break;
      }
      case 11:
      case 12: {
        if (iterators.empty()) break;
        ModelIterator& it = iterators[random() % iterators.size()];
        if (it.isAtEnd) break;
        ++it.at;
        auto const next = model.upper_bound(*it.key);
        it.isAtEnd = next == model.end();
        ASSERT_EQ(it.at == feature.entrySet().end(), it.isAtEnd);
        if (!it.isAtEnd) {
          it.key = *next;
          ASSERT_TRUE(it.at.key() == *next);
        }
        break;
      }
      case 13:
        if (random() % 256 != 0) break;
        feature.entrySetDelAll();
        model.clear();
        generation += 2;
        break;
      default: {
        auto const present = model.find(entry);
        ASSERT_EQ(feature.entrySetHas(entry), present != model.end());
        if (present != model.end()) {
          ASSERT_EQ(feature.entrySet().find(entry)->hits(), present->hits());
        }
        break;
      }
    }
    ASSERT_EQ(feature.entrySet().size(), model.size());
    ASSERT_EQ(feature.entrySet().generation(), generation);
    ASSERT_EQ(feature.entrySet().removalGeneration(), generation);
    if (step % 256 == 0) {
      auto expected = model.begin();
      for (const Entry& walked : feature.entrySet()) {
        ASSERT_TRUE(walked == *expected);
        ASSERT_EQ(walked.hits(), expected->hits());
        ++expected;
      }
      ASSERT_TRUE(expected == model.end());
    }
  }
}

}  // namespace
}  // namespace VelmorTcam
