// The commands that print a table.
#pragma once

#include "commands/Command.h"
#include "views/Tables.h"

namespace tcamshow {

/// Prints a table, as text or as JSON Lines.
class TableCommand final : public ViewCommand {
 public:
  TableCommand(const char* name, const char* description, const char* example, Table table)
      : ViewCommand(name, description, example), table_(table) {}

  bool hasJson() const noexcept override { return true; }

 private:
  void show(Source& source, const Run& run) override {
    showTable(source, run.out, table_, run.options.json ? TableForm::jsonLines : TableForm::text);
  }

  Table table_;
};

}  // namespace tcamshow
