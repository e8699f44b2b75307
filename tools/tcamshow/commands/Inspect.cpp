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
      Selection const selection = selection_.read();
      inspect(*selected(file_.open(run.complaints), selection, Table::tcam, run.complaints),
              run.out);
    }
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.flag("--types", showsTypes_, "The library's types in their place; reads no file");
    selection_.declareWhere(options);
    file_.declare(options);
  }

  bool showsTypes_ = false;
  SelectionOptions selection_;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> inspectCommand() { return std::make_unique<InspectCommand>(); }

}  // namespace tcamshow
