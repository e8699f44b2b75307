#include "views/Usage.h"
#include "commands/Commands.h"

namespace tcamshow {
namespace {

class UsageCommand final : public ViewCommand {
 public:
  UsageCommand()
      : ViewCommand("usage", "What uses the TCAM: stages, groups and features",
                    "usage --detail acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

 private:
  void declareOptions(Options& options) override {
    options.flag("--detail", hasDetail_, "The entries of each feature too");
    ViewCommand::declareOptions(options);
  }
  void show(Source& source, const Run& run) override {
    (run.options.json ? showUsageJson : showUsage)(source, run.out, hasDetail_);
  }

  bool hasDetail_ = false;
};

}  // namespace

std::unique_ptr<Command> usageCommand() { return std::make_unique<UsageCommand>(); }

}  // namespace tcamshow
