#include "views/Explain.h"

#include "io/JsonText.h"
#include "snapshot/EntryState.h"
#include "views/PlaceText.h"
#include "views/TextOutput.h"

namespace tcamshow {
namespace {

std::string witnessText(const Answer& answer, FieldMask named) {
  return packetText(onePacketOf(*answer.packet, named), named);
}

void verdictAppend(std::string& out, const Answer& answer, const Entry& entry) {
  switch (answer.verdict) {
    case Verdict::wins:
      out += " wins";
      break;
    case Verdict::mayWin:
      out += " may win, if ";
      out += entry.otherMatch;
      break;
    case Verdict::wouldWin:
      out += " would win if it were installed";
      if (!entry.otherMatch.empty()) (out += ", and if ") += entry.otherMatch;
      break;
    case Verdict::none:
    case Verdict::unknown:
      out += " is unknown: the search gave up at ";
      appendNumber(out, explainBound);
      out += " boxes";
      break;
  }
}

}  // namespace

ExplainView::ExplainView(OutputBuffer& out, bool isJson)
    : out_(out), isJson_(isJson), printer_(out) {
  if (isJson_) printAnswerStart("explain", printer_);
}

void ExplainView::show(const EntryStore& store, const PlaceInfo& place,
                       const std::vector<Answer>& answers, FieldMask named) {
  if (!isJson_) {
    text_.clear();
    placeAppend(text_, place.place, place.name);
    text_ += '\n';
    TextOutput(out_).write(text_);
  }
  for (const Answer& answer : answers) {
    if (isJson_) {
      showJson(store, place, answer, named);
    } else {
      showText(store, place, answer, named);
    }
  }
}

void ExplainView::showNothing(std::string_view packets) {
  if (isJson_) return;
  text_ = "no place has an entry that meets ";
  text_ += packets;
  text_ += '\n';
  TextOutput(out_).write(text_);
}

void ExplainView::showText(const EntryStore& store, const PlaceInfo& place, const Answer& answer,
                           FieldMask named) {
  text_ = "  ";
  if (answer.entry) {
    const Entry& entry = store.entry(place.entries[*answer.entry], scratch_);
    text_ += "entry ";
    entryAppend(text_, entry.sequence, entry.shadowId);
    verdictAppend(text_, answer, entry);
    text_ += "; action ";
    text_ += entry.action.empty() ? std::string_view("-") : entry.action;
    text_ += ", state ";
    text_ += stateName(stateOf(entry));
    text_ += ", hits ";
    if (countersAreProgrammed(entry)) {
      appendNumber(text_, entry.hits);
    } else {
      text_ += '-';
    }
  } else if (answer.verdict == Verdict::none) {
    text_ += "no entry matches";
  } else {
    text_ += "whether something is left";
    verdictAppend(text_, answer, scratch_);
  }
  if (answer.packet != nullptr) (text_ += "; packet ") += witnessText(answer, named);
  text_ += '\n';
  TextOutput(out_).write(text_);
}

void ExplainView::showJson(const EntryStore& store, const PlaceInfo& place, const Answer& answer,
                           FieldMask named) {
  printer_.objectBegin();
  printer_.attribute("type", "answer");
  printPlace(place.place, place.name, printer_);
  printer_.attribute("verdict", verdictName(answer.verdict));
  if (answer.entry) {
    const Entry& entry = store.entry(place.entries[*answer.entry], scratch_);
    printer_.attribute("shadowId", entry.shadowId);
    printer_.attribute("sequence", entry.sequence);
    printer_.attribute("action", entry.action);
    printer_.attribute("state", stateName(stateOf(entry)));
    printer_.attribute("hits", entry.hits);
  }
  if (answer.packet != nullptr) printer_.attribute("packet", witnessText(answer, named));
  if (answer.entry && !scratch_.otherMatch.empty()) {
    printer_.attribute("otherMatch", scratch_.otherMatch);
  }
  printer_.objectEnd();
}

}  // namespace tcamshow
