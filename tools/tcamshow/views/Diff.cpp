#include "views/Diff.h"

#include <array>

#include "io/JsonText.h"
#include "match/Packet.h"
#include "snapshot/EntryState.h"
#include "views/PlaceText.h"
#include "views/TextOutput.h"

namespace tcamshow {
namespace {

constexpr std::array<std::string_view, propertyCount> propertyNames{
    "action", "priority", "sequence", "state", "feature", "description", "match", "counters"};

/// The entry of A, or of B if A lacks it. One of them has it.
const Entry& entryOf(const Difference& difference) noexcept {
  return difference.b == nullptr || difference.a != nullptr ? *difference.a : *difference.b;
}

std::string wholeMatchText(const Entry& entry) {
  std::string text = matchText(matchOf(entry));
  if (!entry.otherMatch.empty()) (text += " and ") += entry.otherMatch;
  return text;
}

/// Gives the property's value to `use`, as a number, a text or a truth.
template <class Use>
void useProperty(const Entry& entry, Property property, const Use& use) {
  switch (property) {
    case Property::action:
      return use(entry.action);
    case Property::priority:
      return use(entry.priority);
    case Property::sequence:
      return use(entry.sequence);
    case Property::state:
      return use(stateName(stateOf(entry)));
    case Property::feature:
      return use(entry.feature);
    case Property::description:
      return use(entry.description);
    case Property::match:
      return use(std::string_view(wholeMatchText(entry)));
    case Property::counters:
      return use(countersAreProgrammed(entry));
  }
}

void valueAppend(std::string& out, std::uint32_t number) { appendNumber(out, number); }
void valueAppend(std::string& out, std::string_view text) { ((out += '"') += text) += '"'; }
void valueAppend(std::string& out, bool isProgrammed) {
  out += isProgrammed ? "programmed" : "not programmed";
}

/// Calls `use` for each property of the set, in order.
template <class Use>
void forEachProperty(Properties properties, const Use& use) {
  for (std::size_t i = 0; i < propertyCount; ++i) {
    auto const property = static_cast<Property>(i);
    if ((properties & bitOf(property)) != 0) use(property, propertyNames[i]);
  }
}

}  // namespace

DiffView::DiffView(OutputBuffer& out, PlaceBy placeBy, bool isJson)
    : out_(out), placeBy_(placeBy), isJson_(isJson), printer_(out) {
  if (isJson_) printAnswerStart("diff", printer_);
}

void DiffView::placeIs(const CommonPlace& place) {
  place_ = &place;
  isPlaceShown_ = false;
}

void DiffView::show(const Difference& difference) {
  if (isJson_) {
    showJson(difference);
  } else {
    showText(difference);
  }
}

void DiffView::showText(const Difference& difference) {
  text_.clear();
  if (!isPlaceShown_) {
    isPlaceShown_ = true;
    const PlaceInfo& first = place_->first();
    if (placeBy_ == PlaceBy::place) {
      placeAppend(text_, first.place, first.name);
    } else {
      text_ += stageName(first.place.stage).view();
      ((text_ += " \"") += first.name) += '"';
    }
    text_ += '\n';
  }
  const Entry& entry = entryOf(difference);
  text_ += difference.b == nullptr ? '-' : difference.a == nullptr ? '+' : '~';
  text_ += " entry ";
  entryAppend(text_, entry.sequence, entry.shadowId);
  text_ += ": ";
  if (difference.a == nullptr || difference.b == nullptr) {
    text_ += entry.action.empty() ? std::string_view("-") : entry.action;
    (text_ += ' ') += wholeMatchText(entry);
  } else {
    std::string_view separator;
    forEachProperty(difference.properties, [&](Property property, std::string_view name) {
      (text_ += separator) += name;
      auto const append = [this](auto value) { valueAppend(text_ += ' ', value); };
      useProperty(*difference.a, property, append);
      text_ += " ->";
      useProperty(*difference.b, property, append);
      separator = ", ";
    });
  }
  text_ += '\n';
  TextOutput(out_).write(text_);
}

void DiffView::showJson(const Difference& difference) {
  const Entry& entry = entryOf(difference);
  const std::vector<const PlaceInfo*>& places = difference.a != nullptr ? place_->a : place_->b;
  printer_.objectBegin();
  printer_.attribute("type", "difference");
  printPlace(entry.place, places.front()->name, printer_);
  printer_.attribute("kind", difference.b == nullptr   ? "removed"
                             : difference.a == nullptr ? "added"
                                                       : "changed");
  printer_.attribute("shadowId", entry.shadowId);
  printer_.attribute("sequence", entry.sequence);
  if (difference.a != nullptr && difference.b != nullptr) {
    printer_.objectBegin("changes");
    forEachProperty(difference.properties, [&](Property property, std::string_view name) {
      auto const print = [this](auto value) { printer_.attribute({}, value); };
      printer_.arrayBegin(name);
      useProperty(*difference.a, property, print);
      useProperty(*difference.b, property, print);
      printer_.arrayEnd();
    });
    printer_.objectEnd();
  }
  printer_.objectEnd();
}

void DiffView::showCounts(const DiffCounts& counts) {
  struct Count {
    std::string_view name;
    std::uint64_t number;
  };
  Count const all[] = {{"removed", counts.removed},
                       {"added", counts.added},
                       {"changed", counts.changed},
                       {"equal", counts.equal}};
  if (isJson_) {
    printer_.objectBegin();
    printer_.attribute("type", "summary");
    for (const Count& count : all) printer_.attribute(count.name, count.number);
    printer_.objectEnd();
    return;
  }
  text_.clear();
  for (const Count& count : all) {
    if (!text_.empty()) text_ += ", ";
    appendNumber(text_, count.number);
    (text_ += ' ') += count.name;
  }
  text_ += '\n';
  TextOutput(out_).write(text_);
}

}  // namespace tcamshow
