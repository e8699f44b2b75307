// The usage tree and the summary that groups and entries make.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Groups and entries as a usage tree, and what the tree has no place for.
///
/// Invariant: a copy's used entries are the entries below it, and so are a feature's; features of
/// one name in one bucket are one. Of entries that are equal the first one is kept.
class Usage {
 public:
  using Copy = VelmorTcam::CliShowTcamUsageGroupPerCopyInfo;

  /// Takes all that the source gives. Warns of an id that a place has twice.
  explicit Usage(Source& source);

  const VelmorTcam::CliShowTcamUsageChipInfo& chip() const noexcept { return *chip_; }
  std::uint8_t numPipes() const noexcept { return numPipes_; }
  /// The name of a copy's group; empty where none was given.
  std::string_view groupName(const Copy& copy) const;

 private:
  Halvo::Ptr<VelmorTcam::CliShowTcamUsageChipInfo> chip_ =
      Halvo::makePtr<VelmorTcam::CliShowTcamUsageChipInfo>();
  std::uint8_t numPipes_ = 1;
  std::unordered_map<const Copy*, Halvo::String> groupNames_;
};

/// The chip's stages by ascending number.
std::vector<Halvo::Ptr<VelmorTcam::CliShowTcamUsageStageInfo>> stagesInOrder(
    const VelmorTcam::CliShowTcamUsageChipInfo& chip);

/// Calls `visit(groupId, copy)` for each copy of a pipe's groups, by group priority, group id and
/// copy id.
template <class Visit>
void forEachCopy(const VelmorTcam::CliShowTcamUsagePipeInfo& pipe, Visit visit) {
  for (auto const& [groupPriority, bucket] : pipe.groupPrioBucket()) {
    for (auto const& [groupId, group] : bucket->groupInfo()) {
      for (auto const& [copyId, copy] : group->groupPerCopyInfo()) visit(groupId, *copy);
    }
  }
}

/// Calls `visit(feature)` for each feature of a copy, by feature priority, then arrival.
template <class Visit>
void forEachFeature(const VelmorTcam::CliShowTcamUsageGroupPerCopyInfo& copy, Visit visit) {
  for (auto const& [featurePriority, bucket] : copy.featurePrioBucket()) {
    for (auto const& feature : bucket->featureInfo()) visit(*feature);
  }
}

/// The summary: under each group's name, the features of its places. Each pipe of each stage is one
/// pass. A group's first pass records every feature, later ones those that are new to the group.
Halvo::Ptr<VelmorTcam::CliShowTcamSummaryOrdered> summaryOf(const Usage& usage);

}  // namespace tcamshow
