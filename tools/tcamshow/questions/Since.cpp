#include "questions/Since.h"

#include <algorithm>
#include <utility>

#include "io/KeyedHash.h"
#include "match/Match.h"
#include "snapshot/EntryState.h"

namespace tcamshow {

namespace {

/// How far a counter has moved from `before` to `now`.
std::uint64_t moved(std::uint64_t now, std::uint64_t before, SinceMark& mark) noexcept {
  if (now >= before) return now - before;
  mark = SinceMark::reset;
  return now;
}

/// Gives another source's entries, each with its facts.
class SinceSource final : public Source {
 public:
  SinceSource(std::unique_ptr<Source> source, Since& since, Complaints& complaints)
      : Source(complaints), source_(std::move(source)), since_(since) {
    header_ = source_->header();
  }

  const std::string& fileName() const noexcept override { return source_->fileName(); }
  std::uint64_t lineNumber() const noexcept override { return source_->lineNumber(); }

  Item next() override {
    Item const item = source_->next();
    if (item == Item::group) group_ = source_->group();
    if (item == Item::entry) {
      entry_ = source_->entry();
      entry_.since = since_.of(entry_);
    }
    return item;
  }

 private:
  std::unique_ptr<Source> source_;
  Since& since_;
};

bool arePartners(const Entry& a, const Entry& b) {
  return a.place == b.place && a.shadowId == b.shadowId && a.otherMatch == b.otherMatch &&
         matchOf(a) == matchOf(b);
}

}  // namespace

Since::Since(Source& baseline) : store_(baseline) {
  items_.reserve(store_.size());
  for (std::uint32_t number = 0; number < store_.size(); ++number) {
    items_.push_back({hashOf(store_.entry(number, scratch_)), number, 0});
  }
  std::sort(items_.begin(), items_.end(), [](const Item& a, const Item& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.number < b.number;
  });
}

SinceFacts Since::of(const Entry& entry) {
  SinceFacts facts;
  const Entry* const before = partnerOf(entry);
  if (before == nullptr) facts.mark = SinceMark::isNew;
  if (countersAreProgrammed(entry)) {
    if (before == nullptr) {
      facts.hits = entry.hits;
    } else if (countersAreProgrammed(*before)) {
      facts.hits = moved(entry.hits, before->hits, facts.mark);
    }
  }
  if (entry.bytes) {
    if (before == nullptr) {
      facts.bytes = entry.bytes;
    } else if (before->bytes) {
      facts.bytes = moved(*entry.bytes, *before->bytes, facts.mark);
    }
  }
  return facts;
}

std::uint64_t Since::hashOf(const Entry& entry) {
  key_.clear();
  pairKeyAppend(key_, entry, PairBy::idAndMatch);
  // Copies of one entry stand in several places.
  std::uint64_t const group = std::uint64_t{entry.place.groupId} << 32 | entry.place.copyId;
  std::uint64_t const rest = std::uint64_t{entry.place.groupPriority} << 32 |
                             std::uint64_t{static_cast<std::uint16_t>(entry.place.pipe)} << 8 |
                             static_cast<std::uint8_t>(entry.place.stage);
  return keyedHash(keyedHash(group, rest), key_);
}

const Entry* Since::partnerOf(const Entry& entry) {
  std::uint64_t const hash = hashOf(entry);
  auto const first =
      std::lower_bound(items_.begin(), items_.end(), hash,
                       [](const Item& item, std::uint64_t sought) { return item.hash < sought; });
  if (first == items_.end() || first->hash != hash) return nullptr;
  auto const next = first + first->taken;
  if (next == items_.end() || next->hash != hash) return nullptr;
  const Entry& before = store_.entry(next->number, scratch_);
  // Two keys with one hash: with 64 secret bits, nobody will see it.
  if (!arePartners(entry, before)) return nullptr;
  ++first->taken;
  return &before;
}

std::unique_ptr<Source> withSince(std::unique_ptr<Source> source, Since& since,
                                  Complaints& complaints) {
  return std::make_unique<SinceSource>(std::move(source), since, complaints);
}

}  // namespace tcamshow
