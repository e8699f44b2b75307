// Makes and destroys the summary's objects; finds names that are already recorded.
#include "VelmorTcamManagerBase/VelmorTcamCliTypesSummary.h"

#include <utility>

namespace VelmorTcam {

CliShowTcamSummaryGroupName::CliShowTcamSummaryGroupName(Halvo::String groupName) noexcept
    : groupName_(std::move(groupName)) {}
CliShowTcamSummaryOrdered::CliShowTcamSummaryOrdered() noexcept = default;

CliShowTcamSummaryGroupName::~CliShowTcamSummaryGroupName() {
  flagSet(flagBeingDestroyed);
  tcamSummaryGroupNameDelAll();
}
CliShowTcamSummaryOrdered::~CliShowTcamSummaryOrdered() {
  flagSet(flagBeingDestroyed);
  tcamSummaryDelAll();
}

bool CliShowTcamSummaryGroupName::isGroupPipeDuplicate(const Halvo::String& name) const noexcept {
  if (!pipeFinished_) return false;
  for (const Halvo::String& recorded : tcamSummaryGroupName_) {
    if (recorded == name) return true;
  }
  return false;
}

constinit Zel::AllocationTracker
    CliShowTcamSummaryGroupName::QE_TcamSummaryGroupName::memAllocationTracker_{
        "VelmorTcam::CliShowTcamSummaryGroupName::QE_TcamSummaryGroupName"};
constinit Zel::AllocationTracker CliShowTcamSummaryOrdered::TN_TcamSummary::memAllocationTracker_{
    "VelmorTcam::CliShowTcamSummaryOrdered::TN_TcamSummary"};

}  // namespace VelmorTcam
