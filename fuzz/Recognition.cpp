// Files of any bytes, perhaps compressed: the format is recognised and the file is read to its end,
// or it is refused with its place.
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/Gzip.h"
#include "io/InputError.h"
#include "snapshot/SnapshotWriter.h"
#include "sources/Formats.h"

namespace {

using tcamshow::Format;
using tcamshow::Source;
using velmorfuzz::MemoryFile;

/// A member of a gzip file.
std::string packed(std::string_view bytes) {
  z_stream zlib{};
  constexpr int gzipWindow = 15 + 16;
  if (deflateInit2(&zlib, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    std::abort();
  }
  std::string input(bytes);
  std::string output(deflateBound(&zlib, input.size()), '\0');
  zlib.next_in = reinterpret_cast<unsigned char*>(input.data());
  zlib.avail_in = static_cast<uInt>(input.size());
  zlib.next_out = reinterpret_cast<unsigned char*>(output.data());
  zlib.avail_out = static_cast<uInt>(output.size());
  FUZZ_CHECK(deflate(&zlib, Z_FINISH) == Z_STREAM_END);
  output.resize(zlib.total_out);
  deflateEnd(&zlib);
  return output;
}

/// A file as it is read.
struct ReadFile {
  const Format* format = nullptr;  ///< null where the file cannot be opened
  std::string text;                ///< the lines of all items
  std::string error;
  std::uint64_t line = 0;  ///< of the error
};

/// Reads a file, and checks its error. `content` is what the file holds.
ReadFile readFile(const std::string& bytes, const Format* format, std::string_view content) {
  ReadFile read;
  MemoryFile const memory(bytes);
  tcamshow::Complaints complaints;
  try {
    tcamshow::OpenedSource const opened = openSource(memory.path(), format, complaints);
    read.format = opened.format;
    Source& source = *opened.source;
    appendLine(read.text, source.header());
    for (;;) {
      Source::Item const item = source.next();
      if (item == Source::Item::end) break;
      if (item == Source::Item::group) {
        appendLine(read.text, source.group());
      } else {
        appendLine(read.text, source.entry());
      }
    }
  } catch (const tcamshow::InputError& error) {
    velmorfuzz::checkError(error, memory.path(), content, false);
    read.error = error.message();
    read.line = error.line();
  }
  velmorfuzz::checkIsSafe(read.text);
  for (std::string const& warning : complaints.texts()) velmorfuzz::checkIsSafe(warning);
  return read;
}

void checkIsSame(const ReadFile& read, const ReadFile& expected) {
  FUZZ_CHECK(read.format == expected.format);
  FUZZ_CHECK_TEXT(read.text, expected.text);
  FUZZ_CHECK_TEXT(read.error, expected.error);
  FUZZ_CHECK(read.line == expected.line);
}

}  // namespace

FUZZ_TARGET(recognition) {
  unsigned const shape = in.below(4);
  std::string_view const content = in.rest();
  std::string const bytes(content);
  bool const isPacked = tcamshow::Gzip::resembles(content);
  ReadFile const plain = readFile(bytes, nullptr, content);
  // Named outright, the format is the same file.
  if (plain.format != nullptr) {
    checkIsSame(readFile(bytes, plain.format, content), plain);
  }
  if (isPacked || shape == 0) return;
  if (shape < 3) {
    // In one member, or in two and with zeros that fill a block.
    std::size_t const half = bytes.size() / shape;
    std::string members = packed(content.substr(0, half));
    if (shape == 2) members += packed(content.substr(half)) + std::string(7, '\0');
    checkIsSame(readFile(members, nullptr, content), plain);
    if (plain.format != nullptr) checkIsSame(readFile(members, plain.format, content), plain);
    return;
  }
  std::string whole = packed(bytes);
  whole.resize(whole.size() - 1 - bytes.size() % 8);
  ReadFile const cut = readFile(whole, nullptr, content);
  // The items before the cut are the same. The file's own fault, if it has one, may come first.
  FUZZ_CHECK(!cut.error.empty());
  FUZZ_CHECK(plain.text.starts_with(cut.text));
  bool const isSame = cut.error == plain.error && cut.line == plain.line;
  FUZZ_CHECK(isSame || cut.error == "the compressed data ends early");
}
