// Snapshots, read line by line.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "io/LineReader.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// Reads a snapshot: JSON Lines, the header first, then groups and entries in any order.
///
/// Every member of every line is checked before the line is given, and nothing is skipped but
/// blank lines. The first fault throws InputError, which names the file, the line and the member;
/// the reader is not to be used after that. Memory does not grow with the snapshot, but for the
/// places of its groups, which are kept because none may stand twice.
///
///     InputFile file(path);
///     SnapshotReader reader(file);
///     for (;;) {
///       switch (reader.next()) {
///         case SnapshotReader::Line::end: return;
///         case SnapshotReader::Line::group: use(reader.group()); break;
///         case SnapshotReader::Line::entry: use(reader.entry()); break;
///       }
///     }
class SnapshotReader {
 public:
  enum class Line { end, group, entry };

  /// Reads the header. `file` must outlive the reader.
  explicit SnapshotReader(InputFile& file);
  ~SnapshotReader();
  SnapshotReader(const SnapshotReader&) = delete;
  SnapshotReader& operator=(const SnapshotReader&) = delete;

  const Header& header() const noexcept;
  Line next();
  /// What next() gave last; texts and vectors are good until the next call.
  const GroupLine& group() const noexcept;
  const EntryLine& entry() const noexcept;
  /// The number of the line that next() gave last, from 1.
  std::uint64_t lineNumber() const noexcept;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace tcamshow
