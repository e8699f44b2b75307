// Makes and destroys the objects of the usage tree.
#include "VelmorTcamManagerBase/VelmorTcamCliTypesUsage.h"

namespace VelmorTcam {

CliShowTcamUsageFeaturePrioBucket::CliShowTcamUsageFeaturePrioBucket(U32 featurePrio) noexcept
    : featurePrio_(featurePrio) {}
CliShowTcamUsageGroupPerCopyInfo::CliShowTcamUsageGroupPerCopyInfo(U32 copyId) noexcept
    : copyId_(copyId) {}
CliShowTcamUsageGroupInfo::CliShowTcamUsageGroupInfo(U32 groupId) noexcept : groupId_(groupId) {}
CliShowTcamUsageGroupPriorityBucket::CliShowTcamUsageGroupPriorityBucket(U32 groupPriority) noexcept
    : groupPriority_(groupPriority) {}
CliShowTcamUsagePipeInfo::CliShowTcamUsagePipeInfo(S16 pipeId) noexcept : pipeId_(pipeId) {}
CliShowTcamUsageStageInfo::CliShowTcamUsageStageInfo(StageType stage) noexcept : stage_(stage) {}
CliShowTcamUsageChipInfo::CliShowTcamUsageChipInfo() noexcept = default;

// Set the flag first: code that runs while the collection is emptied can test it.
CliShowTcamUsageFeaturePrioBucket::~CliShowTcamUsageFeaturePrioBucket() {
  flagSet(flagBeingDestroyed);
  featureInfoDelAll();
}
CliShowTcamUsageGroupPerCopyInfo::~CliShowTcamUsageGroupPerCopyInfo() {
  flagSet(flagBeingDestroyed);
  featurePrioBucketDelAll();
}
CliShowTcamUsageGroupInfo::~CliShowTcamUsageGroupInfo() {
  flagSet(flagBeingDestroyed);
  groupPerCopyInfoDelAll();
}
CliShowTcamUsageGroupPriorityBucket::~CliShowTcamUsageGroupPriorityBucket() {
  flagSet(flagBeingDestroyed);
  groupInfoDelAll();
}
CliShowTcamUsagePipeInfo::~CliShowTcamUsagePipeInfo() {
  flagSet(flagBeingDestroyed);
  groupPrioBucketDelAll();
}
CliShowTcamUsageStageInfo::~CliShowTcamUsageStageInfo() {
  flagSet(flagBeingDestroyed);
  pipeInfoDelAll();
}
CliShowTcamUsageChipInfo::~CliShowTcamUsageChipInfo() {
  flagSet(flagBeingDestroyed);
  stageInfoDelAll();
}

constinit Zel::AllocationTracker
    CliShowTcamUsageFeaturePrioBucket::QE_FeatureInfo::memAllocationTracker_{
        "VelmorTcam::CliShowTcamUsageFeaturePrioBucket::QE_FeatureInfo"};
constinit Zel::AllocationTracker
    CliShowTcamUsageGroupPerCopyInfo::TN_FeaturePrioBucket::memAllocationTracker_{
        "VelmorTcam::CliShowTcamUsageGroupPerCopyInfo::TN_FeaturePrioBucket"};
constinit Zel::AllocationTracker
    CliShowTcamUsageGroupInfo::TN_GroupPerCopyInfo::memAllocationTracker_{
        "VelmorTcam::CliShowTcamUsageGroupInfo::TN_GroupPerCopyInfo"};
constinit Zel::AllocationTracker
    CliShowTcamUsageGroupPriorityBucket::TN_GroupInfo::memAllocationTracker_{
        "VelmorTcam::CliShowTcamUsageGroupPriorityBucket::TN_GroupInfo"};
constinit Zel::AllocationTracker
    CliShowTcamUsagePipeInfo::TN_GroupPrioBucket::memAllocationTracker_{
        "VelmorTcam::CliShowTcamUsagePipeInfo::TN_GroupPrioBucket"};
constinit Zel::AllocationTracker CliShowTcamUsageStageInfo::TN_PipeInfo::memAllocationTracker_{
    "VelmorTcam::CliShowTcamUsageStageInfo::TN_PipeInfo"};
constinit Zel::AllocationTracker CliShowTcamUsageChipInfo::HN_StageInfo::memAllocationTracker_{
    "VelmorTcam::CliShowTcamUsageChipInfo::HN_StageInfo"};

}  // namespace VelmorTcam
