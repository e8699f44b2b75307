// The commands that print a table.
#pragma once

#include "commands/Command.h"
#include "commands/SinceOption.h"

namespace tcamshow {

/// Prints a table, as text or as JSON Lines.
class TableCommand final : public Command {
 public:
  TableCommand(const char* name, const char* description, const char* example, Table table)
      : Command(name, description, example), table_(table) {}

  bool hasJson() const noexcept override { return true; }
  ExitStatus run(const Run& run) override;

 private:
  void declareOptions(Options& options) override;

  Table table_;
  SelectionOptions selection_;
  SinceOption since_;
  SourceFile file_;
};

}  // namespace tcamshow
