// Conditions on entries: any text is a condition or is refused with the place of the fault; a
// condition asks any entry, and "not", "and" and "or" do with it as logic says.
#include "questions/Where.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "Snapshots.h"
#include "Target.h"
#include "questions/Attributes.h"
#include "snapshot/Snapshot.h"

namespace {

using tcamshow::Entry;
using tcamshow::Table;
using tcamshow::Where;

constexpr std::uint32_t ones = 0xFFFFFFFF;

Entry entryOf(Table table) {
  Entry entry;
  entry.place = {tcamshow::Stage::egress, -2, 20, 1, 3};
  entry.table = table;
  return entry;
}

tcamshow::RangeChecker rangeOf(std::uint8_t type, std::int32_t low, std::int32_t high) {
  tcamshow::RangeChecker range;
  range.type = type;
  range.low = low;
  range.high = high;
  return range;
}

/// Entries of each table, all of one place. The first of a table matches any packet.
const std::array<Entry, 8>& entries() {
  static const std::array<Entry, 8> all = [] {
    using namespace VelmorTcam;
    using tcamshow::wordQualifier;
    std::array made{entryOf(Table::ip),   entryOf(Table::ip6), entryOf(Table::mac),
                    entryOf(Table::tcam), entryOf(Table::ip),  entryOf(Table::ip6),
                    entryOf(Table::mac),  entryOf(Table::tcam)};
    Entry& ip = made[4];
    ip.shadowId = 7;
    ip.sequence = 10;
    ip.priority = ones;
    ip.action = "permit";
    ip.description = "a \"b\" (c)";
    ip.hits = ~std::uint64_t{0};
    ip.counterStatus = tcamshow::statusProgrammed;
    ip.feature = "web";
    ip.qualifiers = {
        wordQualifier(qualifierSrcIp, 0x0A010000, 0xFFFF0000, tcamshow::QualifierKind::ip),
        wordQualifier(qualifierDstIp, 0xC0000201, 0xFF0000FF, tcamshow::QualifierKind::ip),
        wordQualifier(qualifierIpProtocol, 1, 255), wordQualifier(qualifierDSCP, 46, 0x3F),
        wordQualifier(qualifierL4DstPort, 1, 0xFF)};
    ip.rangeCheckers = {rangeOf(rangeCheckerL4SrcPort, 100, 2000)};

    Entry& ip6 = made[5];
    ip6.bytes = 0;
    ip6.givenState = tcamshow::EntryState::failed;
    ip6.qualifiers = {
        tcamshow::ip6Qualifier(qualifierSrcIp6, {0x20, 0x01, 0x0D, 0xB8}, tcamshow::ip6Mask(32)),
        wordQualifier(qualifierIpProtocol, 6, 255), wordQualifier(qualifierTcpControl, 2, 0x12),
        wordQualifier(qualifierIp6HopLimit, 0, 1)};
    // No packet has such a length.
    ip6.rangeCheckers = {rangeOf(rangeCheckerL4DstPort, 80, 443),
                         rangeOf(rangeCheckerIpLength, 2, 1)};

    Entry& mac = made[6];
    mac.qualifiers = {
        tcamshow::macQualifier(qualifierSrcMac, {2, 0, 0x5E, 0, 0, 1},
                               {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}),
        tcamshow::macQualifier(qualifierDstMac, {1, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0}),
        wordQualifier(qualifierOuterVlanId, 100, 0xFFF), wordQualifier(qualifierEtherType, 1, 1)};

    Entry& tcam = made[7];
    // Values beyond their masks and their fields.
    tcam.qualifiers = {wordQualifier(qualifierIpFrag, ones, 0),
                       wordQualifier(qualifierDSCP, ones, 1),
                       wordQualifier(qualifierIp6TrafficClass, 3, 3),
                       wordQualifier(qualifierL4SrcPort, ones, ones)};
    tcam.rangeCheckers = {rangeOf(rangeCheckerIpLength, -1, 0x7FFFFFFF)};
    return made;
  }();
  return all;
}

constexpr std::string_view groupName = "acl-in";

/// Reads a text that must be a condition, unless it nests deeper than there may be levels.
std::optional<Where> composed(const std::string& text, std::string_view part) {
  try {
    return Where(text);
  } catch (const tcamshow::TextFault& fault) {
    FUZZ_CHECK_TEXT(fault.what(), "the condition nests too deep");
    // Every level has a parenthesis or a "not". One takes two levels more.
    std::size_t levels = static_cast<std::size_t>(std::count(part.begin(), part.end(), '('));
    for (std::size_t at = 0; (at = part.find("not", at)) != part.npos; ++at) ++levels;
    FUZZ_CHECK(levels >= 198);
    return std::nullopt;
  }
}

/// Checks that `expected` says of each entry what the condition of the text says, given what its
/// part says.
template <class Expected>
void checkComposed(const std::string& text, std::string_view part, const Where& where,
                   const Expected& expected) {
  auto const whole = composed(text, part);
  if (!whole) return;
  FUZZ_CHECK(whole->asksName() == where.asksName());
  FUZZ_CHECK(whole->asksPlaceAlone() == where.asksPlaceAlone());
  for (const Entry& entry : entries()) {
    tcamshow::EntryFacts const facts{entry, groupName};
    FUZZ_CHECK(whole->holds(facts) == expected(where.holds(facts)));
  }
}

}  // namespace

FUZZ_TARGET(where) {
  std::string const text(in.rest());
  std::optional<Where> where;
  try {
    where.emplace(text);
  } catch (const tcamshow::TextFault& fault) {
    std::string_view const message = fault.what();
    FUZZ_CHECK(fault.at() <= text.size());
    FUZZ_CHECK(!message.empty() && message.find('\n') == message.npos);
    velmorfuzz::checkIsSafe(message);
    return;
  }
  auto const same = [](bool holds) { return holds; };
  auto const opposite = [](bool holds) { return !holds; };
  checkComposed("not (" + text + ")", text, *where, opposite);
  checkComposed("not not (" + text + ")", text, *where, same);
  checkComposed("(" + text + ") and (" + text + ")", text, *where, same);
  checkComposed("(" + text + ") or (" + text + ")", text, *where, same);
  // "or" binds least.
  checkComposed(text + " or " + text, text, *where, same);

  bool const first = where->holds({entries()[0], groupName});
  for (const Entry& entry : entries()) {
    bool const holds = where->holds({entry, groupName});
    if (where->asksPlaceAlone()) FUZZ_CHECK(holds == first);
    if (!where->asksName()) FUZZ_CHECK(where->holds({entry, ""}) == holds);
  }
}
