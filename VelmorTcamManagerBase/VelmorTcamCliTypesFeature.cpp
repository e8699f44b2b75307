// Makes and destroys features; reads and writes the text form of an entry.
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFeature.h"

#include "Zel/Types/Record.h"

namespace VelmorTcam {

namespace {

constexpr const char* entryInfoName = "VelmorTcam::CliShowTcamUsageEntryInfo";

}  // namespace

CliShowTcamUsageEntryInfo::CliShowTcamUsageEntryInfo(Zel::CharRange& in) {
  Zel::desAttrPre(in, entryInfoName, "entryPriority", &entryPriority_);
  Zel::desAttrIntra(in, "entryId", &entryId_);
  Zel::desAttrIntra(in, "description", &description_);
  Zel::desAttrPost(in, "hits", &hits_);
}

void valueToSequence(Halvo::String& out, const CliShowTcamUsageEntryInfo& entry) {
  Zel::serAttrPre(out, entryInfoName, "entryPriority", entry.entryPriority());
  Zel::serAttrIntra(out, "entryId", entry.entryId());
  Zel::serAttrIntra(out, "description", entry.description());
  Zel::serAttrPost(out, "hits", entry.hits());
}

CliShowTcamUsageFeatureInfo::CliShowTcamUsageFeatureInfo(Halvo::String cliFeatureName) noexcept
    : cliFeatureName_(std::move(cliFeatureName)) {}

CliShowTcamUsageFeatureInfo::~CliShowTcamUsageFeatureInfo() {
  // Set the flag first: code that runs while the set is emptied can test it.
  flagSet(flagBeingDestroyed);
  entrySetDelAll();
}

Halvo::Ptr<CliShowTcamUsageFeatureInfo> CliShowTcamUsageFeatureInfo::CliShowTcamUsageFeatureInfoIs(
    Halvo::String cliFeatureName) {
  return Halvo::makePtr<CliShowTcamUsageFeatureInfo>(std::move(cliFeatureName));
}

Halvo::Ptr<CliShowTcamUsageFeatureInfo> cliShowTcamUsageFeatureInfoFactory(
    Halvo::String cliFeatureName) {
  return CliShowTcamUsageFeatureInfo::CliShowTcamUsageFeatureInfoIs(std::move(cliFeatureName));
}

constinit Zel::AllocationTracker CliShowTcamUsageFeatureInfo::TN_EntrySet::memAllocationTracker_{
    "VelmorTcam::CliShowTcamUsageFeatureInfo::TN_EntrySet"};

}  // namespace VelmorTcam
