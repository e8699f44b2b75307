// The file that a command reads, of any format.
#pragma once

#include <memory>
#include <string>

#include "commands/Options.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// The argument FILE and the option --from, which says its format where it is not to be recognised.
class SourceFile {
 public:
  /// Declares both.
  void declare(Options& options);
  /// Declares --from alone, for a command that names its files itself.
  void declareFormat(Options& options);

  bool isStandardInput() const noexcept { return path_ == "-"; }

  /// Throws InputError.
  std::unique_ptr<Source> open(Complaints& complaints) const { return open(path_, complaints); }
  std::unique_ptr<Source> open(const std::string& path, Complaints& complaints) const;

 private:
  std::string path_ = "-";
  std::string format_;
};

}  // namespace tcamshow
