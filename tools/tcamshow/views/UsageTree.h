// Makes the usage tree and the summary from groups and entries.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "questions/Capacity.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// The usage tree of groups and entries. It also has the data without a place in the tree: the
/// names of groups, which of their numbers are reported, and the number of pipes.
///
/// Invariant: the used entries of a copy or a feature are the number of entries below it. A bucket
/// has one feature of each name. Of equal entries only the first is kept.
class Usage {
 public:
  using Copy = VelmorTcam::CliShowTcamUsageGroupPerCopyInfo;

  /// Reads the source to its end. Gives a warning if a place has an id twice.
  explicit Usage(Source& source);

  const VelmorTcam::CliShowTcamUsageChipInfo& chip() const noexcept { return *chip_; }
  std::uint8_t numPipes() const noexcept { return numPipes_; }
  /// The name of a copy's group; empty if it has none.
  std::string_view groupName(const Copy& copy) const;
  /// The numbers of a copy's group line; none are reported if it has no such line.
  ReportedEntries reported(const Copy& copy) const;

 private:
  Halvo::Ptr<VelmorTcam::CliShowTcamUsageChipInfo> chip_ =
      Halvo::makePtr<VelmorTcam::CliShowTcamUsageChipInfo>();
  std::uint8_t numPipes_ = 1;
  struct GroupFacts {
    Halvo::String name;
    ReportedEntries reported;
  };
  std::unordered_map<const Copy*, GroupFacts> groups_;
};

/// The chip's stages, in ascending order of their numbers.
std::vector<Halvo::Ptr<VelmorTcam::CliShowTcamUsageStageInfo>> stagesInOrder(
    const VelmorTcam::CliShowTcamUsageChipInfo& chip);

/// Calls `visit(place, copy)` for each copy of a pipe's groups, ordered by group priority, group id
/// and copy id. `place` has the stage and the pipe.
template <class Visit>
void forEachCopy(const VelmorTcam::CliShowTcamUsagePipeInfo& pipe, Place place, Visit visit) {
  for (auto const& [groupPriority, bucket] : pipe.groupPrioBucket()) {
    place.groupPriority = groupPriority;
    for (auto const& [groupId, group] : bucket->groupInfo()) {
      place.groupId = groupId;
      for (auto const& [copyId, copy] : group->groupPerCopyInfo()) {
        place.copyId = copyId;
        visit(place, *copy);
      }
    }
  }
}

/// Calls `visit(feature)` for each feature of a copy, ordered by feature priority, and then by
/// arrival.
template <class Visit>
void forEachFeature(const VelmorTcam::CliShowTcamUsageGroupPerCopyInfo& copy, Visit visit) {
  for (auto const& [featurePriority, bucket] : copy.featurePrioBucket()) {
    for (auto const& feature : bucket->featureInfo()) visit(*feature);
  }
}

/// The summary: under each group's name, the features of its places. Each pipe of each stage is one
/// pass. A group's first pass records every feature. Later passes record only features that are new
/// to the group.
Halvo::Ptr<VelmorTcam::CliShowTcamSummaryOrdered> summaryOf(const Usage& usage);

}  // namespace tcamshow
