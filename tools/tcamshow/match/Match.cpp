#include "match/Match.h"

#include <algorithm>
#include <cstring>

namespace tcamshow {

namespace {

template <std::size_t... index>
constexpr std::array<FieldSet, fieldCount> everything(std::index_sequence<index...>) {
  return {FieldSet::any(bitsOf(static_cast<Field>(index)))...};
}
constexpr auto anySets = everything(std::make_index_sequence<fieldCount>());

}  // namespace

Match::Match() noexcept : sets_(anySets) {}

void Match::restrict(Field field, const std::optional<FieldSet>& set) noexcept {
  named_ |= bitOf(field);
  limit(field, set);
}

void Match::limit(Field field, const std::optional<FieldSet>& set) noexcept {
  FieldSet& held = sets_[indexOf(field)];
  // Nearly always, nothing has limited the field before.
  auto const left = set && !isAny(field) ? held.intersection(*set) : set;
  if (!left) {
    emptied_ |= bitOf(field);
    return;
  }
  held = *left;
  if (!(held == anySets[indexOf(field)])) limited_ |= bitOf(field);
}

bool Match::overlaps(const Match& other) const noexcept {
  if (isEmpty() || other.isEmpty()) return false;
  for (unsigned both = limited_ & other.limited_; both != 0; both &= both - 1) {
    auto const index = static_cast<std::size_t>(__builtin_ctz(both));
    if (!sets_[index].overlaps(other.sets_[index])) return false;
  }
  return true;
}

bool Match::contains(const Match& other) const noexcept {
  if (other.isEmpty()) return true;
  if (isEmpty()) return false;
  for (unsigned mine = limited_; mine != 0; mine &= mine - 1) {
    auto const index = static_cast<std::size_t>(__builtin_ctz(mine));
    if (!sets_[index].contains(other.sets_[index])) return false;
  }
  return true;
}

bool operator==(const Match& a, const Match& b) noexcept {
  if (a.isEmpty() || b.isEmpty()) return a.isEmpty() == b.isEmpty();
  return a.limited_ == b.limited_ && a.sets_ == b.sets_;
}

void Match::keyAppend(std::string& key) const {
  if (isEmpty()) {
    key += '-';
    return;
  }
  for (unsigned mine = limited_; mine != 0; mine &= mine - 1) {
    auto const index = static_cast<std::size_t>(__builtin_ctz(mine));
    const FieldSet& set = sets_[index];
    std::array<char, 2 + 4 * sizeof(Word)> part;
    std::size_t size = 0;
    auto const append = [&, bytes = (bitsOf(static_cast<Field>(index)) + 7) / 8](Word word) {
      for (unsigned byte = 0; byte < bytes; ++byte) {
        part[size++] = static_cast<char>(static_cast<unsigned char>(word >> 8 * byte));
      }
    };
    part[size++] = static_cast<char>('A' + static_cast<char>(index));
    // A cube is told by value and mask, and so is each end of what a range cuts.
    part[size++] = set.isCube() ? 'm' : 'r';
    append(set.value());
    append(set.mask());
    if (!set.isCube()) {
      append(set.low());
      append(set.high());
    }
    key.append(part.data(), size);
  }
}

namespace {

template <std::size_t size>
Word wordOf(const std::array<std::uint8_t, size>& octets) noexcept {
  Word word = 0;
  for (std::uint8_t const octet : octets) word = word << 8 | octet;
  return word;
}

std::optional<FieldSet> rangeOf(const RangeChecker& checker, unsigned bits) noexcept {
  if (checker.high < 0) return std::nullopt;
  return FieldSet::range(static_cast<Word>(std::max(checker.low, 0)),
                         static_cast<Word>(checker.high), bits);
}

/// Of an address and its alternative: the first that is programmed counts, else the first that
/// stands.
const Qualifier* firstThatCounts(const Qualifier* main, const Qualifier* alternative) noexcept {
  if (main == nullptr) return alternative;
  if (alternative == nullptr || main->status == statusProgrammed) return main;
  return alternative->status == statusProgrammed ? alternative : main;
}

void restrictByFrag(Match& match, const Qualifier& qualifier) noexcept {
  constexpr std::uint32_t fragment = 3;
  bool const isTold = qualifier.mask != 0 && qualifier.value >= 1 && qualifier.value <= fragment;
  match.restrict(Field::frag, isTold ? FieldSet::exactly(qualifier.value == fragment ? 1 : 0)
                                     : FieldSet::any(bitsOf(Field::frag)));
}

}  // namespace

Match matchOf(const Entry& entry) noexcept {
  Match match;
  const Qualifier* sourceIp6 = nullptr;
  const Qualifier* sourceIp6Alternative = nullptr;
  const Qualifier* destinationIp6 = nullptr;
  const Qualifier* destinationIp6Alternative = nullptr;
  for (const Qualifier& qualifier : entry.qualifiers) {
    auto const restrict = [&match, &qualifier](Field field) {
      match.restrict(field, FieldSet::cube(qualifier.value, qualifier.mask, bitsOf(field)));
    };
    auto const restrictMac = [&match, &qualifier](Field field) {
      match.restrict(field, FieldSet::cube(wordOf(qualifier.mac.value), wordOf(qualifier.mac.mask),
                                           bitsOf(field)));
    };
    switch (qualifier.type) {
      case VelmorTcam::qualifierSrcIp:
        restrict(Field::src);
        break;
      case VelmorTcam::qualifierDstIp:
        restrict(Field::dst);
        break;
      case VelmorTcam::qualifierSrcIp6:
        sourceIp6 = &qualifier;
        break;
      case VelmorTcam::qualifierSrcIp6Alt:
        sourceIp6Alternative = &qualifier;
        break;
      case VelmorTcam::qualifierDstIp6:
        destinationIp6 = &qualifier;
        break;
      case VelmorTcam::qualifierDstIp6Alt:
        destinationIp6Alternative = &qualifier;
        break;
      case VelmorTcam::qualifierSrcMac:
        restrictMac(Field::smac);
        break;
      case VelmorTcam::qualifierDstMac:
        restrictMac(Field::dmac);
        break;
      case VelmorTcam::qualifierEtherType:
        restrict(Field::ethertype);
        break;
      case VelmorTcam::qualifierOuterVlanId:
        restrict(Field::vlan);
        break;
      case VelmorTcam::qualifierIpProtocol:
        restrict(Field::proto);
        break;
      case VelmorTcam::qualifierIp6TrafficClass:
        restrict(Field::tc);
        break;
      case VelmorTcam::qualifierDSCP:
        match.restrict(Field::tc, FieldSet::cube(Word{qualifier.value} << 2,
                                                 Word{qualifier.mask} << 2, bitsOf(Field::tc)));
        break;
      case VelmorTcam::qualifierIpFrag:
        restrictByFrag(match, qualifier);
        break;
      case VelmorTcam::qualifierTcpControl:
        restrict(Field::flags);
        break;
      case VelmorTcam::qualifierL4SrcPort:
        restrict(Field::sport);
        break;
      case VelmorTcam::qualifierL4DstPort:
        restrict(Field::dport);
        break;
      case VelmorTcam::qualifierIp6HopLimit:
        restrict(Field::hoplimit);
        break;
      default:
        break;
    }
  }
  auto const restrictIp6 = [&match](Field field, const Qualifier* qualifier) {
    if (qualifier == nullptr) return;
    match.restrict(field, FieldSet::cube(wordOf(qualifier->ip6.value), wordOf(qualifier->ip6.mask),
                                         bitsOf(field)));
  };
  restrictIp6(Field::src6, firstThatCounts(sourceIp6, sourceIp6Alternative));
  restrictIp6(Field::dst6, firstThatCounts(destinationIp6, destinationIp6Alternative));
  for (const RangeChecker& checker : entry.rangeCheckers) {
    Field const field = checker.type == VelmorTcam::rangeCheckerL4SrcPort   ? Field::sport
                        : checker.type == VelmorTcam::rangeCheckerL4DstPort ? Field::dport
                                                                            : Field::length;
    match.restrict(field, rangeOf(checker, bitsOf(field)));
  }
  constexpr FieldMask ipFields = bitOf(Field::src) | bitOf(Field::dst);
  constexpr FieldMask ip6Fields = bitOf(Field::src6) | bitOf(Field::dst6) | bitOf(Field::hoplimit);
  bool const isFree = entry.table == Table::mac || entry.table == Table::tcam;
  if (entry.table == Table::ip || (isFree && (match.named() & ipFields) != 0)) {
    match.limit(Field::ethertype, FieldSet::exactly(etherTypeIp));
  }
  if (entry.table == Table::ip6 || (isFree && (match.named() & ip6Fields) != 0)) {
    match.limit(Field::ethertype, FieldSet::exactly(etherTypeIp6));
  }
  return match;
}

PacketKind kindOf(const Match& match) noexcept {
  const FieldSet& types = match[Field::ethertype];
  if (!types.isExact()) return PacketKind::any;
  if (types.low() == etherTypeIp) return PacketKind::ip;
  return types.low() == etherTypeIp6 ? PacketKind::ip6 : PacketKind::any;
}

}  // namespace tcamshow
