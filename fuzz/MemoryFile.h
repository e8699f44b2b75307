// A file in memory that has a path, for code that opens its input by name.
#pragma once

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace velmorfuzz {

class MemoryFile {
 public:
  explicit MemoryFile(std::string_view contents = {})
      : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)),
        path_("/proc/self/fd/" + std::to_string(descriptor_)) {
    if (descriptor_ < 0 || ::ftruncate(descriptor_, static_cast<off_t>(contents.size())) != 0 ||
        ::pwrite(descriptor_, contents.data(), contents.size(), 0) !=
            static_cast<ssize_t>(contents.size())) {
      std::abort();
    }
  }
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int descriptor() const { return descriptor_; }
  const std::string& path() const { return path_; }
  std::string contents() const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) std::abort();
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    if (::pread(descriptor_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
      std::abort();
    }
    return text;
  }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace velmorfuzz
