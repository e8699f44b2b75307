// Findings of one place, beside a judge that lists all packets and shares none of the code.
#include "questions/LintPlace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace tcamshow {
namespace {

// A packet is 6 bits of flags and 2 of tc. An entry has a ternary match on the flags and a range on
// tc, an action, and perhaps another match, of two there are.
constexpr unsigned packetCount = 64 * 4;

struct Entry {
  unsigned value = 0;  // of the flags
  unsigned mask = 0;
  unsigned low = 0;  // of tc
  unsigned high = 3;
  unsigned priority = 0;
  unsigned action = 0;
  unsigned otherMatch = 0;  // 0: none, else 1 or 2
  bool isInstalled = true;
  bool countersAreProgrammed = false;
  unsigned hits = 0;

  bool allows(unsigned packet) const {
    unsigned const flags = packet % 64;
    unsigned const tc = packet / 64;
    return (flags & mask) == (value & mask) && low <= tc && tc <= high;
  }
  // `met`: bit i - 1 where the packet meets the other match i.
  bool matches(unsigned packet, unsigned met) const {
    return allows(packet) && (otherMatch == 0 || (met >> (otherMatch - 1) & 1) != 0);
  }
  bool isEmpty() const { return low > high; }
};
using Entries = std::vector<Entry>;

/// The expected findings, by the definitions alone: for every packet, and for all other matches
/// that it may meet.
class Judge {
 public:
  explicit Judge(const Entries& entries) : entries_(entries) {}

  /// The entry that takes the packet, of those that `counts` picks, from `from` on.
  template <class Counts>
  std::optional<unsigned> taker(unsigned packet, unsigned met, unsigned from, Counts counts) const {
    for (unsigned i = from; i < entries_.size(); ++i) {
      if (entries_[i].isInstalled && counts(i) && entries_[i].matches(packet, met)) return i;
    }
    return std::nullopt;
  }
  std::optional<unsigned> winner(unsigned packet, unsigned met) const {
    return taker(packet, met, 0, [](unsigned) { return true; });
  }

  bool isDuplicate(unsigned number) const {
    for (unsigned i = 0; i < number; ++i) {
      if (!entries_[i].isInstalled) continue;
      bool isSame = true;
      forAll([&](unsigned packet, unsigned met) {
        isSame =
            isSame && entries_[i].matches(packet, met) == entries_[number].matches(packet, met);
      });
      if (isSame) return true;
    }
    return false;
  }
  bool isShadowed(unsigned number) const {
    bool isOpen = false;
    forAll([&](unsigned packet, unsigned met) {
      isOpen = isOpen || (entries_[number].matches(packet, met) &&
                          !taker(packet, met, 0, [&](unsigned i) { return i < number; }));
    });
    return !isOpen;
  }
  bool isDead(unsigned number) const { return entries_[number].isEmpty() || isShadowed(number); }
  bool isConflictAt(unsigned number, unsigned packet) const {
    for (unsigned met = 0; met < 4; ++met) {
      if (!entries_[number].matches(packet, met)) return false;
      auto const won = winner(packet, met);
      if (!won || entries_[*won].action == entries_[number].action) return false;
    }
    return true;
  }
  bool isConflict(unsigned number) const {
    for (unsigned packet = 0; packet < packetCount; ++packet) {
      if (isConflictAt(number, packet)) return true;
    }
    return false;
  }
  std::optional<unsigned> tie(unsigned number) const {
    const Entry& entry = entries_[number];
    if (entry.otherMatch != 0) return std::nullopt;
    for (unsigned i = 0; i < number; ++i) {
      const Entry& other = entries_[i];
      if (!other.isInstalled || other.otherMatch != 0 || other.priority != entry.priority ||
          other.action == entry.action) {
        continue;
      }
      for (unsigned packet = 0; packet < packetCount; ++packet) {
        if (entry.allows(packet) && other.allows(packet)) return i;
      }
    }
    return std::nullopt;
  }
  /// Those that can be spared, judged from the last to the first.
  std::set<unsigned> redundant() const {
    std::set<unsigned> spared;
    for (auto number = static_cast<unsigned>(entries_.size()); number-- > 0;) {
      if (!entries_[number].isInstalled || isDead(number)) continue;
      auto const counts = [&](unsigned i) { return !spared.contains(i) && !isDead(i); };
      bool isSpared = true;
      forAll([&](unsigned packet, unsigned met) {
        if (!isSpared || !entries_[number].matches(packet, met)) return;
        if (taker(packet, met, 0, counts) != number) return;
        auto const next = taker(packet, met, number + 1, counts);
        isSpared = next && entries_[*next].action == entries_[number].action;
      });
      if (isSpared) spared.insert(number);
    }
    return spared;
  }

 private:
  template <class Visit>
  static void forAll(Visit visit) {
    for (unsigned packet = 0; packet < packetCount; ++packet) {
      for (unsigned met = 0; met < 4; ++met) visit(packet, met);
    }
  }

  const Entries& entries_;
};

Entries randomEntries(std::mt19937& random, bool withOtherMatches) {
  auto const below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
  Entries entries(2 + below(9));
  unsigned const bitsUsed = 1 + below(4);
  for (Entry& entry : entries) {
    // Few bits, so that entries meet each other.
    entry.mask = below(64) & below(64) & ((1U << bitsUsed) - 1);
    entry.value = below(64) & entry.mask;
    if (below(3) == 0) {
      entry.low = below(4);
      entry.high = below(4);
      if (entry.low > entry.high && below(3) != 0) std::swap(entry.low, entry.high);
    }
    entry.action = below(2);
    if (withOtherMatches && below(3) == 0) entry.otherMatch = 1 + below(2);
    entry.isInstalled = below(6) != 0;
    entry.countersAreProgrammed = below(2) == 0;
    entry.hits = below(2);
    entry.priority = below(3);
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.priority > b.priority; });
  return entries;
}

std::vector<LintFinding> findingsOf(const Entries& entries, LintClasses classes = allLintClasses) {
  auto const place = LintPlace::make(bitOf(Field::flags) | bitOf(Field::tc));
  for (const Entry& entry : entries) {
    Match match;
    match.restrict(Field::flags, FieldSet::cube(entry.value, entry.mask, 6));
    match.restrict(Field::tc, FieldSet::range(entry.low, entry.high, 8));
    LintRule rule;
    rule.hits = entry.hits;
    rule.priority = entry.priority;
    rule.action = entry.action;
    rule.otherMatch = entry.otherMatch;
    rule.isInstalled = entry.isInstalled;
    rule.countersAreProgrammed = entry.countersAreProgrammed;
    place->add(rule, match);
  }
  return place->findings(classes);
}

std::string textOf(const std::vector<LintFinding>& findings) {
  std::string text;
  for (const LintFinding& finding : findings) {
    text += std::to_string(finding.rule) + " " + std::string(lintClassName(finding.kind));
    if (finding.conflict) text += " conflict";
    for (unsigned const blamed : finding.blame) text += " <" + std::to_string(blamed);
    text += '\n';
  }
  return text;
}

/// Without whom is to blame, of which there may be several right answers.
std::string expectedText(const Entries& entries) {
  Judge const judge(entries);
  std::set<unsigned> const redundant = judge.redundant();
  std::string text;
  for (unsigned i = 0; i < entries.size(); ++i) {
    const Entry& entry = entries[i];
    auto const add = [&](LintClass kind, bool conflict = false) {
      text += std::to_string(i) + " " + std::string(lintClassName(kind)) +
              (conflict ? " conflict\n" : "\n");
    };
    if (!entry.isInstalled) add(LintClass::notInstalled);
    if (entry.isEmpty()) {
      add(LintClass::empty);
    } else if (judge.isDuplicate(i)) {
      add(LintClass::duplicate, judge.isConflict(i));
    } else if (judge.isShadowed(i)) {
      add(LintClass::shadowed, judge.isConflict(i));
    }
    if (judge.isDead(i) && entry.countersAreProgrammed && entry.hits != 0) {
      add(LintClass::deadButHit);
    }
    if (redundant.contains(i)) add(LintClass::redundant);
    if (entry.isInstalled && !entry.isEmpty() && judge.tie(i)) add(LintClass::tie);
    if (entry.isInstalled && entry.countersAreProgrammed && entry.hits == 0) {
      add(LintClass::neverHit);
    }
  }
  return text;
}

void expectBlamesHold(const Entries& entries, const std::vector<LintFinding>& findings) {
  Judge const judge(entries);
  for (const LintFinding& finding : findings) {
    const Entry& entry = entries[finding.rule];
    std::optional<unsigned> proof;
    if (finding.packet != nullptr) {
      proof = static_cast<unsigned>((*finding.packet)[Field::flags].low()) +
              64 * static_cast<unsigned>((*finding.packet)[Field::tc].low());
      ASSERT_TRUE(entry.allows(*proof));
    }
    if (finding.kind == LintClass::duplicate || finding.kind == LintClass::shadowed) {
      // The ones to blame hold all that the entry does.
      for (unsigned packet = 0; packet < packetCount; ++packet) {
        if (!entry.allows(packet)) continue;
        ASSERT_TRUE(std::any_of(finding.blame.begin(), finding.blame.end(), [&](unsigned i) {
          return i < finding.rule && entries[i].isInstalled && entries[i].allows(packet) &&
                 (entries[i].otherMatch == 0 || entries[i].otherMatch == entry.otherMatch);
        }));
      }
      ASSERT_EQ(finding.conflict, proof.has_value());
      if (proof) {
        ASSERT_TRUE(judge.isConflictAt(finding.rule, *proof));
        ASSERT_TRUE(std::find(finding.blame.begin(), finding.blame.end(),
                              *judge.winner(*proof, 0)) != finding.blame.end());
      }
    }
    if (finding.kind == LintClass::tie) {
      ASSERT_EQ(finding.blame, (std::vector<std::uint32_t>{*judge.tie(finding.rule)}));
      ASSERT_TRUE(proof && entries[finding.blame[0]].allows(*proof));
    }
  }
}

void liveRandomly(unsigned seed, int rounds, bool withOtherMatches) {
  std::mt19937 random(seed);
  std::array<int, lintClassCount> met{};
  int conflicts = 0;
  for (int round = 0; round < rounds; ++round) {
    Entries const entries = randomEntries(random, withOtherMatches);
    auto const findings = findingsOf(entries);
    std::string found;
    for (const LintFinding& finding : findings) {
      found += std::to_string(finding.rule) + " " + std::string(lintClassName(finding.kind)) +
               (finding.conflict ? " conflict\n" : "\n");
      ++met[static_cast<std::size_t>(finding.kind)];
      conflicts += finding.conflict ? 1 : 0;
    }
    ASSERT_EQ(found, expectedText(entries)) << "round " << round;
    ASSERT_NO_FATAL_FAILURE(expectBlamesHold(entries, findings)) << "round " << round;
  }
  // Each class was met often enough.
  for (std::size_t i = 0; i < lintClassCount; ++i) {
    if (static_cast<LintClass>(i) == LintClass::unknown) continue;
    EXPECT_GT(met[i], rounds / 40) << lintClassName(static_cast<LintClass>(i));
  }
  EXPECT_GT(conflicts, rounds / 40);
}

TEST(LintPlace, FindsWhatTheDefinitionsSay) { liveRandomly(1, 1'000, false); }

TEST(LintPlace, FindsWhatHoldsWhateverOtherMatchesMatch) { liveRandomly(2, 1'000, true); }

/// Removing all that are empty, dead or redundant changes no packet's action.
TEST(LintPlace, WhatItCallsDeadOrRedundantCanGo) {
  std::mt19937 random(3);
  for (int round = 0; round < 2'000; ++round) {
    Entries const entries = randomEntries(random, round % 2 == 0);
    std::set<unsigned> gone;
    for (const LintFinding& finding : findingsOf(entries)) {
      if (finding.kind == LintClass::empty || finding.kind == LintClass::duplicate ||
          finding.kind == LintClass::shadowed || finding.kind == LintClass::redundant) {
        gone.insert(finding.rule);
      }
    }
    Judge const judge(entries);
    for (unsigned packet = 0; packet < packetCount; ++packet) {
      for (unsigned met = 0; met < 4; ++met) {
        auto const before = judge.winner(packet, met);
        auto const after =
            judge.taker(packet, met, 0, [&gone](unsigned i) { return !gone.contains(i); });
        ASSERT_EQ(before.has_value(), after.has_value());
        if (before) {
          ASSERT_EQ(entries[*before].action, entries[*after].action);
        }
      }
    }
  }
}

Entry entry(unsigned value, unsigned mask, unsigned action, unsigned otherMatch = 0) {
  Entry made;
  made.value = value;
  made.mask = mask;
  made.action = action;
  made.otherMatch = otherMatch;
  return made;
}

TEST(LintPlace, BlamesTheFewThatDo) {
  struct Row {
    const char* name;
    Entries entries;
    const char* findings;
  } const rows[] = {
      {"one that holds all of it",
       {entry(0, 1, 0), entry(0, 0, 0), entry(1, 3, 0)},
       "2 shadowed <1\n"},
      {"two together", {entry(0, 1, 0), entry(1, 1, 0), entry(0, 0, 0)}, "2 shadowed <0 <1\n"},
      {"the largest share first",
       {entry(0, 3, 0), entry(2, 3, 0), entry(1, 1, 0), entry(0, 0, 0)},
       "3 shadowed <2 <0 <1\n"},
      {"the first of the same",
       {entry(0, 1, 0), entry(0, 1, 0), entry(0, 1, 0)},
       "1 duplicate <0\n2 duplicate <0\n"},
      {"who takes the proof packet is to blame",
       {entry(0, 3, 1), entry(0, 1, 0), entry(2, 3, 0)},
       "2 shadowed <1\n"},
      {"also beside one that holds all",
       {entry(0, 3, 1), entry(0, 1, 0), entry(0, 1, 0)},
       "2 duplicate conflict <1 <0\n"},
      {"rules of one other match cover each other",
       {entry(0, 1, 0, 1), entry(0, 3, 0, 1), entry(0, 3, 0, 2), entry(0, 3, 0)},
       "1 shadowed <0\n"},
      {"one without covers one with", {entry(0, 1, 0), entry(0, 1, 1, 1)}, "1 shadowed <0\n"},
      {"one that may take it with the same action hides the conflict",
       {entry(0, 0, 0, 1), entry(0, 0, 1), entry(0, 1, 0)},
       "2 shadowed <1\n"},
      {"not where another of the same other match is before it",
       {entry(0, 0, 1, 1), entry(0, 0, 0, 1), entry(0, 0, 1), entry(0, 1, 0)},
       "1 duplicate <0\n3 shadowed conflict <2\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    LintClasses const classes = bitOf(LintClass::duplicate) | bitOf(LintClass::shadowed);
    EXPECT_EQ(textOf(findingsOf(row.entries, classes)), row.findings);
  }
}

TEST(LintPlace, NamesItsClasses) {
  for (unsigned i = 0; i < lintClassCount; ++i) {
    auto const kind = static_cast<LintClass>(i);
    EXPECT_EQ(lintClassByName(lintClassName(kind)), kind);
  }
  EXPECT_EQ(lintClassByName("dead"), std::nullopt);
}

}  // namespace
}  // namespace tcamshow
