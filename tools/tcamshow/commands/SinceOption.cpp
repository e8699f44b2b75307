#include "commands/SinceOption.h"

#include <utility>

#include "commands/CommandLineError.h"

namespace tcamshow {

void SinceOption::declare(Options& options) {
  options.text("--since", path_, "BASELINE",
               "Hits and bytes since this older file; - for standard input");
}

std::unique_ptr<Source> SinceOption::open(const SourceFile& file, Complaints& complaints) {
  if (!path_) return file.open(complaints);
  if (path_->empty()) throw CommandLineError("--since: the name is empty; standard input is -");
  if (*path_ == "-" && file.isStandardInput()) {
    throw CommandLineError("--since and FILE are both standard input");
  }
  baseline_ = std::make_unique<Since>(*file.open(*path_, complaints));
  return withSince(file.open(complaints), *baseline_, complaints);
}

}  // namespace tcamshow
