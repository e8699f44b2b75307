// ACL documents: whatever the text is, it becomes a snapshot that reads back, or an error with its
// place and no output at all.
#include <string>
#include <string_view>
#include <vector>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/LineReader.h"
#include "io/OutputBuffer.h"
#include "sources/ImportOpenconfig.h"

FUZZ_TARGET(openconfig) {
  std::string_view const text = in.rest();
  velmorfuzz::MemoryFile const input(text);
  velmorfuzz::MemoryFile const output;
  tcamshow::OutputBuffer out(output.descriptor());
  std::vector<std::string> warnings;
  bool isGood = true;
  try {
    tcamshow::InputFile file(input.path());
    importOpenconfig(file, out, warnings);
  } catch (const tcamshow::InputError& error) {
    velmorfuzz::checkError(error, input.path(), text, true);
    isGood = false;
  }
  out.flush();
  std::string const snapshot = output.contents();
  FUZZ_CHECK(isGood == !snapshot.empty());
  for (std::string const& warning : warnings) {
    FUZZ_CHECK(!warning.empty() && warning.find('\n') == std::string::npos);
  }
  if (!isGood) return;
  velmorfuzz::ReadSnapshot const read = velmorfuzz::readSnapshot(snapshot);
  FUZZ_CHECK_TEXT(read.error, "");
  FUZZ_CHECK_TEXT(read.text, snapshot);
}
