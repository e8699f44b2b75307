#include "io/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
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
      isStarted_(from.isStarted_),
      gzip_(std::move(from.gzip_)) {
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

bool InputFile::startMore() {
  startRead();
  if (startEnd_ == startSize) return false;
  std::size_t const count = readNow(start_ + startEnd_, startSize - startEnd_, 0);
  startEnd_ += count;
  return count != 0;
}

std::size_t InputFile::readNow(char* buffer, std::size_t size, std::uint64_t line) {
  if (!gzip_) return readPacked(buffer, size, line);
  try {
    return gzip_->read(buffer, size, [this, line](char* packed, std::size_t room) {
      return readPacked(packed, room, line);
    });
  } catch (const InputError&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw InputError(name_, line, error.what());
  }
}

std::size_t InputFile::readPacked(char* buffer, std::size_t size, std::uint64_t line) const {
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
  auto const readSome = [this](std::size_t size) {
    while (startEnd_ < size) {
      std::size_t const count = readNow(start_ + startEnd_, startSize - startEnd_, 0);
      if (count == 0) return;
      startEnd_ += count;
    }
  };
  readSome(1);
  if (startEnd_ != 0 && start_[0] == '\x1F') readSome(2);
  if (Gzip::resembles({start_, startEnd_})) {
    gzip_ = std::make_unique<Gzip>(std::string_view(start_, startEnd_));
    startEnd_ = 0;
    readSome(1);
  }
  if (startEnd_ != 0 && start_[0] == byteOrderMark[0]) readSome(byteOrderMark.size());
  if (std::string_view(start_, startEnd_).starts_with(byteOrderMark)) {
    startBegin_ = byteOrderMark.size();
  }
}

}  // namespace tcamshow
