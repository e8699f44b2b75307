#include "sources/Formats.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "io/InputError.h"
#include "snapshot/SnapshotReader.h"
#include "sources/Classbench.h"
#include "sources/Openconfig.h"
#include "sources/Ovs.h"
#include "sources/Sonic.h"

namespace tcamshow {
namespace {

constexpr Format formats[] = {
    {"snapshot", "Snapshots of either version", "a snapshot", snapshotRuledOut, openSnapshot,
     nullptr, true},
    {"classbench", "Filter sets of packet-classification research", "a filter set",
     classbenchRuledOut, openClassbench, nullptr, false},
    {"openconfig", "ACL documents of OpenConfig", "an OpenConfig ACL document", openconfigRuledOut,
     openOpenconfig, nullptr, false},
    {"ovs", "Flows of a software switch, as ovs-ofctl dump-flows prints them", "a list of flows",
     ovsRuledOut, openOvs, nullptr, false},
    {"sonic", "The dumps of a SONiC switch's databases, a directory", "a SONiC bundle", nullptr,
     nullptr, openSonic, false},
};

/// What a file may be beside the formats.
struct Foreign {
  std::string_view start;
  std::string_view message;
};
constexpr std::string_view otherwisePacked =
    "the file is compressed in a way that is not read; gzip is";
constexpr Foreign foreigners[] = {
    {R"({"type":"table",)",
     "this is what --json prints, not a snapshot; with the line "
     R"({"type":"snapshot","version":1} in place of the first it is one)"},
    {"\xFD"
     "7zXZ",
     otherwisePacked},
    {"\x28\xB5\x2F\xFD", otherwisePacked},
    {"BZh", otherwisePacked},
    {"PK\x03\x04", otherwisePacked},
};

bool resembles(const Format& format, std::string_view start) {
  return format.ruledOut != nullptr && format.ruledOut(start).empty();
}

/// The format that a file is plainly of, or null.
const Format* recognised(std::string_view start) {
  auto const* const found = std::find_if(std::begin(formats), std::end(formats),
                                         [=](const Format& one) { return resembles(one, start); });
  return found == std::end(formats) ? nullptr : found;
}

/// Whether more bytes of the start change nothing about the format: a line that begins a JSON
/// object may yet turn out to be a snapshot's, and that format comes first.
bool isTold(const Format& format, std::string_view start) {
  std::size_t const first = start.find_first_not_of(" \t\r\n");
  return &format == formats || start[first] != '{' || start.find('\n', first) != start.npos;
}

/// The format of a file, of which no more is read than it takes to tell. An empty file is a
/// snapshot without a header.
const Format& formatOf(InputFile& file) {
  for (;;) {
    const Format* const format = recognised(file.start());
    if (format != nullptr && isTold(*format, file.start())) return *format;
    if (file.startMore()) continue;
    if (format != nullptr) return *format;
    break;
  }
  std::string_view const start = file.start();
  if (start.find_first_not_of(" \t\r\n") == start.npos) return formats[0];
  for (const Foreign& foreign : foreigners) {
    if (start.starts_with(foreign.start)) {
      throw InputError(file.name(), 1, std::string(foreign.message));
    }
  }
  std::string message = "the format is not known";
  char separator = ':';
  for (const Format& format : formats) {
    ((message += separator) += " not ") += format.name;
    (message += ", for ") +=
        format.ruledOut == nullptr ? "it is no directory" : format.ruledOut(start);
    separator = ';';
  }
  throw InputError(file.name(), 1, message + "; --from FORMAT says it outright");
}

/// Throws where the file is plainly of another format than `format`.
void checkFormat(InputFile& file, const Format& format) {
  const Format* other = nullptr;
  do {
    if (resembles(format, file.start())) return;
    other = recognised(file.start());
    if (other == nullptr) return;
  } while (!isTold(*other, file.start()) && file.startMore());
  throw InputError(file.name(), 1,
                   "this is " + std::string(other->thing) + ", not " + std::string(format.thing) +
                       "; without a format it is recognised");
}

OpenedSource openDirectory(const std::string& path, const Format* format, Complaints& complaints) {
  if (format == nullptr) {
    for (const Format& one : formats) {
      if (one.openDirectory != nullptr) format = &one;
    }
  }
  if (format == nullptr || format->openDirectory == nullptr) {
    throw InputError(path, 0, "this is a directory, not a file");
  }
  return {format->openDirectory(path, complaints), format};
}

}  // namespace

std::span<const Format> allFormats() noexcept { return formats; }

const Format* formatByName(std::string_view name) noexcept {
  auto const* const found = std::find_if(std::begin(formats), std::end(formats),
                                         [=](const Format& one) { return one.name == name; });
  return found == std::end(formats) ? nullptr : found;
}

OpenedSource openSource(const std::string& path, const Format* format, Complaints& complaints) {
  std::error_code error;
  if (path != "-" && std::filesystem::is_directory(path, error)) {
    return openDirectory(path, format, complaints);
  }
  InputFile file(path);
  if (format == nullptr) {
    format = &formatOf(file);
  } else if (format->open == nullptr) {
    throw InputError(path, 0, "this is not a directory, as " + std::string(format->thing) + " is");
  } else {
    checkFormat(file, *format);
  }
  return {format->open(std::move(file), complaints), format};
}

}  // namespace tcamshow
