#include "commands/Commands.h"
#include "commands/TableCommand.h"

namespace tcamshow {

std::unique_ptr<Command> macCommand() {
  return std::make_unique<TableCommand>("mac", "The MAC table", "mac acl.jsonl", Table::mac);
}

}  // namespace tcamshow
