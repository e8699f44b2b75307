// What `lint` and `explain` say of real filter sets, beside a walk from filter to filter.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "questions/Explain.h"
#include "questions/Lint.h"
#include "sources/Classbench.h"

namespace tcamshow {
namespace {

struct Packet {
  std::uint32_t src, dst, sport, dport, proto, flags;
};

/// A filter as its line says it, read by nothing that the program uses.
struct Filter {
  std::uint32_t src, srcMask, dst, dstMask, sportLow, sportHigh, dportLow, dportHigh, proto,
      protoMask, flags, flagsMask;
  // Of an ICMP filter: the type in the high byte of one, the code in the low byte of the other.
  std::uint32_t sport, sportMask, dport, dportMask;

  bool matches(const Packet& packet) const {
    return ((packet.src ^ src) & srcMask) == 0 && ((packet.dst ^ dst) & dstMask) == 0 &&
           sportLow <= packet.sport && packet.sport <= sportHigh && dportLow <= packet.dport &&
           packet.dport <= dportHigh && ((packet.proto ^ proto) & protoMask) == 0 &&
           ((packet.flags ^ flags) & flagsMask) == 0 && ((packet.sport ^ sport) & sportMask) == 0 &&
           ((packet.dport ^ dport) & dportMask) == 0;
  }
};

std::vector<Filter> filtersOf(const std::string& path) {
  std::vector<Filter> filters;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    unsigned s[5], d[5];
    Filter filter{};
    int const count =
        std::sscanf(line.c_str(), "@%u.%u.%u.%u/%u %u.%u.%u.%u/%u %u : %u %u : %u %x/%x %x/%x",
                    &s[0], &s[1], &s[2], &s[3], &s[4], &d[0], &d[1], &d[2], &d[3], &d[4],
                    &filter.sportLow, &filter.sportHigh, &filter.dportLow, &filter.dportHigh,
                    &filter.proto, &filter.protoMask, &filter.flags, &filter.flagsMask);
    if (count < 16) {
      ADD_FAILURE() << line;
      return {};
    }
    auto const maskOf = [](unsigned length) { return length == 0 ? 0 : ~0U << (32 - length); };
    filter.srcMask = maskOf(s[4]);
    filter.src = (s[0] << 24 | s[1] << 16 | s[2] << 8 | s[3]) & filter.srcMask;
    filter.dstMask = maskOf(d[4]);
    filter.dst = (d[0] << 24 | d[1] << 16 | d[2] << 8 | d[3]) & filter.dstMask;
    if (filter.proto == 1 && filter.protoMask == 255) {
      filter.sportMask = filter.flagsMask & 0xFF00;
      filter.sport = filter.flags & filter.sportMask;
      filter.dportMask = filter.flagsMask & 0xFF;
      filter.dport = filter.flags & filter.dportMask;
      filter.flags = filter.flagsMask = 0;
    }
    // The flags of TCP are the low six bits of the high byte.
    filter.flagsMask = filter.flagsMask >> 8 & 0x3F;
    filter.flags = filter.flags >> 8 & filter.flagsMask;
    filters.push_back(filter);
  }
  return filters;
}

/// A walk through all filters. The source addresses stand by themselves: most filters are ruled out
/// by them, and memory is slow.
class Walk {
 public:
  explicit Walk(const std::vector<Filter>& filters) : filters_(filters) {
    for (const Filter& filter : filters) sources_.emplace_back(filter.src, filter.srcMask);
  }
  /// The number of the filter that takes the packet; their count where none does.
  std::size_t winner(const Packet& packet) const {
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      if (((packet.src ^ sources_[i].first) & sources_[i].second) != 0) continue;
      if (filters_[i].matches(packet)) return i;
    }
    return filters_.size();
  }

 private:
  const std::vector<Filter>& filters_;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> sources_;
};

/// Those that a packet of the filter may match, by its addresses, in order.
std::vector<std::size_t> neighboursOf(const std::vector<Filter>& filters, const Filter& filter) {
  std::vector<std::size_t> numbers;
  for (std::size_t i = 0; i < filters.size(); ++i) {
    const Filter& other = filters[i];
    if (((filter.src ^ other.src) & filter.srcMask & other.srcMask) == 0 &&
        ((filter.dst ^ other.dst) & filter.dstMask & other.dstMask) == 0) {
      numbers.push_back(i);
    }
  }
  return numbers;
}

/// As Walk::winner(), of a packet that matches none but the neighbours, and of those that stay.
std::size_t winnerAmong(const std::vector<Filter>& filters,
                        const std::vector<std::size_t>& neighbours, const Packet& packet,
                        const std::vector<bool>& isGone = {}) {
  for (std::size_t const i : neighbours) {
    if ((isGone.empty() || !isGone[i]) && filters[i].matches(packet)) return i;
  }
  return filters.size();
}

/// The corners of a filter (each field at one end), then random packets of it.
std::vector<Packet> packetsOf(const Filter& filter, unsigned randoms, std::mt19937& random) {
  auto const end = [](std::uint32_t value, std::uint32_t mask, bool isHigh, std::uint32_t all) {
    return isHigh ? value | (~mask & all) : value;
  };
  auto const port = [](std::uint32_t value, std::uint32_t fixed, std::uint32_t mask) {
    return (value & ~mask) | fixed;
  };
  std::vector<Packet> packets;
  for (unsigned corner = 0; corner < 64; ++corner) {
    auto const isHigh = [corner](unsigned field) { return (corner >> field & 1) != 0; };
    packets.push_back(
        {end(filter.src, filter.srcMask, isHigh(0), ~0U),
         end(filter.dst, filter.dstMask, isHigh(1), ~0U),
         port(isHigh(2) ? filter.sportHigh : filter.sportLow, filter.sport, filter.sportMask),
         port(isHigh(3) ? filter.dportHigh : filter.dportLow, filter.dport, filter.dportMask),
         end(filter.proto & filter.protoMask, filter.protoMask, isHigh(4), 255),
         end(filter.flags, filter.flagsMask, isHigh(5), 63)});
  }
  auto const bits = [&random] { return static_cast<std::uint32_t>(random()); };
  auto const between = [&bits](std::uint32_t low, std::uint32_t high) {
    return low + bits() % (high - low + 1);
  };
  for (unsigned i = 0; i < randoms; ++i) {
    packets.push_back(
        {filter.src | (bits() & ~filter.srcMask), filter.dst | (bits() & ~filter.dstMask),
         port(between(filter.sportLow, filter.sportHigh), filter.sport, filter.sportMask),
         port(between(filter.dportLow, filter.dportHigh), filter.dport, filter.dportMask),
         (filter.proto & filter.protoMask) | (bits() & ~filter.protoMask & 255),
         filter.flags | (bits() & ~filter.flagsMask & 63)});
  }
  return packets;
}

/// Gives a filter set's entries, each with the action that a number of it says.
class WithActions final : public Source {
 public:
  WithActions(Source& source, unsigned actions, Complaints& complaints)
      : Source(complaints), source_(source), actions_(actions) {}

  const std::string& fileName() const noexcept override { return source_.fileName(); }
  std::uint64_t lineNumber() const noexcept override { return source_.lineNumber(); }
  Item next() override {
    Item const item = source_.next();
    if (item == Item::entry) {
      entry_ = source_.entry();
      entry_.action = actionOf(entry_.shadowId - 1, actions_);
    }
    return item;
  }

  static const char* actionOf(std::uint64_t number, unsigned actions) {
    return number * 2654435761 / 64 % actions == 0 ? "permit" : "deny";
  }

 private:
  Source& source_;
  unsigned actions_;
};

struct RealSet {
  const char* name;
  std::size_t filters;
  std::size_t step;        ///< every so many redundant filters are tried without
  unsigned packetsOfDead;  ///< random ones of each dead filter, beside its corners
};

TEST(LintSets, HoldOnRealFilters) {
  std::string const directory = std::string(TCAMSHOW_SHARED_DATA) + "/classbench/";
  RealSet const sets[] = {
      {"acl1_1k", 942, 1, 1000},   {"acl2_1k", 961, 1, 1000},     {"fw1_1k", 857, 1, 1000},
      {"fw3_1k", 799, 1, 1000},    {"ipc1_1k", 974, 1, 1000},     {"acl1_10k", 9774, 32, 1000},
      {"fw1_10k", 9379, 32, 1000}, {"ipc2_10k", 10000, 32, 1000}, {"acl1_100k", 44473, 256, 50}};
  if (!std::ifstream(directory + sets[0].name)) GTEST_SKIP() << "no " << directory;
  std::mt19937 random(5);
  for (const RealSet& set : sets) {
    SCOPED_TRACE(set.name);
    auto const filters = filtersOf(directory + set.name);
    ASSERT_EQ(filters.size(), set.filters);
    Complaints complaints;
    auto const real = openClassbench(InputFile(directory + set.name), complaints);
    WithActions actions(*real, 2, complaints);
    EntryStore const store(actions);
    ASSERT_EQ(store.places().size(), 1U);
    const PlaceInfo& place = store.places().front();
    std::vector<bool> isDead(filters.size());
    std::vector<bool> isGone(filters.size());
    for (const LintFinding& finding :
         lintOf(store, place, usualLintClasses | bitOf(LintClass::redundant)).findings) {
      ASSERT_NE(finding.kind, LintClass::unknown);
      bool const isDeadNow = finding.kind == LintClass::shadowed ||
                             finding.kind == LintClass::duplicate ||
                             finding.kind == LintClass::empty;
      if (isDeadNow) isDead[finding.rule] = true;
      if (isDeadNow || finding.kind == LintClass::redundant) isGone[finding.rule] = true;
    }
    // Each that is not dead wins a packet, as a walk from the first filter on confirms.
    Walk const walk(filters);
    std::size_t live = 0;
    for (const Answer& answer : explain(store, place, packetsFromText("ip"))) {
      if (!answer.entry) continue;
      ASSERT_EQ(answer.verdict, Verdict::wins);
      std::uint32_t const number = *answer.entry;
      ASSERT_FALSE(isDead[number]) << number;
      ++live;
      const Match& match = *answer.packet;
      auto const low = [&match](Field field) {
        return static_cast<std::uint32_t>(match[field].low());
      };
      Packet const packet{low(Field::src),   low(Field::dst),   low(Field::sport),
                          low(Field::dport), low(Field::proto), low(Field::flags)};
      ASSERT_EQ(walk.winner(packet), number);
    }
    auto const dead = static_cast<std::size_t>(std::count(isDead.begin(), isDead.end(), true));
    EXPECT_EQ(live + dead, filters.size());
    std::size_t redundant = 0;
    // No packet of a dead one reaches it, and without the dead and the redundant each packet gets
    // the same action.
    for (std::size_t i = 0; i < filters.size(); ++i) {
      if (!isGone[i] || (!isDead[i] && redundant++ % set.step != 0)) continue;
      auto const neighbours = neighboursOf(filters, filters[i]);
      for (const Packet& packet :
           packetsOf(filters[i], isDead[i] ? set.packetsOfDead : 20, random)) {
        std::size_t const before = winnerAmong(filters, neighbours, packet);
        if (isDead[i]) {
          ASSERT_LT(before, i);
        }
        std::size_t const after = winnerAmong(filters, neighbours, packet, isGone);
        ASSERT_LT(after, filters.size());
        ASSERT_STREQ(WithActions::actionOf(before, 2), WithActions::actionOf(after, 2));
      }
    }
  }
}

}  // namespace
}  // namespace tcamshow
