// The interface of all sources of entries.
#pragma once

#include <cstdint>
#include <string>

#include "io/Complaints.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// Gives the contents of a file: a header, then groups and entries in any order, one for each call
/// of next(). The caller need not know the file's format.
///
/// A source checks everything that it gives: numbers are in their range, texts are UTF-8 without
/// control characters, no place has two groups. A fault throws InputError, which names the place.
/// Do not use the source after that.
///
///     while (source.next() != Source::Item::end) { ... }
class Source {
 public:
  enum class Item : std::uint8_t { end, group, entry };

  virtual ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  const Header& header() const noexcept { return header_; }
  /// Moves to the next group or entry, and returns which of the two it is. Do not call it after
  /// Item::end.
  virtual Item next() = 0;
  /// The last group and the last entry. Texts and vectors are valid until the next call of next().
  const Group& group() const noexcept { return group_; }
  const Entry& entry() const noexcept { return *entryAt_; }

  /// The place of the last item, for messages. Lines count from 1; 0 if the format has no lines.
  virtual const std::string& fileName() const noexcept = 0;
  virtual std::uint64_t lineNumber() const noexcept = 0;

  /// Adds a warning about the last item, see Complaints. `message()` is the text without the place.
  template <class Message>
  void warn(const WarningKind& kind, const Message& message) {
    complaints_.warn(kind, [&] { return warningText(fileName(), lineNumber(), message()); });
  }

 protected:
  /// `complaints` must outlive the source.
  explicit Source(Complaints& complaints) : complaints_(complaints) {}

  /// Makes entry() another source's, which a source that stands before it passes on.
  void entryIs(const Entry& entry) noexcept { entryAt_ = &entry; }

  Header header_;
  Group group_;
  Entry entry_;

 private:
  Complaints& complaints_;
  const Entry* entryAt_ = &entry_;
};

}  // namespace tcamshow
