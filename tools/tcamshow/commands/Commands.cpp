#include "commands/Commands.h"

namespace tcamshow {

std::vector<std::unique_ptr<Command>> allCommands() {
  using Make = std::unique_ptr<Command> (*)();
  constexpr Make makers[] = {listCommand,     ipCommand,      ip6Command,     macCommand,
                             tcamCommand,     usageCommand,   summaryCommand, inspectCommand,
                             explainCommand,  lintCommand,    costCommand,    diffCommand,
                             capacityCommand, metricsCommand, importCommand};
  std::vector<std::unique_ptr<Command>> commands;
  for (Make const make : makers) commands.push_back(make());
  return commands;
}

}  // namespace tcamshow
