#include "views/Cost.h"

#include "io/JsonText.h"
#include "views/JsonPrinter.h"
#include "views/PlaceText.h"
#include "views/TextOutput.h"

namespace tcamshow {
namespace {

/// The kind of a range checker, without the word that all names begin with.
std::string_view kindText(const RangeCheckerName& known) noexcept {
  constexpr std::string_view prefix = "rangeChecker";
  std::string_view name = known.name;
  if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
  return name;
}

void showText(const PlaceCost& cost, std::string& line) {
  placeAppend(line, cost.place, cost.name);
  line += ": ";
  appendNumber(line, cost.entries);
  line += cost.entries == 1 ? " entry, " : " entries, ";
  appendNumber(line, cost.expandedEntries);
  line += " if ranges were prefixes; range checkers:";
  for (std::size_t kind = 0; kind < cost.rangeCheckers.size(); ++kind) {
    line += kind == 0 ? " " : ", ";
    line += kindText(rangeCheckerList()[kind]);
    line += ' ';
    appendNumber(line, cost.rangeCheckers[kind]);
  }
  if (cost.worst) {
    line += "; worst: entry ";
    entryAppend(line, cost.worst->sequence, cost.worst->shadowId);
    line += " with ";
    appendNumber(line, cost.worst->entries);
  }
  line += '\n';
}

void showJson(const PlaceCost& cost, JsonPrinter& printer) {
  printer.objectBegin();
  printer.attribute("type", "cost");
  printPlace(cost.place, cost.name, printer);
  printer.attribute("entries", cost.entries);
  printer.attribute("expandedEntries", cost.expandedEntries);
  printer.objectBegin("rangeCheckers");
  for (std::size_t kind = 0; kind < cost.rangeCheckers.size(); ++kind) {
    printer.attribute(rangeCheckerList()[kind].name, cost.rangeCheckers[kind]);
  }
  printer.objectEnd();
  if (cost.worst) {
    printer.objectBegin("worst");
    printer.attribute("shadowId", cost.worst->shadowId);
    printer.attribute("entries", cost.worst->entries);
    printer.objectEnd();
  }
  printer.objectEnd();
}

}  // namespace

void showCosts(std::span<const PlaceCost> costs, OutputBuffer& out, bool isJson) {
  if (isJson) {
    JsonPrinter printer(out);
    printAnswerStart("cost", printer);
    for (const PlaceCost& cost : costs) showJson(cost, printer);
    return;
  }
  TextOutput text(out);
  std::string line;
  for (const PlaceCost& cost : costs) {
    line.clear();
    showText(cost, line);
    text.write(line);
  }
}

}  // namespace tcamshow
