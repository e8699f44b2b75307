// What every command of the program is.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "io/Complaints.h"
#include "io/ExitStatus.h"
#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace CLI {
class App;
}  // namespace CLI

namespace tcamshow {

/// The options of the whole program, which may stand before the command or after it.
struct ProgramOptions {
  bool json = false;
  bool trace = false;
};

/// What a command works with.
struct Run {
  OutputBuffer& out;
  Complaints& complaints;
  const ProgramOptions& options;
};

/// One command: what it takes, and which source and view it joins. main() declares all of them,
/// reads the command line, and runs the one that was named.
///
/// A new command is a file with its class, and a line in Commands.cpp.
class Command {
 public:
  /// The texts are constants. The example is a command line without the program's name.
  Command(const char* name, const char* description, const char* example)
      : name_(name), description_(description), example_(example) {}
  virtual ~Command();
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  const char* name() const noexcept { return name_; }
  const char* example() const noexcept { return example_; }
  /// Whether --json asks for JSON in place of text.
  virtual bool hasJson() const noexcept { return false; }

  /// Adds the command to the program's.
  void declare(CLI::App& app, ProgramOptions& options);
  /// Whether the command line names it.
  bool isChosen() const;

  /// Bad input throws InputError, of which main() makes the message and the exit status, as it does
  /// of OutputBuffer's errors. main() writes what is left in the buffer, then the warnings.
  virtual ExitStatus run(const Run& run) = 0;

 protected:
  /// Adds the command's own options and arguments; values are bound to its members.
  virtual void declareOptions(CLI::App& command) = 0;

 private:
  const char* name_;
  const char* description_;
  const char* example_;
  CLI::App* app_ = nullptr;
};

/// The argument FILE: a path, or "-" for standard input, which it also is where it is absent.
class FileArgument {
 public:
  void declare(CLI::App& command);
  const std::string& path() const noexcept { return path_; }

 private:
  std::string path_ = "-";
};

/// A command that shows what a source gives by a view.
class ViewCommand : public Command {
 public:
  using Command::Command;

  ExitStatus run(const Run& run) final;

 protected:
  void declareOptions(CLI::App& command) override { file_.declare(command); }
  virtual void show(Source& source, const Run& run) = 0;

 private:
  FileArgument file_;
};

/// Every command, in the order in which the help lists them.
std::vector<std::unique_ptr<Command>> allCommands();

}  // namespace tcamshow
