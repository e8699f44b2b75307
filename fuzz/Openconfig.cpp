// ACL documents: whatever the text is, it becomes a snapshot that reads back, or an error with its
// place and no output at all.
#include <string>
#include <string_view>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "snapshot/SnapshotWriter.h"
#include "sources/Openconfig.h"

FUZZ_TARGET(openconfig) {
  std::string_view const text = in.rest();
  velmorfuzz::MemoryFile const input(text);
  velmorfuzz::MemoryFile const output;
  tcamshow::OutputBuffer out(output.descriptor());
  tcamshow::Complaints complaints;
  bool isGood = true;
  try {
    auto const source = tcamshow::openOpenconfig(tcamshow::InputFile(input.path()), complaints);
    writeSnapshot(*source, out);
  } catch (const tcamshow::InputError& error) {
    velmorfuzz::checkError(error, input.path(), text, true);
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
