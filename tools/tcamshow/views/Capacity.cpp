#include "views/Capacity.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "io/JsonText.h"
#include "io/SafeText.h"
#include "views/JsonPrinter.h"
#include "views/PlaceText.h"
#include "views/TextTable.h"

namespace tcamshow {
namespace {

std::string stageText(Stage stage) { return std::string(stageName(stage).view()); }

template <class Number>
std::string reportedText(const std::optional<Number>& number) {
  return number ? std::to_string(*number) : "-";
}

/// Tenths as a number with one decimal.
std::string decimalText(std::uint64_t tenths) {
  return std::to_string(tenths / 10) + '.' + static_cast<char>('0' + tenths % 10);
}

/// A bar that is empty only for an unused copy, and full only for a full one.
std::string bar(const Fill& fill) {
  constexpr std::uint64_t width = 20;
  std::uint64_t marks = width;
  if (fill.used < fill.size) {
    marks = std::min((2 * width * fill.used + fill.size) / (2 * fill.size), width - 1);
    if (fill.used != 0) marks = std::max<std::uint64_t>(marks, 1);
  }
  return '[' + std::string(marks, '#') + std::string(width - marks, '.') + ']';
}

Colour colourOf(const Fill& fill, const CapacityOptions& options) {
  if (!options.isColoured) return Colour::none;
  if (fill.isAtLeast(options.fail)) return Colour::bad;
  return fill.isAtLeast(options.warn) ? Colour::waiting : Colour::good;
}

}  // namespace

void showCapacity(std::span<const CopyUse> copies, const CapacityOptions& options,
                  OutputBuffer& out) {
  if (copies.empty()) return out.write("no groups and no entries\n");
  TextTable table({{"STAGE"},
                   {"PIPE", true},
                   {"PRIORITY", true},
                   {"GROUP", true},
                   {"COPY", true},
                   {"NAME"},
                   {"USED", true},
                   {"AVAILABLE", true},
                   {"FREE", true},
                   {"TOTAL", true},
                   {"PERCENT", true},
                   {""}});
  for (const CopyUse& copy : copies) {
    auto const fill = copy.fill();
    Colour const colour = fill ? colourOf(*fill, options) : Colour::none;
    table.add({{stageText(copy.place.stage)},
               {std::to_string(copy.place.pipe)},
               {std::to_string(copy.place.groupPriority)},
               {std::to_string(copy.place.groupId)},
               {std::to_string(copy.place.copyId)},
               {safeText(copy.name)},
               {std::to_string(copy.usedEntries())},
               {reportedText(copy.reported.available)},
               {reportedText(copy.reported.free)},
               {reportedText(copy.reported.total)},
               {fill ? decimalText(fill->tenths()) : "-", colour},
               {fill ? bar(*fill) : "", colour}});
  }
  table.write(out);
  out.write("\n");
  TextTable stages({{"STAGE"}, {"USED", true}, {"TOTAL", true}});
  for (const StageUse& stage : stageUse(copies)) {
    stages.add(
        {{stageText(stage.stage)}, {std::to_string(stage.used)}, {reportedText(stage.total)}});
  }
  stages.write(out);
}

void showCapacityJson(std::span<const CopyUse> copies, OutputBuffer& out) {
  JsonPrinter printer(out);
  printAnswerStart("capacity", printer);
  for (const CopyUse& copy : copies) {
    printer.objectBegin();
    printer.attribute("type", "copy");
    printPlace(copy.place, copy.name, printer);
    printEntryNumbers(copy.usedEntries(), copy.reported, printer);
    if (auto const fill = copy.fill()) printer.decimal("percent", decimalText(fill->tenths()));
    printer.objectEnd();
  }
}

void printEntryNumbers(std::uint64_t used, const ReportedEntries& reported,
                       pravo::Printer& printer) {
  printer.attribute("usedEntries", used);
  if (reported.available) printer.attribute("availableEntries", *reported.available);
  if (reported.free) printer.attribute("freeEntries", *reported.free);
  if (reported.total) printer.attribute("totalEntries", *reported.total);
}

}  // namespace tcamshow
