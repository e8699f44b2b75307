// Snapshots: whatever the text is, it is read or refused with its place; what was read is written
// and read back the same, and the commands print it.
#include <nlohmann/json.hpp>
#include <string>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/LineReader.h"
#include "io/OutputBuffer.h"
#include "views/Inspect.h"
#include "views/ShowTable.h"
#include "views/ShowUsage.h"

namespace {

using tcamshow::InputFile;
using tcamshow::OutputBuffer;
using tcamshow::TableForm;
using velmorfuzz::MemoryFile;
using velmorfuzz::ReadSnapshot;

template <class Command>
std::string printedBy(const MemoryFile& snapshot, Command command) {
  MemoryFile const printed;
  OutputBuffer out(printed.descriptor());
  InputFile file(snapshot.path());
  command(file, out);
  out.flush();
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

  MemoryFile const snapshot(read.text);
  // One command an input: any of them, by what the input happens to be.
  auto const form = read.text.size() % 2 == 0 ? TableForm::text : TableForm::jsonLines;
  std::size_t const command = read.text.size() / 2 % 7;
  std::string const text = printedBy(snapshot, [form, command](auto& file, auto& out) {
    switch (command) {
      case 0:
        return showIp(file, out, form);
      case 1:
        return showIp6(file, out, form);
      case 2:
        return showMac(file, out, form);
      case 3:
        return showTcam(file, out, form);
      case 4:
        return showUsage(file, out, form == TableForm::text);
      case 5:
        return showSummary(file, out);
      default:
        return tcamshow::inspect(file, out);
    }
  });
  if (form == TableForm::jsonLines && command < 4) checkIsJsonLines(text);
}
