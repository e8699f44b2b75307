// The functions that make the commands. Each is in the file of its name.
#pragma once

#include <memory>

#include "commands/Command.h"

namespace tcamshow {

std::unique_ptr<Command> listCommand();
std::unique_ptr<Command> ipCommand();
std::unique_ptr<Command> ip6Command();
std::unique_ptr<Command> macCommand();
std::unique_ptr<Command> tcamCommand();
std::unique_ptr<Command> usageCommand();
std::unique_ptr<Command> summaryCommand();
std::unique_ptr<Command> inspectCommand();
std::unique_ptr<Command> explainCommand();
std::unique_ptr<Command> lintCommand();
std::unique_ptr<Command> costCommand();
std::unique_ptr<Command> diffCommand();
std::unique_ptr<Command> capacityCommand();
std::unique_ptr<Command> metricsCommand();
std::unique_ptr<Command> importCommand();

}  // namespace tcamshow
