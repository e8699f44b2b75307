// Databases of a SONiC switch: whatever their texts are, they become a snapshot that reads back, or
// an error with its place and no output at all.
#include "sources/Sonic.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "snapshot/SnapshotWriter.h"

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
  std::map<std::string, std::string_view> files;
  std::string_view rest = in.rest();
  for (const char* const name : names) {
    std::string const path = directory.path() + "/" + name + ".json";
    std::string_view const text = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(text.size() + 1, rest.size()));
    std::filesystem::remove(path);
    if (text.empty()) continue;
    std::ofstream(path, std::ios::binary) << text;
    files[path] = text;
  }
  velmorfuzz::MemoryFile const output;
  tcamshow::OutputBuffer out(output.descriptor());
  tcamshow::Complaints complaints;
  bool isGood = true;
  try {
    auto const source = tcamshow::openSonic(directory.path(), complaints);
    writeSnapshot(*source, out);
  } catch (const tcamshow::InputError& error) {
    FUZZ_CHECK(error.file() == directory.path() || files.count(error.file()) == 1);
    velmorfuzz::checkError(error, error.file(), files[error.file()], false);
    isGood = false;
  }
  out.flush();
  std::string const snapshot = output.contents();
  FUZZ_CHECK(isGood == !snapshot.empty());
  for (std::string const& warning : complaints.texts()) {
    FUZZ_CHECK(!warning.empty() && warning.find('\n') == std::string::npos);
    velmorfuzz::checkIsSafe(warning);
  }
  if (isGood) velmorfuzz::checkWrittenSnapshot(snapshot);
}
