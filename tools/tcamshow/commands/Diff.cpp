#include "views/Diff.h"

#include <array>

#include "commands/Commands.h"

namespace tcamshow {
namespace {

constexpr std::array<std::string_view, 2> pairByWords{"match", "id"};

/// `diff A B`
class DiffCommand final : public Command {
 public:
  DiffCommand()
      : Command("diff", "What differs between two snapshots", "diff yesterday.jsonl today.jsonl") {}

  bool hasJson() const noexcept override { return true; }

  ExitStatus run(const Run& run) override {
    if (pathA_ == "-" && pathB_ == "-") {
      throw CommandLineError("A and B are both standard input");
    }
    EntryStore const a(*file_.open(pathA_, run.complaints));
    EntryStore const b(*file_.open(pathB_, run.complaints));
    PlaceBy const placeBy = ignoresPlace_ ? PlaceBy::stageAndName : PlaceBy::place;
    PairBy const pairBy = by_ == "id" ? PairBy::id : PairBy::match;
    DiffView view(run.out, placeBy, run.options.json);
    DiffCounts counts;
    for (const CommonPlace& place : commonPlaces(a, b, placeBy)) {
      view.placeIs(place);
      diffPlace(a, b, place, pairBy, counts,
                [&view](const Difference& difference) { view.show(difference); });
    }
    view.showCounts(counts);
    bool const isEqual = counts.removed == 0 && counts.added == 0 && counts.changed == 0;
    return isEqual ? ExitStatus::done : ExitStatus::yes;
  }

 private:
  void declareOptions(Options& options) override {
    options.requiredFile("A", pathA_, "The older file; - for standard input");
    options.requiredFile("B", pathB_, "The newer file; - for standard input");
    options.choice("--by", by_, pairByWords,
                   "What the same entry has in both, beside its place: its match, which is the\n"
                   "default, or its id");
    options.flag(
        "--ignore-place", ignoresPlace_,
        "Take stage and group name for the place: for two boxes whose group numbers differ");
    file_.declareFormat(options);
  }

  std::string pathA_;
  std::string pathB_;
  std::string by_ = "match";
  bool ignoresPlace_ = false;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> diffCommand() { return std::make_unique<DiffCommand>(); }

}  // namespace tcamshow
