// tcamshow: prints what a switch's TCAM holds, from a snapshot.
#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "Zel/Trace/Trace.h"
#include "commands/Command.h"
#include "io/Complain.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"

namespace tcamshow {
namespace {

constexpr int exitOk = 0;
constexpr int exitUsage = 2;

/// Writes what the command line asks for, which is not to be lost unnoticed; the exit status.
int deliver(OutputBuffer& out, std::string_view text) {
  out.write(text);
  out.flush();
  return exitOk;
}

int run(int argc, char** argv, OutputBuffer& out) {
  CLI::App app("Prints what a switch's TCAM holds, from a snapshot.", "tcamshow");
  app.set_version_flag("--version", "tcamshow " TCAMSHOW_VERSION);
  app.require_subcommand(1);
  bool isJson = false;
  app.add_flag("--json", isJson, "With ip, ip6, mac or tcam: JSON Lines in place of the table");
  bool isTraced = false;
  app.add_flag("--trace", isTraced, "Trace what the library does, on standard error");
  // Options of the whole program may stand after the command too.
  app.fallthrough();
  app.footer(
      "Exit status: 0; 1 when the input is bad or the output cannot be written; 2 when the\n"
      "command line is wrong.");

  auto const commands = allCommands();
  Command* chosen = nullptr;
  for (auto const& command : commands) {
    command->declare(app)->final_callback([&chosen, it = command.get()] { chosen = it; });
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return deliver(out, app.help());
  } catch (const CLI::CallForVersion& version) {
    return deliver(out, std::string(version.what()) + "\n");
  } catch (const CLI::RequiredError& error) {
    // An unknown word where a command is wanted is told as that.
    auto const unknown = app.remaining(true);
    std::string message = error.what();
    if (!unknown.empty()) {
      message = (unknown.front().starts_with('-') ? "no such option: " : "no such command: ") +
                unknown.front();
    }
    complain(message + "\nTry 'tcamshow --help'.");
    return exitUsage;
  } catch (const CLI::ParseError& error) {
    complain(std::string(error.what()) + "\nTry 'tcamshow --help'.");
    return exitUsage;
  }

  if (isJson && !chosen->jsonIsWanted()) {
    complain("--json goes with ip, ip6, mac and tcam only\nTry 'tcamshow --help'.");
    return exitUsage;
  }
  if (isTraced) Zel::TraceControl::levelIs("VelmorTcamCliTypes", 8, true);
  try {
    chosen->run(out);
  } catch (const InputError& error) {
    // What precedes the bad line comes out first.
    try {
      out.flush();
    } catch (const OutputError& outputError) {
      complain(outputError.what());
    } catch (const ClosedPipe&) {
    }
    complain(error.what());
    return exitFailure;
  }
  out.flush();
  return exitOk;
}

int guarded(int argc, char** argv) {
  try {
    OutputBuffer out(STDOUT_FILENO);
    return run(argc, argv, out);
  } catch (const ClosedPipe&) {
    return exitOk;
  } catch (const OutputError& error) {
    complain(error.what());
  } catch (const std::bad_alloc&) {
    complain("out of memory");
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return exitFailure;
}

}  // namespace
}  // namespace tcamshow

int main(int argc, char** argv) {
  // A closed pipe is told by write(), so that it can end the program quietly.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  return tcamshow::guarded(argc, argv);
}
