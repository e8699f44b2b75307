// Lists of flows: whatever the text is, it becomes a snapshot that reads back, or an error with its
// place behind the flows in front of it.
#include "sources/Ovs.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/Gzip.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "snapshot/SnapshotWriter.h"

FUZZ_TARGET(ovs) {
  std::string_view const text = in.rest();
  static_cast<void>(tcamshow::ovsRuledOut(text));
  velmorfuzz::MemoryFile const input(text);
  velmorfuzz::MemoryFile const output;
  tcamshow::OutputBuffer out(output.descriptor());
  bool isGood = true;
  try {
    tcamshow::Complaints complaints;
    auto const source = tcamshow::openOvs(tcamshow::InputFile(input.path()), complaints);
    writeSnapshot(*source, out);
  } catch (const tcamshow::InputError& error) {
    velmorfuzz::checkError(error, input.path(), text, true);
    isGood = false;
  }
  out.flush();
  std::string const snapshot = output.contents();
  if (snapshot.empty()) {
    FUZZ_CHECK(!isGood);
    return;
  }
  if (!isGood) return velmorfuzz::checkCutSnapshot(snapshot);
  velmorfuzz::ReadSnapshot const read = velmorfuzz::checkWrittenSnapshot(snapshot);
  if (tcamshow::Gzip::resembles(text)) return;
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
  FUZZ_CHECK(flows == read.entries);
}
