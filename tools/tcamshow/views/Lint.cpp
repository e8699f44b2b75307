#include "views/Lint.h"

#include "match/Packet.h"
#include "snapshot/EntryState.h"
#include "views/PlaceText.h"
#include "views/TextOutput.h"

namespace tcamshow {
namespace {

/// The word before the entries to blame.
std::string_view linkOf(LintClass kind) noexcept {
  switch (kind) {
    case LintClass::duplicate:
      return " of ";
    case LintClass::shadowed:
      return " by ";
    case LintClass::redundant:
      return " before ";
    default:
      return " with ";
  }
}

std::string proofText(const LintFinding& finding, FieldMask named) {
  return packetText(onePacketOf(*finding.packet, named), named);
}

}  // namespace

LintView::LintView(OutputBuffer& out, bool isJson) : out_(out), isJson_(isJson), printer_(out) {
  if (isJson_) printAnswerStart("lint", printer_);
}

void LintView::show(const EntryStore& store, const PlaceInfo& place, const PlaceFindings& findings,
                    LintClasses shown) {
  for (const LintFinding& finding : findings.findings) {
    if ((shown & bitOf(finding.kind)) == 0) continue;
    if (isJson_) {
      showJson(store, place, finding, findings.named);
    } else {
      showText(store, place, finding, findings.named);
    }
  }
}

void LintView::showText(const EntryStore& store, const PlaceInfo& place, const LintFinding& finding,
                        FieldMask named) {
  const Entry& entry = store.entry(place.entries[finding.rule], scratch_);
  line_.clear();
  placeAppend(line_, place.place, place.name);
  line_ += ": entry ";
  entryAppend(line_, entry.sequence, entry.shadowId);
  line_ += ": ";
  line_ += lintClassName(finding.kind);
  if (finding.kind == LintClass::notInstalled) {
    (line_ += ": ") += stateName(stateOf(entry));
    if (!entry.reason.empty()) (line_ += ", ") += entry.reason;
  }
  std::string_view separator = linkOf(finding.kind);
  for (std::uint32_t const rule : finding.blame) {
    const Entry& blamed = store.entry(place.entries[rule], scratch_);
    line_ += separator;
    entryAppend(line_, blamed.sequence, blamed.shadowId);
    separator = ", ";
  }
  if (finding.conflict) line_ += "; conflict";
  if (finding.packet != nullptr) (line_ += "; packet ") += proofText(finding, named);
  line_ += '\n';
  TextOutput(out_).write(line_);
}

void LintView::showJson(const EntryStore& store, const PlaceInfo& place, const LintFinding& finding,
                        FieldMask named) {
  const Entry& entry = store.entry(place.entries[finding.rule], scratch_);
  printer_.objectBegin();
  printer_.attribute("type", "finding");
  printPlace(place.place, place.name, printer_);
  printer_.attribute("class", lintClassName(finding.kind));
  printer_.attribute("shadowId", entry.shadowId);
  printer_.attribute("sequence", entry.sequence);
  printer_.attribute("action", entry.action);
  bool const isReasonTold = finding.kind == LintClass::notInstalled;
  std::string_view const state = stateName(stateOf(entry));
  std::string_view const reason = entry.reason;  // the store's, which the next entry leaves
  printer_.arrayBegin("blame");
  for (std::uint32_t const rule : finding.blame) {
    printer_.attribute({}, store.entry(place.entries[rule], scratch_).shadowId);
  }
  printer_.arrayEnd();
  printer_.attribute("conflict", finding.conflict);
  if (finding.packet != nullptr) printer_.attribute("packet", proofText(finding, named));
  if (isReasonTold) printer_.attribute("state", state);
  if (isReasonTold && !reason.empty()) printer_.attribute("reason", reason);
  printer_.objectEnd();
}

}  // namespace tcamshow
