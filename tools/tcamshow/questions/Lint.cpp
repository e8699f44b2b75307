#include "questions/Lint.h"

#include "snapshot/EntryState.h"

namespace tcamshow {

PlaceFindings lintOf(const EntryStore& store, const PlaceInfo& place, LintClasses classes) {
  PlaceFindings result;
  Entry scratch;
  FieldMask limited = 0;
  for (std::uint32_t const number : place.entries) {
    Match const match = matchOf(store.entry(number, scratch));
    limited |= match.limited();
    result.named |= match.named();
  }
  auto const lint = LintPlace::make(limited);
  TextPool actions;
  TextPool otherMatches;  // the empty text has the number 0: no other match
  for (std::uint32_t const number : place.entries) {
    const Entry& entry = store.entry(number, scratch);
    LintRule rule;
    rule.hits = entry.hits;
    rule.priority = entry.priority;
    rule.action = actions.add(entry.action);
    rule.otherMatch = otherMatches.add(entry.otherMatch);
    rule.isInstalled = isInstalled(entry);
    rule.countersAreProgrammed = countersAreProgrammed(entry);
    lint->add(rule, matchOf(entry));
  }
  result.findings = lint->findings(classes);
  return result;
}

}  // namespace tcamshow
