#include "questions/Diff.h"

#include <map>
#include <tuple>

namespace tcamshow {

namespace {

template <class Key, class KeyOf>
std::vector<CommonPlace> commonBy(const EntryStore& a, const EntryStore& b, KeyOf keyOf) {
  std::map<Key, CommonPlace> places;
  for (const PlaceInfo& place : a.places()) places[keyOf(place)].a.push_back(&place);
  for (const PlaceInfo& place : b.places()) places[keyOf(place)].b.push_back(&place);
  std::vector<CommonPlace> result;
  result.reserve(places.size());
  for (auto& [key, place] : places) result.push_back(std::move(place));
  return result;
}

/// The entries of one place as they are, those of several in one list.
class Entries {
 public:
  explicit Entries(const std::vector<const PlaceInfo*>& places) {
    if (places.size() == 1) {
      entries_ = places.front()->entries;
      return;
    }
    for (const PlaceInfo* const place : places) {
      joined_.insert(joined_.end(), place->entries.begin(), place->entries.end());
    }
    entries_ = joined_;
  }
  Entries(const Entries&) = delete;
  Entries& operator=(const Entries&) = delete;

  std::span<const std::uint32_t> entries() const noexcept { return entries_; }

 private:
  std::vector<std::uint32_t> joined_;
  std::span<const std::uint32_t> entries_;
};

}  // namespace

std::vector<CommonPlace> commonPlaces(const EntryStore& a, const EntryStore& b, PlaceBy by) {
  if (by == PlaceBy::place) {
    return commonBy<Place>(a, b, [](const PlaceInfo& place) { return place.place; });
  }
  return commonBy<std::tuple<Stage, std::string_view>>(
      a, b, [](const PlaceInfo& place) { return std::tuple(place.place.stage, place.name); });
}

void diffPlace(const EntryStore& a, const EntryStore& b, const CommonPlace& place, PairBy by,
               DiffCounts& counts, const std::function<void(const Difference&)>& use) {
  Entries const ofA(place.a);
  Entries const ofB(place.b);
  auto const partners = partnersOf({a, ofA.entries()}, {b, ofB.entries()}, by);
  std::vector<bool> hasPartner(ofB.entries().size());
  Entry scratchA;
  Entry scratchB;
  for (std::size_t i = 0; i < partners.size(); ++i) {
    Difference difference;
    difference.a = &a.entry(ofA.entries()[i], scratchA);
    if (partners[i] == noPartner) {
      ++counts.removed;
      use(difference);
      continue;
    }
    hasPartner[partners[i]] = true;
    difference.b = &b.entry(ofB.entries()[partners[i]], scratchB);
    difference.properties = differencesOf(*difference.a, *difference.b);
    if (difference.properties == 0) {
      ++counts.equal;
    } else {
      ++counts.changed;
      use(difference);
    }
  }
  for (std::size_t i = 0; i < hasPartner.size(); ++i) {
    if (hasPartner[i]) continue;
    ++counts.added;
    Difference difference;
    difference.b = &b.entry(ofB.entries()[i], scratchB);
    use(difference);
  }
}

}  // namespace tcamshow
