// Finds the entries of one place that never win, disagree, or can be left out.
//
// Threads: one thread at a time.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "match/CoverSearch.h"
#include "match/Match.h"

namespace tcamshow {

/// The classes of findings. The findings of one entry are listed in this order.
enum class LintClass : std::uint8_t {
  notInstalled,  ///< its state is not "programmed"
  empty,         ///< matches no packet
  duplicate,     ///< an installed entry ahead of it matches the same packets
  shadowed,      ///< the installed entries ahead of it match all that it matches
  deadButHit,    ///< empty, duplicate or shadowed, and its counter is not 0
  redundant,  ///< without it, each packet that it wins would get the same action from a later entry
  tie,        ///< overlaps an entry with the same priority and another action
  neverHit,   ///< its counter is programmed, and is 0
  unknown,    ///< the search reached its bound
};
inline constexpr std::size_t lintClassCount = 9;
/// "not-installed", ...
std::string_view lintClassName(LintClass kind) noexcept;
/// std::nullopt if no class has that name.
std::optional<LintClass> lintClassByName(std::string_view name) noexcept;

/// A set of classes, one bit each.
using LintClasses = std::uint16_t;
constexpr LintClasses bitOf(LintClass kind) noexcept {
  return static_cast<LintClasses>(1U << static_cast<unsigned>(kind));
}
constexpr LintClasses allLintClasses = (1U << lintClassCount) - 1;

/// The properties of an entry that findings depend on, besides its match. Equal texts have equal
/// numbers.
struct LintRule {
  std::uint64_t hits = 0;
  std::uint32_t priority = 0;
  std::uint32_t action = 0;
  std::uint32_t otherMatch = 0;  ///< the number of its other match; 0 if it has none
  bool isInstalled = true;
  bool countersAreProgrammed = false;
};

/// One finding. Rules are numbered in match order, from 0.
struct LintFinding {
  std::uint32_t rule = 0;
  LintClass kind = LintClass::empty;
  /// The one that overlaps the rule most comes first; of two with the same share, the earlier one.
  std::vector<std::uint32_t> blame;
  /// For a duplicate or shadowed rule: at least one packet that it matches gets another action.
  bool conflict = false;
  std::unique_ptr<Match> packet;  ///< a packet that proves the finding, or null
};

/// Finds the rules of each class, exactly. A rule with another match limits its packets in a way
/// that is not known here. So a finding is made only if it holds in every case: such a rule can be
/// covered, but covers only rules with the same other match.
///
///     auto const place = LintPlace::make(fields);
///     for (...) place->add(rule, match);      // in match order
///     for (auto const& finding : place->findings(allLintClasses)) show(finding);
class LintPlace {
 public:
  /// The largest numbers of boxes that the searches of one place, and those of one rule, look at.
  static constexpr std::uint64_t placeBound = 1'000'000;
  static constexpr std::uint64_t ruleBound = coverBound;

  /// `fields` has at least the fields that some match limits.
  static std::unique_ptr<LintPlace> make(FieldMask fields);
  virtual ~LintPlace() = default;
  LintPlace(const LintPlace&) = delete;
  LintPlace& operator=(const LintPlace&) = delete;

  /// Appends the next rule in match order.
  virtual void add(const LintRule& rule, const Match& match) = 0;
  /// The findings of these classes, in match order. Call it once, after the last rule.
  virtual std::vector<LintFinding> findings(LintClasses classes) = 0;

 protected:
  LintPlace() = default;
};

}  // namespace tcamshow
