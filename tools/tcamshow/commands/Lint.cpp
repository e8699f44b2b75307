#include "views/Lint.h"

#include <array>

#include "commands/Commands.h"
#include "commands/PlaceWhere.h"
#include "io/Nearest.h"
#include "io/SafeText.h"

namespace tcamshow {
namespace {

constexpr LintClasses classesOnRequest = bitOf(LintClass::redundant) | bitOf(LintClass::neverHit);

/// The names of the classes of a set, in order.
std::vector<std::string_view> namesOf(LintClasses classes) {
  std::vector<std::string_view> names;
  for (std::size_t i = 0; i < lintClassCount; ++i) {
    auto const kind = static_cast<LintClass>(i);
    if ((classes & bitOf(kind)) != 0) names.push_back(lintClassName(kind));
  }
  return names;
}

/// Reads `CLASS,...` into `classes`. Returns an error message, or an empty text.
std::string readClasses(std::string_view text, LintClasses allowed, LintClasses& classes) {
  for (std::size_t at = 0; at <= text.size();) {
    std::size_t const end = std::min(text.find(',', at), text.size());
    std::string_view const word = text.substr(at, end - at);
    auto const kind = lintClassByName(word);
    if (!kind || (allowed & bitOf(*kind)) == 0) {
      auto const names = namesOf(allowed);
      std::string const near = suggestion(word, names);
      std::string message = inQuotes(word) + " is not known" + near;
      if (!near.empty()) return message;
      for (std::string_view const name : names) {
        message += name == names.front() ? "; expected " : name == names.back() ? " or " : ", ";
        message += name;
      }
      return message;
    }
    classes |= bitOf(*kind);
    at = end + 1;
  }
  return {};
}

/// `lint [FILE]`
class LintCommand final : public Command {
 public:
  LintCommand()
      : Command("lint", "Entries that can never be hit, or disagree",
                "lint --fail-on shadowed,duplicate acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

  ExitStatus run(const Run& run) override {
    where_.read();
    // Whoever names a class asks for it.
    LintClasses const sought = usualLintClasses | with_ | only_ | failOn_;
    LintClasses const shown = only_ != 0 ? only_ : sought;
    LintClasses const failing = failsOnAny_ ? failOn_ | shown : failOn_;
    EntryStore const store(*file_.open(run.complaints));
    LintView view(run.out, run.options.json);
    bool hasFailed = false;
    for (const PlaceInfo& place : store.places()) {
      if (!where_.holds(place.place, place.name)) continue;
      PlaceFindings const findings = lintOf(store, place, shown | failing);
      view.show(store, place, findings, shown);
      for (const LintFinding& finding : findings.findings) {
        hasFailed = hasFailed || (failing & bitOf(finding.kind)) != 0;
      }
    }
    return hasFailed ? ExitStatus::yes : ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.text("--fail-on", failOnText_, "CLASS,...",
                 "End with status 3 if there is a finding of these classes, or \"any\"",
                 [this](const std::string& text) {
                   failsOnAny_ = text == "any";
                   return failsOnAny_ ? std::string() : readClasses(text, allLintClasses, failOn_);
                 });
    options.text(
        "--only", onlyText_, "CLASS,...", "The findings of these classes alone",
        [this](const std::string& text) { return readClasses(text, allLintClasses, only_); });
    options.text(
        "--with", withText_, "CLASS,...", "Look for these classes too: redundant, never-hit",
        [this](const std::string& text) { return readClasses(text, classesOnRequest, with_); });
    where_.declare(options);
    file_.declare(options);
  }

  std::string failOnText_;
  std::string onlyText_;
  std::string withText_;
  LintClasses failOn_ = 0;
  LintClasses only_ = 0;
  LintClasses with_ = 0;
  bool failsOnAny_ = false;
  PlaceWhere where_;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> lintCommand() { return std::make_unique<LintCommand>(); }

}  // namespace tcamshow
