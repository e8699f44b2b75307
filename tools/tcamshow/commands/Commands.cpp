#include <string>
#include <vector>

#include "commands/Command.h"
#include "io/Complain.h"
#include "io/LineReader.h"
#include "sources/ImportClassbench.h"
#include "sources/ImportOpenconfig.h"
#include "views/Inspect.h"
#include "views/ShowTable.h"
#include "views/ShowUsage.h"

namespace tcamshow {

Command::~Command() = default;

namespace {

void importOpenconfigWarning(InputFile& file, OutputBuffer& out) {
  std::vector<std::string> warnings;
  importOpenconfig(file, out, warnings);
  for (const std::string& warning : warnings) complain(warning);
}

/// `import FORMAT FILE`: what the formats share.
class ImportCommand : public Command {
 public:
  using Import = void (*)(InputFile&, OutputBuffer&);

  ImportCommand(const char* format, const char* description, Import import)
      : format_(format), description_(description), import_(import) {}

  CLI::App* declare(CLI::App& app) override {
    auto const existing = app.get_subcommands(
        [](const CLI::App* command) { return command->get_name() == "import"; });
    CLI::App* const import =
        existing.empty() ? app.add_subcommand("import", "Write a snapshot made from another format")
                         : existing.front();
    import->require_subcommand(1);
    CLI::App* const command = import->add_subcommand(format_, description_);
    declareFile(*command, file_);
    return command;
  }

  void run(OutputBuffer& out) override {
    InputFile file(file_);
    import_(file, out);
  }

 private:
  const char* format_;
  const char* description_;
  Import import_;
  std::string file_;
};

/// `NAME FILE`: a command that reads a snapshot.
class SnapshotCommand : public Command {
 public:
  SnapshotCommand(const char* name, const char* description)
      : name_(name), description_(description) {}

  CLI::App* declare(CLI::App& app) override {
    CLI::App* const command = app.add_subcommand(name_, description_);
    declareOptions(*command);
    declareFile(*command, file_);
    return command;
  }

  void run(OutputBuffer& out) override {
    InputFile file(file_);
    show(file, out);
  }

 private:
  virtual void declareOptions(CLI::App&) {}
  virtual void show(InputFile& file, OutputBuffer& out) = 0;

  const char* name_;
  const char* description_;
  std::string file_;
};

/// Prints a table, as text or as JSON Lines.
class TableCommand : public SnapshotCommand {
 public:
  using Show = void (*)(InputFile&, OutputBuffer&, TableForm);

  TableCommand(const char* name, const char* description, Show showTable)
      : SnapshotCommand(name, description), show_(showTable) {}

  bool jsonIsWanted() override {
    form_ = TableForm::jsonLines;
    return true;
  }

 private:
  void show(InputFile& file, OutputBuffer& out) override { show_(file, out, form_); }

  Show show_;
  TableForm form_ = TableForm::text;
};

class UsageCommand : public SnapshotCommand {
 public:
  UsageCommand() : SnapshotCommand("usage", "What uses the TCAM: stages, groups and features") {}

 private:
  void declareOptions(CLI::App& command) override {
    command.add_flag("--detail", detail_, "The entries of each feature too");
  }
  void show(InputFile& file, OutputBuffer& out) override { showUsage(file, out, detail_); }

  bool detail_ = false;
};

class SummaryCommand : public SnapshotCommand {
 public:
  SummaryCommand() : SnapshotCommand("summary", "The groups by name, each with its features") {}

 private:
  void show(InputFile& file, OutputBuffer& out) override { showSummary(file, out); }
};

/// `inspect FILE`, `inspect --types`
class InspectCommand : public Command {
 public:
  CLI::App* declare(CLI::App& app) override {
    CLI::App* const command =
        app.add_subcommand("inspect", "The usage tree and the summary, attribute by attribute");
    command->add_flag("--types", types_, "The library's types in their place; reads no file");
    declareFile(*command, file_);
    return command;
  }

  void run(OutputBuffer& out) override {
    if (types_) return inspectTypes(out);
    InputFile file(file_);
    inspect(file, out);
  }

 private:
  bool types_ = false;
  std::string file_;
};

}  // namespace

std::vector<std::unique_ptr<Command>> allCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<TableCommand>("ip", "The IPv4 table", showIp));
  commands.push_back(std::make_unique<TableCommand>("ip6", "The IPv6 table", showIp6));
  commands.push_back(std::make_unique<TableCommand>("mac", "The MAC table", showMac));
  commands.push_back(std::make_unique<TableCommand>("tcam", "Every entry, in one line", showTcam));
  commands.push_back(std::make_unique<UsageCommand>());
  commands.push_back(std::make_unique<SummaryCommand>());
  commands.push_back(std::make_unique<InspectCommand>());
  commands.push_back(std::make_unique<ImportCommand>(
      "classbench", "Filter sets of packet-classification research", importClassbench));
  commands.push_back(std::make_unique<ImportCommand>("openconfig", "ACL documents of OpenConfig",
                                                     importOpenconfigWarning));
  return commands;
}

}  // namespace tcamshow
