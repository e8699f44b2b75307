#include "Snapshots.h"

#include <algorithm>

#include "MemoryFile.h"
#include "Target.h"
#include "io/LineReader.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"

namespace velmorfuzz {

using tcamshow::InputError;
using tcamshow::SnapshotReader;

namespace {

bool isOneLine(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
  });
}

}  // namespace

void checkError(const InputError& error, const std::string& file, std::string_view input,
                bool needsLine) {
  FUZZ_CHECK(error.file() == file);
  FUZZ_CHECK(!error.message().empty());
  FUZZ_CHECK(isOneLine(error.what()));
  // What is missing at the end is missing in the line behind the last.
  auto const lines = static_cast<std::uint64_t>(std::count(input.begin(), input.end(), '\n')) + 2;
  FUZZ_CHECK(error.line() <= lines);
  if (needsLine) FUZZ_CHECK(error.line() > 0);
  std::string const place =
      error.line() == 0 ? file + ": " : file + ":" + std::to_string(error.line()) + ": ";
  FUZZ_CHECK_TEXT(error.what(), place + error.message());
}

ReadSnapshot readSnapshot(std::string_view snapshot) {
  ReadSnapshot read;
  MemoryFile const memory(snapshot);
  try {
    tcamshow::InputFile file(memory.path());
    SnapshotReader reader(file);
    appendLine(read.text, reader.header());
    for (;;) {
      SnapshotReader::Line const line = reader.next();
      if (line == SnapshotReader::Line::end) break;
      if (line == SnapshotReader::Line::group) {
        appendLine(read.text, reader.group());
        ++read.groups;
      } else {
        appendLine(read.text, reader.entry());
        ++read.entries;
      }
      FUZZ_CHECK(reader.lineNumber() > 1);
    }
  } catch (const InputError& error) {
    checkError(error, memory.path(), snapshot, true);
    read.error = error.message();
  }
  return read;
}

void checkWrittenSnapshot(const std::string& snapshot, std::uint64_t entries) {
  ReadSnapshot const read = readSnapshot(snapshot);
  FUZZ_CHECK_TEXT(read.error, "");
  FUZZ_CHECK(read.entries == entries);
  FUZZ_CHECK_TEXT(read.text, snapshot);
}

}  // namespace velmorfuzz
