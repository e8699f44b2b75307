// Lines of a file or a pipe, in constant memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "io/InputFile.h"

namespace tcamshow {

/// The lines of an input, one at a time. The buffer never grows beyond the longest line that is
/// allowed, whatever the input's lines are.
///
///     LineReader lines(InputFile(path));
///     for (std::string_view line; lines.next(line);) use(line);
class LineReader {
 public:
  /// In bytes, without the line break.
  static constexpr std::size_t longestLine = std::size_t{1} << 20;
  /// The bytes after a line that may be read, though they are none of it.
  static constexpr std::size_t padding = 64;

  explicit LineReader(InputFile file);

  /// The next line without its line break (a line feed); false at the end. The view is good until
  /// the next call. The last line need not end in a line break. Throws InputError when the line is
  /// too long or the input cannot be read.
  bool next(std::string_view& line);
  /// The number of the line that next() gave last, from 1.
  std::uint64_t lineNumber() const noexcept { return lineNumber_; }
  const std::string& fileName() const noexcept { return file_.name(); }

  /// Throws the InputError that names the line given last.
  [[noreturn]] void fail(const std::string& message) const;

 private:
  void makeRoom();

  InputFile file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_;   // without the padding
  std::size_t begin_ = 0;  // what is read and not yet given
  std::size_t end_ = 0;
  std::uint64_t lineNumber_ = 0;
  bool atEnd_ = false;
};

}  // namespace tcamshow
