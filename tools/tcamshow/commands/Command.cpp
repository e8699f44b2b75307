#include "commands/Command.h"

#include <CLI/CLI.hpp>
#include <string>

#include "io/InputFile.h"
#include "sources/Formats.h"

namespace tcamshow {

Command::~Command() = default;

void Command::declare(CLI::App& app, ProgramOptions& options) {
  app_ = app.add_subcommand(name_, description_)->group("Commands");
  declareOptions(*app_);
  // These are options of the whole program. Here they make the command's help list them.
  if (hasJson()) {
    app_->add_flag("--json", options.json, "JSON Lines in place of the text");
  }
  auto apps = app_->get_subcommands([](const CLI::App*) { return true; });
  apps.push_back(app_);
  for (CLI::App* const each : apps) {
    each->add_flag("--trace", options.trace, "Trace what the library does, on standard error");
  }
  app_->footer("Example:\n  tcamshow " + std::string(example_));
}

bool Command::isChosen() const { return app_->parsed(); }

void FileArgument::declare(CLI::App& command) {
  command.add_option("FILE", path_, "The file to read; standard input when absent or -")
      ->option_text(" ")
      ->check([](const std::string& path) {
        return std::string(path.empty() ? "the name is empty; standard input is -" : "");
      });
}

ExitStatus ViewCommand::run(const Run& run) {
  auto const source = openAs(snapshotFormat(), InputFile(file_.path()), run.complaints);
  show(*source, run);
  return ExitStatus::done;
}

}  // namespace tcamshow
