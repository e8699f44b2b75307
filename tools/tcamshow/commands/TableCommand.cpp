#include "commands/TableCommand.h"

#include "views/Tables.h"

namespace tcamshow {

void TableCommand::declareOptions(Options& options) {
  selection_.declareAll(options);
  since_.declare(options);
  file_.declare(options);
}

ExitStatus TableCommand::run(const Run& run) {
  Selection const selection = selection_.read();
  if (since_.isGiven() && !run.options.json) {
    throw CommandLineError("--since goes with list and with --json only");
  }
  auto const source =
      selected(since_.open(file_, run.complaints), selection, table_, run.complaints);
  if (selection_.isCount()) {
    showCount(*source, run.out);
  } else {
    showTable(*source, run.out, table_, run.options.json ? TableForm::jsonLines : TableForm::text);
  }
  return ExitStatus::done;
}

}  // namespace tcamshow
