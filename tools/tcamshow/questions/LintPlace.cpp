#include "questions/LintPlace.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "match/OverlapIndex.h"

namespace tcamshow {

namespace {

constexpr std::array<std::string_view, lintClassCount> names{
    "not-installed", "empty", "duplicate", "shadowed", "dead-but-hit",
    "redundant",     "tie",   "never-hit", "unknown"};

}  // namespace

std::string_view lintClassName(LintClass kind) noexcept {
  return names[static_cast<std::size_t>(kind)];
}

std::optional<LintClass> lintClassByName(std::string_view name) noexcept {
  auto const* const found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) return std::nullopt;
  return static_cast<LintClass>(found - names.begin());
}

namespace {

using Answer = CoverAnswer;

std::vector<std::uint32_t> sorted(std::vector<std::uint32_t> numbers) {
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

template <class W>
class LintPlaceOf final : public LintPlace {
 public:
  explicit LintPlaceOf(FieldMask fields);

  void add(const LintRule& facts, const Match& match) override;
  std::vector<LintFinding> findings(LintClasses classes) override;

 private:
  struct Rule {
    LintRule facts;
    bool isEmpty = false;
    bool isDead = false;      // empty, duplicate or shadowed
    bool isUnknown = false;   // whether it is dead is not known
    bool isSpared = false;    // redundant
    std::uint32_t ahead = 0;  // installed rules ahead of it that are in the index
    std::uint32_t box = 0;    // its place in boxes_
  };

  std::uint64_t boundLeft() const noexcept;
  static bool isCertain(const Rule& other, std::uint32_t otherMatch) noexcept;
  void judge(std::uint32_t number, LintClasses classes, std::vector<LintFinding>& findings);
  bool isDuplicate(std::uint32_t number, LintFinding& finding) const;
  Answer conflictAsk(std::uint32_t number, LintFinding& finding);
  Answer conflictAskAt(std::uint32_t number, std::size_t taker);
  bool sureOfTakers(std::uint32_t number, std::size_t taker, BoxList<W>& boxes) const;
  void beforeAdd(std::uint32_t met, bool isOfCover);
  void tieFind(std::uint32_t number, std::vector<LintFinding>& findings) const;
  void redundantFind(std::vector<LintFinding>& findings);
  Answer redundantAsk(std::uint32_t number, LintFinding& finding);
  void blameOrder(LintFinding& finding) const;

  BoxSpace<W> space_;
  BoxList<W> boxes_;                    // of all rules that match a packet
  OverlapIndex<W> index_;               // of the installed ones among them
  std::vector<std::uint32_t> indexed_;  // their numbers
  std::vector<Rule> rules_;
  CoverSearch<W> search_;
  std::uint64_t ruleStart_ = 0;            // boxes looked at before this rule
  std::vector<std::uint32_t> met_;         // in the index, those that the rule meets
  std::vector<std::uint32_t> candidates_;  // those of them that match for certain
  std::vector<std::uint32_t> before_;      // candidates ahead of a taker, first those of a cover
  std::size_t coverBefore_ = 0;            // how many of the cover there are
  std::vector<std::uint32_t> uncertain_;   // those ahead of a taker that may match
  BoxList<W> common_;
};

template <class W>
LintPlaceOf<W>::LintPlaceOf(FieldMask fields)
    : space_(fields),
      boxes_(space_.fields()),
      index_(space_),
      search_(space_),
      common_(space_.fields()) {}

template <class W>
void LintPlaceOf<W>::add(const LintRule& facts, const Match& match) {
  Rule rule;
  rule.facts = facts;
  rule.isEmpty = match.isEmpty();
  rule.ahead = index_.size();
  if (!rule.isEmpty) {
    rule.box = static_cast<std::uint32_t>(boxes_.size());
    space_.push(match, boxes_);
    if (facts.isInstalled) {
      index_.add(boxes_.back());
      indexed_.push_back(static_cast<std::uint32_t>(rules_.size()));
    }
  }
  rules_.push_back(rule);
}

template <class W>
std::vector<LintFinding> LintPlaceOf<W>::findings(LintClasses classes) {
  std::vector<LintFinding> findings;
  for (std::uint32_t number = 0; number < rules_.size(); ++number) {
    judge(number, classes, findings);
  }
  if ((classes & bitOf(LintClass::redundant)) != 0) redundantFind(findings);
  std::erase_if(findings, [classes](const LintFinding& finding) {
    return (classes & bitOf(finding.kind)) == 0;
  });
  std::stable_sort(findings.begin(), findings.end(),
                   [](const LintFinding& a, const LintFinding& b) {
                     return a.rule != b.rule ? a.rule < b.rule : a.kind < b.kind;
                   });
  return findings;
}

/// The number of boxes that the next question about the rule may look at.
template <class W>
std::uint64_t LintPlaceOf<W>::boundLeft() const noexcept {
  std::uint64_t const ofRule = search_.boxes() - ruleStart_;
  std::uint64_t const ruleLeft = ofRule < ruleBound ? ruleBound - ofRule : 0;
  std::uint64_t const placeLeft = search_.boxes() < placeBound ? placeBound - search_.boxes() : 0;
  return std::min(ruleLeft, placeLeft);
}

/// Whether the other rule matches all that its fields allow, of packets that meet `otherMatch`.
template <class W>
bool LintPlaceOf<W>::isCertain(const Rule& other, std::uint32_t otherMatch) noexcept {
  return other.facts.otherMatch == 0 || other.facts.otherMatch == otherMatch;
}

template <class W>
void LintPlaceOf<W>::judge(std::uint32_t number, LintClasses classes,
                           std::vector<LintFinding>& findings) {
  Rule& rule = rules_[number];
  auto const report = [&](LintClass kind) {
    findings.emplace_back();
    findings.back().rule = number;
    findings.back().kind = kind;
  };
  if (!rule.facts.isInstalled) report(LintClass::notInstalled);
  bool const isHit = rule.facts.countersAreProgrammed && rule.facts.hits != 0;
  if (rule.facts.isInstalled && rule.facts.countersAreProgrammed && rule.facts.hits == 0) {
    report(LintClass::neverHit);
  }
  if (rule.isEmpty) {
    rule.isDead = true;
    report(LintClass::empty);
    if (isHit) report(LintClass::deadButHit);
    return;
  }
  ruleStart_ = search_.boxes();
  met_.clear();
  index_.overlapping(boxes_[rule.box], 0, rule.ahead, met_);
  if (rule.facts.isInstalled && (classes & bitOf(LintClass::tie)) != 0) tieFind(number, findings);
  candidates_.clear();
  for (std::uint32_t const met : met_) {
    if (isCertain(rules_[indexed_[met]], rule.facts.otherMatch)) candidates_.push_back(met);
  }
  LintFinding finding;
  finding.rule = number;
  Answer answer = Answer::covered;
  if (isDuplicate(number, finding)) {
    finding.kind = LintClass::duplicate;
  } else {
    finding.kind = LintClass::shadowed;
    answer = search_.ask(boxes_[rule.box], candidates_, index_.boxes(), boundLeft());
    if (answer == Answer::open) return;
    if (answer == Answer::covered) {
      for (std::uint32_t const used : search_.used()) finding.blame.push_back(indexed_[used]);
    }
  }
  if (answer == Answer::covered) {
    rule.isDead = true;
    answer = conflictAsk(number, finding);
    blameOrder(finding);
    findings.push_back(std::move(finding));
    if (isHit) report(LintClass::deadButHit);
  } else {
    rule.isUnknown = true;
  }
  if (answer == Answer::unknown) report(LintClass::unknown);
}

template <class W>
bool LintPlaceOf<W>::isDuplicate(std::uint32_t number, LintFinding& finding) const {
  const Rule& rule = rules_[number];
  Box<W> const box = boxes_[rule.box];
  auto const found =
      std::find_if(candidates_.begin(), candidates_.end(), [&](std::uint32_t candidate) {
        // One without another match has more packets than one with.
        if (rules_[indexed_[candidate]].facts.otherMatch != rule.facts.otherMatch) return false;
        return std::equal(box, box + space_.fields(), index_[candidate]);
      });
  if (found == candidates_.end()) return false;
  finding.blame.push_back(indexed_[*found]);
  return true;
}

/// Looks for a packet of a dead rule that an entry of another action takes: covered where there is
/// none, open where it was found. Of a rule with another match nobody knows a packet.
template <class W>
Answer LintPlaceOf<W>::conflictAsk(std::uint32_t number, LintFinding& finding) {
  const Rule& rule = rules_[number];
  if (rule.facts.otherMatch != 0) return Answer::covered;
  Answer worst = Answer::covered;
  // Those to blame match all packets of the rule, so none behind them takes one.
  std::vector<std::uint32_t> const cover = sorted(finding.blame);
  before_.clear();
  coverBefore_ = 0;
  for (std::size_t at = 0; at < met_.size() && indexed_[met_[at]] <= cover.back(); ++at) {
    std::uint32_t const taker = indexed_[met_[at]];
    const Rule& other = rules_[taker];
    if (other.facts.otherMatch != 0) continue;
    // A dead one takes nothing.
    if (other.facts.action != rule.facts.action && !other.isDead) {
      Answer const answer = conflictAskAt(number, at);
      if (answer == Answer::open) {
        finding.conflict = true;
        finding.packet = std::make_unique<Match>(space_.matchOf(search_.witness()));
        if (!std::binary_search(cover.begin(), cover.end(), taker)) finding.blame.push_back(taker);
        return answer;
      }
      if (answer == Answer::unknown) worst = answer;
    }
    beforeAdd(met_[at], std::binary_search(cover.begin(), cover.end(), taker));
  }
  return worst;
}

/// Whether the entry at this place of met_, which has another action, takes a packet of the rule,
/// or those do that may take it before: open where it does. Those before it are in before_.
template <class W>
Answer LintPlaceOf<W>::conflictAskAt(std::uint32_t number, std::size_t taker) {
  BoxList<W> boxes(space_.fields());
  space_.intersectionAppend(boxes_[rules_[number].box], index_[met_[taker]], boxes);
  bool const hasOnlyCertain = before_.size() == taker;
  if (!hasOnlyCertain && !sureOfTakers(number, taker, boxes)) return Answer::unknown;
  Answer worst = Answer::covered;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    Answer const answer = search_.ask(boxes[i], before_, index_.boxes(), boundLeft());
    if (answer == Answer::open) return answer;
    if (answer == Answer::unknown) worst = answer;
  }
  return worst;
}

/// Adds to before_. Those of the rule's cover stand first: most parts of the rule are in one of
/// them, and a search ends there.
template <class W>
void LintPlaceOf<W>::beforeAdd(std::uint32_t met, bool isOfCover) {
  before_.push_back(met);
  if (isOfCover) std::swap(before_[coverBefore_++], before_.back());
}

/// Leaves of the boxes the packets that no rule before the taker may take with the rule's own
/// action. Rules of one other match are met by a packet together: the first of them that its fields
/// allow takes it. False where the pieces come to more than the bound.
template <class W>
bool LintPlaceOf<W>::sureOfTakers(std::uint32_t number, std::size_t taker,
                                  BoxList<W>& boxes) const {
  std::uint32_t const action = rules_[number].facts.action;
  std::vector<std::uint32_t> texts;
  for (std::size_t at = 0; at < taker; ++at) {
    std::uint32_t const text = rules_[indexed_[met_[at]]].facts.otherMatch;
    if (text != 0 && std::find(texts.begin(), texts.end(), text) == texts.end()) {
      texts.push_back(text);
    }
  }
  for (std::uint32_t const text : texts) {
    BoxList<W> sure(space_.fields());
    for (std::size_t at = 0; at < taker && !boxes.empty(); ++at) {
      const Rule& other = rules_[indexed_[met_[at]]];
      if (other.facts.otherMatch != text) continue;
      BoxList<W> left(space_.fields());
      for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (!space_.overlap(boxes[i], index_[met_[at]])) {
          left.push(boxes[i]);
          continue;
        }
        if (other.facts.action != action) {
          space_.intersectionAppend(boxes[i], index_[met_[at]], sure);
        }
        space_.differenceAppend(boxes[i], index_[met_[at]], left);
      }
      boxes = std::move(left);
      if (boxes.size() + sure.size() > ruleBound) return false;
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) sure.push(boxes[i]);
    boxes = std::move(sure);
  }
  return true;
}

template <class W>
void LintPlaceOf<W>::tieFind(std::uint32_t number, std::vector<LintFinding>& findings) const {
  const Rule& rule = rules_[number];
  if (rule.facts.otherMatch != 0) return;
  for (std::uint32_t const met : met_) {
    const Rule& other = rules_[indexed_[met]];
    if (other.facts.priority != rule.facts.priority || other.facts.action == rule.facts.action ||
        other.facts.otherMatch != 0) {
      continue;
    }
    LintFinding finding;
    finding.rule = number;
    finding.kind = LintClass::tie;
    finding.blame.push_back(indexed_[met]);
    BoxList<W> common(space_.fields());
    space_.intersectionAppend(boxes_[rule.box], index_[met], common);
    finding.packet = std::make_unique<Match>(space_.matchOf(common[0]));
    findings.push_back(std::move(finding));
    return;
  }
}

/// From the last rule to the first, without the dead ones and those already found redundant.
template <class W>
void LintPlaceOf<W>::redundantFind(std::vector<LintFinding>& findings) {
  for (auto number = static_cast<std::uint32_t>(rules_.size()); number-- > 0;) {
    Rule& rule = rules_[number];
    if (!rule.facts.isInstalled || rule.isDead || rule.isUnknown) continue;
    ruleStart_ = search_.boxes();
    LintFinding finding;
    finding.rule = number;
    finding.kind = LintClass::redundant;
    Answer const answer = redundantAsk(number, finding);
    if (answer == Answer::open) continue;
    if (answer == Answer::unknown) finding.kind = LintClass::unknown;
    rule.isSpared = answer == Answer::covered;
    findings.push_back(std::move(finding));
  }
}

/// Covered: the rule can be spared. Open: it cannot.
template <class W>
Answer LintPlaceOf<W>::redundantAsk(std::uint32_t number, LintFinding& finding) {
  const Rule& rule = rules_[number];
  Box<W> const box = boxes_[rule.box];
  met_.clear();
  index_.overlapping(box, 0, index_.size(), met_);
  std::erase_if(met_, [&](std::uint32_t met) {
    const Rule& other = rules_[indexed_[met]];
    return &other == &rule || other.isDead || other.isSpared;
  });
  // Every packet that it wins has to meet some rule behind it,
  candidates_.clear();
  for (std::uint32_t const met : met_) {
    if (isCertain(rules_[indexed_[met]], rule.facts.otherMatch)) candidates_.push_back(met);
  }
  Answer const all = search_.ask(box, candidates_, index_.boxes(), boundLeft());
  if (all != Answer::covered) return all;
  std::vector<std::uint32_t> const cover = sorted(search_.used());
  for (std::uint32_t const used : cover) {
    if (indexed_[used] > number) finding.blame.push_back(indexed_[used]);
  }
  blameOrder(finding);
  // and the first that it meets, or may meet, must have the same action. None behind the cover is
  // the first.
  before_.clear();
  coverBefore_ = 0;
  uncertain_.clear();
  for (std::size_t at = 0; at < met_.size() && met_[at] <= cover.back(); ++at) {
    const Rule& other = rules_[indexed_[met_[at]]];
    if (indexed_[met_[at]] > number && other.facts.action != rule.facts.action) {
      common_.clear();
      space_.intersectionAppend(box, index_[met_[at]], common_);
      std::size_t const certain = before_.size();
      std::copy_if(uncertain_.begin(), uncertain_.end(), std::back_inserter(before_),
                   [&](std::uint32_t met) {
                     return rules_[indexed_[met]].facts.otherMatch == other.facts.otherMatch;
                   });
      Answer const answer = search_.ask(common_[0], before_, index_.boxes(), boundLeft());
      before_.resize(certain);
      if (answer != Answer::covered) return answer;
    }
    if (isCertain(other, rule.facts.otherMatch)) {
      beforeAdd(met_[at], std::binary_search(cover.begin(), cover.end(), met_[at]));
    } else {
      uncertain_.push_back(met_[at]);
    }
  }
  return Answer::covered;
}

template <class W>
void LintPlaceOf<W>::blameOrder(LintFinding& finding) const {
  Box<W> const box = boxes_[rules_[finding.rule].box];
  std::vector<std::pair<double, std::uint32_t>> shares;
  for (std::uint32_t const blamed : finding.blame) {
    shares.emplace_back(-space_.shareTaken(box, boxes_[rules_[blamed].box]), blamed);
  }
  std::sort(shares.begin(), shares.end());
  std::transform(shares.begin(), shares.end(), finding.blame.begin(),
                 [](auto const& share) { return share.second; });
}

}  // namespace

std::unique_ptr<LintPlace> LintPlace::make(FieldMask fields) {
  constexpr FieldMask wide = bitOf(Field::src6) | bitOf(Field::dst6);
  if ((fields & wide) != 0) return std::make_unique<LintPlaceOf<Word>>(fields);
  return std::make_unique<LintPlaceOf<std::uint64_t>>(fields);
}

}  // namespace tcamshow
