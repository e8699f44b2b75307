// Sets of packets: any text is one or is refused with the place of the fault; what was read is
// written as text and read as the same set.
#include "match/Packet.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "Snapshots.h"
#include "Target.h"

namespace {

using tcamshow::bitOf;
using tcamshow::Field;
using tcamshow::FieldMask;
using tcamshow::Match;
using tcamshow::Packets;

std::optional<Packets> packetsOf(std::string_view text) {
  try {
    return tcamshow::packetsFromText(text);
  } catch (const tcamshow::TextFault& fault) {
    std::string_view const message = fault.what();
    FUZZ_CHECK(fault.at() <= text.size());
    FUZZ_CHECK(!message.empty() && message.find('\n') == message.npos);
    velmorfuzz::checkIsSafe(message);
    return std::nullopt;
  }
}

/// All packets of a part, as text.
std::string textOf(const Match& box) {
  std::string text;
  FieldMask fields = box.limited();
  auto const& type = box[Field::ethertype];
  bool const isIp = type == tcamshow::FieldSet::exactly(tcamshow::etherTypeIp);
  bool const isIp6 = type == tcamshow::FieldSet::exactly(tcamshow::etherTypeIp6);
  if (isIp || isIp6) {
    text = isIp ? "ip" : "ip6";
    fields &= static_cast<FieldMask>(~bitOf(Field::ethertype));
  } else {
    // Unless it is named, the fields above Ethernet say IPv4 or IPv6.
    fields |= bitOf(Field::ethertype);
  }
  for (const tcamshow::FieldName& name : tcamshow::fieldNames().first(tcamshow::fieldCount)) {
    if ((fields & bitOf(name.field)) == 0) continue;
    text += ' ';
    text += name.name;
    text += '=';
    valuesAppend(text, name, box[name.field]);
  }
  return text;
}

}  // namespace

FUZZ_TARGET(packet) {
  auto const packets = packetsOf(in.rest());
  if (!packets) return;
  FUZZ_CHECK(!packets->boxes.empty());
  for (std::size_t i = 0; i < packets->boxes.size(); ++i) {
    const Match& box = packets->boxes[i];
    FUZZ_CHECK(!box.isEmpty());
    for (std::size_t j = 0; j < i; ++j) FUZZ_CHECK(!box.overlaps(packets->boxes[j]));

    std::string const text = textOf(box);
    auto const read = packetsOf(text);
    FUZZ_CHECK(read && read->boxes.size() == 1 && read->boxes[0] == box);

    // One packet of the part, which stays the same when it is read and written again.
    std::string const one = packetText(box, packets->named);
    velmorfuzz::checkIsSafe(one);
    auto const readOne = packetsOf(one);
    FUZZ_CHECK(readOne && readOne->boxes.size() == 1 && box.contains(readOne->boxes[0]));
    FUZZ_CHECK((readOne->named & ~packets->named & ~bitOf(Field::ethertype)) == 0);
    FUZZ_CHECK_TEXT(packetText(readOne->boxes[0], readOne->named), one);
  }
}
