#include "commands/PlaceWhere.h"

#include "commands/Command.h"

namespace tcamshow {

void PlaceWhere::declare(Options& options) {
  options.text(
      "--where", text_, "EXPR",
      "The places alone of which this is true: stage, pipe, groupPriority, group, copy, name",
      [](const std::string& text) {
        return text.empty() ? std::string("the condition is empty") : std::string();
      });
}

void PlaceWhere::read() {
  if (text_.empty()) return;
  auto const fail = [](std::size_t at, const std::string& message) {
    throw CommandLineError("--where: column " + std::to_string(at + 1) + ": " + message);
  };
  try {
    where_.emplace(text_);
  } catch (const TextFault& fault) {
    fail(fault.at(), fault.what());
  }
  if (auto const at = where_->beyondPlaceAt()) {
    fail(*at, "expected a term on the place: stage, pipe, groupPriority, group, copy or name");
  }
}

bool PlaceWhere::holds(const Place& place, std::string_view name) const {
  if (!where_) return true;
  Entry entry;
  entry.place = place;
  return where_->holds({entry, name});
}

bool PlaceWhere::mayHold(const Place& place) const {
  return !where_ || where_->asksName() || holds(place, {});
}

}  // namespace tcamshow
