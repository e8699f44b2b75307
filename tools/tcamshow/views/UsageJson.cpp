#include <string_view>

#include "views/Capacity.h"
#include "views/JsonPrinter.h"
#include "views/PlaceText.h"
#include "views/Usage.h"
#include "views/UsageTree.h"

namespace tcamshow {

namespace {

void printEntries(const VelmorTcam::CliShowTcamUsageFeatureInfo& feature, JsonPrinter& printer) {
  printer.arrayBegin("entries");
  for (const VelmorTcam::CliShowTcamUsageEntryInfo& entry : feature.entrySet()) {
    printer.objectBegin();
    printer.attribute("entryId", entry.entryId());
    printer.attribute("hits", entry.hits());
    printer.attribute("description", entry.description().view());
    printer.objectEnd();
  }
  printer.arrayEnd();
}

void printCopy(const Place& place, const Usage& usage, const Usage::Copy& copy, bool detail,
               JsonPrinter& printer) {
  printer.objectBegin();
  printer.attribute("type", "copy");
  printPlace(place, usage.groupName(copy), printer);
  printEntryNumbers(copy.usedEntries(), usage.reported(copy), printer);
  printer.arrayBegin("features");
  for (auto const& [featurePriority, bucket] : copy.featurePrioBucket()) {
    for (auto const& feature : bucket->featureInfo()) {
      printer.objectBegin();
      printer.attribute("featurePriority", featurePriority);
      printer.attribute("feature", feature->cliFeatureName().view());
      printer.attribute("usedEntries", feature->usedEntries());
      if (detail) printEntries(*feature, printer);
      printer.objectEnd();
    }
  }
  printer.arrayEnd();
  printer.objectEnd();
}

}  // namespace

void showUsageJson(Source& source, OutputBuffer& out, bool detail) {
  Usage const usage(source);
  JsonPrinter printer(out);
  printAnswerStart("usage", printer);
  for (auto const& stage : stagesInOrder(usage.chip())) {
    for (auto const& [pipeId, pipe] : stage->pipeInfo()) {
      Place place;
      place.stage = static_cast<Stage>(stage->stage());
      place.pipe = pipeId;
      forEachCopy(*pipe, place, [&](const Place& at, const Usage::Copy& copy) {
        printCopy(at, usage, copy, detail, printer);
      });
    }
  }
}

void showSummaryJson(Source& source, OutputBuffer& out) {
  Usage const usage(source);
  auto const summary = summaryOf(usage);
  JsonPrinter printer(out);
  printAnswerStart("summary", printer);
  for (auto const& [name, group] : summary->tcamSummary()) {
    printer.objectBegin();
    printer.attribute("type", "groupName");
    printer.attribute("name", name.view());
    printer.arrayBegin("features");
    for (const Halvo::String& feature : group->tcamSummaryGroupName()) {
      printer.attribute({}, feature.view());
    }
    printer.arrayEnd();
    printer.objectEnd();
  }
}

}  // namespace tcamshow
