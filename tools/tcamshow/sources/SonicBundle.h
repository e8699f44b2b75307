// All that the databases of a SONiC switch say of its ACLs, put together.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/Complaints.h"
#include "snapshot/EntryStore.h"
#include "sources/SonicDatabase.h"
#include "sources/SonicModel.h"
#include "sources/SonicPairing.h"
#include "sources/SonicRow.h"

namespace tcamshow {

/// The ACL tables, entries and rules of a switch. Reading checks everything: after that, no row can
/// be wrong. A fault throws InputError.
///
/// Keeps the texts of two databases, and a few numbers for each row. Memory: at most eight times
/// the files, unpacked.
class SonicBundle {
 public:
  /// The counts of one counter.
  struct Counts {
    std::uint64_t id = 0;  ///< of the counter, or the rule's number
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0;
    std::uint32_t lost = 0;  ///< number of the text TABLE:RULE, see lostRule(); 0: none
    bool hasPackets = false;
    bool hasBytes = false;
  };

  SonicBundle(const std::string& path, Complaints& complaints);

  const SonicModel& model() const noexcept { return model_; }
  bool hasConfig() const noexcept { return config_ != nullptr; }
  std::string_view text(std::uint32_t number) const noexcept { return texts_[number]; }
  /// Null if nothing is counted for the entry.
  const Counts* counts(const SonicEntry& entry) const noexcept;
  /// TABLE:RULE of a rule of this counter that the configuration lacks; empty if there is none.
  std::string_view lostRule(std::uint64_t counter) const noexcept;

  /// Fills an entry that has its defaults with what its row says. Texts are valid until the next
  /// call.
  void read(const SonicEntry& from, Entry& entry);
  void read(const SonicRule& from, Entry& entry);

 private:
  /// A rule by a hash of TABLE:RULE.
  struct JoinedName {
    std::uint64_t hash;
    std::uint32_t rule;
  };

  void readAsic(const std::string& path);
  void addTable(std::string_view key, std::string_view row, std::uint64_t id);
  void checkEntries();
  void readConfig(const std::string& path, Complaints& complaints);
  void addConfigTable(std::string_view key, std::string_view name, std::string_view row);
  void addMissingTables();
  void placeRules();
  void checkRules(Complaints& complaints);
  void readCounters(const std::string& path);
  void readRuleMap(SonicDatabase& database, std::string_view key, std::string_view row);
  void readCounts(SonicDatabase& database, std::string_view key, std::string_view row,
                  Counts& counts);
  void readTableStatistics(SonicDatabase& database, std::string_view key, std::string_view row);
  void readState(const std::string& path);

  std::uint32_t configTableByName(std::string_view name) const noexcept;
  std::uint64_t joinedHash(std::string_view key);
  template <class Use>
  void eachRuleOf(std::string_view joined, const Use& use);

  std::unique_ptr<SonicDatabase> asic_;
  std::unique_ptr<SonicDatabase> config_;
  std::unique_ptr<AsicEntryReader> entryReader_;
  std::unique_ptr<ConfigRuleReader> ruleReader_;
  std::vector<SonicRangeObject> ranges_;
  SonicModel model_;
  SonicEvidence evidence_;
  std::vector<JoinedName> joined_;
  std::string joinedText_;
  std::vector<Counts> counters_;    // by id
  std::vector<Counts> ruleCounts_;  // by rule
  TextPool texts_;
};

}  // namespace tcamshow
