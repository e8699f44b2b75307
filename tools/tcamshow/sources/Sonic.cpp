#include "sources/Sonic.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <vector>

#include "sources/SonicBundle.h"

namespace tcamshow {
namespace {

constexpr std::string_view notInConfig = "not in CONFIG_DB";
constexpr std::string_view notInAsic = "not in ASIC_DB";

/// Whether a status of the switch says that it will still make the entry.
bool isPending(std::string_view status) noexcept {
  constexpr std::string_view start = "PENDING";
  return status.size() >= start.size() &&
         std::equal(start.begin(), start.end(), status.begin(),
                    [](char upper, char c) { return upper == (c & ~0x20); });
}

std::string objectIdText(std::uint64_t id) {
  char digits[16];
  return "oid:0x" + std::string(digits, std::to_chars(digits, digits + sizeof digits, id, 16).ptr);
}

class SonicSource final : public Source {
 public:
  SonicSource(const std::string& path, Complaints& complaints)
      : Source(complaints), path_(path), bundle_(path, complaints), model_(bundle_.model()) {
    placeConfigTables();
    orderEntries();
  }

  const std::string& fileName() const noexcept override { return path_; }
  // Everything was checked before it is given, so no message needs a line.
  std::uint64_t lineNumber() const noexcept override { return 0; }

  Item next() override {
    if (at_ != order_.size() && groupOf(order_[at_]) == groupsGiven_) {
      giveEntry(order_[at_++]);
      return Item::entry;
    }
    if (groupsGiven_ == model_.tables.size() + configOnly_.size()) return Item::end;
    giveGroup();
    return Item::group;
  }

 private:
  /// An entry of the ASIC, or, with this bit, a rule.
  using Reference = std::uint32_t;
  static constexpr Reference ruleBit = 0x80000000;

  static bool isRule(Reference reference) noexcept { return (reference & ruleBit) != 0; }
  const SonicEntry& entryOf(Reference reference) const { return model_.entries[reference]; }
  const SonicRule& ruleOf(Reference reference) const { return model_.rules[reference & ~ruleBit]; }

  /// The tables of the configuration that the ASIC lacks come behind its own, by name.
  void placeConfigTables() {
    configGroups_.resize(model_.configTables.size());
    for (std::uint32_t i = 0; i != model_.configTables.size(); ++i) {
      const SonicConfigTable& table = model_.configTables[i];
      if (table.isControlPlane || table.isElsewhere) continue;
      if (table.asic != sonicNone) {
        configGroups_[i] = table.asic + 1;
        continue;
      }
      configOnly_.push_back(i);
      configGroups_[i] = static_cast<std::uint32_t>(model_.tables.size() + configOnly_.size());
    }
  }

  /// By group, then by falling priority.
  void orderEntries() {
    order_.reserve(model_.entries.size() + model_.rules.size());
    for (std::uint32_t i = 0; i != model_.entries.size(); ++i) order_.push_back(i);
    for (std::uint32_t i = 0; i != model_.rules.size(); ++i) {
      if (!model_.rules[i].isCarried) order_.push_back(i | ruleBit);
    }
    // Of the same priority: the ASIC's by id, then the rules by name.
    std::sort(order_.begin(), order_.end(), [this](Reference a, Reference b) {
      return std::tuple(groupOf(a), ~priorityOf(a), a) < std::tuple(groupOf(b), ~priorityOf(b), b);
    });
  }

  std::uint32_t groupOf(Reference reference) const {
    return isRule(reference) ? configGroups_[ruleOf(reference).table]
                             : entryOf(reference).table + 1;
  }
  std::uint32_t priorityOf(Reference reference) const {
    return isRule(reference) ? ruleOf(reference).priority : entryOf(reference).priority;
  }

  void giveGroup() {
    std::uint32_t const index = groupsGiven_++;
    group_ = Group();
    group_.place.groupId = groupsGiven_;
    if (index >= model_.tables.size()) {
      const SonicConfigTable& table =
          model_.configTables[configOnly_[index - model_.tables.size()]];
      group_.place.stage = table.stage;
      group_.name = table.name;
      return;
    }
    const SonicTable& table = model_.tables[index];
    if (table.config != sonicNone) {
      group_.name = model_.configTables[table.config].name;
    } else {
      idText_ = objectIdText(table.id);
      group_.name = idText_;
    }
    group_.place.stage = table.stage;
    group_.availableEntries = table.available;
    if (table.available && table.used && *table.used <= UINT32_MAX - *table.available) {
      group_.totalEntries = *table.used + *table.available;
    }
  }

  void giveEntry(Reference reference) {
    entry_.clear();
    if (isRule(reference)) {
      giveRule(ruleOf(reference));
    } else {
      giveAsicEntry(entryOf(reference));
    }
    // A group's name and its entries' feature are the same.
    entry_.place = group_.place;
    entry_.feature = group_.name;
  }

  void giveAsicEntry(const SonicEntry& from) {
    bundle_.read(from, entry_);
    entry_.shadowId = from.id;
    if (const SonicBundle::Counts* const counts = bundle_.counts(from)) {
      if (counts->hasPackets) {
        entry_.hits = counts->packets;
        entry_.counterStatus = statusProgrammed;
      }
      if (counts->hasBytes) entry_.bytes = counts->bytes;
    }
    entry_.description = descriptionOf(from);
    if (!bundle_.hasConfig() || from.isExplained) return;
    if (entry_.reason.empty()) {
      entry_.reason = notInConfig;
    } else {
      reason_ = entry_.reason;
      (reason_ += ", ") += notInConfig;
      entry_.reason = reason_;
    }
  }

  /// TABLE|RULE; empty if it is not known.
  std::string_view descriptionOf(const SonicEntry& from) {
    if (from.rule != sonicNone) return model_.rules[from.rule].key;
    if (from.counter == 0 || from.isExplained) return {};
    std::string_view const lost = bundle_.lostRule(from.counter);
    // The table's name ends at a colon: at the only one, or behind the name that is known.
    std::size_t colon = lost.find(':');
    if (colon == lost.npos) return {};
    if (lost.find(':', colon + 1) != lost.npos) {
      std::uint32_t const config = model_.tables[from.table].config;
      if (config == sonicNone) return {};
      std::string_view const table = model_.configTables[config].name;
      if (!lost.starts_with(table) || lost.substr(table.size(), 1) != ":") return {};
      colon = table.size();
    }
    description_ = lost;
    description_[colon] = '|';
    return description_;
  }

  void giveRule(const SonicRule& from) {
    bundle_.read(from, entry_);
    entry_.shadowId = ++rulesGiven_;
    entry_.description = from.key;
    std::string_view const status = bundle_.text(from.status);
    entry_.givenState = isPending(status) ? EntryState::pending : EntryState::failed;
    entry_.reason = status.empty() ? notInAsic : status;
  }

  std::string path_;
  SonicBundle bundle_;
  const SonicModel& model_;
  std::vector<std::uint32_t> configGroups_;  // of each table of the configuration
  std::vector<std::uint32_t> configOnly_;
  std::vector<Reference> order_;
  std::size_t at_ = 0;
  std::uint32_t groupsGiven_ = 0;
  std::uint64_t rulesGiven_ = 0;
  std::string idText_;
  std::string description_;
  std::string reason_;
};

}  // namespace

std::unique_ptr<Source> openSonic(const std::string& path, Complaints& complaints) {
  return std::make_unique<SonicSource>(path, complaints);
}

}  // namespace tcamshow
