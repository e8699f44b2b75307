// Buffered output to a descriptor.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace tcamshow {

/// Collects text and writes it in large pieces, in order. What is left in it when it is destroyed
/// is dropped: only flush() tells whether the text could be written.
///
/// A terminal gets each line as soon as it is whole: somebody watches.
///
/// write() and flush() throw ClosedPipe when the reader of a pipe has gone, OutputError when the
/// text cannot be written; what was in the buffer is dropped then. SIGPIPE must be ignored.
///
///     OutputBuffer out(STDOUT_FILENO);
///     out.write("Stage ingress\n");
///     out.flush();
class OutputBuffer {
 public:
  static constexpr std::size_t capacity = std::size_t{64} << 10;

  /// The descriptor stays the caller's. It may be non-blocking.
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
  // The bytes that write() itself may fill. For a terminal there is never room: writeSlow() looks
  // for the line's end.
  std::size_t room_;
};

}  // namespace tcamshow
