#include "views/List.h"

#include "commands/ColourOption.h"
#include "commands/Commands.h"
#include "commands/SinceOption.h"
#include "match/FieldText.h"
#include "views/Tables.h"

namespace tcamshow {
namespace {

class ListCommand final : public Command {
 public:
  ListCommand()
      : Command("list", "Every entry in match order, with all that it matches on",
                "list --where 'dport = 443' acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

  ExitStatus run(const Run& run) override {
    ListOptions options;
    if (columns_ == "help") {
      showListColumns(run.out);
      return ExitStatus::done;
    }
    try {
      if (columns_) options.columns = listColumnsFromText(*columns_);
    } catch (const TextFault& fault) {
      throw CommandLineError("--columns: column " + std::to_string(fault.at() + 1) + ": " +
                             fault.what());
    }
    options.isColoured = colour_.isColoured(run.out);
    Selection const selection = selection_.read();
    auto source = since_.open(file_, run.complaints);
    if (selection_.isCount()) {
      showCount(*selected(std::move(source), selection, Table::tcam, run.complaints), run.out);
      return ExitStatus::done;
    }
    options.baseline = since_.baseline();
    if (options.baseline != nullptr && !columns_) options.columns = usualListColumnsSince();
    Listing const listing(std::move(source), selection, run.complaints);
    if (run.options.json) {
      showListJson(listing, run.out);
    } else {
      showList(listing, options, run.out);
    }
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    selection_.declareAll(options);
    since_.declare(options);
    options.text("--columns", columns_, "NAME,...",
                 "These columns, in this order; help lists their names");
    colour_.declare(options);
    file_.declare(options);
  }

  SelectionOptions selection_;
  SinceOption since_;
  std::optional<std::string> columns_;
  ColourOption colour_;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> listCommand() { return std::make_unique<ListCommand>(); }

}  // namespace tcamshow
