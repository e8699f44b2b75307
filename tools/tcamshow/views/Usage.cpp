#include "views/Usage.h"

#include "Zel/Format/Format.h"
#include "views/TextOutput.h"
#include "views/UsageTree.h"

namespace tcamshow {

namespace {

namespace strings = VelmorTcam::displayStrings;

void showEntries(const VelmorTcam::CliShowTcamUsageFeatureInfo& feature, TextOutput& out) {
  for (const VelmorTcam::CliShowTcamUsageEntryInfo& entry : feature.entrySet()) {
    out.write(Zel::_fmt(strings::entryInfoFmt, entry.entryId(), Zel::_fmt("%12lu", entry.hits()),
                        entry.description())
                  .view());
  }
}

// Composed here: the formatter's own group line takes the pipe as an unsigned number.
void showGroup(std::uint32_t groupId, const Halvo::String& pipe, const Usage::Copy& copy,
               TextOutput& out) {
  const char* const noun = copy.usedEntries() == 1 ? "entry" : "entries";
  out.write(Zel::_fmt(strings::groupInfoFmt, VelmorTcam::TcamGroupId(groupId).number(), pipe,
                      copy.usedEntries(), noun, copy.availableEntries())
                .view());
}

}  // namespace

void showUsage(Source& source, OutputBuffer& output, bool detail) {
  TextOutput out(output);
  Usage const usage(source);
  auto const format = Halvo::makePtr<VelmorTcam::VelmorTcamCliFormat>();
  for (auto const& stage : stagesInOrder(usage.chip())) {
    out.write(Zel::_fmt(strings::stageHeaderFmt, stringValue(stage->stage())).view());
    out.writeOwn("\n");
    for (auto const& [pipeId, pipe] : stage->pipeInfo()) {
      Halvo::String pipeName;
      if (usage.numPipes() > 1) pipeName = Zel::_fmt(strings::pipeHeaderFmt, pipeId);
      forEachCopy(*pipe, {}, [&](const Place& place, const Usage::Copy& copy) {
        showGroup(place.groupId, pipeName, copy, out);
        forEachFeature(copy, [&](const VelmorTcam::CliShowTcamUsageFeatureInfo& feature) {
          out.write(
              format->formatRequestHeader(feature.cliFeatureName(), feature.usedEntries()).view());
          if (detail) showEntries(feature, out);
        });
      });
    }
  }
}

void showSummary(Source& source, OutputBuffer& output) {
  TextOutput out(output);
  Usage const usage(source);
  auto const summary = summaryOf(usage);
  for (auto const& [name, group] : summary->tcamSummary()) {
    out.write(name.view());
    out.writeOwn("\n");
    for (const Halvo::String& feature : group->tcamSummaryGroupName()) {
      out.writeOwn("  ");
      out.write(feature.view());
      out.writeOwn("\n");
    }
  }
}

}  // namespace tcamshow
