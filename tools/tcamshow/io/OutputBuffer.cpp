#include "io/OutputBuffer.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "io/InputError.h"

namespace tcamshow {

OutputBuffer::OutputBuffer(int descriptor) : descriptor_(descriptor), buffer_(new char[capacity]) {}

void OutputBuffer::flush() {
  std::size_t const size = size_;
  size_ = 0;
  writeAll({buffer_.get(), size});
}

void OutputBuffer::writeSlow(std::string_view text) {
  flush();
  if (text.size() > capacity) {
    writeAll(text);
    return;
  }
  std::memcpy(buffer_.get(), text.data(), text.size());
  size_ = text.size();
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
