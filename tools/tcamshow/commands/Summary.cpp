#include "commands/Commands.h"
#include "views/Usage.h"

namespace tcamshow {
namespace {

class SummaryCommand final : public ViewCommand {
 public:
  SummaryCommand()
      : ViewCommand("summary", "The groups by name, each with its features", "summary acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

 private:
  void show(Source& source, const Run& run) override {
    (run.options.json ? showSummaryJson : showSummary)(source, run.out);
  }
};

}  // namespace

std::unique_ptr<Command> summaryCommand() { return std::make_unique<SummaryCommand>(); }

}  // namespace tcamshow
