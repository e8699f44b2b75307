#include "views/ShowUsage.h"

#include "Zel/Format/Format.h"
#include "views/BuildUsage.h"

namespace tcamshow {

namespace {

namespace strings = VelmorTcam::displayStrings;

void showEntries(const VelmorTcam::CliShowTcamUsageFeatureInfo& feature, OutputBuffer& out) {
  for (const VelmorTcam::CliShowTcamUsageEntryInfo& entry : feature.entrySet()) {
    out.write(Zel::_fmt(strings::entryInfoFmt, entry.entryId(), Zel::_fmt("%12lu", entry.hits()),
                        entry.description())
                  .view());
  }
}

// Composed here: the formatter's own group line takes the pipe as an unsigned number.
void showGroup(std::uint32_t groupId, const Halvo::String& pipe, const Usage::Copy& copy,
               OutputBuffer& out) {
  const char* const noun = copy.usedEntries() == 1 ? "entry" : "entries";
  out.write(Zel::_fmt(strings::groupInfoFmt, VelmorTcam::TcamGroupId(groupId).number(), pipe,
                      copy.usedEntries(), noun, copy.availableEntries())
                .view());
}

}  // namespace

void showUsage(InputFile& snapshot, OutputBuffer& out, bool detail) {
  Usage const usage(snapshot);
  auto const format = Halvo::makePtr<VelmorTcam::VelmorTcamCliFormat>();
  for (auto const& stage : stagesInOrder(usage.chip())) {
    out.write(Zel::_fmt(strings::stageHeaderFmt, stringValue(stage->stage())).view());
    out.write("\n");
    for (auto const& [pipeId, pipe] : stage->pipeInfo()) {
      Halvo::String pipeName;
      if (usage.numPipes() > 1) pipeName = Zel::_fmt(strings::pipeHeaderFmt, pipeId);
      forEachCopy(*pipe, [&](std::uint32_t groupId, const Usage::Copy& copy) {
        showGroup(groupId, pipeName, copy, out);
        forEachFeature(copy, [&](const VelmorTcam::CliShowTcamUsageFeatureInfo& feature) {
          out.write(
              format->formatRequestHeader(feature.cliFeatureName(), feature.usedEntries()).view());
          if (detail) showEntries(feature, out);
        });
      });
    }
  }
}

void showSummary(InputFile& snapshot, OutputBuffer& out) {
  Usage const usage(snapshot);
  auto const summary = summaryOf(usage);
  for (auto const& [name, group] : summary->tcamSummary()) {
    out.write(name.view());
    out.write("\n");
    for (const Halvo::String& feature : group->tcamSummaryGroupName()) {
      out.write("  ");
      out.write(feature.view());
      out.write("\n");
    }
  }
}

}  // namespace tcamshow
