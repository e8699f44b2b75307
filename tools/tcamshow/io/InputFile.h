// A file that is open for reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "io/Gzip.h"

namespace tcamshow {

/// A file, or standard input, that is read from beginning to end. If gzip has compressed it, it is
/// unpacked. A byte order mark (U+FEFF) at the beginning is skipped, whatever the format.
class InputFile {
 public:
  /// Opens `path`; "-" means standard input. Throws InputError.
  explicit InputFile(const std::string& path);
  ~InputFile();
  InputFile(InputFile&& from) noexcept;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// The path, as the command line gave it.
  const std::string& name() const noexcept { return name_; }
  /// Reads at most `size` bytes and returns their number; 0 at the end. Waits for input, also on a
  /// non-blocking descriptor, and goes on after a signal. Throws InputError, which names `line`.
  std::size_t read(char* buffer, std::size_t size, std::uint64_t line);
  /// The first bytes of the file: at least a few, if the file has so many. Call it before the first
  /// read(), which gives these bytes again. The view is valid until that call, or startMore().
  std::string_view start();
  /// Waits for more bytes of start(); false where the file has no more, or start() is long enough
  /// to tell any format.
  bool startMore();

 private:
  static constexpr std::size_t startSize = 4096;

  std::size_t readNow(char* buffer, std::size_t size, std::uint64_t line);
  std::size_t readPacked(char* buffer, std::size_t size, std::uint64_t line) const;
  void startRead();

  // NOLINTNEXTLINE(modernize-use-default-member-init): its constant needs another header
  int descriptor_;
  std::string name_;
  // The bytes that start() has read, and that read() has not given yet.
  char start_[startSize] = {};
  std::size_t startBegin_ = 0;
  std::size_t startEnd_ = 0;
  bool isStarted_ = false;
  std::unique_ptr<Gzip> gzip_;  // null where the file is not compressed
};

}  // namespace tcamshow
