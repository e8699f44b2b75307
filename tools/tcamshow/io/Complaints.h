// What the program says on standard error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tcamshow {

/// Writes a message on standard error, after the program's name, as safe text. Takes no memory: the
/// message may be that memory ran out.
void complain(std::string_view message) noexcept;

/// `FILE:LINE: `, or `FILE: ` where the line is 0; the file's name as safe text, never cut.
std::string placeText(std::string_view file, std::uint64_t line);
/// The text of a warning about a line of a file.
std::string warningText(std::string_view file, std::uint64_t line, std::string_view message);

/// A kind of warning. Each is a constant of its own: it is known by its address.
struct WarningKind {};

/// The warnings of a run. Of each kind the first is kept and the others are counted: a file of
/// millions of lines may have one in each.
class Complaints {
 public:
  /// Adds a warning. `message()`, its whole text, is called for the first of its kind alone: to
  /// name the line may take long.
  template <class Message>
  void warn(const WarningKind& kind, const Message& message) {
    if (!isRepeated(kind)) add(kind, message());
  }

  /// What tell() would write, a text for each kind in the order of their first.
  std::vector<std::string> texts() const;
  /// Writes them, and forgets them.
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
