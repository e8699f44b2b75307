#include "match/FieldValues.h"

namespace tcamshow {

namespace {

/// The values that the bits from `shift` up have in the set.
FieldSets highPart(const FieldSet& set, unsigned shift, unsigned bits) {
  // Between the lowest and the highest each value that the cube allows is that of some element.
  auto const cube = FieldSet::cube(set.value() >> shift, set.mask() >> shift, bits);
  auto const range = FieldSet::range(set.low() >> shift, set.high() >> shift, bits);
  auto const part = cube->intersection(*range);
  return part ? FieldSets{*part} : FieldSets();
}

/// The values that the lowest bits have in the set.
FieldSets lowPart(const FieldSet& set, unsigned bits) {
  Word const ones = lowOnes(bits);
  FieldSet const cube = *FieldSet::cube(set.value() & ones, set.mask() & ones, bits);
  FieldSets values;
  auto const add = [&](Word low, Word high) {
    if (auto const part = cube.intersection(*FieldSet::range(low, high, bits))) {
      uniteWith(values, *part);
    }
  };
  Word const first = set.low() >> bits;
  Word const last = set.high() >> bits;
  if (first == last) {
    add(set.low() & ones, set.high() & ones);
    return values;
  }
  // From the lowest element up, from nothing up to the highest, and all between.
  add(set.low() & ones, ones);
  add(0, set.high() & ones);
  if (last - first > 1 && FieldSet::cube(set.value() >> bits, set.mask() >> bits, 128 - bits)
                              ->overlaps(*FieldSet::range(first + 1, last - 1, 128 - bits))) {
    add(0, ones);
  }
  return values;
}

}  // namespace

bool hasField(const Match& match, Table table, const FieldName& name) noexcept {
  PacketKind const kind = table == Table::ip    ? PacketKind::ip
                          : table == Table::ip6 ? PacketKind::ip6
                                                : kindOf(match);
  switch (name.field) {
    case Field::src:
    case Field::dst:
      return kind != PacketKind::ip6;
    case Field::src6:
    case Field::dst6:
    case Field::hoplimit:
      return kind != PacketKind::ip;
    default:
      break;
  }
  bool const isIcmpPart =
      name.bits != bitsOf(name.field) && (name.field == Field::sport || name.field == Field::dport);
  if (!isIcmpPart) return true;
  const FieldSet& protocol = match[Field::proto];
  return protocol.isExact() &&
         (protocol.low() == protocolNumberIcmp || protocol.low() == protocolNumberIcmp6);
}

FieldValues::FieldValues(const Match& match, const FieldName& name) {
  if ((match.emptied() & bitOf(name.field)) != 0) return;
  const FieldSet& set = match[name.field];
  if (name.bits == bitsOf(name.field)) {
    sets_ = {&set, 1};
  } else {
    part_ = name.shift == 0 ? lowPart(set, name.bits) : highPart(set, name.shift, name.bits);
    sets_ = part_;
  }
}

}  // namespace tcamshow
