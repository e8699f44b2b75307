#include "io/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "io/InputError.h"

namespace tcamshow {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string errorText(int errorNumber) { return std::generic_category().message(errorNumber); }

}  // namespace

InputFile::InputFile(const std::string& path) : descriptor_(STDIN_FILENO), name_("<stdin>") {
  if (path == "-") return;
  name_ = path;
  do {
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  } while (descriptor_ < 0 && errno == EINTR);
  if (descriptor_ < 0) throw InputError(name_, 0, "cannot open: " + errorText(errno));
}

InputFile::InputFile(InputFile&& from) noexcept
    : descriptor_(std::exchange(from.descriptor_, STDIN_FILENO)),
      name_(std::move(from.name_)),
      startBegin_(from.startBegin_),
      startEnd_(from.startEnd_),
      isStarted_(from.isStarted_) {
  std::memcpy(start_, from.start_, from.startEnd_);
}

InputFile::~InputFile() {
  if (descriptor_ != STDIN_FILENO) ::close(descriptor_);
}

std::size_t InputFile::read(char* buffer, std::size_t size, std::uint64_t line) {
  startRead();
  if (startBegin_ == startEnd_) return readNow(buffer, size, line);
  std::size_t const count = std::min(size, startEnd_ - startBegin_);
  std::memcpy(buffer, start_ + startBegin_, count);
  startBegin_ += count;
  return count;
}

std::string_view InputFile::start() {
  startRead();
  return {start_ + startBegin_, startEnd_ - startBegin_};
}

std::size_t InputFile::readNow(char* buffer, std::size_t size, std::uint64_t line) {
  for (;;) {
    ssize_t const count = ::read(descriptor_, buffer, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EINTR) continue;
    if (errno == EAGAIN) {
      pollfd waiting{descriptor_, POLLIN, 0};
      ::poll(&waiting, 1, -1);
      continue;
    }
    throw InputError(name_, line, "cannot read: " + errorText(errno));
  }
}

void InputFile::startRead() {
  if (isStarted_) return;
  isStarted_ = true;
  // A pipe may give less than the mark at once.
  for (;;) {
    std::string_view const read(start_, startEnd_);
    if (read.size() >= byteOrderMark.size() || !byteOrderMark.starts_with(read)) break;
    std::size_t const count = readNow(start_ + startEnd_, startSize - startEnd_, 0);
    if (count == 0) break;
    startEnd_ += count;
  }
  if (std::string_view(start_, startEnd_).starts_with(byteOrderMark)) {
    startBegin_ = byteOrderMark.size();
  }
}

}  // namespace tcamshow
