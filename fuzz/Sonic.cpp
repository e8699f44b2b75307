// Databases of a SONiC switch: whatever their texts are, they become a snapshot that reads back, or
// an error with its place and no output at all.
#include "sources/Sonic.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "SourceSnapshot.h"
#include "Target.h"

namespace {

/// A directory of this process. The files in it are written anew for each input.
class Directory {
 public:
  Directory() : path_(std::filesystem::temp_directory_path() / "fuzz_sonic_XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) std::abort();
  }
  ~Directory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace

// The databases in this order, with this byte between them; one that is empty is not there.
FUZZ_TARGET(sonic) {
  constexpr char separator = '\x1E';
  constexpr const char* names[] = {"ASIC_DB", "CONFIG_DB", "COUNTERS_DB", "STATE_DB"};
  static Directory const directory;
  std::string_view rest = in.rest();
  for (const char* const name : names) {
    std::string const path = directory.path() + "/" + name + ".json";
    std::string_view const text = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(text.size() + 1, rest.size()));
    std::filesystem::remove(path);
    if (!text.empty()) std::ofstream(path, std::ios::binary) << text;
  }
  velmorfuzz::WrittenSource const written([&](tcamshow::Complaints& complaints) {
    return tcamshow::openSonic(directory.path(), complaints);
  });
  FUZZ_CHECK(written.isGood() == !written.text().empty());
  if (!written.isGood()) FUZZ_CHECK(written.file().starts_with(directory.path()));
}
