#include "commands/TableCommand.h"

#include "views/Tables.h"

namespace tcamshow {

void TableCommand::declareOptions(Options& options) {
  selection_.declareAll(options);
  file_.declare(options);
}

ExitStatus TableCommand::run(const Run& run) {
  Selection const selection = selection_.read();
  auto const source = selected(file_.open(run.complaints), selection, table_, run.complaints);
  if (selection_.isCount()) {
    showCount(*source, run.out);
  } else {
    showTable(*source, run.out, table_, run.options.json ? TableForm::jsonLines : TableForm::text);
  }
  return ExitStatus::done;
}

}  // namespace tcamshow
