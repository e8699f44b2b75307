// Snapshots: whatever the text is, it is read or refused with its place; what was read is written
// and read back the same, and the commands print it.
#include <nlohmann/json.hpp>
#include <string>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "snapshot/SnapshotReader.h"
#include "views/Inspect.h"
#include "views/Tables.h"
#include "views/Usage.h"

namespace {

using tcamshow::InputFile;
using tcamshow::OutputBuffer;
using tcamshow::Source;
using tcamshow::TableForm;
using velmorfuzz::MemoryFile;
using velmorfuzz::ReadSnapshot;

template <class Show>
std::string printedBy(const MemoryFile& snapshot, Show show) {
  MemoryFile const printed;
  OutputBuffer out(printed.descriptor());
  tcamshow::Complaints complaints;
  show(*tcamshow::openSnapshot(InputFile(snapshot.path()), complaints), out);
  out.flush();
  for (std::string const& warning : complaints.texts()) velmorfuzz::checkIsSafe(warning);
  return printed.contents();
}

/// Every line is a JSON text.
void checkIsJsonLines(const std::string& text) {
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t const end = text.find('\n', begin);
    FUZZ_CHECK(end != text.npos);
    FUZZ_CHECK(nlohmann::json::accept(text.data() + begin, text.data() + end));
    begin = end + 1;
  }
}

}  // namespace

FUZZ_TARGET(snapshot) {
  ReadSnapshot const read = velmorfuzz::readSnapshot(in.rest());
  // The lines before a bad one stand as they are.
  ReadSnapshot const again = velmorfuzz::readSnapshot(read.text);
  if (read.text.empty()) return;
  FUZZ_CHECK_TEXT(again.error, "");
  FUZZ_CHECK_TEXT(again.text, read.text);
  FUZZ_CHECK(again.groups == read.groups && again.entries == read.entries);

  velmorfuzz::checkIsSafe(read.text);

  MemoryFile const snapshot(read.text);
  // One view an input: any of them, by what the input happens to be.
  auto const form = read.text.size() % 2 == 0 ? TableForm::text : TableForm::jsonLines;
  std::size_t const view = read.text.size() / 2 % 7;
  std::string const text = printedBy(snapshot, [form, view](Source& source, OutputBuffer& out) {
    switch (view) {
      case 4:
        return showUsage(source, out, form == TableForm::text);
      case 5:
        return showSummary(source, out);
      case 6:
        return inspect(source, out);
      default:
        return showTable(source, out, static_cast<tcamshow::Table>(view), form);
    }
  });
  velmorfuzz::checkIsSafe(text);
  if (form == TableForm::jsonLines && view < 4) checkIsJsonLines(text);
}
