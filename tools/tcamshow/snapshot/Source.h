// Where entries come from.
#pragma once

#include <cstdint>
#include <string>

#include "io/Complaints.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// Gives what a file holds, whatever its format: a header, then groups and entries in any order,
/// one at a time to whoever asks. Nobody who asks knows what stands behind it.
///
/// A source checks what it gives: numbers are in their range, texts are UTF-8 without control
/// characters, no place has two groups. A fault throws InputError, which says where; the source is
/// not to be used after that.
///
///     while (source.next() != Source::Item::end) { ... }
class Source {
 public:
  enum class Item : std::uint8_t { end, group, entry };

  virtual ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  const Header& header() const noexcept { return header_; }
  /// Goes on to the next group or entry and says which of them it is. After the end it is not
  /// called again.
  virtual Item next() = 0;
  /// What next() gave last; texts and vectors are good until it is called again.
  const Group& group() const noexcept { return group_; }
  const Entry& entry() const noexcept { return entry_; }

  /// Where that stands, as messages name it; the line is from 1, or 0 where the format has none.
  virtual const std::string& fileName() const noexcept = 0;
  virtual std::uint64_t lineNumber() const noexcept = 0;

  /// Warns of what next() gave last: see Complaints. `message()` is the text without the place.
  template <class Message>
  void warn(const WarningKind& kind, const Message& message) {
    complaints_.warn(kind, [&] { return warningText(fileName(), lineNumber(), message()); });
  }

 protected:
  /// `complaints` outlives the source.
  explicit Source(Complaints& complaints) : complaints_(complaints) {}

  Header header_;
  Group group_;
  Entry entry_;

 private:
  Complaints& complaints_;
};

}  // namespace tcamshow
