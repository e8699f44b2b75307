// Snapshots: whatever the text is, it is read or refused with its place; what was read is written
// and read back the same, in both versions; a cut one is refused; and the commands print it.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "questions/Listing.h"
#include "snapshot/EntryStore.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"
#include "snapshot/StoreSource.h"
#include "views/Inspect.h"
#include "views/List.h"
#include "views/Tables.h"
#include "views/Usage.h"

namespace {

using tcamshow::Complaints;
using tcamshow::InputFile;
using tcamshow::OutputBuffer;
using tcamshow::Source;
using tcamshow::TableForm;
using velmorfuzz::MemoryFile;
using velmorfuzz::ReadSnapshot;

/// `show(source, out, complaints)` takes the source.
template <class Show>
std::string printedBy(const MemoryFile& snapshot, const Show& show) {
  MemoryFile const printed;
  OutputBuffer out(printed.descriptor());
  Complaints complaints;
  show(tcamshow::openSnapshot(InputFile(snapshot.path()), complaints), out, complaints);
  out.flush();
  for (std::string const& warning : complaints.texts()) velmorfuzz::checkIsSafe(warning);
  return printed.contents();
}

/// The lines, each with its line feed.
std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    std::size_t const end = text.find('\n');
    FUZZ_CHECK(end != text.npos);
    lines.push_back(text.substr(0, end + 1));
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::vector<std::string_view> linesOf(std::string_view text, std::string_view start) {
  std::vector<std::string_view> lines = linesOf(text);
  std::erase_if(lines, [=](std::string_view line) { return !line.starts_with(start); });
  return lines;
}

void checkIsJsonLines(std::string_view text) {
  for (std::string_view const line : linesOf(text)) FUZZ_CHECK(nlohmann::json::accept(line));
}

/// A cut snapshot is refused, and the lines before the cut are as they were.
void checkIsRefusedAt(std::size_t at, const std::string& whole) {
  std::string_view const start = std::string_view(whole).substr(0, at);
  ReadSnapshot const read = velmorfuzz::readSnapshot(start);
  FUZZ_CHECK(!read.error.empty());
  FUZZ_CHECK(start.starts_with(read.text));
}

void checkCuts(const std::string& whole) {
  // Two cuts an input, at a byte and behind a line: anywhere, by what the input happens to be.
  std::size_t const drawn = std::accumulate(
      whole.begin(), whole.end(), whole.size(),
      [](std::size_t sum, char c) { return sum * 31 + static_cast<unsigned char>(c); });
  // Without the last line feed alone it is still whole.
  checkIsRefusedAt(drawn % (whole.size() - 1), whole);
  std::vector<std::string_view> const lines = linesOf(whole);
  std::string_view const last = lines[drawn % (lines.size() - 1)];
  std::size_t const at = static_cast<std::size_t>(last.data() - whole.data()) + last.size();
  velmorfuzz::checkCutSnapshot(whole.substr(0, at));
}

/// As `import` writes a snapshot of either version: in version 2, with the same entries in the same
/// order, and the same groups.
void checkImport(const MemoryFile& snapshot, const ReadSnapshot& read) {
  std::string expected = read.text;
  std::string_view const first = R"({"type":"snapshot","version":1)";
  if (read.version == 1) expected.replace(0, first.size(), R"({"type":"snapshot","version":2)");
  ReadSnapshot const imported = velmorfuzz::checkWrittenSnapshot(printedBy(
      snapshot,
      [](auto const& source, OutputBuffer& out, Complaints&) { writeSnapshot(*source, out); }));
  FUZZ_CHECK_TEXT(imported.text, expected);

  ReadSnapshot const stored = velmorfuzz::checkWrittenSnapshot(
      printedBy(snapshot, [](auto const& source, OutputBuffer& out, Complaints& complaints) {
        tcamshow::EntryStore const store(*source);
        writeSnapshot(*storeSource(store, complaints), out);
      }));
  FUZZ_CHECK_TEXT(linesOf(stored.text)[0], linesOf(expected)[0]);
  std::string_view const entry = R"({"type":"entry")";
  FUZZ_CHECK(linesOf(stored.text, entry) == linesOf(expected, entry));
  std::string_view const group = R"({"type":"group")";
  FUZZ_CHECK(std::ranges::is_permutation(linesOf(stored.text, group), linesOf(expected, group)));
}

void checkView(const MemoryFile& snapshot, const ReadSnapshot& read) {
  // One view an input: any of them, by what the input happens to be.
  bool const isText = read.text.size() % 2 == 0;
  auto const form = isText ? TableForm::text : TableForm::jsonLines;
  std::size_t const view = read.text.size() / 2 % 9;
  std::string const text = printedBy(
      snapshot, [=](std::unique_ptr<Source> source, OutputBuffer& out, Complaints& complaints) {
        switch (view) {
          case 4:
            return showUsage(*source, out, isText);
          case 5:
            return showSummary(*source, out);
          case 6:
            return inspect(*source, out);
          case 7:
          case 8: {
            tcamshow::ListOptions options;
            // With columns of texts, which are not usual, and without those of most fields.
            if (view == 8) {
              options.columns =
                  tcamshow::listColumnsFromText("name,dscp,icmp-type,other,feature,reason");
            }
            tcamshow::Listing const listing(std::move(source), {}, complaints);
            return isText ? showList(listing, options, out) : showListJson(listing, out);
          }
          default:
            return showTable(*source, out, static_cast<tcamshow::Table>(view), form);
        }
      });
  velmorfuzz::checkIsSafe(text);
  if (!isText && (view < 4 || view > 6)) checkIsJsonLines(text);
  if (!isText && view > 6) FUZZ_CHECK(linesOf(text).size() == 1 + read.entries);
}

}  // namespace

FUZZ_TARGET(snapshot) {
  ReadSnapshot const read = velmorfuzz::readSnapshot(in.rest());
  if (read.text.empty()) return;
  velmorfuzz::checkIsSafe(read.text);
  // The lines before a bad one stand as they are.
  std::string const whole = read.whole();
  ReadSnapshot const again = velmorfuzz::readSnapshot(whole);
  FUZZ_CHECK_TEXT(again.error, "");
  FUZZ_CHECK_TEXT(again.text, read.text);
  FUZZ_CHECK(again.version == read.version);
  FUZZ_CHECK(again.groups == read.groups && again.entries == read.entries);
  if (read.version >= 2) checkCuts(whole);

  MemoryFile const snapshot(whole);
  checkImport(snapshot, read);
  checkView(snapshot, read);
}
