#include "Snapshots.h"

#include <algorithm>

#include "MemoryFile.h"
#include "Target.h"
#include "io/Gzip.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"

namespace velmorfuzz {

using tcamshow::InputError;
using tcamshow::Source;

// Read anew from what a terminal may not be sent, beside the program's own table.
void checkIsSafe(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    auto const lead = static_cast<unsigned char>(text[i]);
    std::size_t const size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    FUZZ_CHECK(lead < 0x80 || lead >= 0xC0);
    FUZZ_CHECK(i + size <= text.size());
    std::uint32_t character = size == 1 ? lead : lead & ((1U << (7 - size)) - 1);
    for (std::size_t j = 1; j < size; ++j) {
      auto const next = static_cast<unsigned char>(text[i + j]);
      FUZZ_CHECK(next >= 0x80 && next < 0xC0);
      character = character * 64 + (next - 0x80);
    }
    constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    FUZZ_CHECK(character >= least[size] && character <= 0x10FFFF);
    FUZZ_CHECK(character / 0x800 != 0xD800 / 0x800);
    bool const isControl =
        (character < 0x20 && character != '\n') || (character > 0x7E && character < 0xA0);
    bool const isHidden = (character >= 0x200B && character <= 0x200F) || character == 0x2028 ||
                          character == 0x2029 || (character >= 0x2060 && character <= 0x206F) ||
                          character == 0xFEFF || (character >= 0xFFF9 && character <= 0xFFFB);
    bool const turns = character == 0x061C || (character >= 0x202A && character <= 0x202E);
    FUZZ_CHECK(!isControl && !isHidden && !turns);
    i += size;
  }
}

void checkError(const InputError& error, const std::string& file, std::string_view input,
                bool needsLine) {
  FUZZ_CHECK(error.file() == file);
  FUZZ_CHECK(!error.message().empty());
  FUZZ_CHECK(std::string_view(error.what()).find('\n') == std::string_view::npos);
  checkIsSafe(error.what());
  std::string const place =
      error.line() == 0 ? file + ": " : file + ":" + std::to_string(error.line()) + ": ";
  FUZZ_CHECK_TEXT(error.what(), place + error.message());
  // The lines are those of what the file holds.
  if (tcamshow::Gzip::resembles(input)) return;
  // An error about the end of the input names the line after the last one.
  auto const lines = static_cast<std::uint64_t>(std::count(input.begin(), input.end(), '\n')) + 2;
  FUZZ_CHECK(error.line() <= lines);
  if (needsLine) FUZZ_CHECK(error.line() > 0);
}

std::string ReadSnapshot::whole() const {
  std::string lines = text;
  if (version >= 2) appendLine(lines, tcamshow::SnapshotEnd{groups, entries});
  return lines;
}

ReadSnapshot readSnapshot(std::string_view snapshot) {
  ReadSnapshot read;
  MemoryFile const memory(snapshot);
  tcamshow::Complaints complaints;
  try {
    auto const reader = tcamshow::openSnapshot(tcamshow::InputFile(memory.path()), complaints);
    appendLine(read.text, reader->header());
    read.version = reader->header().version.number;
    for (;;) {
      Source::Item const item = reader->next();
      if (item == Source::Item::end) break;
      if (item == Source::Item::group) {
        appendLine(read.text, reader->group());
        ++read.groups;
      } else {
        appendLine(read.text, reader->entry());
        ++read.entries;
      }
      FUZZ_CHECK(reader->lineNumber() > 1);
    }
  } catch (const InputError& error) {
    checkError(error, memory.path(), snapshot, true);
    read.error = error.message();
  }
  for (std::string const& warning : complaints.texts()) checkIsSafe(warning);
  return read;
}

ReadSnapshot checkWrittenSnapshot(const std::string& snapshot) {
  checkIsSafe(snapshot);
  ReadSnapshot read = readSnapshot(snapshot);
  FUZZ_CHECK_TEXT(read.error, "");
  FUZZ_CHECK(read.version == tcamshow::SnapshotVersion::newest);
  FUZZ_CHECK_TEXT(read.whole(), snapshot);
  return read;
}

void checkCutSnapshot(const std::string& snapshot) {
  checkIsSafe(snapshot);
  ReadSnapshot const read = readSnapshot(snapshot);
  FUZZ_CHECK_TEXT(read.error, "the snapshot was cut: its \"end\" line is missing");
  FUZZ_CHECK_TEXT(read.text, snapshot);
}

}  // namespace velmorfuzz
