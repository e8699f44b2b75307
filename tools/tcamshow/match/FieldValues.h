// The values that a match allows under a name: of a field, or of a part of one.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <span>

#include "match/Match.h"

namespace tcamshow {

/// Whether the packets of a match have what the name names. IPv4 packets have no src6, dst6 and
/// hoplimit, IPv6 packets no src and dst; icmp-type and icmp-code belong to packets whose protocol
/// is exactly 1 or 58. `table` is the entry's.
bool hasField(const Match& match, Table table, const FieldName& name) noexcept;

/// The values of a field, or those that a part of it has in them, in the name's own width. No set:
/// no value satisfies the match there. The match must outlive the object.
///
///     FieldValues const values(match, *fieldByName("dscp"));
///     for (const FieldSet& set : values.sets()) use(set);
class FieldValues {
 public:
  FieldValues(const Match& match, const FieldName& name);
  FieldValues(const FieldValues&) = delete;
  FieldValues& operator=(const FieldValues&) = delete;

  std::span<const FieldSet> sets() const noexcept { return sets_; }

 private:
  FieldSets part_;  // A whole field needs no copy.
  std::span<const FieldSet> sets_;
};

}  // namespace tcamshow
