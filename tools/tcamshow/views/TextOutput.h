// Text for people.
#pragma once

#include <string>
#include <string_view>

#include "io/OutputBuffer.h"
#include "io/SafeText.h"

namespace tcamshow {

/// What every view writes its text through: unsafe characters in it are escaped, see SafeText.h,
/// and no other byte is changed. Cells keep the width that their text had before.
///
/// A line feed stands: it ends a line of the view. No text of an entry or a group has one.
class TextOutput {
 public:
  /// `out` outlives it.
  explicit TextOutput(OutputBuffer& out) : out_(out) {}

  /// `text` ends with a whole character. Throws as OutputBuffer::write does.
  void write(std::string_view text) {
    if (safeAsciiSize(text, LineBreaks::kept) == text.size()) [[likely]] {
      out_.write(text);
      return;
    }
    escaped_.clear();
    appendSafe(escaped_, text, LineBreaks::kept);
    out_.write(escaped_);
  }

  /// As write(), of a text that the program itself holds: it is safe.
  void writeOwn(std::string_view text) { out_.write(text); }

 private:
  OutputBuffer& out_;
  std::string escaped_;
};

}  // namespace tcamshow
