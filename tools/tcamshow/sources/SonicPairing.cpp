#include "sources/SonicPairing.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>

namespace tcamshow {
namespace {

/// An entry or a rule, to be joined with one of the other kind that has the same group and match.
struct Item {
  std::uint64_t group;
  std::uint64_t match;
  std::uint32_t index;

  bool operator<(const Item& other) const noexcept {
    return std::tie(group, match, index) < std::tie(other.group, other.match, other.index);
  }
  bool isBefore(const Item& other) const noexcept {
    return std::tie(group, match) < std::tie(other.group, other.match);
  }
};
using Items = std::vector<Item>;

/// Calls `use` for pairs of the same group and match, in the order of their indices. Each item is
/// in one pair at most.
template <class Use>
void join(Items& entries, Items& rules, const Use& use) {
  std::sort(entries.begin(), entries.end());
  std::sort(rules.begin(), rules.end());
  auto rule = rules.begin();
  for (auto entry = entries.begin(); entry != entries.end() && rule != rules.end();) {
    if (entry->isBefore(*rule)) {
      ++entry;
    } else if (rule->isBefore(*entry)) {
      ++rule;
    } else {
      use(entry++->index, rule++->index);
    }
  }
}

/// That a table of the ASIC is a table of the configuration, as many entries say.
struct Vote {
  std::uint32_t asic;
  std::uint32_t config;
  std::size_t count = 1;
};

/// Sums up the votes for the same pair.
void sum(std::vector<Vote>& votes) {
  std::sort(votes.begin(), votes.end(), [](const Vote& a, const Vote& b) {
    return std::tie(a.asic, a.config) < std::tie(b.asic, b.config);
  });
  std::size_t size = 0;
  for (const Vote& vote : votes) {
    if (size != 0 && votes[size - 1].asic == vote.asic && votes[size - 1].config == vote.config) {
      votes[size - 1].count += vote.count;
    } else {
      votes[size++] = vote;
    }
  }
  votes.resize(size);
}

class Pairing {
 public:
  Pairing(SonicModel& model, SonicEvidence& evidence) : model_(model), evidence_(evidence) {}

  void pair() {
    pairByCounters(true);
    pairByCounters(false);
    shareCounters();
    nameByCounters();
    pairInTables();
    // A table that gets its name may leave only one table for the next.
    for (int round = 0; round != 3 && nameByFields(); ++round) pairInTables();
    explainTheRest();
  }

 private:
  void assign(std::uint32_t entry, std::uint32_t rule) {
    model_.entries[entry].rule = rule;
    model_.entries[entry].isExplained = true;
    model_.rules[rule].isCarried = true;
  }

  template <class GroupOf>
  Items entryItems(const GroupOf& groupOf, bool byMatch = true) const {
    Items items;
    items.reserve(model_.entries.size());
    for (std::uint32_t i = 0; i != model_.entries.size(); ++i) {
      const SonicEntry& entry = model_.entries[i];
      if (entry.isExplained) continue;
      std::optional<std::uint64_t> const group = groupOf(entry);
      if (group) items.push_back({*group, byMatch ? evidence_.entryMatches[i] : 0, i});
    }
    return items;
  }
  template <class GroupOf>
  Items ruleItems(const GroupOf& groupOf) const {
    Items items;
    items.reserve(model_.rules.size());
    for (std::uint32_t i = 0; i != model_.rules.size(); ++i) {
      const SonicRule& rule = model_.rules[i];
      if (rule.isCarried) continue;
      std::optional<std::uint64_t> const group = groupOf(rule);
      if (group) items.push_back({*group, evidence_.ruleMatches[i], i});
    }
    return items;
  }

  /// Entries and rules of the same counter; of several, first those of the same fields.
  void pairByCounters(bool byMatch) {
    Items rules;
    rules.reserve(evidence_.counted.size());
    for (const SonicEvidence::Counted& counted : evidence_.counted) {
      if (model_.rules[counted.rule].isCarried) continue;
      rules.push_back(
          {counted.counter, byMatch ? evidence_.ruleMatches[counted.rule] : 0, counted.rule});
    }
    if (rules.empty()) return;
    Items entries = entryItems(
        [](const SonicEntry& entry) {
          return entry.counter == 0 ? std::nullopt : std::optional(entry.counter);
        },
        byMatch);
    join(entries, rules, [this](std::uint32_t entry, std::uint32_t rule) {
      // A rule may have several counters.
      if (!model_.rules[rule].isCarried) assign(entry, rule);
    });
  }

  /// One rule may have become several entries.
  void shareCounters() {
    std::vector<SonicEvidence::Counted>& counted = evidence_.counted;
    std::sort(counted.begin(), counted.end(), [](const auto& a, const auto& b) {
      return std::tie(a.counter, a.rule) < std::tie(b.counter, b.rule);
    });
    for (std::uint32_t i = 0; i != model_.entries.size(); ++i) {
      const SonicEntry& entry = model_.entries[i];
      if (entry.isExplained || entry.counter == 0) continue;
      auto const found = std::lower_bound(
          counted.begin(), counted.end(), entry.counter,
          [](const auto& each, std::uint64_t counter) { return each.counter < counter; });
      if (found != counted.end() && found->counter == entry.counter) assign(i, found->rule);
    }
  }

  void nameByCounters() {
    std::vector<Vote> votes;
    for (const SonicEntry& entry : model_.entries) {
      if (entry.rule == sonicNone) continue;
      votes.push_back({entry.table, model_.rules[entry.rule].table});
    }
    std::vector<SonicEvidence::CountedTable>& counted = evidence_.countedTables;
    std::sort(counted.begin(), counted.end(),
              [](const auto& a, const auto& b) { return a.counter < b.counter; });
    for (const SonicEntry& entry : model_.entries) {
      if (entry.counter == 0 || entry.isExplained) continue;
      auto const found = std::lower_bound(
          counted.begin(), counted.end(), entry.counter,
          [](const auto& each, std::uint64_t counter) { return each.counter < counter; });
      if (found != counted.end() && found->counter == entry.counter) {
        votes.push_back({entry.table, found->table});
      }
    }
    sum(votes);
    // Of each table the pair with the most votes; the first of those with as many.
    std::stable_sort(votes.begin(), votes.end(),
                     [](const Vote& a, const Vote& b) { return a.count > b.count; });
    for (const Vote& vote : votes) name(vote);
  }

  void name(const Vote& vote) {
    SonicTable& table = model_.tables[vote.asic];
    if (table.config != sonicNone) return;
    table.config = vote.config;
    SonicConfigTable& config = model_.configTables[vote.config];
    config.asic = std::min(config.asic, vote.asic);
  }

  /// Entries and rules of the same fields, in tables that have a name.
  void pairInTables() {
    Items entries = entryItems([this](const SonicEntry& entry) {
      std::uint32_t const config = model_.tables[entry.table].config;
      return config == sonicNone ? std::nullopt : std::optional<std::uint64_t>(config);
    });
    if (entries.empty()) return;
    Items rules =
        ruleItems([](const SonicRule& rule) { return std::optional<std::uint64_t>(rule.table); });
    join(entries, rules, [this](std::uint32_t entry, std::uint32_t rule) { assign(entry, rule); });
  }

  Items namelessEntries() const {
    return entryItems([this](const SonicEntry& entry) {
      const SonicTable& table = model_.tables[entry.table];
      return table.config != sonicNone ? std::nullopt
                                       : std::optional(static_cast<std::uint64_t>(table.stage));
    });
  }
  Items rulesWithoutTable() const {
    return ruleItems([this](const SonicRule& rule) {
      const SonicConfigTable& table = model_.configTables[rule.table];
      return table.asic != sonicNone ? std::nullopt
                                     : std::optional(static_cast<std::uint64_t>(table.stage));
    });
  }

  /// Names tables by rules whose priority and fields only one table has. False if none was named.
  bool nameByFields() {
    Items entries = namelessEntries();
    Items rules = rulesWithoutTable();
    if (entries.empty() || rules.empty()) return false;
    std::sort(entries.begin(), entries.end());
    std::sort(rules.begin(), rules.end());
    std::vector<Vote> votes;
    auto entry = entries.begin();
    for (auto rule = rules.begin(); rule != rules.end();) {
      std::uint32_t const table = model_.rules[rule->index].table;
      bool isOnly = true;
      auto const first = rule;
      for (; rule != rules.end() && !first->isBefore(*rule); ++rule) {
        isOnly = isOnly && model_.rules[rule->index].table == table;
      }
      while (entry != entries.end() && entry->isBefore(*first)) ++entry;
      for (; entry != entries.end() && !first->isBefore(*entry); ++entry) {
        if (isOnly) votes.push_back({model_.entries[entry->index].table, table});
      }
    }
    sum(votes);
    return nameClear(votes);
  }

  /// Names the tables that have more votes for each other than for or from any other table.
  bool nameClear(std::vector<Vote>& votes) {
    std::vector<Best> ofAsic(model_.tables.size());
    std::vector<Best> ofConfig(model_.configTables.size());
    for (const Vote& vote : votes) {
      ofAsic[vote.asic].add(vote.config, vote.count);
      ofConfig[vote.config].add(vote.asic, vote.count);
    }
    bool isSome = false;
    for (const Vote& vote : votes) {
      if (!ofAsic[vote.asic].isClearly(vote.config)) continue;
      if (!ofConfig[vote.config].isClearly(vote.asic)) continue;
      name(vote);
      isSome = true;
    }
    return isSome;
  }

  struct Best {
    std::size_t count = 0;
    std::uint32_t index = sonicNone;
    bool isTie = false;

    void add(std::uint32_t other, std::size_t votes) noexcept {
      if (votes > count) {
        *this = {votes, other, false};
      } else if (votes == count) {
        isTie = true;
      }
    }
    bool isClearly(std::uint32_t other) const noexcept { return index == other && !isTie; }
  };

  /// Rules that several tables have alike. The entries are there, but nobody knows which is which.
  void explainTheRest() {
    Items entries = namelessEntries();
    Items rules = rulesWithoutTable();
    join(entries, rules, [this](std::uint32_t entry, std::uint32_t rule) {
      model_.entries[entry].isExplained = true;
      model_.rules[rule].isCarried = true;
      model_.configTables[model_.rules[rule].table].isElsewhere = true;
    });
    for (const SonicRule& rule : model_.rules) {
      if (!rule.isCarried) model_.configTables[rule.table].isElsewhere = false;
    }
  }

  SonicModel& model_;
  SonicEvidence& evidence_;
};

}  // namespace

void pairSonicRules(SonicModel& model, SonicEvidence& evidence) { Pairing(model, evidence).pair(); }

}  // namespace tcamshow
