#include "match/Field.h"

#include <algorithm>

namespace tcamshow {

namespace {

constexpr FieldName whole(std::string_view name, Field field, ValueForm form) {
  return {name, field, 0, static_cast<std::uint8_t>(bitsOf(field)), form};
}

constexpr std::array names = std::to_array<FieldName>({
    whole("src", Field::src, ValueForm::ip),
    whole("dst", Field::dst, ValueForm::ip),
    whole("src6", Field::src6, ValueForm::ip6),
    whole("dst6", Field::dst6, ValueForm::ip6),
    whole("smac", Field::smac, ValueForm::mac),
    whole("dmac", Field::dmac, ValueForm::mac),
    whole("ethertype", Field::ethertype, ValueForm::etherType),
    whole("vlan", Field::vlan, ValueForm::number),
    whole("proto", Field::proto, ValueForm::protocol),
    whole("tc", Field::tc, ValueForm::number),
    whole("frag", Field::frag, ValueForm::frag),
    whole("flags", Field::flags, ValueForm::flags),
    whole("sport", Field::sport, ValueForm::number),
    whole("dport", Field::dport, ValueForm::number),
    whole("hoplimit", Field::hoplimit, ValueForm::number),
    whole("length", Field::length, ValueForm::number),
    {"dscp", Field::tc, 2, 6, ValueForm::number},
    {"icmp-type", Field::sport, 8, 8, ValueForm::number},
    {"icmp-code", Field::dport, 0, 8, ValueForm::number},
});

constexpr bool namesAreInOrder() {
  for (std::size_t i = 0; i < fieldCount; ++i) {
    if (indexOf(names[i].field) != i) return false;
  }
  return true;
}
static_assert(namesAreInOrder());

}  // namespace

std::span<const FieldName> fieldNames() noexcept { return names; }

const FieldName* fieldByName(std::string_view name) noexcept {
  auto const* const found = std::find_if(
      names.begin(), names.end(), [name](const FieldName& field) { return field.name == name; });
  return found == names.end() ? nullptr : &*found;
}

const FieldName& nameOf(Field field) noexcept { return names[indexOf(field)]; }

}  // namespace tcamshow
