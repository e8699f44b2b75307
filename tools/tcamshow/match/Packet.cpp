#include "match/Packet.h"

#include <algorithm>
#include <array>
#include <optional>

#include "io/SafeText.h"

namespace tcamshow {

namespace {

struct ProtocolWord {
  std::string_view name;
  std::optional<Word> protocol;
  PacketKind kind;
};
constexpr std::array protocolWords = std::to_array<ProtocolWord>({
    {"tcp", 6, PacketKind::any},
    {"udp", 17, PacketKind::any},
    {"icmp", protocolNumberIcmp, PacketKind::ip},
    {"icmp6", protocolNumberIcmp6, PacketKind::ip6},
    {"ip", std::nullopt, PacketKind::ip},
    {"ip6", std::nullopt, PacketKind::ip6},
});

constexpr FieldMask ipFields = bitOf(Field::src) | bitOf(Field::dst);
constexpr FieldMask ip6Fields = bitOf(Field::src6) | bitOf(Field::dst6) | bitOf(Field::hoplimit);
constexpr FieldMask ethernetFields =
    bitOf(Field::smac) | bitOf(Field::dmac) | bitOf(Field::ethertype) | bitOf(Field::vlan);

/// The values of the whole field whose part, which the name names, is in one of the sets.
FieldSets widened(const FieldName& name, const FieldSets& parts) {
  unsigned const bits = bitsOf(name.field);
  if (name.bits == bits) return parts;
  FieldSets wide;
  auto const add = [&](std::optional<FieldSet> const& set) {
    if (set) wide.push_back(*set);
  };
  Word const below = lowOnes(name.shift);
  for (const FieldSet& part : parts) {
    if (name.shift + name.bits == bits) {
      // The high bits: a range of them is one of the field.
      auto const cube = FieldSet::cube(part.value() << name.shift, part.mask() << name.shift, bits);
      auto const range =
          FieldSet::range(part.low() << name.shift, part.high() << name.shift | below, bits);
      add(cube->intersection(*range));
    } else if (part.isCube()) {
      add(FieldSet::cube(part.value() << name.shift,
                         (part.mask() & lowOnes(name.bits)) << name.shift, bits));
    } else {
      // Low bits, cut by a range: value by value.
      for (Word value = part.low(); value <= part.high(); ++value) {
        if (!part.has(value)) continue;
        add(FieldSet::cube(value << name.shift, lowOnes(name.bits) << name.shift, bits));
      }
    }
  }
  return wide;
}

class PacketReader {
 public:
  explicit PacketReader(std::string_view text) noexcept : text_(text) {}

  Packets read() {
    std::size_t at = 0;
    while ((at = text_.find_first_not_of(" \t\n", at)) != text_.npos) {
      std::size_t const end = std::min(text_.find_first_of(" \t\n", at), text_.size());
      word(at, text_.substr(at, end - at));
      at = end;
    }
    if (icmpPartAt_ && !isIcmp_) {
      throw TextFault(*icmpPartAt_, "icmp-type and icmp-code need icmp or icmp6");
    }
    kindsLimit();
    Packets packets;
    packets.named = named_;
    for (const Match& box : boxes_) {
      if (!box.isEmpty()) packets.boxes.push_back(box);
    }
    if (packets.boxes.empty()) throw TextFault(0, "no packet is like that: it contradicts itself");
    return packets;
  }

 private:
  void word(std::size_t at, std::string_view word) {
    if (std::size_t const equals = word.find('='); equals != word.npos) {
      return field(at, word.substr(0, equals), word.substr(equals + 1));
    }
    auto const* const found =
        std::find_if(protocolWords.begin(), protocolWords.end(),
                     [word](const ProtocolWord& protocol) { return protocol.name == word; });
    if (found == protocolWords.end()) {
      throw TextFault(
          at, inQuotes(word) + " is neither FIELD=VALUE nor one of tcp, udp, icmp, icmp6, ip, ip6");
    }
    if (found->protocol) {
      nameIs(at, Field::proto, word);
      isIcmp_ = isIcmp_ || found->kind != PacketKind::any;
      limit(Field::proto, {FieldSet::exactly(*found->protocol)});
    }
    if (found->kind != PacketKind::any) kindIs(at, found->kind, word);
  }

  void field(std::size_t at, std::string_view name, std::string_view values) {
    const FieldName* const known = fieldByName(name);
    if (known == nullptr) {
      std::string names;
      for (const FieldName& other : fieldNames()) {
        if (!names.empty()) names += ", ";
        names += other.name;
      }
      throw TextFault(at, inQuotes(name) + " is no field: expected one of " + names);
    }
    nameIs(at, known->field, name);
    if (name.starts_with("icmp-") && !icmpPartAt_) icmpPartAt_ = at;
    if ((ipFields & bitOf(known->field)) != 0) kindIs(at, PacketKind::ip, name);
    if ((ip6Fields & bitOf(known->field)) != 0) kindIs(at, PacketKind::ip6, name);
    std::size_t const valuesAt = at + name.size() + 1;
    FieldSets sets;
    try {
      sets = widened(*known, valuesFromText(*known, values));
    } catch (const TextFault& fault) {
      throw TextFault(valuesAt + fault.at(), fault.what());
    }
    if (sets.empty()) throw TextFault(valuesAt, inQuotes(values) + " holds no value");
    limit(known->field, sets);
  }

  void nameIs(std::size_t at, Field field, std::string_view word) {
    if ((named_ & bitOf(field)) != 0) {
      throw TextFault(
          at, inQuotes(word) + " names " + std::string(nameOf(field).name) + " a second time");
    }
    named_ |= bitOf(field);
  }

  void kindIs(std::size_t at, PacketKind kind, std::string_view word) {
    if (kind_ != PacketKind::any && kind_ != kind) {
      throw TextFault(at, inQuotes(word) + " is " + (kind == PacketKind::ip ? "IPv4" : "IPv6") +
                              ", and what stands before it is " +
                              (kind == PacketKind::ip ? "IPv6" : "IPv4"));
    }
    kind_ = kind;
  }

  /// Goes on with the boxes for each of the sets, which do not overlap.
  void limit(Field field, const FieldSets& sets) {
    std::vector<Match> next;
    for (const Match& box : boxes_) {
      for (const FieldSet& set : sets) {
        next.push_back(box);
        next.back().restrict(field, set);
      }
    }
    boxes_.swap(next);
  }

  void kindsLimit() {
    FieldSets types;
    bool const isAboveEthernet = (named_ & ~ethernetFields) != 0;
    bool const isTypeNamed = (named_ & bitOf(Field::ethertype)) != 0;
    if (kind_ == PacketKind::ip || (kind_ == PacketKind::any && isAboveEthernet && !isTypeNamed)) {
      types.push_back(FieldSet::exactly(etherTypeIp));
    }
    if (kind_ == PacketKind::ip6 || (kind_ == PacketKind::any && isAboveEthernet && !isTypeNamed)) {
      types.push_back(FieldSet::exactly(etherTypeIp6));
    }
    if (types.empty()) return;
    std::vector<Match> next;
    for (const Match& box : boxes_) {
      for (const FieldSet& type : types) {
        next.push_back(box);
        next.back().limit(Field::ethertype, type);
      }
    }
    boxes_.swap(next);
  }

  std::string_view text_;
  std::vector<Match> boxes_{Match()};
  FieldMask named_ = 0;
  PacketKind kind_ = PacketKind::any;
  bool isIcmp_ = false;
  std::optional<std::size_t> icmpPartAt_;
};

}  // namespace

Packets packetsFromText(std::string_view text) { return PacketReader(text).read(); }

namespace {

/// The text of the values that `valueOf` gives of each field of `named`.
template <class ValuesOf>
std::string textOf(const Match& match, FieldMask named, ValuesOf valuesOf) {
  std::string text;
  auto const separate = [&text] {
    if (!text.empty()) text += ' ';
  };
  bool const isTypeTold = !match.isAny(Field::ethertype);
  FieldSet const types = valuesOf(Field::ethertype);
  // A set of several types is of no kind.
  Word const type = types.isExact() ? types.low() : 0;
  bool const isIp = isTypeTold && type == etherTypeIp;
  bool const isIp6 = isTypeTold && type == etherTypeIp6;
  FieldMask left = named;
  if (isTypeTold) {
    // Fields of the other kind of packet may have any value, and naming them would be a
    // contradiction.
    if (!isIp) left &= static_cast<FieldMask>(~ipFields);
    if (!isIp6) left &= static_cast<FieldMask>(~ip6Fields);
    if (isIp || isIp6) {
      left &= static_cast<FieldMask>(~bitOf(Field::ethertype));
    } else {
      left |= bitOf(Field::ethertype);
    }
  }
  // Addresses tell the kind by themselves.
  if (isIp && (left & ipFields) == 0) text = "ip";
  if (isIp6 && (left & ip6Fields) == 0) text = "ip6";
  // A protocol's word says it shorter, and icmp and icmp6 the kind too.
  Word const protocol = match[Field::proto].low();
  if ((left & bitOf(Field::proto)) != 0) {
    bool const isOne = valuesOf(Field::proto).isExact();
    for (const ProtocolWord& word : protocolWords) {
      if (!isOne || word.protocol != protocol) continue;
      if (word.kind == PacketKind::any && (isIp || isIp6)) {
        separate();
      } else if ((word.kind == PacketKind::ip && isIp) || (word.kind == PacketKind::ip6 && isIp6)) {
        text.clear();
      } else {
        continue;
      }
      text += word.name;
      left &= static_cast<FieldMask>(~bitOf(Field::proto));
    }
  }
  for (std::size_t index = 0; index < fieldCount; ++index) {
    auto const field = static_cast<Field>(index);
    if ((left & bitOf(field)) == 0) continue;
    separate();
    const FieldName& name = nameOf(field);
    text += name.name;
    text += '=';
    valuesAppend(text, name, valuesOf(field));
  }
  return text;
}

}  // namespace

std::string packetText(const Match& match, FieldMask named) {
  return textOf(match, named,
                [&match](Field field) { return FieldSet::exactly(match[field].low()); });
}

Match onePacketOf(const Match& match, FieldMask named) noexcept {
  Match packet = match;
  bool const isKindTold = !match.isAny(Field::ethertype) || (named & ~ethernetFields) != 0 ||
                          (named & bitOf(Field::ethertype)) != 0;
  if (isKindTold) {
    Word const type = match.has(Field::ethertype, etherTypeIp)    ? etherTypeIp
                      : match.has(Field::ethertype, etherTypeIp6) ? etherTypeIp6
                                                                  : match[Field::ethertype].low();
    packet.limit(Field::ethertype, FieldSet::exactly(type));
  }
  unsigned const told = (named | match.limited()) & ~unsigned{bitOf(Field::ethertype)};
  for (unsigned left = told; left != 0; left &= left - 1) {
    auto const field = static_cast<Field>(__builtin_ctz(left));
    packet.restrict(field, FieldSet::exactly(match[field].low()));
  }
  return packet;
}

std::string matchText(const Match& match) {
  if (match.isEmpty()) return "none";
  std::string text = textOf(match, match.limited(), [&match](Field field) { return match[field]; });
  if (text.empty()) text = "any";
  return text;
}

}  // namespace tcamshow
