// The option that compares counters with an older snapshot.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "commands/Options.h"
#include "commands/SourceFile.h"
#include "questions/Since.h"

namespace tcamshow {

/// --since.
///
///     since_.declare(options);
///     auto const source = since_.open(file_, complaints);  // each entry knows what it counted
///     if (since_.baseline() != nullptr) title(since_.baseline()->header().takenAt);
class SinceOption {
 public:
  void declare(Options& options);
  bool isGiven() const noexcept { return path_.has_value(); }

  /// Opens the file; where the option is given, reads the baseline first, and puts it before the
  /// source. The source must not outlive this object. Throws InputError, and CommandLineError if
  /// both are standard input.
  std::unique_ptr<Source> open(const SourceFile& file, Complaints& complaints);
  /// The baseline that open() has read, or null.
  const Since* baseline() const noexcept { return baseline_.get(); }

 private:
  std::optional<std::string> path_;
  std::unique_ptr<Since> baseline_;
};

}  // namespace tcamshow
