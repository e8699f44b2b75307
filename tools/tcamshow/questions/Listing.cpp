#include "questions/Listing.h"

#include <algorithm>
#include <utility>

namespace tcamshow {

Listing::Listing(std::unique_ptr<Source> source, const Selection& selection, Complaints& complaints)
    : store_(*filtered(std::move(source), selection, complaints)) {
  std::uint64_t left = selection.limit.value_or(store_.size());
  std::uint64_t leftOut = 0;
  bool const isSome = selection.where || selection.limit;
  Entry scratch;
  for (const PlaceInfo& place : store_.places()) {
    ListedPlace listed{&place, {}};
    if (selection.where && selection.where->asksName()) {
      for (std::uint32_t const number : place.entries) {
        if (isSelected(selection, store_.entry(number, scratch), place.name)) {
          listed.entries.push_back(number);
        }
      }
    } else {
      listed.entries = place.entries;
    }
    sortNumbers(store_, selection.keys, listed.entries);
    std::uint64_t const taken = std::min<std::uint64_t>(left, listed.entries.size());
    leftOut += listed.entries.size() - taken;
    left -= taken;
    listed.entries.resize(taken);
    if (taken != 0 || !isSome) places_.push_back(std::move(listed));
  }
  warnLeftOut(complaints, leftOut);
}

}  // namespace tcamshow
