#include "views/UsageTree.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "io/KeyedHash.h"
#include "views/IdSet.h"

namespace tcamshow {

namespace {

constexpr WarningKind repeatedId;

using VelmorTcam::CliShowTcamSummaryGroupName;
using VelmorTcam::CliShowTcamSummaryOrdered;
using VelmorTcam::CliShowTcamUsageChipInfo;
using VelmorTcam::CliShowTcamUsageEntryInfo;
using VelmorTcam::CliShowTcamUsageFeatureInfo;
using VelmorTcam::CliShowTcamUsageFeaturePrioBucket;
using VelmorTcam::CliShowTcamUsagePipeInfo;
using VelmorTcam::CliShowTcamUsageStageInfo;

std::string_view nameOf(std::string_view name) noexcept { return name; }
std::string_view nameOf(const CliShowTcamUsageFeatureInfo* feature) noexcept {
  return feature->cliFeatureName().view();
}

// A hash that could not throw would be taken for one that is quick, and be calculated anew.
struct FeatureHash {
  using is_transparent = void;
  template <class Feature>
  std::size_t operator()(const Feature& feature) const {
    return static_cast<std::size_t>(keyedHash(nameOf(feature)));
  }
};
struct FeatureEqual {
  using is_transparent = void;
  template <class A, class B>
  bool operator()(const A& a, const B& b) const noexcept {
    return nameOf(a) == nameOf(b);
  }
};
/// The features of a bucket by their names, where it holds so many that a search of its queue takes
/// too long.
using FeaturesByName = std::unordered_set<CliShowTcamUsageFeatureInfo*, FeatureHash, FeatureEqual>;

class UsageFiller {
 public:
  UsageFiller(CliShowTcamUsageChipInfo& chip, Source& source) : chip_(chip), source_(source) {}

  /// The copy at a place. Most lines stand where the one before did.
  Usage::Copy& copyAt(const Place& place) {
    if (copy_ == nullptr || place != place_) {
      auto const stage = chip_.stageInfoIs(static_cast<VelmorTcam::StageType>(place.stage));
      copy_ = stage->pipeInfoIs(place.pipe)
                  ->groupPrioBucketIs(place.groupPriority)
                  ->groupInfoIs(place.groupId)
                  ->groupPerCopyInfoIs(place.copyId);
      place_ = place;
      bucket_.reset();
      ids_ = nullptr;
    }
    return *copy_;
  }

  void add(const Entry& line) {
    Usage::Copy& copy = copyAt(line.place);
    checkId(copy, line.shadowId);
    CliShowTcamUsageFeatureInfo& feature = featureOf(copy, line);
    CliShowTcamUsageEntryInfo entry(line.priority, static_cast<std::uint32_t>(line.shadowId));
    entry.descriptionIs(line.description);
    entry.hitsIs(line.hits);
    feature.entrySetIs(entry);
    std::uint32_t const used = feature.entrySet().size();
    if (used == feature.usedEntries()) return;
    feature.usedEntriesIs(used);
    copy.usedEntriesIs(copy.usedEntries() + 1);
  }

 private:
  CliShowTcamUsageFeatureInfo& featureOf(Usage::Copy& copy, const Entry& line) {
    if (bucket_ == nullptr || bucket_->featurePrio() != line.featurePriority) {
      bucket_ = copy.featurePrioBucketIs(line.featurePriority);
      feature_ = nullptr;
    }
    if (feature_ != nullptr && feature_->cliFeatureName() == line.feature) return *feature_;
    feature_ = featureNamed(line.feature);
    if (feature_ != nullptr) return *feature_;
    auto const feature = VelmorTcam::cliShowTcamUsageFeatureInfoFactory(line.feature);
    bucket_->featureInfoEnq(feature);
    feature_ = feature.get();
    std::uint32_t const count = bucket_->featureInfo().size();
    if (count > mostSearched) {
      FeaturesByName& features = features_[bucket_.get()];
      if (features.empty()) {
        for (auto const& each : bucket_->featureInfo()) features.insert(each.get());
      } else {
        features.insert(feature_);
      }
    }
    return *feature_;
  }

  /// The feature of the bucket at hand; null where it has none of that name.
  CliShowTcamUsageFeatureInfo* featureNamed(std::string_view name) const {
    auto const& queue = bucket_->featureInfo();
    if (queue.size() > mostSearched) {
      const FeaturesByName& features = features_.at(bucket_.get());
      auto const known = features.find(name);
      return known == features.end() ? nullptr : *known;
    }
    for (auto const& feature : queue) {
      if (feature->cliFeatureName() == name) return feature.get();
    }
    return nullptr;
  }

  void checkId(const Usage::Copy& copy, std::uint64_t id) {
    if (ids_ == nullptr) ids_ = &idSets_[&copy];
    if (ids_->insert(id)) [[likely]]
      return;
    source_.warn(repeatedId, [&] {
      return "entry: member \"shadowId\": an earlier entry of its place has " + std::to_string(id) +
             " too";
    });
  }

  /// The most features of a bucket that are searched one by one.
  static constexpr std::uint32_t mostSearched = 8;

  CliShowTcamUsageChipInfo& chip_;
  Source& source_;
  std::unordered_map<const Usage::Copy*, IdSet> idSets_;
  std::unordered_map<const CliShowTcamUsageFeaturePrioBucket*, FeaturesByName> features_;
  // Where the last line stood; all but the copy are null where it had none.
  Place place_;
  Halvo::Ptr<Usage::Copy> copy_;
  Halvo::Ptr<CliShowTcamUsageFeaturePrioBucket> bucket_;
  CliShowTcamUsageFeatureInfo* feature_ = nullptr;
  IdSet* ids_ = nullptr;
};

}  // namespace

Usage::Usage(Source& source) : numPipes_(source.header().numPipes) {
  UsageFiller filler(*chip_, source);
  for (;;) {
    switch (source.next()) {
      case Source::Item::end:
        return;
      case Source::Item::group: {
        const Group& line = source.group();
        Copy& copy = filler.copyAt(line.place);
        copy.availableEntriesIs(line.availableEntries.value_or(0));
        copy.freeEntriesIs(line.freeEntries.value_or(0));
        groups_.insert({&copy, {line.name, reportedBy(line)}});
        break;
      }
      case Source::Item::entry:
        filler.add(source.entry());
        break;
    }
  }
}

std::string_view Usage::groupName(const Copy& copy) const {
  auto const group = groups_.find(&copy);
  return group == groups_.end() ? std::string_view() : group->second.name.view();
}

ReportedEntries Usage::reported(const Copy& copy) const {
  auto const group = groups_.find(&copy);
  return group == groups_.end() ? ReportedEntries() : group->second.reported;
}

std::vector<Halvo::Ptr<CliShowTcamUsageStageInfo>> stagesInOrder(
    const CliShowTcamUsageChipInfo& chip) {
  std::vector<Halvo::Ptr<CliShowTcamUsageStageInfo>> stages;
  for (auto const& [stage, info] : chip.stageInfo()) stages.push_back(info);
  std::sort(stages.begin(), stages.end(),
            [](auto const& a, auto const& b) { return a->stage() < b->stage(); });
  return stages;
}

namespace {

class SummaryFiller {
 public:
  SummaryFiller(const Usage& usage, CliShowTcamSummaryOrdered& summary)
      : usage_(usage), summary_(summary) {}

  void pipePass(const CliShowTcamUsagePipeInfo& pipe) {
    std::vector<CliShowTcamSummaryGroupName*> met;
    forEachCopy(pipe, {}, [&](const Place&, const Usage::Copy& copy) {
      auto const group = summary_.tcamSummaryIs(Halvo::String(usage_.groupName(copy)));
      if (!group->pipeFinished()) met.push_back(group.get());
      placeAdd(*group, copy);
    });
    for (CliShowTcamSummaryGroupName* const group : met) group->pipeFinishedIs(true);
  }

 private:
  // The texts are those of the tree's features and of the group's queue, which both stay.
  using Names = std::unordered_set<std::string_view, KeyedTextHash>;

  void placeAdd(CliShowTcamSummaryGroupName& group, const Usage::Copy& copy) {
    Names* const names = group.pipeFinished() ? &recordedBy(group) : nullptr;
    forEachFeature(copy, [&](const CliShowTcamUsageFeatureInfo& feature) {
      bool const isNew = names == nullptr || names->insert(feature.cliFeatureName().view()).second;
      if (isNew) group.tcamSummaryGroupNameEnq(feature.cliFeatureName());
    });
  }

  /// What the group would answer to isGroupPipeDuplicate, without a walk of its queue: that takes
  /// too long where very many features stand in one group. Most groups stand in one pipe alone, and
  /// nobody asks.
  Names& recordedBy(const CliShowTcamSummaryGroupName& group) {
    auto const [at, isNew] = recorded_.try_emplace(&group);
    if (isNew) {
      for (const Halvo::String& name : group.tcamSummaryGroupName()) at->second.insert(name.view());
    }
    return at->second;
  }

  const Usage& usage_;
  CliShowTcamSummaryOrdered& summary_;
  std::unordered_map<const CliShowTcamSummaryGroupName*, Names> recorded_;
};

}  // namespace

Halvo::Ptr<CliShowTcamSummaryOrdered> summaryOf(const Usage& usage) {
  auto summary = Halvo::makePtr<CliShowTcamSummaryOrdered>();
  SummaryFiller filler(usage, *summary);
  for (auto const& stage : stagesInOrder(usage.chip())) {
    for (auto const& [pipeId, pipe] : stage->pipeInfo()) filler.pipePass(*pipe);
  }
  return summary;
}

}  // namespace tcamshow
