// Buffered output to a descriptor.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace tcamshow {

/// Collects text and writes it in large pieces, in order. Call flush() at the end: the destructor
/// drops the text that is still in the buffer, because it could not report a failed write.
///
/// If the descriptor is a terminal, each line is written as soon as it is complete.
///
/// write() and flush() throw ClosedPipe if the reader of a pipe has gone, and OutputError if the
/// text cannot be written. The text in the buffer is then dropped. SIGPIPE must be ignored.
///
///     OutputBuffer out(STDOUT_FILENO);
///     out.write("Stage ingress\n");
///     out.flush();
class OutputBuffer {
 public:
  static constexpr std::size_t capacity = std::size_t{64} << 10;

  /// The caller keeps the descriptor, and closes it. It may be non-blocking.
  explicit OutputBuffer(int descriptor);

  void write(std::string_view text) {
    if (text.size() > room_ - size_) [[unlikely]] {
      writeSlow(text);
      return;
    }
    std::memcpy(buffer_.get() + size_, text.data(), text.size());
    size_ += text.size();
  }
  void flush();
  int descriptor() const noexcept { return descriptor_; }

 private:
  void writeSlow(std::string_view text);
  void keep(std::string_view text);
  void writeAll(std::string_view text);

  int descriptor_;
  bool isTerminal_;
  std::unique_ptr<char[]> buffer_;
  std::size_t size_ = 0;
  // The number of bytes that write() may fill by itself. 0 for a terminal: writeSlow() must look
  // for the ends of lines.
  std::size_t room_;
};

}  // namespace tcamshow
