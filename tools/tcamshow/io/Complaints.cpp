#include "io/Complaints.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "io/SafeText.h"

namespace tcamshow {
namespace {

/// Standard error with a small buffer, so that a message mostly takes one system call. Nobody is
/// left to tell when it cannot be written.
class ErrorText {
 public:
  ~ErrorText() { flush(); }
  ErrorText() = default;
  ErrorText(const ErrorText&) = delete;
  ErrorText& operator=(const ErrorText&) = delete;

  void write(std::string_view text) noexcept {
    while (!text.empty()) {
      if (size_ == sizeof buffer_) flush();
      std::size_t const count = std::min(text.size(), sizeof buffer_ - size_);
      std::memcpy(buffer_ + size_, text.data(), count);
      size_ += count;
      text.remove_prefix(count);
    }
  }

 private:
  void flush() noexcept {
    for (std::size_t at = 0; at != size_;) {
      ssize_t const count = ::write(STDERR_FILENO, buffer_ + at, size_ - at);
      if (count >= 0) {
        at += static_cast<std::size_t>(count);
      } else if (errno == EAGAIN) {
        pollfd waiting{STDERR_FILENO, POLLOUT, 0};
        ::poll(&waiting, 1, -1);
      } else if (errno != EINTR) {
        break;
      }
    }
    size_ = 0;
  }

  char buffer_[4096] = {};
  std::size_t size_ = 0;
};

}  // namespace

void complain(std::string_view message) noexcept {
  ErrorText error;
  error.write("tcamshow: ");
  forEachSafePiece(message, LineBreaks::kept, [&](std::string_view piece) { error.write(piece); });
  error.write("\n");
}

std::string placeText(std::string_view file, std::uint64_t line) {
  std::string text = safeText(file);
  if (line != 0) (text += ':') += std::to_string(line);
  return text += ": ";
}

std::string warningText(std::string_view file, std::uint64_t line, std::string_view message) {
  return placeText(file, line) + "warning: " + std::string(message);
}

bool Complaints::isRepeated(const WarningKind& kind) noexcept {
  for (Warning& warning : warnings_) {
    if (warning.kind != &kind) continue;
    ++warning.count;
    return true;
  }
  return false;
}

void Complaints::add(const WarningKind& kind, std::string_view text) {
  warnings_.push_back({&kind, safeText(text), 1});
}

std::vector<std::string> Complaints::texts() const {
  std::vector<std::string> texts;
  for (const Warning& warning : warnings_) {
    std::string& text = texts.emplace_back(warning.text);
    if (warning.count > 1) text += " (and " + std::to_string(warning.count - 1) + " more)";
  }
  return texts;
}

void Complaints::tell() {
  for (const std::string& text : texts()) complain(text);
  warnings_.clear();
}

}  // namespace tcamshow
