#include "questions/Cost.h"

#include <algorithm>
#include <map>
#include <utility>

#include "match/Field.h"

namespace tcamshow {

namespace {

constexpr unsigned rangeBits = 16;  // of ports and of the length
static_assert(bitsOf(Field::sport) == rangeBits && bitsOf(Field::dport) == rangeBits &&
              bitsOf(Field::length) == rangeBits);

std::size_t kindOf(const RangeChecker& checker) noexcept {
  return static_cast<std::size_t>(rangeCheckerByType(checker.type) - rangeCheckerList().data());
}

/// An entry's place in match order.
struct Rank {
  std::uint32_t priority = 0;
  std::uint32_t sequence = 0;

  bool isBefore(const Rank& other) const noexcept {
    return priority != other.priority ? priority > other.priority : sequence < other.sequence;
  }
};

/// The different range checkers of one kind: low and high.
class Distinct {
 public:
  void add(const RangeChecker& checker) {
    ranges_.emplace_back(checker.low, checker.high);
    if (ranges_.size() >= limit_) compact();
  }
  std::uint64_t count() {
    compact();
    return ranges_.size();
  }

 private:
  // Sorts what has come in since, and only when the list has doubled.
  void compact() {
    std::sort(ranges_.begin(), ranges_.end());
    ranges_.erase(std::unique(ranges_.begin(), ranges_.end()), ranges_.end());
    limit_ = std::max<std::size_t>(64, 2 * ranges_.size());
  }

  std::vector<std::pair<std::int32_t, std::int32_t>> ranges_;
  std::size_t limit_ = 64;
};

/// What is known of a place so far.
struct Sum {
  PlaceCost cost;
  Rank worstRank;
  std::vector<Distinct> checkers{rangeCheckerList().size()};

  void add(const Entry& entry) {
    std::uint64_t expanded = 1;
    for (const RangeChecker& checker : entry.rangeCheckers) {
      expanded *= prefixCount(checker.low, checker.high, rangeBits);
      checkers[kindOf(checker)].add(checker);
    }
    ++cost.entries;
    cost.expandedEntries += expanded;
    if (entry.rangeCheckers.empty()) return;
    Rank const rank{entry.priority, entry.sequence};
    if (cost.worst && (expanded < cost.worst->entries ||
                       (expanded == cost.worst->entries && !rank.isBefore(worstRank)))) {
      return;
    }
    cost.worst = {entry.shadowId, entry.sequence, expanded};
    worstRank = rank;
  }
};

}  // namespace

std::uint64_t prefixCount(std::int64_t low, std::int64_t high, unsigned bits) noexcept {
  std::int64_t const end = std::int64_t{1} << bits;
  std::int64_t at = std::max<std::int64_t>(low, 0);
  std::int64_t const last = std::min(high, end - 1);
  std::uint64_t count = 0;
  while (at <= last) {
    // The largest block that begins here and ends in the range.
    std::int64_t size = at == 0 ? end : at & -at;
    while (at + size - 1 > last) size /= 2;
    at += size;
    ++count;
  }
  return count;
}

std::vector<PlaceCost> costsOf(Source& source, const std::function<bool(const Place&)>& isAsked) {
  std::map<Place, Sum> sums;
  for (Source::Item item; (item = source.next()) != Source::Item::end;) {
    bool const isEntry = item == Source::Item::entry;
    const Place& place = isEntry ? source.entry().place : source.group().place;
    if (!isAsked(place)) continue;
    Sum& sum = sums[place];
    if (isEntry) {
      sum.add(source.entry());
    } else {
      sum.cost.name = source.group().name;
    }
  }
  std::vector<PlaceCost> costs;
  for (auto& [place, sum] : sums) {
    sum.cost.place = place;
    for (Distinct& distinct : sum.checkers) sum.cost.rangeCheckers.push_back(distinct.count());
    costs.push_back(std::move(sum.cost));
  }
  return costs;
}

}  // namespace tcamshow
