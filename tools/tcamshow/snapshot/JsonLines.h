// Reading JSON Lines: the values of a line, and messages that name the member.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "io/LineReader.h"
#include "snapshot/JsonParser.h"

namespace tcamshow {

/// Reads lines of one JSON object each. The values are read in the order of the line.
///
/// A fault throws InputError. It names the file, the line, the kind of line if it is known, and the
/// member that is being read: a member of the line, a record in a collection, or a member of a
/// record. eachField() remembers which one that is.
class JsonLines {
 public:
  explicit JsonLines(InputFile file);

  const LineReader& lines() const noexcept { return lines_; }

  /// Moves to the next line that is not blank. False at the end.
  bool next();
  std::string_view line() const noexcept { return line_; }
  /// The members of the line. Each call begins at the first one again.
  ondemand::object members();
  /// The text of one member. The line must have it, at any place.
  std::string_view textOf(std::string_view member);
  /// Checks that nothing follows the line's object.
  void ended();

  /// Sets the kind of line for messages. It is empty until this call.
  void kindIs(std::string_view kind) noexcept { kind_ = kind; }
  /// Sets the member for messages, outside of eachField(). For `depth` see there.
  void memberIs(std::string_view name, std::size_t depth) noexcept { path_[depth] = name; }

  [[noreturn]] void fail(std::string_view message) const;
  /// `member "qualifiers.qualifierDSCP.mask"MESSAGE`
  [[noreturn]] void failMember(std::string_view message) const;

  // --- values

  /// A whole number in the range of its type, written as digits alone.
  template <class Number>
  Number number(ondemand::value& value) const;
  /// A string's text, valid until the next line.
  std::string_view text(ondemand::value& value, std::string_view expected = "a string") const;
  /// A string's text without control characters.
  std::string_view printable(ondemand::value& value) const;
  ondemand::object object(ondemand::value& value) const;

  /// Calls `use(name, value)` for each field. `depth` is 0 for the line's members, 1 for the
  /// records of a collection, 2 for the members of a record.
  template <class Use>
  void eachField(ondemand::object fields, std::size_t depth, const Use& use);
  /// Notes in `seen` that the field `index` was read. A second time is a fault.
  template <class Bits>
  void once(Bits& seen, std::size_t index) const {
    if ((seen >> index & 1) != 0) [[unlikely]]
      failMember(" stands twice");
    seen |= Bits{1} << index;
  }

 private:
  [[noreturn]] void failNumber(ondemand::value& value, std::string_view range) const;
  [[noreturn]] void failSyntax(std::string message) const;
  [[noreturn]] void failJson(simdjson::error_code error) const;
  void check(simdjson::error_code error) const {
    if (error != simdjson::SUCCESS) [[unlikely]]
      failJson(error);
  }
  /// As text(). `isPlain` becomes true if the text is known to hold no control character.
  std::string_view text(ondemand::value& value, std::string_view expected, bool& isPlain) const;
  std::string_view name(ondemand::field& field) const;
  bool unescape(ondemand::raw_json_string raw, std::string_view& text) const;

  LineReader lines_;
  ondemand::parser parser_;
  ondemand::document document_;
  std::string_view line_;
  // The unescaped forms of the line's texts with escapes, one after another: no longer than the
  // line.
  std::unique_ptr<std::uint8_t[]> texts_;
  std::size_t textsRoom_ = 0;
  mutable std::uint8_t* textsEnd_ = nullptr;
  std::string_view kind_;
  std::string_view path_[3];  // the member, the record, its field; none where data() is null
};

// --- the hot path: inline

template <class Number>
Number JsonLines::number(ondemand::value& value) const {
  using Limits = std::numeric_limits<Number>;
  using Wide = std::conditional_t<Limits::is_signed, std::int64_t, std::uint64_t>;
  Wide wide = 0;
  simdjson::error_code error = simdjson::SUCCESS;
  if constexpr (Limits::is_signed) {
    error = value.get_int64().get(wide);
    // -0 is refused: 0 is the only whole number that could be written in two ways.
    if (wide == 0 && value.raw_json_token().starts_with('-')) error = simdjson::INCORRECT_TYPE;
  } else {
    error = value.get_uint64().get(wide);
  }
  if (error != simdjson::SUCCESS || wide < Limits::min() || wide > Limits::max()) [[unlikely]] {
    failNumber(value, std::to_string(Limits::min()) + " to " + std::to_string(Limits::max()));
  }
  return static_cast<Number>(wide);
}

inline std::string_view JsonLines::text(ondemand::value& value, std::string_view expected,
                                        bool& isPlain) const {
  std::string_view const token = value.raw_json_token();
  if (!token.starts_with('"')) [[unlikely]]
    failMember(": " + described(value) + " is not " + std::string(expected));
  // Nearly always nothing is escaped. Then the text is a part of the line.
  const char* const from = token.data() + 1;
  const char* const end = plainEnd(from);
  isPlain = *end == '"';
  ondemand::raw_json_string raw;
  check(value.get_raw_json_string().get(raw));
  if (isPlain) [[likely]]
    return {from, static_cast<std::size_t>(end - from)};
  std::string_view text;
  if (!unescape(raw, text)) failMember(": the string has a bad escape");
  return text;
}

inline std::string_view JsonLines::text(ondemand::value& value, std::string_view expected) const {
  bool isPlain = false;
  return text(value, expected, isPlain);
}

inline std::string_view JsonLines::name(ondemand::field& field) const {
  const char* const from = field.key().raw();
  const char* const end = plainEnd(from);
  if (*end == '"') [[likely]]
    return {from, static_cast<std::size_t>(end - from)};
  std::string_view name;
  if (!unescape(field.key(), name)) failSyntax("the name of a member has a bad escape");
  return name;
}

// In place of the parser's own buffer, which it uses also where there was no memory for it.
inline bool JsonLines::unescape(ondemand::raw_json_string raw, std::string_view& text) const {
  return parser_.unescape(raw, textsEnd_).get(text) == simdjson::SUCCESS;
}

inline ondemand::object JsonLines::object(ondemand::value& value) const {
  ondemand::object result;
  simdjson::error_code const error = value.get_object().get(result);
  if (error == simdjson::INCORRECT_TYPE) [[unlikely]]
    failMember(": " + described(value) + " is not an object");
  check(error);
  return result;
}

template <class Use>
void JsonLines::eachField(ondemand::object fields, std::size_t depth, const Use& use) {
  for (auto result : fields) {
    check(result.error());
    // The field is used where it stands: it is too costly to hand over.
    ondemand::field&& field = std::move(result).value_unsafe();
    path_[depth] = name(field);
    use(path_[depth], field.value());
  }
  path_[depth] = {};
}

}  // namespace tcamshow
