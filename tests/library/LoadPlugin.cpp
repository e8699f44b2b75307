// A module that uses the library as a command-line interface does: it prints a table and a usage
// tree. LoadCycleTest.cpp opens and closes it.
#include <cstdio>
#include <string>

#include "LoadPlugin.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Format/Format.h"
#include "Zel/Trace/Trace.h"

namespace {

using namespace VelmorTcam;
using Halvo::makePtr;
using Halvo::Ptr;
using Halvo::String;

class PermitFormat : public IpEntryRequestCliFormat {
 public:
  String formatActions(const Ptr<const VelmorTcamEntryShadow>&) const override { return "permit"; }
};

void write(int fd, const String& text) { dprintf(fd, "%s", text.c_str()); }

void printTable(int fd) {
  initializeCliHeaders();
  auto const format = makePtr<PermitFormat>();
  format->initializedIs(true);
  write(fd, getCliHeader(format->headerType()));
  for (U32 i = 1; i <= 3; ++i) {
    auto const shadow = makePtr<VelmorTcamEntryShadow>(i);
    shadow->hwQualIs(qualifierSrcIp, Qualifier(0x0A000000 + (i << 8), 0xFFFFFF00));
    shadow->hwQualIs(qualifierIpProtocol, Qualifier(6, 0xFF));
    shadow->rangeCheckerIs(rangeCheckerL4DstPort, RangeCheckerStatus(8000, 8099));
    shadow->counterStatusIs(hwQualStatusProgrammed);
    format->displayEntryRequest(static_cast<U32>(fd), RequestKey("office"), RuleId(i * 10), "rule",
                                shadow, i * 1000, nullptr);
  }
}

void printUsage(int fd) {
  auto const chip = makePtr<CliShowTcamUsageChipInfo>();
  auto const pipe = chip->stageInfoIs(stageTypeIngress)->pipeInfoIs(0);
  for (U32 group = 1; group <= 2; ++group) {
    auto const copy = pipe->groupPrioBucketIs(1)->groupInfoIs(group)->groupPerCopyInfoIs(0);
    copy->availableEntriesIs(100);
    auto const feature = cliShowTcamUsageFeatureInfoFactory("an access list with a long name");
    for (U32 id = 1; id <= 3; ++id) {
      CliShowTcamUsageEntryInfo entry(id, id);
      entry.descriptionIs("an entry whose description is too long to stand in the string itself");
      entry.hitsIs(id);
      feature->entrySetIs(entry);
    }
    copy->featurePrioBucketIs(5)->featureInfoEnq(feature);
  }
  for (auto const& [stage, stageInfo] : chip->stageInfo()) {
    write(fd, Zel::_fmt(displayStrings::stageHeaderFmt, stringValue(stage)));
    for (auto const& [pipeId, pipeInfo] : stageInfo->pipeInfo()) {
      write(fd, Zel::_fmt(displayStrings::pipeHeaderFmt, pipeId) + "\n");
      for (auto const& [priority, bucket] : pipeInfo->groupPrioBucket()) {
        for (auto const& [id, group] : bucket->groupInfo()) {
          for (auto const& [copyId, copy] : group->groupPerCopyInfo()) {
            write(fd, Zel::_fmt(displayStrings::groupInfoFmt, id, "", 3, "entries",
                                copy->availableEntries()));
            for (auto const& [featurePriority, features] : copy->featurePrioBucket()) {
              auto const feature = features->featureInfoFront();
              write(fd, Zel::_fmt(displayStrings::requestHeaderFmt, feature->cliFeatureName(),
                                  feature->entrySet().size()));
            }
          }
        }
      }
    }
  }
  auto const summary = makePtr<CliShowTcamSummaryOrdered>();
  summary->tcamSummaryIs("group")->tcamSummaryGroupNameEnq("feature");
}

}  // namespace

extern "C" void loadPluginPrint(int fd) {
  // Trace lines are on and go nowhere.
  Zel::TraceControl::sinkIs([](const Zel::TraceRecord&, void*) {}, nullptr);
  Zel::TraceControl::levelIs("VelmorTcamCliTypes", 8, true);
  printTable(fd);
  printUsage(fd);
  Zel::TraceControl::sinkIs(nullptr, nullptr);
}
