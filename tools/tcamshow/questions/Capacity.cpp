#include "questions/Capacity.h"

#include <utility>

#include "snapshot/EntryState.h"

namespace tcamshow {

namespace {

constexpr std::size_t indexOf(EntryState state) noexcept { return static_cast<std::size_t>(state); }

class UseCounter {
 public:
  /// The copy at a place. Most lines stand where the one before did.
  CopyUse& copyAt(const Place& place) {
    if (copy_ == nullptr || copy_->place != place) {
      copy_ = &copies_[place];
      copy_->place = place;
      feature_ = nullptr;
    }
    return *copy_;
  }

  void add(const Group& group) {
    CopyUse& copy = copyAt(group.place);
    copy.name = group.name;
    copy.reported = reportedBy(group);
  }
  void add(const Entry& entry) {
    CopyUse& copy = copyAt(entry.place);
    ++copy.byState[indexOf(stateOf(entry))];
    if (feature_ == nullptr || feature_->first != entry.feature) {
      auto at = copy.byFeature.find(entry.feature);
      if (at == copy.byFeature.end()) at = copy.byFeature.emplace(entry.feature, 0).first;
      feature_ = &*at;
    }
    ++feature_->second;
  }

  std::vector<CopyUse> taken() {
    std::vector<CopyUse> copies;
    copies.reserve(copies_.size());
    for (auto& [place, copy] : copies_) copies.push_back(std::move(copy));
    return copies;
  }

 private:
  std::map<Place, CopyUse> copies_;
  CopyUse* copy_ = nullptr;
  std::pair<const std::string, std::uint64_t>* feature_ = nullptr;
};

}  // namespace

std::uint64_t Fill::tenths() const noexcept { return (2000 * used + size) / (2 * size); }

// The quotient is rounded as `percent` was when it was read: equal numbers stay equal.
bool Fill::isAtLeast(double percent) const noexcept {
  return static_cast<double>(100 * used) / static_cast<double>(size) >= percent;
}

std::uint64_t CopyUse::usedEntries() const noexcept {
  return byState[indexOf(EntryState::programmed)] + byState[indexOf(EntryState::unknown)];
}

std::optional<Fill> CopyUse::fill() const noexcept {
  std::uint64_t const used = usedEntries();
  std::uint64_t const size = reported.total       ? *reported.total
                             : reported.available ? used + *reported.available
                                                  : 0;
  return size == 0 ? std::nullopt : std::optional(Fill{used, size});
}

std::vector<CopyUse> capacityOf(Source& source, const std::function<bool(const Place&)>& isAsked) {
  UseCounter counter;
  for (Source::Item item; (item = source.next()) != Source::Item::end;) {
    if (item == Source::Item::group) {
      if (isAsked(source.group().place)) counter.add(source.group());
    } else if (isAsked(source.entry().place)) {
      counter.add(source.entry());
    }
  }
  return counter.taken();
}

std::vector<StageUse> stageUse(std::span<const CopyUse> copies) {
  std::vector<StageUse> stages;
  for (const CopyUse& copy : copies) {
    if (stages.empty() || stages.back().stage != copy.place.stage) {
      stages.push_back({copy.place.stage, 0, 0});
    }
    StageUse& stage = stages.back();
    stage.used += copy.usedEntries();
    if (!copy.reported.total) {
      stage.total.reset();
    } else if (stage.total) {
      *stage.total += *copy.reported.total;
    }
  }
  return stages;
}

}  // namespace tcamshow
