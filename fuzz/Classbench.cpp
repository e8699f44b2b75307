// Filter sets: whatever the text is, it becomes a snapshot that reads back, or an error with its
// place.
#include <algorithm>
#include <string>
#include <string_view>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/Gzip.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "snapshot/SnapshotWriter.h"
#include "sources/Classbench.h"

FUZZ_TARGET(classbench) {
  std::string_view const text = in.rest();
  velmorfuzz::MemoryFile const input(text);
  velmorfuzz::MemoryFile const output;
  tcamshow::OutputBuffer out(output.descriptor());
  bool isGood = true;
  try {
    tcamshow::Complaints complaints;
    auto const source = tcamshow::openClassbench(tcamshow::InputFile(input.path()), complaints);
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
  FUZZ_CHECK(read.groups == 0);
  if (tcamshow::Gzip::resembles(text)) return;
  // Every line that is not blank and no comment is a filter.
  std::uint64_t filters = 0;
  std::size_t const mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  for (std::size_t begin = mark; begin < text.size();) {
    std::size_t const end = std::min(text.find('\n', begin), text.size());
    std::string_view const line = text.substr(begin, end - begin);
    std::size_t const first = line.find_first_not_of(" \t\r");
    if (first != line.npos && line[0] != '#') ++filters;
    begin = end + 1;
  }
  FUZZ_CHECK(filters == read.entries);
}
