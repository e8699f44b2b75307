// The ACLs of a SONiC switch as plain values: what its databases say, before it is put together.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string_view>

#include "snapshot/Snapshot.h"

namespace tcamshow {

constexpr std::uint32_t sonicNone = 0xFFFFFFFF;

/// A table of the ASIC.
struct SonicTable {
  std::uint64_t id = 0;
  Stage stage = Stage::ingress;
  std::uint32_t config = sonicNone;  ///< the table of the configuration that it is
  std::optional<std::uint32_t> used;
  std::optional<std::uint32_t> available;
};

/// An entry of the ASIC.
struct SonicEntry {
  std::uint64_t id = 0;
  std::string_view key;
  std::string_view row;
  std::uint64_t counter = 0;  ///< 0: none
  std::uint32_t table = 0;
  std::uint32_t priority = 0;
  std::uint32_t rule = sonicNone;  ///< the rule that it carries
  bool isExplained = false;        ///< whether a rule accounts for it, known or not
};

/// A table of the configuration.
struct SonicConfigTable {
  std::string_view name;
  Stage stage = Stage::ingress;
  bool isControlPlane = false;     ///< such a table is not in the TCAM
  std::uint32_t asic = sonicNone;  ///< the first table of the ASIC that it is
  /// Whether entries of tables that have no name carry all of its rules.
  bool isElsewhere = false;
};

/// A rule of the configuration.
struct SonicRule {
  std::string_view key;  ///< TABLE|RULE
  std::string_view row;
  std::uint32_t table = 0;
  std::uint32_t priority = 0;
  std::uint32_t status = 0;  ///< number of a text; 0: none
  bool isCarried = false;    ///< whether an entry of the ASIC carries it
};

/// Containers that never move what they hold: together they need no more than they show.
struct SonicModel {
  std::deque<SonicTable> tables;              ///< by id
  std::deque<SonicEntry> entries;             ///< by id
  std::deque<SonicConfigTable> configTables;  ///< by name
  std::deque<SonicRule> rules;                ///< by key
};

}  // namespace tcamshow
