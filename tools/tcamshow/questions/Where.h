// Conditions on entries: 'src within 10.0.0.0/8 and (action = deny or hits = 0)'.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include "match/FieldText.h"
#include "questions/Attributes.h"

namespace tcamshow {

/// A condition that an entry meets or not.
///
///     condition := and { "or" and }
///     and       := not { "and" not }
///     not       := "not" not | "(" condition ")" | term
///     term      := FIELD ("=" | "!=" | "within" | "covers" | "overlaps") VALUES
///                | NUMBER ("=" | "!=" | "<" | "<=" | ">" | ">=") number
///                | TEXT ("=" | "!=" | "~") text
///
/// FIELD is a name of a field of packets (match/Field.h), and the term is about the values that the
/// entry allows there: the same set, a part of the given one, more than it, or some of it. VALUES
/// is as valuesFromText reads it. A term on a field that the entry's packets lack is false: src and
/// dst of IPv6 packets; src6, dst6 and hoplimit of IPv4 packets; icmp-type and icmp-code where the
/// protocol is not exactly 1 or 58.
///
/// NUMBER and TEXT are attributes (questions/Attributes.h). A number that the entry does not have
/// meets no comparison. "~" asks whether the text holds the other one, whatever the case of ASCII
/// letters. Texts with blanks or parentheses stand in double quotes; \" and \\ are in them a quote
/// and a backslash.
///
/// Threads: any number may ask one condition.
class Where {
 public:
  class Condition;

  /// Reads a condition. Throws TextFault, which says where the fault is and what was expected.
  explicit Where(std::string_view text);
  Where(Where&&) noexcept;
  Where& operator=(Where&&) noexcept;
  ~Where();

  bool holds(const EntryFacts& facts) const;
  /// Whether a term is about the group's name: it is known at the end of the input alone.
  bool asksName() const noexcept;
  /// Whether all terms are about the place: stage, pipe, group, copy, groupPriority, name.
  bool asksPlaceAlone() const noexcept { return !beyondPlaceAt_; }
  /// The place in the text of the first term that is about more than the place, in bytes from 0.
  const std::optional<std::size_t>& beyondPlaceAt() const noexcept { return beyondPlaceAt_; }

 private:
  std::optional<std::size_t> beyondPlaceAt_;
  std::unique_ptr<Condition> condition_;
};

}  // namespace tcamshow
