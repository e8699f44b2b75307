#include "io/OutputBuffer.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "io/InputError.h"

namespace tcamshow {

OutputBuffer::OutputBuffer(int descriptor)
    : descriptor_(descriptor),
      isTerminal_(::isatty(descriptor) == 1),
      buffer_(new char[capacity]),
      room_(isTerminal_ ? 0 : capacity) {}

void OutputBuffer::flush() {
  std::size_t const size = size_;
  size_ = 0;
  if (isTerminal_) room_ = 0;
  writeAll({buffer_.get(), size});
}

void OutputBuffer::writeSlow(std::string_view text) {
  if (isTerminal_) {
    std::size_t const end = text.rfind('\n') + 1;  // 0 where no line ends
    if (end != 0) {
      keep(text.substr(0, end));
      flush();
      text.remove_prefix(end);
    }
  }
  keep(text);
  if (isTerminal_) room_ = size_;
}

void OutputBuffer::keep(std::string_view text) {
  if (text.size() > capacity - size_) flush();
  if (text.size() > capacity) {
    writeAll(text);
    return;
  }
  std::memcpy(buffer_.get() + size_, text.data(), text.size());
  size_ += text.size();
}

void OutputBuffer::writeAll(std::string_view text) {
  while (!text.empty()) {
    ssize_t const count = ::write(descriptor_, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      pollfd waiting{descriptor_, POLLOUT, 0};
      ::poll(&waiting, 1, -1);
    } else if (errno == EPIPE) {
      throw ClosedPipe();
    } else if (errno != EINTR) {
      throw OutputError(errno);
    }
  }
}

}  // namespace tcamshow
