#include "questions/Attributes.h"

#include <algorithm>
#include <array>

#include "snapshot/EntryState.h"

namespace tcamshow {

namespace {

constexpr std::array<std::string_view, 4> states{"programmed", "pending", "failed", "unknown"};
constexpr std::array<std::string_view, 3> stages{"lookup", "ingress", "egress"};
constexpr std::array<std::string_view, 4> tables{"ip", "ip6", "mac", "tcam"};

template <auto member>
std::optional<Number> numberOf(const EntryFacts& facts) {
  return facts.entry.*member;
}
template <auto member>
std::optional<Number> placeNumberOf(const EntryFacts& facts) {
  return facts.entry.place.*member;
}
template <auto member>
std::string_view textOf(const EntryFacts& facts) {
  return facts.entry.*member;
}

constexpr std::array all = std::to_array<Attribute>({
    {"id", numberOf<&Entry::shadowId>, nullptr, {}},
    {"sequence", numberOf<&Entry::sequence>, nullptr, {}},
    {"priority", numberOf<&Entry::priority>, nullptr, {}},
    {"hits",
     [](const EntryFacts& facts) -> std::optional<Number> { return hitsOf(facts.entry); },
     nullptr,
     {}},
    {"bytes",
     [](const EntryFacts& facts) -> std::optional<Number> { return bytesOf(facts.entry); },
     nullptr,
     {}},
    {"pipe", placeNumberOf<&Place::pipe>, nullptr, {}, true},
    {"group", placeNumberOf<&Place::groupId>, nullptr, {}, true},
    {"copy", placeNumberOf<&Place::copyId>, nullptr, {}, true},
    {"groupPriority", placeNumberOf<&Place::groupPriority>, nullptr, {}, true},
    {"featurePriority", numberOf<&Entry::featurePriority>, nullptr, {}},
    {"stage", nullptr,
     [](const EntryFacts& facts) {
       return stages[static_cast<std::size_t>(facts.entry.place.stage) - 1];
     },
     stages, true},
    {"table", nullptr,
     [](const EntryFacts& facts) { return tables[static_cast<std::size_t>(facts.entry.table)]; },
     tables},
    {"state", nullptr, [](const EntryFacts& facts) { return stateName(stateOf(facts.entry)); },
     states},
    {"name", nullptr, [](const EntryFacts& facts) { return facts.groupName; }, {}, true},
    {"feature", nullptr, textOf<&Entry::feature>, {}},
    {"action", nullptr, textOf<&Entry::action>, {}},
    {"description", nullptr, textOf<&Entry::description>, {}},
});

}  // namespace

std::span<const Attribute> attributes() noexcept { return all; }

const Attribute* attributeByName(std::string_view name) noexcept {
  auto const* const found = std::find_if(all.begin(), all.end(),
                                         [name](const Attribute& one) { return one.name == name; });
  return found == all.end() ? nullptr : found;
}

}  // namespace tcamshow
