#include "commands/Command.h"

#include <CLI/CLI.hpp>
#include <string>

namespace tcamshow {

Command::~Command() = default;

void Command::declare(CLI::App& app, ProgramOptions& options) {
  app_ = app.add_subcommand(name_, description_)->group("Commands");
  Options own(*app_);
  declareOptions(own);
  // These are options of the whole program. Here they make the command's help list them.
  if (hasJson()) {
    app_->add_flag("--json", options.json, "JSON Lines in place of the text");
  }
  auto apps = app_->get_subcommands([](const CLI::App*) { return true; });
  apps.push_back(app_);
  for (CLI::App* const each : apps) {
    each->add_flag("--trace", options.trace, "Trace what the library does, on standard error");
  }
  app_->footer(notes() + "Example:\n  tcamshow " + std::string(example_));
}

bool Command::isChosen() const { return app_->parsed(); }

ExitStatus ViewCommand::run(const Run& run) {
  Selection const selection = selection_.read();
  auto const source = selected(file_.open(run.complaints), selection, Table::tcam, run.complaints);
  show(*source, run);
  return ExitStatus::done;
}

}  // namespace tcamshow
