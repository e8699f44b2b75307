// Fills a usage tree, walks it, and prints it with the library's own formats.
#include <iostream>
#include <string_view>

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Format.h"

namespace strings = VelmorTcam::displayStrings;  // CliDisplayStrings' formats, as constants

using VelmorTcam::CliShowTcamUsageChipInfo;
using VelmorTcam::CliShowTcamUsageEntryInfo;
using VelmorTcam::CliShowTcamUsageGroupPerCopyInfo;

namespace {

void print(const Halvo::String& text) { std::cout << text.view(); }

/// Adds an entry to the feature with that name. Makes the feature if the copy does not have it.
void entryAdd(CliShowTcamUsageGroupPerCopyInfo& copy, VelmorTcam::U32 featurePriority,
              std::string_view featureName, const CliShowTcamUsageEntryInfo& entry) {
  auto const bucket = copy.featurePrioBucketIs(featurePriority);
  Halvo::Ptr<VelmorTcam::CliShowTcamUsageFeatureInfo> feature;
  for (auto const& queued : bucket->featureInfo()) {
    if (queued->cliFeatureName().view() == featureName) feature = queued;
  }
  if (!feature) {
    feature = VelmorTcam::cliShowTcamUsageFeatureInfoFactory(Halvo::String(featureName));
    bucket->featureInfoEnq(feature);
  }
  if (feature->entrySetHas(entry)) return;
  feature->entrySetIs(entry);
  copy.usedEntriesIs(copy.usedEntries() + 1);
}

void copyPrint(VelmorTcam::U32 groupId, const CliShowTcamUsageGroupPerCopyInfo& copy) {
  const char* const noun = copy.usedEntries() == 1 ? "entry" : "entries";
  print(Zel::_fmt(strings::groupInfoFmt, groupId, "", copy.usedEntries(), noun,
                  copy.availableEntries()));
  for (auto const& [priority, bucket] : copy.featurePrioBucket()) {
    for (auto const& feature : bucket->featureInfo()) {
      print(Zel::_fmt(strings::requestHeaderFmt, feature->cliFeatureName(),
                      feature->entrySet().size()));
      for (const CliShowTcamUsageEntryInfo& entry : feature->entrySet()) {
        print(Zel::_fmt(strings::entryInfoFmt, entry.entryId(), Zel::_fmt("%12lu", entry.hits()),
                        entry.description()));
      }
    }
  }
}

void stagePrint(const VelmorTcam::CliShowTcamUsageStageInfo& stage) {
  print(Zel::_fmt(strings::stageHeaderFmt, stringValue(stage.stage())));
  print("\n");
  for (auto const& [pipeId, pipe] : stage.pipeInfo()) {
    for (auto const& [groupPriority, groups] : pipe->groupPrioBucket()) {
      for (auto const& [groupId, group] : groups->groupInfo()) {
        for (auto const& [copyId, copy] : group->groupPerCopyInfo()) copyPrint(groupId, *copy);
      }
    }
  }
}

CliShowTcamUsageEntryInfo entryOf(VelmorTcam::U32 priority, VelmorTcam::U32 id,
                                  const char* description, VelmorTcam::U64 hits) {
  CliShowTcamUsageEntryInfo entry(priority, id);
  entry.descriptionIs(description);
  entry.hitsIs(hits);
  return entry;
}

}  // namespace

int main() {
  auto const chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  // Each call returns the child, and makes it first if it is not there.
  auto const copy = chip->stageInfoIs(VelmorTcam::stageTypeIngress)
                        ->pipeInfoIs(0)
                        ->groupPrioBucketIs(10)
                        ->groupInfoIs(3)
                        ->groupPerCopyInfoIs(0);
  copy->availableEntriesIs(509);

  entryAdd(*copy, 5, "acl-web", entryOf(100, 0x11, "permit tcp any any eq 80", 1234));
  entryAdd(*copy, 5, "acl-web", entryOf(200, 0x12, "permit tcp any any eq 443", 56789));
  entryAdd(*copy, 1, "acl-guard", entryOf(1, 0x13, "deny ip any any", 7));

  for (auto const& [stage, info] : chip->stageInfo()) stagePrint(*info);
}
