#include "views/PlaceText.h"

#include <type_traits>

#include "io/JsonText.h"
#include "snapshot/Members.h"

namespace tcamshow {
namespace {

/// The version of the answers' JSON. It rises when a member is renamed, removed, or changes its
/// meaning, but not when a member is added.
constexpr std::uint32_t answerSchemaVersion = 1;

constexpr std::uint32_t dropSequence = 0xFFFFFFFF;

}  // namespace

void placeAppend(std::string& out, const Place& place, std::string_view name) {
  out += stageName(place.stage).view();
  out += " pipe ";
  appendNumber(out, place.pipe);
  out += " group ";
  appendNumber(out, place.groupId);
  if (!name.empty()) ((out += " \"") += name) += '"';
  out += " priority ";
  appendNumber(out, place.groupPriority);
  out += " copy ";
  appendNumber(out, place.copyId);
}

void entryAppend(std::string& out, std::uint32_t sequence, std::uint64_t shadowId) {
  if (sequence == dropSequence) {
    out += "Drop";
  } else {
    appendNumber(out, sequence);
  }
  out += " (id ";
  appendNumber(out, shadowId);
  out += ')';
}

void printAnswerStart(std::string_view type, pravo::Printer& printer) {
  printer.objectBegin();
  printer.attribute("type", type);
  printer.attribute("schema", answerSchemaVersion);
  printer.objectEnd();
}

void printPlace(const Place& place, std::string_view name, pravo::Printer& printer) {
  Group group;
  group.place = place;
  forEachMember<Group>([&](auto const& member, auto) {
    using Owner = typename std::decay_t<decltype(member)>::Owner;
    if constexpr (std::is_same_v<Owner, Place>) {
      auto const& value = memberOf(group, member);
      if constexpr (std::is_same_v<std::decay_t<decltype(value)>, Stage>) {
        printer.attribute(member.name, stageName(value).view());
      } else {
        printer.attribute(member.name, value);
      }
    }
  });
  if (!name.empty()) printer.attribute("name", name);
}

}  // namespace tcamshow
