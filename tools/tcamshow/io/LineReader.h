// Lines of a file or a pipe, in constant memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "io/InputFile.h"

namespace tcamshow {

/// Reads the lines of an input, one at a time. The buffer never grows beyond the longest line that
/// is allowed.
///
///     LineReader lines(InputFile(path));
///     for (std::string_view line; lines.next(line);) use(line);
class LineReader {
 public:
  /// In bytes, without the line break.
  static constexpr std::size_t longestLine = std::size_t{1} << 20;
  /// The number of bytes behind a line that may be read. They mean nothing.
  static constexpr std::size_t padding = 64;

  explicit LineReader(InputFile file);

  /// Gives the next line without its line feed. False at the end of the input. The view is valid
  /// until the next call. The last line may lack its line feed. Throws InputError if the line is
  /// too long or the input cannot be read.
  bool next(std::string_view& line);
  /// The number of the last line that next() gave, counted from 1.
  std::uint64_t lineNumber() const noexcept { return lineNumber_; }
  const std::string& fileName() const noexcept { return file_.name(); }

  /// Throws InputError for the last line that next() gave.
  [[noreturn]] void fail(const std::string& message) const;

 private:
  void makeRoom();

  InputFile file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_;   // without the padding
  std::size_t begin_ = 0;  // [begin_, end_): read, but not given yet
  std::size_t end_ = 0;
  std::uint64_t lineNumber_ = 0;
  bool atEnd_ = false;
};

}  // namespace tcamshow
