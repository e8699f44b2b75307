#include "views/Cost.h"

#include "commands/Commands.h"
#include "commands/PlaceWhere.h"

namespace tcamshow {
namespace {

/// `cost [FILE]`
class CostCommand final : public Command {
 public:
  CostCommand() : Command("cost", "What ranges of ports and lengths cost", "cost acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

  ExitStatus run(const Run& run) override {
    where_.read();
    auto const source = file_.open(run.complaints);
    // A place's name is known at the end of the input alone.
    auto costs = costsOf(*source, [this](const Place& place) { return where_.mayHold(place); });
    std::erase_if(costs,
                  [this](const PlaceCost& cost) { return !where_.holds(cost.place, cost.name); });
    showCosts(costs, run.out, run.options.json);
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    where_.declare(options);
    file_.declare(options);
  }

  PlaceWhere where_;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> costCommand() { return std::make_unique<CostCommand>(); }

}  // namespace tcamshow
