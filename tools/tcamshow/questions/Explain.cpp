#include "questions/Explain.h"

#include <array>
#include <utility>

#include "match/CoverSearch.h"
#include "match/OverlapIndex.h"
#include "snapshot/EntryState.h"

namespace tcamshow {

std::string_view verdictName(Verdict verdict) noexcept {
  constexpr std::array<std::string_view, 5> names{"wins", "may-win", "would-win", "none",
                                                  "unknown"};
  return names[static_cast<std::size_t>(verdict)];
}

namespace {

bool meet(const Packets& packets, const Match& match) {
  for (const Match& box : packets.boxes) {
    if (box.overlaps(match)) return true;
  }
  return false;
}

/// Gives the groups of a source, and its entries that meet the packets.
class MeetingSource final : public Source {
 public:
  MeetingSource(Source& source, const Packets& packets,
                const std::function<bool(const Place&)>& isAsked, std::map<Place, FieldMask>& named,
                Complaints& complaints)
      : Source(complaints), source_(source), packets_(packets), isAsked_(isAsked), named_(named) {
    header_ = source.header();
  }

  const std::string& fileName() const noexcept override { return source_.fileName(); }
  std::uint64_t lineNumber() const noexcept override { return source_.lineNumber(); }

  Item next() override {
    for (;;) {
      Item const item = source_.next();
      if (item == Item::group) group_ = source_.group();
      if (item != Item::entry) return item;
      const Entry& entry = source_.entry();
      // Most entries stand where the one before did.
      if (last_ == nullptr || last_->first != entry.place) {
        last_ = &*named_.emplace(entry.place, FieldMask{0}).first;
        isLastAsked_ = isAsked_(entry.place);
      }
      if (!isLastAsked_) continue;
      Match const match = matchOf(entry);
      last_->second |= match.named();
      if (!meet(packets_, match)) continue;
      entry_ = entry;
      return item;
    }
  }

 private:
  Source& source_;
  const Packets& packets_;
  const std::function<bool(const Place&)>& isAsked_;
  std::map<Place, FieldMask>& named_;
  std::pair<const Place, FieldMask>* last_ = nullptr;
  bool isLastAsked_ = false;
};

template <class W>
class ExplainPlace {
 public:
  ExplainPlace(FieldMask fields, const Packets& packets)
      : space_(fields),
        packets_(space_.fields()),
        index_(space_),
        search_(space_),
        part_(space_.fields()) {
    for (const Match& box : packets.boxes) space_.push(box, packets_);
  }

  void add(std::uint32_t number, const Entry& entry, std::uint32_t otherMatch);
  void addRest();
  std::vector<Answer> take() { return std::move(answers_); }

 private:
  CoverAnswer askOf(Box<W> box, std::uint32_t otherMatch);
  void answer(Verdict verdict, std::optional<std::uint32_t> number, CoverAnswer answer);

  BoxSpace<W> space_;
  BoxList<W> packets_;
  OverlapIndex<W> index_;                    // of the installed entries so far
  std::vector<std::uint32_t> otherMatches_;  // of each in the index
  std::vector<std::uint32_t> candidates_;
  CoverSearch<W> search_;
  BoxList<W> part_;
  std::uint64_t spent_ = 0;
  std::vector<Answer> answers_;
};

/// Whether those ahead leave a packet of the box: open where they do.
template <class W>
CoverAnswer ExplainPlace<W>::askOf(Box<W> box, std::uint32_t otherMatch) {
  candidates_.clear();
  index_.overlapping(box, 0, index_.size(), candidates_);
  std::erase_if(candidates_, [&](std::uint32_t candidate) {
    return otherMatches_[candidate] != 0 && otherMatches_[candidate] != otherMatch;
  });
  std::uint64_t const before = search_.boxes();
  CoverAnswer const answer = search_.ask(box, candidates_, index_.boxes(), explainBound - spent_);
  std::uint64_t const looked = search_.boxes() - before;
  // The first box of a question is free: a million entries of which each wins are no hard search.
  if (looked > 1) spent_ += std::min(looked - 1, explainBound - spent_);
  return answer;
}

template <class W>
void ExplainPlace<W>::answer(Verdict verdict, std::optional<std::uint32_t> number,
                             CoverAnswer answer) {
  if (answer == CoverAnswer::covered) return;
  Answer made;
  made.verdict = answer == CoverAnswer::unknown ? Verdict::unknown : verdict;
  made.entry = number;
  if (answer == CoverAnswer::open) {
    made.packet = std::make_unique<Match>(space_.matchOf(search_.witness()));
  }
  answers_.push_back(std::move(made));
}

template <class W>
void ExplainPlace<W>::add(std::uint32_t number, const Entry& entry, std::uint32_t otherMatch) {
  BoxList<W> box(space_.fields());
  space_.push(matchOf(entry), box);
  bool const isReal = isInstalled(entry);
  CoverAnswer best = CoverAnswer::covered;
  for (std::size_t i = 0; i < packets_.size() && best != CoverAnswer::open; ++i) {
    part_.clear();
    if (!space_.intersectionAppend(packets_[i], box[0], part_)) continue;
    CoverAnswer const one = askOf(part_[0], otherMatch);
    if (one != CoverAnswer::covered) best = one;
  }
  answer(!isReal           ? Verdict::wouldWin
         : otherMatch != 0 ? Verdict::mayWin
                           : Verdict::wins,
         number, best);
  // One that wins nothing hides nothing that those ahead do not.
  if (!isReal || best == CoverAnswer::covered) return;
  index_.add(box[0]);
  otherMatches_.push_back(otherMatch);
}

template <class W>
void ExplainPlace<W>::addRest() {
  CoverAnswer best = CoverAnswer::covered;
  for (std::size_t i = 0; i < packets_.size() && best != CoverAnswer::open; ++i) {
    CoverAnswer const one = askOf(packets_[i], 0);
    if (one != CoverAnswer::covered) best = one;
  }
  answer(Verdict::none, std::nullopt, best);
}

template <class W>
std::vector<Answer> explainIn(FieldMask fields, const EntryStore& store, const PlaceInfo& place,
                              const Packets& packets) {
  ExplainPlace<W> search(fields, packets);
  TextPool otherMatches;  // the empty text has the number 0
  Entry scratch;
  for (std::uint32_t index = 0; index < place.entries.size(); ++index) {
    const Entry& entry = store.entry(place.entries[index], scratch);
    if (!meet(packets, matchOf(entry))) continue;
    search.add(index, entry, otherMatches.add(entry.otherMatch));
  }
  search.addRest();
  return search.take();
}

}  // namespace

MeetingEntries::MeetingEntries(Source& source, const Packets& packets,
                               const std::function<bool(const Place&)>& isAsked)
    : packetsNamed_(packets.named) {
  Complaints complaints;
  MeetingSource meeting(source, packets, isAsked, named_, complaints);
  store_ = std::make_unique<EntryStore>(meeting);
}

FieldMask MeetingEntries::named(const Place& place) const noexcept {
  auto const found = named_.find(place);
  return found == named_.end() ? packetsNamed_
                               : static_cast<FieldMask>(packetsNamed_ | found->second);
}

std::vector<Answer> explain(const EntryStore& store, const PlaceInfo& place,
                            const Packets& packets) {
  FieldMask fields = 0;
  for (const Match& box : packets.boxes) fields |= box.limited();
  Entry scratch;
  for (std::uint32_t const number : place.entries) {
    fields |= matchOf(store.entry(number, scratch)).limited();
  }
  constexpr FieldMask wide = bitOf(Field::src6) | bitOf(Field::dst6);
  if ((fields & wide) != 0) return explainIn<Word>(fields, store, place, packets);
  return explainIn<std::uint64_t>(fields, store, place, packets);
}

}  // namespace tcamshow
