#include "snapshot/EntryStore.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "io/KeyedHash.h"

namespace tcamshow {

namespace {

constexpr std::size_t textBlock = std::size_t{64} << 10;
constexpr std::size_t dataBlock = std::size_t{1} << 20;

template <class T>
void put(char*& at, const T& value) noexcept {
  std::memcpy(at, &value, sizeof value);
  at += sizeof value;
}
template <class T>
void take(const char*& at, T& value) noexcept {
  std::memcpy(&value, at, sizeof value);
  at += sizeof value;
}

/// Gives each part of a qualifier to `use`: its kind decides which it has.
template <class Qualifier, class Use>
void forEachPart(Qualifier& qualifier, Use use) {
  use(qualifier.status);
  switch (qualifier.kind) {
    case QualifierKind::word:
    case QualifierKind::ip:
      use(qualifier.value);
      use(qualifier.mask);
      break;
    case QualifierKind::ip6:
      use(qualifier.ip6.value);
      use(qualifier.ip6.mask);
      break;
    case QualifierKind::mac:
      use(qualifier.mac.value);
      use(qualifier.mac.mask);
      break;
  }
}

std::size_t sizeOf(const Entry& entry) {
  std::size_t size =
      entry.description.size() +
      entry.rangeCheckers.size() * (2 + sizeof RangeChecker::low + sizeof RangeChecker::high);
  for (const Qualifier& qualifier : entry.qualifiers) {
    size += 2;
    forEachPart(qualifier, [&size](auto const& part) { size += sizeof part; });
  }
  if (entry.since) size += sizeof *entry.since;
  return size;
}

}  // namespace

std::uint64_t TextPool::Item::hash() const noexcept { return keyedHash(text); }

TextPool::TextPool() { add(std::string_view()); }

std::uint32_t TextPool::add(std::string_view text) {
  auto const [item, isNew] = table_.insert({text, static_cast<std::uint32_t>(texts_.size())});
  if (isNew) {
    // The key that was put in is the caller's.
    item->text = kept(text);
    texts_.push_back(item->text);
  }
  return item->number;
}

std::string_view TextPool::kept(std::string_view text) {
  if (text.empty()) return {};
  if (text.size() > left_) {
    std::size_t const size = std::max(textBlock, text.size());
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
    left_ = size;
  }
  // From the end of the block to its beginning.
  left_ -= text.size();
  char* const room = blocks_.back().get() + left_;
  std::memcpy(room, text.data(), text.size());
  return {room, text.size()};
}

EntryStore::EntryStore(Source& source) : header_(source.header()), fileName_(source.fileName()) {
  header_.takenAt.text = texts_[texts_.add(header_.takenAt.text)];
  header_.source = texts_[texts_.add(header_.source)];
  header_.device = texts_[texts_.add(header_.device)];
  for (;;) {
    switch (source.next()) {
      case Source::Item::end:
        placesOrder();
        return;
      case Source::Item::group:
        add(source.group());
        break;
      case Source::Item::entry:
        add(source.entry());
        break;
    }
  }
}

std::uint32_t EntryStore::placeNumber(const Place& place) {
  // Most lines stand where the one before did.
  if (lastPlace_ < places_.size() && places_[lastPlace_].place == place) return lastPlace_;
  auto const [at, isNew] = placeNumbers_.emplace(place, static_cast<std::uint32_t>(places_.size()));
  if (isNew) {
    places_.emplace_back();
    places_.back().place = place;
  }
  return lastPlace_ = at->second;
}

void EntryStore::add(const Group& group) {
  PlaceInfo& place = places_[placeNumber(group.place)];
  place.hasGroup = true;
  place.name = texts_[texts_.add(group.name)];
  place.availableEntries = group.availableEntries;
  place.freeEntries = group.freeEntries;
  place.totalEntries = group.totalEntries;
}

void EntryStore::add(const Entry& entry) {
  if (size_ == 0xFFFFFFFF) throw std::length_error("over 4294967295 entries");
  std::uint32_t const place = placeNumber(entry.place);
  if (size_ % entriesInBlock == 0) {
    blocks_.push_back(std::make_unique_for_overwrite<Stored[]>(entriesInBlock));
  }
  Stored& stored = blocks_.back()[size_ % entriesInBlock];
  stored.shadowId = entry.shadowId;
  stored.hits = entry.hits;
  stored.bytes = entry.bytes.value_or(0);
  stored.data = dataOf(entry);
  stored.sequence = entry.sequence;
  stored.priority = entry.priority;
  stored.featurePriority = entry.featurePriority;
  stored.place = place;
  stored.feature = texts_.add(entry.feature);
  stored.action = texts_.add(entry.action);
  stored.reason = texts_.add(entry.reason);
  stored.otherMatch = texts_.add(entry.otherMatch);
  stored.descriptionSize = static_cast<std::uint32_t>(entry.description.size());
  stored.table = entry.table;
  stored.state = entry.givenState.value_or(EntryState::programmed);
  stored.counterStatus = entry.counterStatus;
  stored.qualifiers = static_cast<std::uint8_t>(entry.qualifiers.size());
  stored.rangeCheckers = static_cast<std::uint8_t>(entry.rangeCheckers.size());
  stored.hasBytes = entry.bytes.has_value();
  stored.hasState = entry.givenState.has_value();
  stored.hasSince = entry.since.has_value();
  places_[place].entries.push_back(size_);
  ++size_;
}

const char* EntryStore::dataOf(const Entry& entry) {
  char* const begin = dataRoom(sizeOf(entry));
  char* at = begin;
  if (!entry.description.empty()) {
    std::memcpy(at, entry.description.data(), entry.description.size());
    at += entry.description.size();
  }
  for (const Qualifier& qualifier : entry.qualifiers) {
    put(at, qualifier.type);
    put(at, qualifier.kind);
    forEachPart(qualifier, [&at](auto const& part) { put(at, part); });
  }
  for (const RangeChecker& checker : entry.rangeCheckers) {
    put(at, checker.type);
    put(at, checker.status);
    put(at, checker.low);
    put(at, checker.high);
  }
  if (entry.since) put(at, *entry.since);
  return begin;
}

char* EntryStore::dataRoom(std::size_t size) {
  if (size > dataLeft_) {
    dataLeft_ = std::max(dataBlock, size);
    data_.push_back(std::make_unique_for_overwrite<char[]>(dataLeft_));
    dataAt_ = data_.back().get();
  }
  char* const room = dataAt_;
  dataAt_ += size;
  dataLeft_ -= size;
  return room;
}

/// Puts places in their order and each one's entries in match order.
void EntryStore::placesOrder() {
  std::vector<PlaceInfo> ordered;
  ordered.reserve(places_.size());
  std::vector<std::uint32_t> numbers(places_.size());
  for (auto const& [place, number] : placeNumbers_) {
    numbers[number] = static_cast<std::uint32_t>(ordered.size());
    ordered.push_back(std::move(places_[number]));
  }
  places_ = std::move(ordered);
  placeNumbers_.clear();
  for (std::uint32_t number = 0; number < size_; ++number) {
    std::uint32_t& place = blocks_[number / entriesInBlock][number % entriesInBlock].place;
    place = numbers[place];
  }
  for (PlaceInfo& place : places_) {
    std::stable_sort(place.entries.begin(), place.entries.end(),
                     [this](std::uint32_t a, std::uint32_t b) {
                       const Stored& first = stored(a);
                       const Stored& second = stored(b);
                       if (first.priority != second.priority) {
                         return first.priority > second.priority;
                       }
                       return first.sequence < second.sequence;
                     });
  }
}

const Entry& EntryStore::entry(std::uint32_t number, Entry& scratch) const {
  const Stored& from = stored(number);
  scratch.place = places_[from.place].place;
  scratch.table = from.table;
  scratch.shadowId = from.shadowId;
  scratch.sequence = from.sequence;
  scratch.priority = from.priority;
  scratch.description = {from.data, from.descriptionSize};
  scratch.action = texts_[from.action];
  scratch.hits = from.hits;
  scratch.counterStatus = from.counterStatus;
  scratch.featurePriority = from.featurePriority;
  scratch.feature = texts_[from.feature];
  scratch.bytes = from.hasBytes ? std::optional(from.bytes) : std::nullopt;
  scratch.givenState = from.hasState ? std::optional(from.state) : std::nullopt;
  scratch.reason = texts_[from.reason];
  scratch.otherMatch = texts_[from.otherMatch];
  const char* at = from.data + from.descriptionSize;
  scratch.qualifiers.resize(from.qualifiers);
  for (Qualifier& qualifier : scratch.qualifiers) {
    take(at, qualifier.type);
    take(at, qualifier.kind);
    forEachPart(qualifier, [&at](auto& part) { take(at, part); });
  }
  scratch.rangeCheckers.resize(from.rangeCheckers);
  for (RangeChecker& checker : scratch.rangeCheckers) {
    take(at, checker.type);
    take(at, checker.status);
    take(at, checker.low);
    take(at, checker.high);
  }
  scratch.since.reset();
  if (from.hasSince) take(at, scratch.since.emplace());
  return scratch;
}

}  // namespace tcamshow
