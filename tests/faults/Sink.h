// The file that the paths under test write to.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <string>

/// A file without a name. Its descriptor is for writing.
class Sink {
 public:
  Sink() : descriptor_(::memfd_create("sink", MFD_CLOEXEC)) {}
  ~Sink() { ::close(descriptor_); }
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  int descriptor() const { return descriptor_; }
  /// The text written since the last call.
  std::string take() {
    std::string text(1 << 17, '\0');
    ssize_t const size = ::pread(descriptor_, text.data(), text.size(), 0);
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (::ftruncate(descriptor_, 0) != 0) text = "ftruncate failed";
    ::lseek(descriptor_, 0, SEEK_SET);
    return text;
  }

 private:
  int descriptor_;
};
