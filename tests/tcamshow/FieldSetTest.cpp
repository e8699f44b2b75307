// Sets of field values, beside the sets of their elements.
#include "match/FieldSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <random>
#include <set>
#include <vector>

namespace tcamshow {
namespace {

// Few bits, so that a set's elements can be listed.
constexpr unsigned bits = 6;
constexpr unsigned values = 1U << bits;
using Elements = std::set<unsigned>;

Elements elementsOf(const FieldSet& set) {
  Elements elements;
  for (unsigned value = 0; value < values; ++value) {
    if (set.has(value)) elements.insert(value);
  }
  return elements;
}

class Sets {
 public:
  explicit Sets(unsigned seed) : random_(seed) {}

  /// A cube, a range, or what is in both; none where that is nothing.
  std::optional<FieldSet> next() {
    unsigned const shape = below(4);
    auto const cube = FieldSet::cube(below(values), below(values), bits);
    unsigned const a = below(values);
    unsigned const b = below(values);
    auto const range = FieldSet::range(std::min(a, b), std::max(a, b), bits);
    if (shape == 0) return cube;
    if (shape == 1) return range;
    if (shape == 2) return FieldSet::prefix(a, below(bits + 1), bits);
    return cube->intersection(*range);
  }

 private:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  std::mt19937 random_;
};

TEST(FieldSet, HoldsWhatItsElementsSay) {
  Sets sets(1);
  int checked = 0;
  for (int round = 0; round < 40'000; ++round) {
    auto const a = sets.next();
    auto const b = sets.next();
    if (!a || !b) continue;
    ++checked;
    Elements const inA = elementsOf(*a);
    Elements const inB = elementsOf(*b);
    ASSERT_FALSE(inA.empty());
    ASSERT_EQ(*inA.begin(), static_cast<unsigned>(a->low()));
    ASSERT_EQ(*inA.rbegin(), static_cast<unsigned>(a->high()));
    ASSERT_EQ(a->size(), static_cast<double>(inA.size()));
    ASSERT_EQ(a->isExact(), inA.size() == 1);
    ASSERT_EQ(a->isRange(), *inA.rbegin() - *inA.begin() + 1 == inA.size());
    ASSERT_EQ(a->isAny(bits), inA.size() == values);
    // The form is canonical: sets are equal where their elements are.
    ASSERT_EQ(*a == *b, inA == inB);
    ASSERT_EQ(a->contains(*b), std::includes(inA.begin(), inA.end(), inB.begin(), inB.end()));
    Elements both;
    std::set_intersection(inA.begin(), inA.end(), inB.begin(), inB.end(),
                          std::inserter(both, both.end()));
    ASSERT_EQ(a->overlaps(*b), !both.empty());
    auto const common = a->intersection(*b);
    ASSERT_EQ(common.has_value(), !both.empty());
    if (!common) continue;
    ASSERT_EQ(elementsOf(*common), both);
    FieldSets pieces;
    a->differenceAppend(*b, pieces);
    Elements left;
    for (const FieldSet& piece : pieces) {
      for (unsigned const element : elementsOf(piece)) {
        ASSERT_TRUE(left.insert(element).second) << "the pieces overlap";
      }
    }
    Elements expected;
    std::set_difference(inA.begin(), inA.end(), inB.begin(), inB.end(),
                        std::inserter(expected, expected.end()));
    ASSERT_EQ(left, expected);
  }
  EXPECT_GT(checked, 20'000);
}

TEST(FieldSet, PicksOnlyElementsAndEachByItself) {
  Sets sets(2);
  for (int round = 0; round < 500; ++round) {
    auto const set = sets.next();
    if (!set) continue;
    for (unsigned drawn = 0; drawn < values; ++drawn) {
      ASSERT_TRUE(set->has(set->picked(drawn)));
      if (set->has(drawn)) {
        ASSERT_TRUE(set->picked(drawn) == drawn);
      }
    }
  }
}

TEST(FieldSet, UnionsHoldWhatTheirPiecesSay) {
  Sets sets(3);
  for (int round = 0; round < 3'000; ++round) {
    FieldSets a;
    FieldSets b;
    Elements inA;
    Elements inB;
    for (int i = 0; i < 3; ++i) {
      if (auto const set = sets.next()) {
        uniteWith(a, *set);
        inA.merge(elementsOf(*set));
      }
      if (auto const set = sets.next(); set && i < 2) {
        uniteWith(b, *set);
        inB.merge(elementsOf(*set));
      }
    }
    std::size_t pieces = 0;
    for (const FieldSet& piece : a) pieces += elementsOf(piece).size();
    ASSERT_EQ(pieces, inA.size()) << "the pieces overlap";
    ASSERT_EQ(isWithin(b, a), std::includes(inA.begin(), inA.end(), inB.begin(), inB.end()));
    ASSERT_EQ(overlap(a, b),
              std::any_of(inA.begin(), inA.end(), [&inB](unsigned x) { return inB.contains(x); }));
  }
}

// Widths at which arithmetic could go over, and the ends of ranges there.
TEST(FieldSet, ReachesTheEndsOfEveryWidth) {
  for (unsigned const width : {1U, 8U, 16U, 32U, 48U, 63U, 64U, 65U, 127U, 128U}) {
    SCOPED_TRACE(width);
    Word const most = lowOnes(width);
    FieldSet const any = FieldSet::any(width);
    EXPECT_TRUE(any.isAny(width));
    EXPECT_TRUE(any.isRange());
    EXPECT_EQ(any.prefixLength(width), 0U);
    EXPECT_TRUE(*FieldSet::range(0, most, width) == any);
    EXPECT_TRUE(*FieldSet::cube(0, 0, width) == any);
    EXPECT_TRUE(FieldSet::prefix(most, 0, width) == any);
    FieldSet const top = FieldSet::prefix(most, width, width);
    EXPECT_TRUE(top == FieldSet::exactly(most));
    EXPECT_EQ(top.prefixLength(width), width);
    EXPECT_TRUE(*FieldSet::range(most, most, width) == top);
    FieldSets pieces;
    any.differenceAppend(top, pieces);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_TRUE(pieces[0].low() == 0 && pieces[0].high() == most - 1);
    pieces.clear();
    any.differenceAppend(FieldSet::exactly(0), pieces);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_TRUE(pieces[0].low() == 1 && pieces[0].high() == most);
    // A cube of the highest bit alone, cut by ranges on both sides of it.
    Word const half = Word{1} << (width - 1);
    auto const upper = FieldSet::cube(half, half, width);
    EXPECT_TRUE(upper->low() == half && upper->high() == most);
    if (width > 1) {
      EXPECT_FALSE(upper->overlaps(*FieldSet::range(0, half - 1, width)));
    }
    EXPECT_TRUE(upper->overlaps(*FieldSet::range(0, half, width)));
  }
}

TEST(FieldSet, ComparesBitsBeyondTheFieldWithZero) {
  EXPECT_FALSE(FieldSet::cube(0x100, 0x1FF, 8).has_value());
  EXPECT_TRUE(FieldSet::cube(0x100, 0xFF, 8).has_value());
  EXPECT_TRUE(*FieldSet::cube(0x42, 0xFFFFFFFF, 8) == FieldSet::exactly(0x42));
  EXPECT_FALSE(FieldSet::range(256, 300, 8).has_value());
  EXPECT_FALSE(FieldSet::range(5, 4, 8).has_value());
  EXPECT_TRUE(*FieldSet::range(250, 300, 8) == *FieldSet::range(250, 255, 8));
}

}  // namespace
}  // namespace tcamshow
