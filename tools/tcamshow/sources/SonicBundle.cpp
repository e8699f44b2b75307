#include "sources/SonicBundle.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "io/InputError.h"
#include "io/KeyedHash.h"
#include "io/SafeText.h"
#include "match/Match.h"
#include "snapshot/JsonParser.h"
#include "sources/NumberText.h"

namespace tcamshow {
namespace {

constexpr WarningKind controlPlaneTable;
constexpr WarningKind badPriority;

constexpr std::string_view asicStart = "ASIC_STATE:SAI_OBJECT_TYPE_ACL_";
constexpr std::string_view tableStart = "ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:";
constexpr std::string_view entryStart = "ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:";
constexpr std::string_view rangeStart = "ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:";
constexpr std::string_view configTableStart = "ACL_TABLE|";
constexpr std::string_view ruleStart = "ACL_RULE|";
constexpr std::string_view countersStart = "COUNTERS:";
constexpr std::string_view objectStart = "oid:";
constexpr std::string_view tableStatisticsStart = "CRM:ACL_TABLE_STATS:";
constexpr std::string_view ruleMap = "ACL_COUNTER_RULE_MAP";
constexpr std::string_view stateStart = "ACL_RULE_TABLE|";

/// Checks a text that goes out.
void checkText(const SonicDatabase& database, const char* at, std::string_view key,
               std::string_view text) {
  if (text.size() > longestSonicText) database.fail(at, key, "the text is longer than 32 KiB");
  if (findControl(text) != text.npos) {
    database.fail(at, key, inQuotes(text) + " holds a control character");
  }
}

std::uint64_t numberOf(const SonicDatabase& database, std::string_view key, std::string_view name,
                       const JsonField& field, std::uint64_t largest) {
  std::uint64_t number = 0;
  if (!field.isText || !numberFromText(field.text, largest, number)) {
    database.fail(field.begin, key,
                  shownName(name) + ": " + (field.isText ? inQuotes(field.text) : "a collection") +
                      " is not a number from 0 to " + std::to_string(largest));
  }
  return number;
}

bool isEqual(std::string_view a, std::string_view upper) noexcept {
  return std::equal(a.begin(), a.end(), upper.begin(), upper.end(),
                    [](char x, char y) { return (x >= 'a' && x <= 'z' ? x - 'a' + 'A' : x) == y; });
}

template <class Rows>
void sortById(Rows& rows) {
  std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
}
template <class Rows>
auto findById(Rows& rows, std::uint64_t id) {
  auto const found =
      std::lower_bound(rows.begin(), rows.end(), id,
                       [](const auto& each, std::uint64_t wanted) { return each.id < wanted; });
  return found != rows.end() && found->id == id ? found : rows.end();
}
/// The first row of an order whose neighbour is the same.
template <class Rows, class AreSame>
auto findTwice(const Rows& rows, const AreSame& areSame) {
  auto const found = std::adjacent_find(rows.begin(), rows.end(), areSame);
  return found == rows.end() ? found : std::next(found);
}

/// A hash of what rules of one priority and the same fields have in common. The rest of the match
/// has other words in the two databases, and so does the family.
std::uint64_t matchHash(Entry& entry, std::string& scratch) {
  entry.table = Table::tcam;
  scratch.clear();
  matchOf(entry).keyAppend(scratch);
  return keyedHash(entry.priority, scratch);
}

}  // namespace

SonicBundle::SonicBundle(const std::string& path, Complaints& complaints) {
  SonicDirectory const directory(path);
  auto const fileOf = [&](SonicDatabaseKind kind) { return directory.fileOf(kind); };
  readAsic(*fileOf(SonicDatabaseKind::asic));
  if (auto const& file = fileOf(SonicDatabaseKind::config)) readConfig(*file, complaints);
  if (auto const& file = fileOf(SonicDatabaseKind::counters)) readCounters(*file);
  if (auto const& file = fileOf(SonicDatabaseKind::state)) readState(*file);
  joined_ = {};
  pairSonicRules(model_, evidence_);
  evidence_ = {};
}

// --- the ASIC

void SonicBundle::readAsic(const std::string& path) {
  asic_ = std::make_unique<SonicDatabase>(path, SonicDatabaseKind::asic);
  constexpr std::string_view starts[] = {asicStart};
  asic_->eachRow(starts, [&](std::string_view key, std::string_view row) {
    std::string_view const start = key.starts_with(entryStart)   ? entryStart
                                   : key.starts_with(tableStart) ? tableStart
                                   : key.starts_with(rangeStart) ? rangeStart
                                                                 : std::string_view();
    if (start.empty()) return;  // counters, groups of tables and their members
    std::uint64_t id = 0;
    if (!objectIdFromText(key.substr(start.size()), id)) {
      asic_->fail(row.data(), key, "the key does not end in an object id");
    }
    if (start == entryStart) {
      SonicEntry entry;
      entry.id = id;
      entry.key = key;
      entry.row = row;
      model_.entries.push_back(entry);
    } else if (start == tableStart) {
      addTable(key, row, id);
    } else {
      ranges_.push_back(readRangeObject(*asic_, key, row));
      ranges_.back().id = id;
    }
  });
  sortById(model_.tables);
  sortById(model_.entries);
  sortById(ranges_);
  auto const haveSameId = [](const auto& a, const auto& b) { return a.id == b.id; };
  auto const twice = findTwice(model_.entries, haveSameId);
  if (twice != model_.entries.end()) asic_->fail(twice->row.data(), twice->key, "stands twice");
  auto const fail = [this](std::string_view what) {
    throw InputError(asic_->fileName(), 0, std::string(what) + " of the same id stand twice");
  };
  if (findTwice(model_.tables, haveSameId) != model_.tables.end()) fail("tables");
  if (findTwice(ranges_, haveSameId) != ranges_.end()) fail("ranges");
  entryReader_ = std::make_unique<AsicEntryReader>(*asic_, ranges_);
  checkEntries();
}

void SonicBundle::addTable(std::string_view key, std::string_view row, std::uint64_t id) {
  constexpr std::string_view start = "SAI_ACL_STAGE_";
  SonicTable table;
  table.id = id;
  bool hasStage = false;
  asic_->eachField(row, [&](std::string_view name, const JsonField& field) {
    if (name != "SAI_ACL_TABLE_ATTR_ACL_STAGE") return;
    std::string_view stage = field.text;
    if (stage.starts_with(start)) stage.remove_prefix(start.size());
    hasStage = true;
    if (stage == "INGRESS" || stage == "INGRESS_MACSEC") {
      table.stage = Stage::ingress;
    } else if (stage == "EGRESS" || stage == "EGRESS_MACSEC") {
      table.stage = Stage::egress;
    } else if (stage == "PRE_INGRESS") {
      table.stage = Stage::lookup;
    } else {
      asic_->fail(field.begin, key, "ACL_STAGE: " + inQuotes(field.text) + " is not a stage");
    }
  });
  if (!hasStage) asic_->fail(row.data(), key, "SAI_ACL_TABLE_ATTR_ACL_STAGE is missing");
  model_.tables.push_back(table);
}

void SonicBundle::checkEntries() {
  Entry read;
  std::string scratch;
  evidence_.entryMatches.reserve(model_.entries.size());
  for (SonicEntry& entry : model_.entries) {
    read.clear();
    AsicEntryReader::Ids const ids = entryReader_->read(entry.key, entry.row, read);
    auto const table = findById(model_.tables, ids.table);
    if (table == model_.tables.end()) {
      asic_->fail(entry.row.data(), entry.key, "the table of TABLE_ID is not in the database");
    }
    entry.table = static_cast<std::uint32_t>(table - model_.tables.begin());
    entry.counter = ids.counter;
    entry.priority = read.priority;
    evidence_.entryMatches.push_back(matchHash(read, scratch));
  }
}

// --- the configuration

void SonicBundle::readConfig(const std::string& path, Complaints& complaints) {
  config_ = std::make_unique<SonicDatabase>(path, SonicDatabaseKind::config);
  ruleReader_ = std::make_unique<ConfigRuleReader>(*config_);
  constexpr std::string_view starts[] = {configTableStart, ruleStart};
  config_->eachRow(starts, [&](std::string_view key, std::string_view row) {
    if (key.starts_with(configTableStart)) {
      std::string_view const name = key.substr(configTableStart.size());
      addConfigTable(key, name, row);
      if (model_.configTables.back().isControlPlane) {
        complaints.warn(controlPlaneTable, [&] {
          return config_->warning(key, row,
                                  "a control-plane table is not in the TCAM: it is left out");
        });
      }
      return;
    }
    SonicRule rule;
    rule.key = key.substr(ruleStart.size());
    rule.row = row;
    checkText(*config_, row.data(), key, rule.key);
    if (rule.key.find('|') == rule.key.npos) {
      config_->fail(row.data(), key, "the key does not name a table and a rule");
    }
    model_.rules.push_back(rule);
  });
  auto const byName = [](const auto& a, const auto& b) { return a.name < b.name; };
  std::sort(model_.configTables.begin(), model_.configTables.end(), byName);
  auto const table =
      findTwice(model_.configTables, [](const auto& a, const auto& b) { return a.name == b.name; });
  if (table != model_.configTables.end()) {
    throw InputError(path, 0,
                     std::string(configTableStart) + shownName(table->name) + ": stands twice");
  }
  std::sort(model_.rules.begin(), model_.rules.end(),
            [](const SonicRule& a, const SonicRule& b) { return a.key < b.key; });
  auto const rule =
      findTwice(model_.rules, [](const auto& a, const auto& b) { return a.key == b.key; });
  if (rule != model_.rules.end()) {
    config_->fail(rule->row.data(), std::string(ruleStart) + std::string(rule->key),
                  "stands twice");
  }
  placeRules();
  checkRules(complaints);
}

void SonicBundle::addConfigTable(std::string_view key, std::string_view name,
                                 std::string_view row) {
  checkText(*config_, row.data(), key, name);
  SonicConfigTable table;
  table.name = name;
  config_->eachField(row, [&](std::string_view field, const JsonField& value) {
    if (field == "type") {
      table.isControlPlane = isEqual(value.text, "CTRLPLANE");
    } else if (field == "stage" && isEqual(value.text, "EGRESS")) {
      table.stage = Stage::egress;
    }
  });
  model_.configTables.push_back(table);
}

std::uint32_t SonicBundle::configTableByName(std::string_view name) const noexcept {
  auto const found = std::lower_bound(
      model_.configTables.begin(), model_.configTables.end(), name,
      [](const SonicConfigTable& each, std::string_view wanted) { return each.name < wanted; });
  return found == model_.configTables.end() || found->name != name
             ? sonicNone
             : static_cast<std::uint32_t>(found - model_.configTables.begin());
}

namespace {

std::string_view tableOf(const SonicRule& rule) noexcept {
  return rule.key.substr(0, rule.key.find('|'));
}

}  // namespace

/// Adds the tables that only rules name.
void SonicBundle::addMissingTables() {
  // Rules are ordered by their keys, but two tables may alternate: "a|..." stands among "a!|...".
  std::deque<std::string_view> missing;
  for (const SonicRule& rule : model_.rules) {
    std::string_view const name = tableOf(rule);
    bool const isRepeated = !missing.empty() && missing.back() == name;
    if (!isRepeated && configTableByName(name) == sonicNone) missing.push_back(name);
  }
  std::sort(missing.begin(), missing.end());
  missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
  for (std::string_view const name : missing) {
    SonicConfigTable table;
    table.name = name;
    model_.configTables.push_back(table);
  }
  std::sort(model_.configTables.begin(), model_.configTables.end(),
            [](const auto& a, const auto& b) { return a.name < b.name; });
}

/// Gives each rule its table, and removes the rules of control-plane tables.
void SonicBundle::placeRules() {
  addMissingTables();
  for (SonicRule& rule : model_.rules) rule.table = configTableByName(tableOf(rule));
  auto const end = std::remove_if(
      model_.rules.begin(), model_.rules.end(),
      [this](const SonicRule& rule) { return model_.configTables[rule.table].isControlPlane; });
  model_.rules.erase(end, model_.rules.end());
}

void SonicBundle::checkRules(Complaints& complaints) {
  Entry read;
  std::string scratch;
  evidence_.ruleMatches.reserve(model_.rules.size());
  for (SonicRule& rule : model_.rules) {
    read.clear();
    std::string const key = std::string(ruleStart) + std::string(rule.key);
    if (!ruleReader_->read(key, rule.row, read)) {
      complaints.warn(badPriority, [&] {
        return config_->warning(key, rule.row, "PRIORITY is not a number: it counts as 0");
      });
    }
    rule.priority = read.priority;
    evidence_.ruleMatches.push_back(matchHash(read, scratch));
  }
}

// --- the counters

/// The hash of TABLE:RULE, for a key TABLE|RULE.
std::uint64_t SonicBundle::joinedHash(std::string_view key) {
  joinedText_ = key;
  joinedText_[key.find('|')] = ':';
  return keyedHash(joinedText_);
}

/// Calls `use` for each rule whose table and name make `joined` with a colon between them. There
/// may be several, because both may hold colons.
template <class Use>
void SonicBundle::eachRuleOf(std::string_view joined, const Use& use) {
  std::uint64_t const hash = keyedHash(joined);
  auto const first = std::lower_bound(
      joined_.begin(), joined_.end(), hash,
      [](const JoinedName& each, std::uint64_t wanted) { return each.hash < wanted; });
  // No switch has many, but a file that was made for it may.
  constexpr int most = 4;
  int count = 0;
  for (auto each = first; each != joined_.end() && each->hash == hash && count != most; ++each) {
    use(each->rule);
    ++count;
  }
}

void SonicBundle::readCounters(const std::string& path) {
  joined_.reserve(model_.rules.size());
  for (std::uint32_t i = 0; i != model_.rules.size(); ++i) {
    joined_.push_back({joinedHash(model_.rules[i].key), i});
  }
  std::sort(joined_.begin(), joined_.end(), [](const JoinedName& a, const JoinedName& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.rule < b.rule;
  });
  counters_.reserve(model_.entries.size());
  for (const SonicEntry& entry : model_.entries) {
    Counts counts;
    counts.id = entry.counter;
    if (entry.counter != 0) counters_.push_back(counts);
  }
  sortById(counters_);
  counters_.erase(std::unique(counters_.begin(), counters_.end(),
                              [](const Counts& a, const Counts& b) { return a.id == b.id; }),
                  counters_.end());

  SonicDatabase database(path, SonicDatabaseKind::counters);
  constexpr std::string_view starts[] = {countersStart, tableStatisticsStart, ruleMap};
  database.eachRow(starts, [&](std::string_view key, std::string_view row) {
    if (key == ruleMap) {
      readRuleMap(database, key, row);
    } else if (key.starts_with(tableStatisticsStart)) {
      readTableStatistics(database, key, row);
    } else if (key.starts_with(countersStart)) {
      std::string_view const name = key.substr(countersStart.size());
      std::uint64_t id = 0;
      if (!name.starts_with(objectStart)) {
        // The form of older versions: COUNTERS:TABLE:RULE.
        eachRuleOf(name, [&](std::uint32_t rule) {
          Counts counts;
          counts.id = rule;
          readCounts(database, key, row, counts);
          ruleCounts_.push_back(counts);
        });
      } else if (objectIdFromText(name, id)) {
        auto const found = findById(counters_, id);
        if (found != counters_.end()) readCounts(database, key, row, *found);
      }
    }
  });
  sortById(ruleCounts_);
}

void SonicBundle::readRuleMap(SonicDatabase& database, std::string_view key, std::string_view row) {
  database.eachField(row, [&](std::string_view name, const JsonField& field) {
    if (name == "NULL") return;
    std::uint64_t id = 0;
    if (!objectIdFromText(field.text, id)) {
      database.fail(field.begin, key,
                    shownName(name) + ": " + inQuotes(field.text) + " is not an object id");
    }
    bool isKnown = false;
    eachRuleOf(name, [&](std::uint32_t rule) {
      evidence_.counted.push_back({id, rule});
      isKnown = true;
    });
    auto const counter = findById(counters_, id);
    if (isKnown || counter == counters_.end() || counter->lost != 0) return;
    checkText(database, field.begin, key, name);
    counter->lost = texts_.add(name);
    // The table's name is certain if there is only one colon.
    std::size_t const colon = name.find(':');
    if (colon == name.npos || name.find(':', colon + 1) != name.npos) return;
    std::uint32_t const table = configTableByName(name.substr(0, colon));
    if (table == sonicNone || model_.configTables[table].isControlPlane) return;
    evidence_.countedTables.push_back({id, table});
  });
}

void SonicBundle::readCounts(SonicDatabase& database, std::string_view key, std::string_view row,
                             Counts& counts) {
  database.eachField(row, [&](std::string_view name, const JsonField& field) {
    if (name == "SAI_ACL_COUNTER_ATTR_PACKETS" || name == "Packets") {
      counts.packets = numberOf(database, key, name, field, UINT64_MAX);
      counts.hasPackets = true;
    } else if (name == "SAI_ACL_COUNTER_ATTR_BYTES" || name == "Bytes") {
      counts.bytes = numberOf(database, key, name, field, UINT64_MAX);
      counts.hasBytes = true;
    }
  });
}

void SonicBundle::readTableStatistics(SonicDatabase& database, std::string_view key,
                                      std::string_view row) {
  std::string_view text = key.substr(tableStatisticsStart.size());
  if (text.starts_with(objectStart)) text.remove_prefix(objectStart.size());
  std::uint64_t id = 0;
  if (!numberFromText(text, UINT64_MAX, id)) {
    database.fail(row.data(), key, "the key does not end in an object id");
  }
  auto const table = findById(model_.tables, id);
  if (table == model_.tables.end()) return;
  database.eachField(row, [&](std::string_view name, const JsonField& field) {
    auto const number = [&] {
      return static_cast<std::uint32_t>(numberOf(database, key, name, field, UINT32_MAX));
    };
    if (name == "crm_stats_acl_entry_used") table->used = number();
    if (name == "crm_stats_acl_entry_available") table->available = number();
  });
}

const SonicBundle::Counts* SonicBundle::counts(const SonicEntry& entry) const noexcept {
  auto const counter = findById(counters_, entry.counter);
  if (counter != counters_.end() && (counter->hasPackets || counter->hasBytes)) return &*counter;
  if (entry.rule == sonicNone) return nullptr;
  auto const rule = findById(ruleCounts_, entry.rule);
  return rule == ruleCounts_.end() ? nullptr : &*rule;
}

std::string_view SonicBundle::lostRule(std::uint64_t counter) const noexcept {
  auto const found = findById(counters_, counter);
  return found == counters_.end() ? std::string_view() : texts_[found->lost];
}

// --- the state

void SonicBundle::readState(const std::string& path) {
  SonicDatabase database(path, SonicDatabaseKind::state);
  constexpr std::string_view starts[] = {stateStart};
  database.eachRow(starts, [&](std::string_view key, std::string_view row) {
    std::string_view const name = key.substr(stateStart.size());
    auto const rule = std::lower_bound(
        model_.rules.begin(), model_.rules.end(), name,
        [](const SonicRule& each, std::string_view wanted) { return each.key < wanted; });
    if (rule == model_.rules.end() || rule->key != name) return;
    database.eachField(row, [&](std::string_view field, const JsonField& value) {
      if (field != "status") return;
      checkText(database, value.begin, key, value.text);
      rule->status = texts_.add(value.text);
    });
  });
}

// --- entries

void SonicBundle::read(const SonicEntry& from, Entry& entry) {
  entryReader_->read(from.key, from.row, entry);
}

void SonicBundle::read(const SonicRule& from, Entry& entry) {
  ruleReader_->read(from.key, from.row, entry);
}

}  // namespace tcamshow
