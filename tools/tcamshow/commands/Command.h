// What every command of the program is.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/OutputBuffer.h"

namespace tcamshow {

/// One command. main() declares all of them, reads the command line, and runs the one that was
/// named; options that belong to the whole program stand in main.cpp.
///
/// run() reports bad input with InputError; main() gives it, and the errors of OutputBuffer, their
/// message and exit status. What run() leaves in the buffer is written by main().
class Command {
 public:
  virtual ~Command();
  /// Adds the command, its options and its arguments to `app` and returns the part that the command
  /// line must name for the command to run. Values are bound to members of the command.
  virtual CLI::App* declare(CLI::App& app) = 0;
  /// Asks run() for JSON in place of text; false where the command has no such form.
  virtual bool jsonIsWanted() { return false; }
  virtual void run(OutputBuffer& out) = 0;
};

/// Declares the argument FILE, which names standard input where it is absent or "-".
inline void declareFile(CLI::App& command, std::string& file) {
  command.add_option("FILE", file, "The file to read; standard input when absent or -");
}

/// Every command, in the order in which the help lists them.
std::vector<std::unique_ptr<Command>> allCommands();

}  // namespace tcamshow
