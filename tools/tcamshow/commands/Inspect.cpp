#include "views/Inspect.h"

#include "commands/Commands.h"

namespace tcamshow {
namespace {

/// `inspect FILE`, `inspect --types`
class InspectCommand final : public Command {
 public:
  InspectCommand()
      : Command("inspect", "The usage tree and the summary, attribute by attribute",
                "inspect acl.jsonl") {}

  ExitStatus run(const Run& run) override {
    if (showsTypes_) {
      inspectTypes(run.out);
    } else {
      inspect(*file_.open(run.complaints), run.out);
    }
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.flag("--types", showsTypes_, "The library's types in their place; reads no file");
    file_.declare(options);
  }

  bool showsTypes_ = false;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> inspectCommand() { return std::make_unique<InspectCommand>(); }

}  // namespace tcamshow
