// What is wrong with the entries of one place: which never win, disagree, or can be spared.
//
// Threads: one at a time.
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

/// The classes of findings, in the order in which an entry's are listed.
enum class LintClass : std::uint8_t {
  notInstalled,  ///< its state is not "programmed"
  empty,         ///< matches no packet
  duplicate,     ///< an installed entry ahead of it matches the same packets
  shadowed,      ///< the installed entries ahead of it match all that it matches
  deadButHit,    ///< empty, duplicate or shadowed, and its counter is not 0
  redundant,     ///< each packet that it wins would meet the same action behind it
  tie,           ///< overlaps an entry of the same priority and another action
  neverHit,      ///< its counter is programmed and 0
  unknown,       ///< the search met its bound
};
inline constexpr std::size_t lintClassCount = 9;
/// "not-installed", ...
std::string_view lintClassName(LintClass kind) noexcept;
/// None where nothing has that name.
std::optional<LintClass> lintClassByName(std::string_view name) noexcept;

/// A set of classes, one bit each.
using LintClasses = std::uint16_t;
constexpr LintClasses bitOf(LintClass kind) noexcept {
  return static_cast<LintClasses>(1U << static_cast<unsigned>(kind));
}
constexpr LintClasses allLintClasses = (1U << lintClassCount) - 1;

/// What a finding needs to know of an entry beside its match. Texts that are equal have equal
/// numbers.
struct LintRule {
  std::uint64_t hits = 0;
  std::uint32_t priority = 0;
  std::uint32_t action = 0;
  std::uint32_t otherMatch = 0;  ///< 0: none
  bool isInstalled = true;
  bool countersAreProgrammed = false;
};

/// One finding. Rules are numbered in match order, from 0.
struct LintFinding {
  std::uint32_t rule = 0;
  LintClass kind = LintClass::empty;
  std::vector<std::uint32_t> blame;  ///< ascending
  /// Of a duplicate or shadowed rule: some packet that it matches gets another action than its own.
  bool conflict = false;
  std::unique_ptr<Match> packet;  ///< the proof, where there is one
};

/// Finds what holds, exactly, whatever the rules with another match match: such a rule can be
/// covered, but covers only rules of the same text.
///
///     auto const place = LintPlace::make(fields);
///     for (...) place->add(rule, match);      // in match order
///     for (auto const& finding : place->findings(allLintClasses)) show(finding);
class LintPlace {
 public:
  /// Boxes that the searches of one place may look at, and those of one of its rules.
  static constexpr std::uint64_t placeBound = 1'000'000;
  static constexpr std::uint64_t ruleBound = coverBound;

  /// `fields`: at least those that some match limits.
  static std::unique_ptr<LintPlace> make(FieldMask fields);
  virtual ~LintPlace() = default;
  LintPlace(const LintPlace&) = delete;
  LintPlace& operator=(const LintPlace&) = delete;

  /// Appends a rule: the next in match order.
  virtual void add(const LintRule& rule, const Match& match) = 0;
  /// The findings of the classes asked for, in match order. To be called once, after the last rule.
  virtual std::vector<LintFinding> findings(LintClasses classes) = 0;

 protected:
  LintPlace() = default;
};

}  // namespace tcamshow
