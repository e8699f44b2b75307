#include "commands/Commands.h"
#include "commands/TableCommand.h"

namespace tcamshow {

std::unique_ptr<Command> tcamCommand() {
  return std::make_unique<TableCommand>("tcam", "Every entry, in one line", "tcam --json acl.jsonl",
                                        Table::tcam);
}

}  // namespace tcamshow
