#include "commands/Commands.h"
#include "commands/TableCommand.h"

namespace tcamshow {

std::unique_ptr<Command> ip6Command() {
  return std::make_unique<TableCommand>("ip6", "The IPv6 table", "ip6 acl.jsonl", Table::ip6);
}

}  // namespace tcamshow
