// tcamshow: prints what a switch's TCAM holds.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstddef>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/Trace/Trace.h"
#include "commands/Command.h"
#include "io/Complaints.h"
#include "io/ExitStatus.h"
#include "io/InputError.h"
#include "io/Nearest.h"
#include "io/OutputBuffer.h"
#include "io/SafeText.h"

namespace tcamshow {
namespace {

using Commands = std::vector<std::unique_ptr<Command>>;

/// Writes a text and flushes it, so that a failed write is reported.
ExitStatus deliver(OutputBuffer& out, std::string_view text) {
  out.write(text);
  out.flush();
  return ExitStatus::done;
}

ExitStatus refuse(const std::string& message) {
  complain(safeText(message) + "\nTry 'tcamshow --help'.");
  return ExitStatus::commandLine;
}

/// The names of the commands that take --json: "ip, ip6 and mac".
std::string jsonCommands(const Commands& commands) {
  std::vector<std::string> names;
  for (auto const& command : commands) {
    if (command->hasJson()) names.emplace_back(command->name());
  }
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i != 0) text += i + 1 == names.size() ? " and " : ", ";
    text += names[i];
  }
  return text;
}

void declare(CLI::App& app, const Commands& commands, ProgramOptions& options) {
  app.set_version_flag("--version", "tcamshow " TCAMSHOW_VERSION);
  app.require_subcommand(1);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.add_flag("--json", options.json,
               "With " + jsonCommands(commands) + ": JSON Lines in place of the text");
  app.add_flag("--trace", options.trace, "Trace what the library does, on standard error");
  // Options of the whole program may stand after the command too.
  app.fallthrough();
  std::string examples = "Examples:\n";
  for (auto const& command : commands) {
    command->declare(app, options);
    (examples += "  tcamshow ") += command->example();
    examples += '\n';
  }
  app.footer(
      examples +
      "\nExit status: 0; 1 when the input is bad or the output cannot be written; 2 when the\n"
      "command line is wrong; 3 when the answer is yes: to diff, or to an option such as "
      "--fail-on.");
}

/// The innermost app that the command line names: the program or a command.
const CLI::App& innermost(const CLI::App& app) {
  auto const inside = app.get_subcommands();
  return inside.empty() ? app : innermost(*inside.front());
}

/// The message for a word that no app takes: an unknown option, an unknown command, or one argument
/// too many.
std::string unknownWord(const CLI::App& app, const std::string& word, bool isFirst) {
  std::vector<std::string> known;
  bool const isOption = word.size() > 1 && word.starts_with('-');
  const CLI::App& at = isFirst ? app : innermost(app);
  auto const choices = at.get_subcommands([](const CLI::App*) { return true; });
  if (isOption) {
    for (const CLI::App* const each : {&app, &at}) {
      for (const CLI::Option* const option : each->get_options()) {
        for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
      }
    }
  } else {
    for (const CLI::App* const choice : choices) known.push_back(choice->get_name());
  }
  std::sort(known.begin(), known.end());
  known.erase(std::unique(known.begin(), known.end()), known.end());
  std::string const what = isOption          ? "no such option: "
                           : choices.empty() ? "one argument too many: "
                                             : "no such command: ";
  std::vector<std::string_view> const names(known.begin(), known.end());
  return what + word + suggestion(word, names);
}

/// Whether `word` stands before the first command, where a command was expected.
bool isBeforeCommand(const CLI::App& app, std::string_view word,
                     std::span<const char* const> arguments) {
  auto const commands = app.get_subcommands([](const CLI::App*) { return true; });
  auto const isCommand = [&](std::string_view argument) {
    return std::any_of(commands.begin(), commands.end(),
                       [&](const CLI::App* each) { return each->get_name() == argument; });
  };
  auto const end = std::find_if(arguments.begin(), arguments.end(), isCommand);
  return std::find(arguments.begin(), end, word) != end;
}

std::string messageOf(const CLI::App& app, const CLI::ParseError& error,
                      std::span<const char* const> arguments) {
  // The parser reports a missing command before it reports an unknown word in its place.
  bool const isRequired = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (isRequired || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    auto const unknown = app.remaining(true);
    if (!unknown.empty()) {
      const std::string& word = unknown.front();
      return unknownWord(app, word, isBeforeCommand(app, word, arguments));
    }
  }
  if (isRequired && &innermost(app) == &app) return "a command is required";
  return error.what();
}

/// Runs the command. Prints its output first, then its warnings, then its error.
ExitStatus runCommand(Command& command, const Run& run) {
  ExitStatus status = ExitStatus::done;
  std::string message;
  try {
    status = command.run(run);
  } catch (const InputError& error) {
    message = error.what();
    status = ExitStatus::failure;
  } catch (const CommandLineError& error) {
    return refuse(error.what());
  }
  try {
    run.out.flush();
  } catch (const OutputError& error) {
    complain(error.what());
    status = ExitStatus::failure;
  } catch (const ClosedPipe&) {
    if (message.empty()) throw;
  }
  run.complaints.tell();
  if (!message.empty()) complain(message);
  return status;
}

ExitStatus run(int argc, char** argv, OutputBuffer& out) {
  CLI::App app("Prints what a switch's TCAM holds, from a snapshot.", "tcamshow");
  ProgramOptions options;
  Commands const commands = allCommands();
  declare(app, commands, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return deliver(out, app.help());
  } catch (const CLI::CallForVersion& version) {
    return deliver(out, std::string(version.what()) + "\n");
  } catch (const CLI::ParseError& error) {
    return refuse(messageOf(app, error, {argv, static_cast<std::size_t>(argc)}));
  }
  auto const chosen = std::find_if(commands.begin(), commands.end(),
                                   [](auto const& command) { return command->isChosen(); });
  if (options.json && !(*chosen)->hasJson()) {
    return refuse("--json goes with " + jsonCommands(commands) + " only");
  }
  if (options.trace) Zel::TraceControl::levelIs("VelmorTcamCliTypes", 8, true);
  Complaints complaints;
  return runCommand(**chosen, {out, complaints, options});
}

ExitStatus guarded(int argc, char** argv) {
  try {
    OutputBuffer out(STDOUT_FILENO);
    return run(argc, argv, out);
  } catch (const ClosedPipe&) {
    return ExitStatus::done;
  } catch (const OutputError& error) {
    complain(error.what());
  } catch (const std::bad_alloc&) {
    complain("out of memory");
  } catch (const std::exception& error) {
    complain(safeText(error.what()));
  }
  return ExitStatus::failure;
}

}  // namespace
}  // namespace tcamshow

int main(int argc, char** argv) {
  // write() then reports a closed pipe, and the program can end quietly.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  return static_cast<int>(tcamshow::guarded(argc, argv));
}
