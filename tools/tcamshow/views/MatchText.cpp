#include "views/MatchText.h"

#include <algorithm>

#include "match/FieldText.h"
#include "match/FieldValues.h"

namespace tcamshow {
namespace {

/// The field that a qualifier is about.
Field fieldOf(const Qualifier& qualifier) noexcept {
  switch (qualifier.type) {
    case VelmorTcam::qualifierSrcIp:
      return Field::src;
    case VelmorTcam::qualifierDstIp:
      return Field::dst;
    case VelmorTcam::qualifierSrcIp6:
    case VelmorTcam::qualifierSrcIp6Alt:
      return Field::src6;
    case VelmorTcam::qualifierDstIp6:
    case VelmorTcam::qualifierDstIp6Alt:
      return Field::dst6;
    case VelmorTcam::qualifierSrcMac:
      return Field::smac;
    case VelmorTcam::qualifierDstMac:
      return Field::dmac;
    case VelmorTcam::qualifierEtherType:
      return Field::ethertype;
    case VelmorTcam::qualifierOuterVlanId:
      return Field::vlan;
    case VelmorTcam::qualifierIpProtocol:
      return Field::proto;
    case VelmorTcam::qualifierDSCP:
    case VelmorTcam::qualifierIp6TrafficClass:
      return Field::tc;
    case VelmorTcam::qualifierIpFrag:
      return Field::frag;
    case VelmorTcam::qualifierTcpControl:
      return Field::flags;
    case VelmorTcam::qualifierL4SrcPort:
      return Field::sport;
    case VelmorTcam::qualifierL4DstPort:
      return Field::dport;
    default:
      return Field::hoplimit;
  }
}
Field fieldOf(const RangeChecker& checker) noexcept {
  if (checker.type == VelmorTcam::rangeCheckerL4SrcPort) return Field::sport;
  return checker.type == VelmorTcam::rangeCheckerL4DstPort ? Field::dport : Field::length;
}

/// The worst of two states: failed, then pending, then unknown.
EntryState worst(EntryState a, EntryState b) noexcept {
  auto const rank = [](EntryState state) {
    switch (state) {
      case EntryState::failed:
        return 3;
      case EntryState::pending:
        return 2;
      case EntryState::unknown:
        return 1;
      case EntryState::programmed:
        break;
    }
    return 0;
  };
  return rank(a) < rank(b) ? b : a;
}

/// Every value of a field, where "*" would hide that a qualifier is there.
std::string_view everyValue(const FieldName& name) noexcept {
  switch (name.form) {
    case ValueForm::ip:
      return "0.0.0.0/0";
    case ValueForm::ip6:
      return "::/0";
    case ValueForm::mac:
      return "00:00:00:00:00:00/00:00:00:00:00:00";
    case ValueForm::frag:
      return "any";
    default:
      return "0/0";
  }
}

}  // namespace

char markOf(EntryState state) noexcept {
  switch (state) {
    case EntryState::failed:
      return '!';
    case EntryState::pending:
      return '~';
    case EntryState::unknown:
      return '?';
    case EntryState::programmed:
      break;
  }
  return ' ';
}

MatchText::MatchText(const Entry& entry) : match_(matchOf(entry)) {
  std::fill(std::begin(states_), std::end(states_), EntryState::programmed);
  auto const note = [this](Field field, std::uint8_t status) {
    EntryState& state = states_[indexOf(field)];
    state = worst(state, stateOfStatus(status));
  };
  // Of an address and its alternative one counts: where it is programmed, the other is of no
  // concern.
  auto const counts = [&entry](const Qualifier& qualifier) {
    bool const isSource = fieldOf(qualifier) == Field::src6;
    if (!isSource && fieldOf(qualifier) != Field::dst6) return true;
    return std::none_of(entry.qualifiers.begin(), entry.qualifiers.end(),
                        [&](const Qualifier& other) {
                          return &other != &qualifier && fieldOf(other) == fieldOf(qualifier) &&
                                 other.status == statusProgrammed;
                        });
  };
  for (const Qualifier& qualifier : entry.qualifiers) {
    if (qualifier.status != statusProgrammed && counts(qualifier)) {
      note(fieldOf(qualifier), qualifier.status);
    }
  }
  for (const RangeChecker& checker : entry.rangeCheckers) note(fieldOf(checker), checker.status);
}

bool MatchText::isPart(const FieldName& part) const {
  if ((match_.emptied() & bitOf(part.field)) != 0 || match_.isAny(part.field)) return false;
  const FieldSet& set = match_[part.field];
  Word const ofPart = lowOnes<Word>(part.bits) << part.shift;
  Word const ofField = lowOnes<Word>(bitsOf(part.field));
  return set.isCube() && (set.mask() & ofField & ~ofPart) == 0;
}

void MatchText::append(std::string& out, const FieldName& name) const {
  FieldValues const values(match_, name);
  EntryState const state = states_[indexOf(name.field)];
  if (values.sets().empty()) {
    out += "none";
  } else {
    std::size_t const begin = out.size();
    for (const FieldSet& set : values.sets()) {
      if (out.size() != begin) out += ',';
      valuesAppend(out, name, set);
    }
    if (state != EntryState::programmed && out.compare(begin, out.npos, "*") == 0) {
      out.replace(begin, 1, everyValue(name));
    }
  }
  if (state != EntryState::programmed) out += markOf(state);
}

}  // namespace tcamshow
