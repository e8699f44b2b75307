#include <string>
#include <string_view>
#include <vector>

#include "commands/Commands.h"
#include "io/Nearest.h"
#include "io/SafeText.h"
#include "snapshot/EntryStore.h"
#include "snapshot/SnapshotWriter.h"
#include "snapshot/StoreSource.h"
#include "sources/Formats.h"

namespace tcamshow {
namespace {

/// `import [FORMAT] [FILE]`
class ImportCommand final : public Command {
 public:
  ImportCommand()
      : Command("import", "Write a snapshot made from another format",
                "import openconfig acl.json >acl.jsonl") {}

  ExitStatus run(const Run& run) override {
    const Format* format = nullptr;
    std::string path = second_.empty() ? "-" : second_;
    if (!first_.empty()) {
      format = formatByName(first_);
      if (format == nullptr) {
        if (!second_.empty()) failFormat(first_);
        path = first_;
      }
    }
    OpenedSource const opened = openSource(path, format, run.complaints);
    if (opened.format->isReadFirst) {
      EntryStore const store(*opened.source);
      writeSnapshot(*storeSource(store, run.complaints), run.out);
    } else {
      writeSnapshot(*opened.source, run.out);
    }
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.word("FORMAT", first_, "The file's format; recognised when absent");
    options.word("FILE", second_, "The file to read; standard input when absent or -");
  }

  std::string notes() const override {
    std::string text = "Formats:\n";
    for (const Format& format : allFormats()) {
      std::string line = "  " + std::string(format.name);
      line.append(30 - line.size(), ' ');
      ((text += line) += format.description) += '\n';
    }
    return text + '\n';
  }

  [[noreturn]] static void failFormat(const std::string& name) {
    std::vector<std::string_view> names;
    for (const Format& format : allFormats()) names.push_back(format.name);
    throw CommandLineError("no such format: " + name + suggestion(name, names));
  }

  // One word alone is a format or a file.
  std::string first_;
  std::string second_;
};

}  // namespace

std::unique_ptr<Command> importCommand() { return std::make_unique<ImportCommand>(); }

}  // namespace tcamshow
