// A file that lives as long as a test needs it.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

class TemporaryFile {
 public:
  explicit TemporaryFile(std::string_view text = {})
      : path_(std::filesystem::temp_directory_path() / "tcamshow_test_XXXXXX") {
    int const descriptor = ::mkstemp(path_.data());
    if (descriptor < 0) throw std::runtime_error("mkstemp");
    while (!text.empty()) {
      ssize_t const count = ::write(descriptor, text.data(), text.size());
      if (count <= 0) throw std::runtime_error("write");
      text.remove_prefix(static_cast<std::size_t>(count));
    }
    ::close(descriptor);
  }
  ~TemporaryFile() { ::unlink(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};
