// A file that is open for reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tcamshow {

/// A file, or standard input, read from its beginning to its end. A byte order mark (U+FEFF) at the
/// beginning is skipped: every format may have one, and none sees it.
class InputFile {
 public:
  /// Opens `path`; "-" means standard input. Throws InputError.
  explicit InputFile(const std::string& path);
  ~InputFile();
  InputFile(InputFile&& from) noexcept;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// As the command line gave it.
  const std::string& name() const noexcept { return name_; }
  /// At most `size` bytes; 0 at the end. Waits where the descriptor would not, and goes on after a
  /// signal. Throws InputError, which names `line`.
  std::size_t read(char* buffer, std::size_t size, std::uint64_t line);
  /// The first bytes of the file, a few of them at least where it has so many. Only before the
  /// first read(), which still gives them. The view is good until then.
  std::string_view start();

 private:
  static constexpr std::size_t startSize = 1024;

  std::size_t readNow(char* buffer, std::size_t size, std::uint64_t line);
  void startRead();

  // NOLINTNEXTLINE(modernize-use-default-member-init): its constant needs another header
  int descriptor_;
  std::string name_;
  // What was read to find out how the file begins, and is not given yet.
  char start_[startSize] = {};
  std::size_t startBegin_ = 0;
  std::size_t startEnd_ = 0;
  bool isStarted_ = false;
};

}  // namespace tcamshow
