// CharRange: a text that is read from the front.
#pragma once

#include <cstddef>
#include <string_view>

#include "Zel/Base/Assert.h"

namespace Zel {

/// The unread part of a text. begin() <= end() always holds.
///
/// A reader takes a CharRange by reference, looks at the front, and advances past the characters
/// that it used. The next reader goes on from there. The range does not own the text: the text must
/// outlive it. The text need not end in a NUL. A CharRange is a plain value.
///
/// Threads: one thread at a time.
///
///     Zel::CharRange in("cliHeaderTypeIp,7");
///     CliHeaderType type;
///     sequenceToValue(in, &type);     // in.view() is ",7" now
///     in.skipPrefix(",");             // true, and "7" is left
class CharRange {
 public:
  constexpr CharRange() noexcept = default;
  /// The bytes from `begin` up to, but not including, `end`. `end` must not be before `begin`.
  constexpr CharRange(const char* begin, const char* end) noexcept : begin_(begin), end_(end) {}
  constexpr explicit CharRange(std::string_view text) noexcept
      : begin_(text.data()), end_(text.data() + text.size()) {}

  constexpr const char* begin() const noexcept { return begin_; }
  constexpr const char* end() const noexcept { return end_; }
  constexpr bool empty() const noexcept { return begin_ == end_; }
  constexpr std::size_t size() const noexcept { return static_cast<std::size_t>(end_ - begin_); }
  constexpr std::string_view view() const noexcept { return {begin_, size()}; }

  /// The first character. Stops the process when the range is empty.
  constexpr char front() const noexcept {
    if (empty()) [[unlikely]] {
      assertionFailed({"!empty()", source, 0, "char Zel::CharRange::front() const"});
    }
    return *begin_;
  }

  /// Drops `count` characters from the front. Stops the process when there are fewer.
  constexpr void advance(std::size_t count = 1) noexcept {
    if (count > size()) [[unlikely]] {
      assertionFailed({"count <= size()", source, 0, "void Zel::CharRange::advance(std::size_t)"});
    }
    begin_ += count;
  }

  constexpr bool startsWith(std::string_view text) const noexcept {
    return view().starts_with(text);
  }

  /// Drops `text` from the front and returns true. Returns false, and drops nothing, when the range
  /// does not begin with it.
  constexpr bool skipPrefix(std::string_view text) noexcept {
    if (!startsWith(text)) return false;
    begin_ += text.size();
    return true;
  }
  constexpr bool skipPrefix(char c) noexcept {
    if (empty() || *begin_ != c) return false;
    ++begin_;
    return true;
  }

  /// Drops blanks, tabs, line feeds and carriage returns from the front. Returns how many it
  /// dropped.
  constexpr std::size_t skipSpace() noexcept {
    return takeWhile([](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }).size();
  }

  /// The longest run at the front whose characters all satisfy `pred`. Drops nothing.
  template <class Pred>
  constexpr std::string_view peekWhile(Pred pred) const {
    const char* stop = begin_;
    while (stop != end_ && pred(*stop)) ++stop;
    return {begin_, static_cast<std::size_t>(stop - begin_)};
  }
  /// As peekWhile(), and drops the run.
  template <class Pred>
  constexpr std::string_view takeWhile(Pred pred) {
    std::string_view const run = peekWhile(pred);
    begin_ += run.size();
    return run;
  }

 private:
  static constexpr const char* source = "platform/Zel/CharRange";

  const char* begin_ = nullptr;
  const char* end_ = nullptr;
};

}  // namespace Zel
