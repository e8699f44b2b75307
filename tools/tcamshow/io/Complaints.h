// The messages on standard error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tcamshow {

/// Writes the program's name and a message on standard error, as safe text. Allocates no memory,
/// because the message may be that memory ran out.
void complain(std::string_view message) noexcept;

/// `FILE:LINE: `, or `FILE: ` if the line is 0. The file's name is safe text and is never cut.
std::string placeText(std::string_view file, std::uint64_t line);
/// The text of a warning about a line of a file.
std::string warningText(std::string_view file, std::uint64_t line, std::string_view message);

/// A kind of warning. Define each kind as a constant: kinds are told apart by their addresses.
struct WarningKind {};

/// The warnings of a run. Of each kind the first is kept and the others are counted, because a file
/// may have a warning in each of millions of lines.
class Complaints {
 public:
  /// Adds a warning. `message()` returns its whole text. It is called only for the first warning of
  /// a kind, because finding the line may take long.
  template <class Message>
  void warn(const WarningKind& kind, const Message& message) {
    if (!isRepeated(kind)) add(kind, message());
  }

  /// The texts that tell() would write: one for each kind, in the order of their first warnings.
  std::vector<std::string> texts() const;
  /// Writes all warnings on standard error, and removes them.
  void tell();

 private:
  struct Warning {
    const WarningKind* kind;
    std::string text;
    std::uint64_t count;
  };

  /// Counts the warning if there is one of its kind.
  bool isRepeated(const WarningKind& kind) noexcept;
  void add(const WarningKind& kind, std::string_view text);

  std::vector<Warning> warnings_;
};

}  // namespace tcamshow
