// What an entry matches on, field by field, as text for people.
#pragma once

#include <optional>
#include <string>

#include "match/Match.h"
#include "snapshot/EntryState.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The mark of a state: none for what is programmed, "!" failed, "~" pending, "?" unknown.
char markOf(EntryState state) noexcept;

/// The texts of one entry's fields. A field that a qualifier or range checker which is not
/// programmed takes part in has the mark of the worst of them behind its values, and is never "*".
class MatchText {
 public:
  /// `entry` outlives this object.
  explicit MatchText(const Entry& entry);

  const Match& match() const noexcept { return match_; }
  /// Whether a qualifier or a range checker names the field.
  bool isNamed(Field field) const noexcept { return (match_.named() & bitOf(field)) != 0; }
  /// Whether the values are those of a part of the field, as icmp-type is of sport, and of nothing
  /// beside it.
  bool isPart(const FieldName& part) const;
  /// Appends the values under a name, which is that of a field or of a part of one.
  void append(std::string& out, const FieldName& name) const;

 private:
  const Match match_;
  EntryState states_[fieldCount];
};

}  // namespace tcamshow
