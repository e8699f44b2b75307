#include "commands/SourceFile.h"

#include <string_view>
#include <vector>

#include "sources/Formats.h"

namespace tcamshow {
namespace {

const std::vector<std::string_view>& formatNames() {
  static const std::vector<std::string_view> names = [] {
    std::vector<std::string_view> all;
    for (const Format& format : allFormats()) all.push_back(format.name);
    return all;
  }();
  return names;
}

}  // namespace

void SourceFile::declare(Options& options) {
  declareFormat(options);
  options.file(path_);
}

void SourceFile::declareFormat(Options& options) {
  options.choice("--from", format_, formatNames(), "The file's format; recognised when absent");
}

std::unique_ptr<Source> SourceFile::open(const std::string& path, Complaints& complaints) const {
  return openSource(path, formatByName(format_), complaints).source;
}

}  // namespace tcamshow
