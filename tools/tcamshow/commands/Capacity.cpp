#include "views/Capacity.h"

#include <algorithm>

#include "commands/ColourOption.h"
#include "commands/Commands.h"
#include "commands/PlaceWhere.h"

namespace tcamshow {
namespace {

/// `capacity [FILE]`
class CapacityCommand final : public Command {
 public:
  CapacityCommand()
      : Command("capacity", "How full each copy of a group is",
                "capacity --warn 60 --fail 80 acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

  ExitStatus run(const Run& run) override {
    where_.read();
    CapacityOptions options;
    options.warn = warn_.value_or(options.warn);
    options.fail = fail_.value_or(options.fail);
    options.isColoured = colour_.isColoured(run.out);
    auto const source = file_.open(run.complaints);
    // A place's name is known only at the end of the input.
    auto copies = capacityOf(*source, [this](const Place& place) { return where_.mayHold(place); });
    std::erase_if(copies,
                  [this](const CopyUse& copy) { return !where_.holds(copy.place, copy.name); });
    if (run.options.json) {
      showCapacityJson(copies, run.out);
    } else {
      showCapacity(copies, options, run.out);
    }
    bool const hasFailed = fail_ && std::any_of(copies.begin(), copies.end(), [this](auto& copy) {
                             auto const fill = copy.fill();
                             return fill && fill->isAtLeast(*fail_);
                           });
    return hasFailed ? ExitStatus::yes : ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.percent("--warn", warn_, "From how many percent on a copy is yellow; 70 when absent");
    options.percent("--fail", fail_,
                    "From how many percent on a copy is red, and the exit status 3; 85, for the "
                    "colour alone, when absent");
    where_.declare(options);
    colour_.declare(options);
    file_.declare(options);
  }

  std::optional<double> warn_;
  std::optional<double> fail_;
  PlaceWhere where_;
  ColourOption colour_;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> capacityCommand() { return std::make_unique<CapacityCommand>(); }

}  // namespace tcamshow
