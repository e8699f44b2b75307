// Shared by the targets that make snapshots from other formats.
#pragma once

#include <string>

#include "MemoryFile.h"
#include "Snapshots.h"
#include "Target.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "match/Match.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"

namespace velmorfuzz {

/// Writes a source as a snapshot.
class WrittenSource {
 public:
  /// The snapshot, as far as it was written.
  template <class Open>
  explicit WrittenSource(const Open& open) {
    MemoryFile const output;
    tcamshow::OutputBuffer out(output.descriptor());
    try {
      auto const source = open(complaints_);
      writeSnapshot(*source, out);
      isGood_ = true;
    } catch (const tcamshow::InputError& error) {
      error_ = error.what();
      file_ = error.file();
      line_ = error.line();
    }
    out.flush();
    text_ = output.contents();
    for (std::string const& warning : complaints_.texts()) {
      FUZZ_CHECK(!warning.empty() && warning.find('\n') == std::string::npos);
      checkIsSafe(warning);
    }
    checkIsSafe(error_);
    FUZZ_CHECK(error_.find('\n') == std::string::npos);
    checkReadsBack();
  }

  bool isGood() const { return isGood_; }
  const std::string& text() const { return text_; }
  const std::string& error() const { return error_; }
  const std::string& file() const { return file_; }
  std::uint64_t line() const { return line_; }

 private:
  /// Each line is read as it was written. Without an error the last line says that nothing lacks.
  void checkReadsBack() const {
    checkIsSafe(text_);
    if (text_.empty()) {
      FUZZ_CHECK(!isGood_);
      return;
    }
    MemoryFile const memory(text_);
    tcamshow::Complaints complaints;
    std::string again;
    bool isWhole = false;
    try {
      auto const reader = tcamshow::openSnapshot(tcamshow::InputFile(memory.path()), complaints);
      appendLine(again, reader->header());
      for (;;) {
        tcamshow::Source::Item const item = reader->next();
        if (item == tcamshow::Source::Item::end) break;
        if (item == tcamshow::Source::Item::group) {
          appendLine(again, reader->group());
        } else {
          appendLine(again, reader->entry());
          static_cast<void>(tcamshow::matchOf(reader->entry()));
        }
      }
      isWhole = true;
    } catch (const tcamshow::InputError&) {
    }
    FUZZ_CHECK(isWhole == isGood_);
    std::size_t const end = isGood_ ? text_.rfind('\n', text_.size() - 2) + 1 : text_.size();
    FUZZ_CHECK_TEXT(again, std::string_view(text_).substr(0, end));
  }

  tcamshow::Complaints complaints_;
  std::string text_;
  std::string error_;
  std::string file_;
  std::uint64_t line_ = 0;
  bool isGood_ = false;
};

}  // namespace velmorfuzz
