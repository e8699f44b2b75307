// Lists of flows: whatever the text is, it becomes a snapshot that reads back, or an error with its
// place behind the flows in front of it.
#include "sources/Ovs.h"

#include <algorithm>
#include <string_view>

#include "MemoryFile.h"
#include "SourceSnapshot.h"
#include "Target.h"

FUZZ_TARGET(ovs) {
  std::string_view const text = in.rest();
  velmorfuzz::MemoryFile const input(text);
  velmorfuzz::WrittenSource const written([&](tcamshow::Complaints& complaints) {
    return tcamshow::openOvs(tcamshow::InputFile(input.path()), complaints);
  });
  static_cast<void>(tcamshow::ovsRuledOut(text));
  auto const lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  if (!written.isGood()) {
    FUZZ_CHECK(written.file() == input.path());
    FUZZ_CHECK(written.line() > 0 && written.line() <= lines);
    return;
  }
  // Every line that is neither blank nor a heading is a flow.
  std::uint64_t flows = 0;
  std::size_t const mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  for (std::size_t begin = mark; begin < text.size();) {
    std::size_t const end = std::min(text.find('\n', begin), text.size());
    std::string_view line = text.substr(begin, end - begin);
    if (line.ends_with('\r')) line.remove_suffix(1);
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    if (!line.empty() && !line.starts_with("NXST_FLOW reply") &&
        !line.starts_with("OFPST_FLOW reply")) {
      ++flows;
    }
    begin = end + 1;
  }
  std::string const end = "\"entries\":" + std::to_string(flows) + "}\n";
  FUZZ_CHECK(written.text().ends_with(end));
}
