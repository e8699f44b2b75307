// The output of the views' text.
#pragma once

#include <string>
#include <string_view>

#include "io/OutputBuffer.h"
#include "io/SafeText.h"

namespace tcamshow {

/// Every view writes its text through this class. It escapes unsafe characters (see SafeText.h) and
/// changes no other byte: a cell keeps the blanks that it had for the text without escapes.
///
/// Line feeds stay: they end the lines of the view. No text of an entry or a group has one.
class TextOutput {
 public:
  /// `out` must outlive this object.
  explicit TextOutput(OutputBuffer& out) : out_(out) {}

  /// `text` must end with a whole character. Throws the errors of OutputBuffer::write.
  void write(std::string_view text) {
    if (safeAsciiSize(text, LineBreaks::kept) == text.size()) [[likely]] {
      out_.write(text);
      return;
    }
    escaped_.clear();
    appendSafe(escaped_, text, LineBreaks::kept);
    out_.write(escaped_);
  }

  /// As write(), for a text of the program itself, which is safe.
  void writeOwn(std::string_view text) { out_.write(text); }

 private:
  OutputBuffer& out_;
  std::string escaped_;
};

}  // namespace tcamshow
