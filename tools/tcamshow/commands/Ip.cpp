#include "commands/Commands.h"
#include "commands/TableCommand.h"

namespace tcamshow {

std::unique_ptr<Command> ipCommand() {
  return std::make_unique<TableCommand>("ip", "The IPv4 table", "ip acl.jsonl", Table::ip);
}

}  // namespace tcamshow
