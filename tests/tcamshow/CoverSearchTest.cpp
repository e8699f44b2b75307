// Boxes cut into pieces, beside lists of all packets.
#include "match/CoverSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <random>
#include <vector>

#include "match/OverlapIndex.h"

namespace tcamshow {
namespace {

// Fields of few bits, so that all packets can be listed: flags, frag, and two bits of tc.
constexpr std::size_t packetCount = 64 * 2 * 4;
using PacketSet = std::bitset<packetCount>;

struct SmallPacket {
  unsigned flags;
  unsigned frag;
  unsigned tc;
};
SmallPacket packetOf(std::size_t number) {
  return {static_cast<unsigned>(number % 64), static_cast<unsigned>(number / 64 % 2),
          static_cast<unsigned>(number / 128)};
}

class Matches {
 public:
  explicit Matches(unsigned seed) : random_(seed) {}

  Match next() {
    for (;;) {
      Match match;
      match.restrict(Field::tc, FieldSet::range(0, 3, 8));
      limit(match, Field::flags, 6);
      limit(match, Field::frag, 1);
      limit(match, Field::tc, 2);
      if (!match.isEmpty()) return match;
    }
  }
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

 private:
  void limit(Match& match, Field field, unsigned bits) {
    unsigned const most = 1U << bits;
    unsigned const width = bitsOf(field);
    switch (below(4)) {
      case 0:
        break;
      case 1:
        match.restrict(field, FieldSet::cube(below(most), below(most), width));
        break;
      case 2: {
        unsigned const a = below(most);
        unsigned const b = below(most);
        match.restrict(field, FieldSet::range(std::min(a, b), std::max(a, b), width));
        break;
      }
      default:
        match.restrict(field, FieldSet::cube(below(most), below(most), width));
        match.restrict(field, FieldSet::range(0, below(most), width));
        break;
    }
  }

  std::mt19937 random_;
};

PacketSet packetsOf(const Match& match) {
  PacketSet packets;
  for (std::size_t number = 0; number < packetCount; ++number) {
    auto const packet = packetOf(number);
    packets[number] = match.has(Field::flags, packet.flags) &&
                      match.has(Field::frag, packet.frag) && match.has(Field::tc, packet.tc);
  }
  return packets;
}

constexpr FieldMask smallFields = bitOf(Field::flags) | bitOf(Field::frag) | bitOf(Field::tc);

// Both words that boxes are made of.
template <class W>
class Boxes : public testing::Test {};
using Words = testing::Types<Word, std::uint64_t>;
TYPED_TEST_SUITE(Boxes, Words);

TYPED_TEST(Boxes, DifferencesAndIntersectionsAreExact) {
  Matches matches(1);
  BoxSpace<TypeParam> const space(smallFields);
  for (int round = 0; round < 5'000; ++round) {
    Match const a = matches.next();
    Match const b = matches.next();
    PacketSet const inA = packetsOf(a);
    PacketSet const inB = packetsOf(b);
    BoxList<TypeParam> both(space.fields());
    space.push(a, both);
    space.push(b, both);
    ASSERT_EQ(a.overlaps(b), (inA & inB).any());
    ASSERT_EQ(space.overlap(both[0], both[1]), (inA & inB).any());
    ASSERT_EQ(a.contains(b), (inB & ~inA).none());
    ASSERT_EQ(space.contains(both[0], both[1]), (inB & ~inA).none());
    ASSERT_EQ(a == b, inA == inB);
    BoxList<TypeParam> pieces(space.fields());
    ASSERT_EQ(space.intersectionAppend(both[0], both[1], pieces), (inA & inB).any());
    if (pieces.empty()) continue;
    ASSERT_EQ(packetsOf(space.matchOf(pieces[0])), inA & inB);
    pieces.clear();
    space.differenceAppend(both[0], both[1], pieces);
    PacketSet left;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      PacketSet const piece = packetsOf(space.matchOf(pieces[i]));
      ASSERT_TRUE((left & piece).none()) << "the pieces overlap";
      ASSERT_TRUE(piece.any());
      left |= piece;
    }
    ASSERT_EQ(left, inA & ~inB);
  }
}

TYPED_TEST(Boxes, CoverIsAsTheListOfPackets) {
  Matches matches(2);
  BoxSpace<TypeParam> const space(smallFields);
  int covered = 0;
  int coveredByMany = 0;
  for (int round = 0; round < 4'000; ++round) {
    BoxList<TypeParam> boxes(space.fields());
    std::vector<PacketSet> packets;
    unsigned const count = matches.below(14);
    std::vector<std::uint32_t> candidates;
    PacketSet all;
    for (std::uint32_t i = 0; i < count; ++i) {
      Match const match = matches.next();
      space.push(match, boxes);
      packets.push_back(packetsOf(match));
      if (matches.below(5) == 0) continue;  // in the list, and not asked for
      candidates.push_back(i);
      all |= packets.back();
    }
    Match const asked = matches.next();
    PacketSet const inAsked = packetsOf(asked);
    BoxList<TypeParam> box(space.fields());
    space.push(asked, box);
    CoverSearch<TypeParam> search(space);
    CoverAnswer const answer = search.ask(box[0], candidates, boxes);
    if ((inAsked & ~all).none()) {
      ASSERT_EQ(answer, CoverAnswer::covered);
      PacketSet byUsed;
      for (std::uint32_t const used : search.used()) {
        ASSERT_NE(std::find(candidates.begin(), candidates.end(), used), candidates.end());
        byUsed |= packets[used];
      }
      ASSERT_TRUE((inAsked & ~byUsed).none());
      ++covered;
      coveredByMany += search.used().size() > 1 ? 1 : 0;
      // None of the used can be spared.
      for (std::uint32_t const spared : search.used()) {
        PacketSet others;
        for (std::uint32_t const used : search.used()) {
          if (used != spared) others |= packets[used];
        }
        ASSERT_TRUE((inAsked & ~others).any());
      }
    } else {
      ASSERT_EQ(answer, CoverAnswer::open);
      PacketSet const witness = packetsOf(space.matchOf(search.witness()));
      ASSERT_TRUE(witness.any());
      ASSERT_TRUE((witness & ~inAsked).none());
      ASSERT_TRUE((witness & all).none());
    }
  }
  EXPECT_GT(covered, 500);
  EXPECT_GT(coveredByMany, 100);
}

// Each value of a field is a candidate of its own; all together cover, and one less does not.
TYPED_TEST(Boxes, CoverLeavesWhatOneOfManyLacks) {
  BoxSpace<TypeParam> const space(bitOf(Field::dport) | bitOf(Field::src));
  BoxList<TypeParam> boxes(space.fields());
  std::vector<std::uint32_t> candidates;
  for (std::uint32_t port = 0; port < 65536; port += 64) {
    Match match;
    match.restrict(Field::dport, FieldSet::range(port, port + 63, 16));
    space.push(match, boxes);
    candidates.push_back(port / 64);
  }
  BoxList<TypeParam> any(space.fields());
  space.push(Match(), any);
  CoverSearch<TypeParam> search(space);
  EXPECT_EQ(search.ask(any[0], candidates, boxes), CoverAnswer::covered);
  EXPECT_EQ(search.used().size(), candidates.size());
  candidates.erase(candidates.begin() + 700);
  ASSERT_EQ(search.ask(any[0], candidates, boxes), CoverAnswer::open);
  Match const witness = space.matchOf(search.witness());
  EXPECT_TRUE(FieldSet::range(700 * 64, 700 * 64 + 63, 16)->contains(witness[Field::dport]));
}

// Squares in no order. A piece meets few of them.
TYPED_TEST(Boxes, CoverBySquaresLeavesWhatOneLacks) {
  constexpr std::uint32_t side = 32;
  constexpr std::uint32_t step = 65536 / side;
  BoxSpace<TypeParam> const space(bitOf(Field::sport) | bitOf(Field::dport));
  BoxList<TypeParam> boxes(space.fields());
  std::vector<Match> squares;
  std::vector<std::uint32_t> candidates;
  for (std::uint32_t number = 0; number < side * side; ++number) {
    std::uint32_t const sport = number / side * step;
    std::uint32_t const dport = number % side * step;
    Match match;
    match.restrict(Field::sport, FieldSet::range(sport, sport + step - 1, 16));
    match.restrict(Field::dport, FieldSet::range(dport, dport + step - 1, 16));
    space.push(match, boxes);
    squares.push_back(match);
    candidates.push_back(number);
  }
  std::mt19937 random(9);
  std::shuffle(candidates.begin(), candidates.end(), random);
  BoxList<TypeParam> any(space.fields());
  space.push(Match(), any);
  CoverSearch<TypeParam> search(space);
  EXPECT_EQ(search.ask(any[0], candidates, boxes), CoverAnswer::covered);
  EXPECT_EQ(search.used().size(), candidates.size());
  for (int round = 0; round < 20; ++round) {
    std::swap(candidates[random() % candidates.size()], candidates.back());
    std::uint32_t const missing = candidates.back();
    candidates.pop_back();
    ASSERT_EQ(search.ask(any[0], candidates, boxes), CoverAnswer::open);
    EXPECT_TRUE(squares[missing].contains(space.matchOf(search.witness())));
    candidates.push_back(missing);
  }
}

// One bit of each field: the pieces double with each candidate that is taken away.
TYPED_TEST(Boxes, CoverIsUnknownAtItsBound) {
  BoxSpace<TypeParam> const space(bitOf(Field::src) | bitOf(Field::dst));
  BoxList<TypeParam> boxes(space.fields());
  std::vector<std::uint32_t> candidates;
  // x_i and y_i are not both 1, for any i; and not both 0: 2^32 packets are left out of 2^64, all
  // of which the last candidate takes but one.
  for (unsigned bit = 0; bit < 32; ++bit) {
    for (bool const value : {false, true}) {
      Match match;
      Word const one = Word{1} << bit;
      match.restrict(Field::src, FieldSet::cube(value ? one : 0, one, 32));
      match.restrict(Field::dst, FieldSet::cube(value ? one : 0, one, 32));
      candidates.push_back(static_cast<std::uint32_t>(boxes.size()));
      space.push(match, boxes);
    }
  }
  BoxList<TypeParam> any(space.fields());
  space.push(Match(), any);
  CoverSearch<TypeParam> search(space);
  EXPECT_EQ(search.ask(any[0], candidates, boxes, 1), CoverAnswer::unknown);
  // With a bound that serves, the answer is exact: dst is the complement of src.
  ASSERT_EQ(search.ask(any[0], candidates, boxes), CoverAnswer::open);
  Match const witness = space.matchOf(search.witness());
  EXPECT_TRUE(witness[Field::src].low() == (~witness[Field::dst].low() & lowOnes(32)));
}

TYPED_TEST(Boxes, CoverOfNoCandidatesIsOpen) {
  BoxSpace<TypeParam> const space(0);
  EXPECT_EQ(space.fields(), 1U);
  BoxList<TypeParam> any(space.fields());
  space.push(Match(), any);
  CoverSearch<TypeParam> search(space);
  EXPECT_EQ(search.ask(any[0], {}, any), CoverAnswer::open);
  std::uint32_t const itself = 0;
  EXPECT_EQ(search.ask(any[0], {&itself, 1}, any), CoverAnswer::covered);
  EXPECT_EQ(search.used(), (std::vector<std::uint32_t>{0}));
}

TEST(OverlapIndex, FindsWhatOverlaps) {
  std::mt19937_64 random(7);
  BoxSpace<Word> const space(0xFFFF);
  OverlapIndex<Word> index(space);
  std::vector<Match> matches;
  auto const next = [&] {
    Match match;
    for (std::size_t i = 0; i < fieldCount; ++i) {
      auto const field = static_cast<Field>(i);
      unsigned const bits = bitsOf(field);
      if (random() % 3 != 0) continue;
      Word const value =
          Word{random() & random() & random()} << (bits > 64 ? 64 : 0) | (random() & random());
      if (random() % 2 == 0) {
        match.restrict(field,
                       FieldSet::prefix(value, static_cast<unsigned>(random() % (bits + 1)), bits));
      } else {
        match.restrict(field,
                       FieldSet::range(value & lowOnes(bits) / 2, lowOnes(bits) / 2 + value, bits));
      }
    }
    return match;
  };
  // Also where a block ends, and one begins.
  for (int i = 0; i < 500; ++i) {
    Match const match = next();
    if (match.isEmpty()) continue;
    BoxList<Word> box(space.fields());
    space.push(match, box);
    index.add(box[0]);
    matches.push_back(match);
    auto const from = static_cast<std::uint32_t>(random() % matches.size());
    auto const to = static_cast<std::uint32_t>(random() % (matches.size() + 1));
    std::vector<std::uint32_t> found;
    index.overlapping(box[0], from, to, found);
    std::vector<std::uint32_t> expected;
    for (std::uint32_t j = from; j < to; ++j) {
      if (matches[j].overlaps(match)) expected.push_back(j);
    }
    ASSERT_EQ(found, expected);
  }
}

}  // namespace
}  // namespace tcamshow
