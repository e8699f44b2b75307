// The base of all commands.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commands/CommandLineError.h"
#include "commands/Options.h"
#include "commands/SelectionOptions.h"
#include "commands/SourceFile.h"
#include "io/Complaints.h"
#include "io/ExitStatus.h"
#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// The options of the whole program. They may stand before or after the command.
struct ProgramOptions {
  bool json = false;
  bool trace = false;
};

/// The surroundings of one run of a command.
struct Run {
  OutputBuffer& out;
  Complaints& complaints;
  const ProgramOptions& options;
};

/// One command: its arguments, and the source and the view that it joins. main() declares all
/// commands, reads the command line, and runs the command that it names.
///
/// To add a command, write a file with its class, declare its function in Commands.h, and list it
/// in Commands.cpp.
class Command {
 public:
  /// The texts must outlive the command. `example` is a command line without the program's name.
  Command(const char* name, const char* description, const char* example)
      : name_(name), description_(description), example_(example) {}
  virtual ~Command();
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  const char* name() const noexcept { return name_; }
  const char* example() const noexcept { return example_; }
  /// Whether the command takes --json, which prints JSON instead of text.
  virtual bool hasJson() const noexcept { return false; }

  /// Adds the command to the program's command line.
  void declare(CLI::App& app, ProgramOptions& options);
  /// Whether the command line names it.
  bool isChosen() const;

  /// Throws InputError if the input is bad, CommandLineError if the command line is wrong. main()
  /// makes the message and the exit status from them, and from the errors of OutputBuffer. After
  /// the run, main() flushes the buffer and prints the warnings.
  virtual ExitStatus run(const Run& run) = 0;

 protected:
  /// What the help says below the options, before the example: whole lines, or nothing.
  virtual std::string notes() const { return {}; }
  /// Adds the command's own options and arguments. The command line sets members of this object.
  virtual void declareOptions(Options& options) = 0;

 private:
  const char* name_;
  const char* description_;
  const char* example_;
  CLI::App* app_ = nullptr;
};

/// A command that shows by a view what a source gives.
class ViewCommand : public Command {
 public:
  using Command::Command;

  ExitStatus run(const Run& run) final;

 protected:
  void declareOptions(Options& options) override {
    selection_.declareWhere(options);
    file_.declare(options);
  }
  virtual void show(Source& source, const Run& run) = 0;

 private:
  SelectionOptions selection_;
  SourceFile file_;
};

/// All commands, in the order of the help.
std::vector<std::unique_ptr<Command>> allCommands();

}  // namespace tcamshow
