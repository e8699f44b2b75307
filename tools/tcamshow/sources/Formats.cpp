#include "sources/Formats.h"

#include <iterator>
#include <string>
#include <utility>

#include "io/InputError.h"
#include "snapshot/SnapshotReader.h"
#include "sources/Classbench.h"
#include "sources/Openconfig.h"

namespace tcamshow {
namespace {

constexpr Format snapshot{"snapshot", "Snapshots", "a snapshot", resemblesSnapshot, openSnapshot};

constexpr Format imports[] = {
    {"classbench", "Filter sets of packet-classification research", "a filter set",
     resemblesClassbench, openClassbench},
    {"openconfig", "ACL documents of OpenConfig", "an OpenConfig ACL document", resemblesOpenconfig,
     openOpenconfig},
};

/// A known kind of file that no source reads. It has to be changed first.
struct Foreign {
  bool (*resembles)(std::string_view start) noexcept;
  std::string_view message;
};
constexpr Foreign foreigners[] = {
    {[](std::string_view start) noexcept { return start.starts_with("\x1F\x8B"); },
     "the file is compressed; 'gzip -dc FILE' gives what it holds"},
    {[](std::string_view start) noexcept { return start.starts_with(R"({"type":"table",)"); },
     "this is what --json prints, not a snapshot; with the line "
     R"({"type":"snapshot","version":1} in place of the first it is one)"},
};

/// The message for a file that is clearly not of `format`, or empty.
std::string otherwise(const Format& format, std::string_view start) {
  if (format.resembles(start)) return {};
  for (const Foreign& foreign : foreigners) {
    if (foreign.resembles(start)) return std::string(foreign.message);
  }
  auto const is = [&](const Format& other) {
    return "this is " + std::string(other.thing) + ", not " + std::string(format.thing) + "; ";
  };
  if (snapshot.resembles(start)) return is(snapshot) + "'tcamshow tcam FILE' shows it";
  for (const Format& other : imports) {
    if (!other.resembles(start)) continue;
    return is(other) + "'tcamshow import " + std::string(other.name) +
           " FILE' makes a snapshot of it";
  }
  return {};
}

}  // namespace

const Format& snapshotFormat() noexcept { return snapshot; }

std::span<const Format> importFormats() noexcept { return imports; }

std::unique_ptr<Source> openAs(const Format& format, InputFile file, Complaints& complaints) {
  std::string const message = otherwise(format, file.start());
  if (!message.empty()) throw InputError(file.name(), 1, message);
  return format.open(std::move(file), complaints);
}

}  // namespace tcamshow
