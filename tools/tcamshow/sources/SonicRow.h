// One row of a database of a SONiC switch: an entry of the ASIC, a rule of the configuration, a
// range.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot/Snapshot.h"
#include "sources/SonicDatabase.h"
#include "sources/SonicMatch.h"

namespace tcamshow {

/// What an entry does, in a few words: `permit`, `deny`, or the actions' own words.
class SonicAction {
 public:
  void clear() noexcept;
  /// Adds the action `name`, such as PACKET_ACTION or MIRROR_INGRESS.
  void add(std::string_view name, std::string_view text);
  /// The same for every order in which actions were added. Valid until the next call of clear().
  std::string_view text();
  bool isTooLong() const noexcept { return size_ > longestSonicText; }

 private:
  std::string packet_;
  std::vector<std::string> others_;
  std::size_t size_ = 0;
  std::string text_;
};

/// A range object of the ASIC.
struct SonicRangeObject {
  std::uint64_t id;
  std::uint32_t low;
  std::uint32_t high;
  SonicRange range;
  std::string_view name;  ///< of its kind
};
/// Reads the row of a range object, except for its id.
SonicRangeObject readRangeObject(SonicDatabase& database, std::string_view key,
                                 std::string_view row);

/// Reads the rows of ACL entries in the ASIC's database. A fault throws InputError.
class AsicEntryReader {
 public:
  /// `ranges` are ordered by id. Both arguments must outlive the reader.
  AsicEntryReader(SonicDatabase& database, const std::vector<SonicRangeObject>& ranges)
      : database_(database), ranges_(ranges) {}

  struct Ids {
    std::uint64_t table = 0;
    std::uint64_t counter = 0;  ///< 0: none
  };
  /// Sets the match, the priority, the action and the state of an entry that has its defaults.
  /// Texts are valid until the next call.
  Ids read(std::string_view key, std::string_view row, Entry& entry);

 private:
  void readField(std::string_view attribute, const JsonField& field);
  void readRanges(std::string_view name, const JsonField& field);
  [[noreturn]] void fail(const JsonField& field, std::string_view name, std::string_view expected);

  SonicDatabase& database_;
  const std::vector<SonicRangeObject>& ranges_;
  std::string key_;
  SonicMatch match_;
  SonicAction action_;
};

/// Reads the rows of rules in the configuration. A value that cannot be read is kept as text: the
/// switch did not understand it either.
class ConfigRuleReader {
 public:
  explicit ConfigRuleReader(SonicDatabase& database) : database_(database) {}

  /// Sets the match, the priority and the action of an entry that has its defaults. Texts are valid
  /// until the next call. False if the priority is no number.
  bool read(std::string_view key, std::string_view row, Entry& entry);

 private:
  void readField(std::string_view name, std::string_view text);

  SonicDatabase& database_;
  SonicMatch match_;
  SonicAction action_;
  std::string name_;
  std::string list_;
};

}  // namespace tcamshow
