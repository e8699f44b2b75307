#include <CLI/CLI.hpp>
#include <string>

#include "commands/Commands.h"
#include "io/InputFile.h"
#include "snapshot/SnapshotWriter.h"
#include "sources/Formats.h"

namespace tcamshow {
namespace {

/// `import FORMAT FILE`
class ImportCommand final : public Command {
 public:
  ImportCommand()
      : Command("import", "Write a snapshot made from another format",
                "import openconfig acl.json >acl.jsonl") {}

  ExitStatus run(const Run& run) override {
    const Choice* choice = choices_.data();
    while (!choice->app->parsed()) ++choice;
    writeSnapshot(*openAs(*choice->format, InputFile(file_.path()), run.complaints), run.out);
    return ExitStatus::done;
  }

 private:
  struct Choice {
    const Format* format;
    CLI::App* app;
  };

  void declareOptions(CLI::App& command) override {
    command.require_subcommand(1);
    auto const formatter = std::make_shared<CLI::Formatter>();
    formatter->label("SUBCOMMAND", "FORMAT");
    command.formatter(formatter);
    for (const Format& format : importFormats()) {
      std::string const name(format.name);
      CLI::App* const choice =
          command.add_subcommand(name, std::string(format.description))->group("Formats");
      file_.declare(*choice);
      choice->footer("Example:\n  tcamshow import " + name + " FILE | tcamshow ip");
      choices_.push_back({&format, choice});
    }
  }

  std::vector<Choice> choices_;
  FileArgument file_;
};

}  // namespace

std::unique_ptr<Command> importCommand() { return std::make_unique<ImportCommand>(); }

}  // namespace tcamshow
