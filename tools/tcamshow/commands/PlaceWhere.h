// The option --where of a command that answers place by place.
#pragma once

#include <optional>
#include <string>

#include "commands/Options.h"
#include "questions/Where.h"
#include "snapshot/EntryStore.h"

namespace tcamshow {

/// A condition on places. Its terms are about the place alone: stage, pipe, groupPriority, group,
/// copy and name.
///
///     where_.declare(options);
///     where_.read();                                  // throws CommandLineError
///     for (const PlaceInfo& place : store.places()) {
///       if (where_.holds(place.place, place.name)) show(place);
///     }
class PlaceWhere {
 public:
  void declare(Options& options);
  /// Reads the option. Throws CommandLineError, which names the column, counted from 1.
  void read();
  /// True for each place if the option is absent.
  bool holds(const Place& place, std::string_view name) const;
  /// False where holds() is false whatever the name.
  bool mayHold(const Place& place) const;

 private:
  std::string text_;
  std::optional<Where> where_;
};

}  // namespace tcamshow
