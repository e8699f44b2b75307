// The options that say which entries a command shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "commands/Options.h"
#include "questions/Selection.h"

namespace tcamshow {

/// --where, and for commands whose entries have an order --sort, --limit and --count.
class SelectionOptions {
 public:
  void declareWhere(Options& options);
  void declareAll(Options& options);

  /// What the command line asks for. Throws CommandLineError, which names the column of the fault.
  Selection read() const;
  /// Whether only the number of entries is asked for.
  bool isCount() const noexcept { return isCount_; }

 private:
  std::optional<std::string> where_;
  std::optional<std::string> sort_;
  std::string limit_;
  bool isCount_ = false;
};

}  // namespace tcamshow
