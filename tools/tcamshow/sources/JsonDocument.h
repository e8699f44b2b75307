// A whole JSON document, visited once from its beginning to its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/JsonParser.h"

namespace tcamshow {

class JsonDocument;

/// One value of a document. Its texts are valid as long as the document. Visit the members or items
/// of a value once, from the first on, before you ask for the next value.
class JsonValue {
 public:
  enum class Kind : std::uint8_t { object, array, string, number, other };

  bool isObject() const noexcept { return kind_ == Kind::object; }
  bool isArray() const noexcept { return kind_ == Kind::array; }
  bool isString() const noexcept { return kind_ == Kind::string; }
  bool isNumber() const noexcept { return kind_ == Kind::number; }
  /// A string's text. Any other value as it is written; not for an object or array.
  std::string_view text() const noexcept { return text_; }
  /// The value in the form for a message.
  std::string shown() const;
  /// The beginning of the value in the document.
  const char* begin() const noexcept { return begin_; }

  using UseMember = std::function<void(std::string_view name, JsonValue& value)>;
  using UseItem = std::function<void(JsonValue& value)>;
  /// Calls `use` for each member of an object.
  void eachMember(const UseMember& use);
  /// Calls `use` for each item of an array, or for each member's value of an object.
  void eachItem(const UseItem& use);

 private:
  friend class JsonDocument;
  JsonValue() = default;

  JsonDocument* document_ = nullptr;
  ondemand::value value_;
  ondemand::object object_;
  const char* begin_ = nullptr;
  std::string_view text_;
  Kind kind_ = Kind::other;
};

/// The value of a member as JsonFields gives it.
struct JsonField {
  bool isText = false;    ///< whether it is neither an object nor an array
  std::string_view text;  ///< a string's text; empty for an object; else the value as it is written
  const char* begin = nullptr;
};

/// A whole document. Its syntax is checked before the first value is given: after that, only the
/// meaning can be wrong.
///
/// Memory: the text, and up to four times its size until visited() is called. The unescaped form of
/// a text replaces what is written.
class JsonDocument {
 public:
  static constexpr std::size_t largest = std::size_t{64} << 20;
  static constexpr std::size_t deepest = 64;

  /// Reads the whole file. Throws InputError, which names the line, if the text is not a JSON
  /// object, is nested deeper than `deepest` values, or is larger than `largest` bytes.
  /// `most` is the largest size in place of `largest`.
  explicit JsonDocument(InputFile file, std::size_t most = largest);
  JsonDocument(const JsonDocument&) = delete;
  JsonDocument& operator=(const JsonDocument&) = delete;

  const std::string& fileName() const noexcept { return file_.name(); }
  /// The document's object. Call it once.
  JsonValue root();

  /// Whether a member is wanted whose name begins with `start`. That is the whole name, or the part
  /// before its first escape.
  using WantsMember = std::function<bool(std::string_view start, bool isWhole)>;
  /// `value` is the text of the member's value. It may be read with JsonFields.
  using UseText = std::function<void(std::string_view name, std::string_view value)>;
  /// Calls `use` for each wanted member of the document's object, and skips the others unread. Call
  /// it once, in place of root().
  void eachWanted(const WantsMember& wants, const UseText& use);

  /// The line of a place in the text, counted from 1. It is slow: only for messages.
  std::uint64_t lineOf(const char* at) const noexcept;

  /// A place in the text as its distance from the beginning, to save memory. The texts of values
  /// are such places, except texts with a line feed.
  std::uint32_t offsetOf(const char* at) const noexcept {
    return static_cast<std::uint32_t>(at - text_.get());
  }
  const char* at(std::uint32_t offset) const noexcept { return text_.get() + offset; }

  /// Keeps `text` as long as the document.
  std::string_view keep(std::string text) { return kept_.emplace_back(std::move(text)); }
  /// Frees the memory that only visiting needs. Do not use values after that.
  void visited() noexcept { parser_.reset(); }

 private:
  friend class JsonValue;

  void read();
  void checkSyntax() const;
  [[noreturn]] void fail(std::size_t at, const std::string& message) const;
  static void check(simdjson::error_code error);
  JsonValue valueOf(ondemand::value from);
  /// The text of a string that begins at `from`, behind its quote.
  std::string_view stringAt(const char* from);

  InputFile file_;
  std::size_t most_;
  std::unique_ptr<char[]> text_;  // the parser's padding stands behind it
  std::size_t size_ = 0;
  std::unique_ptr<ondemand::parser> parser_;
  ondemand::document document_;
  std::string unescaped_;  // the last text that had escapes, and its padding
  std::deque<std::string> kept_;
};

/// Reads the members of one object of a document at a time, also when the document was visited. It
/// keeps its memory from one object to the next.
class JsonFields {
 public:
  using UseField = std::function<void(std::string_view name, const JsonField& field)>;
  /// Calls `use` for each member of the object that `text` is: a part of a document, at its place
  /// there. Texts are valid until the next call.
  void each(std::string_view text, const UseField& use);
  /// The text of the member's value, if there is one with that name and it is an object.
  std::string_view objectAt(std::string_view text, std::string_view name);

 private:
  std::string_view stringAt(const char* from);

  ondemand::parser parser_;
  std::string unescaped_;
  std::deque<std::string> texts_;
};

}  // namespace tcamshow
