// A whole JSON document in memory, with the lines its values stand on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "io/LineReader.h"

namespace tcamshow {

struct JsonMember;

/// One value. Members keep the document's order, and no two of an object have one name.
struct JsonValue {
  enum class Kind { null, boolean, number, string, object, array };

  Kind kind = Kind::null;
  std::uint64_t line = 0;  ///< where the value begins, or a string or number ends; from 1
  std::string text;        ///< a string's text; a number, or true or false, as it was written
  std::vector<JsonMember> members;
  std::vector<JsonValue> items;

  bool isObject() const noexcept { return kind == Kind::object; }
  bool isArray() const noexcept { return kind == Kind::array; }
  bool isString() const noexcept { return kind == Kind::string; }
  bool isNumber() const noexcept { return kind == Kind::number; }
  /// Null when there is no such member.
  const JsonValue* find(std::string_view name) const noexcept;
  /// As a message shows it.
  std::string shown() const;
};

struct JsonMember {
  std::string name;
  JsonValue value;
};

/// Reads the document that `file` holds, to its end. Throws InputError, which names the line, when
/// it is no JSON, is nested deeper than 64 values, has a member twice or is larger than 64 MiB.
JsonValue readJsonDocument(InputFile& file);

}  // namespace tcamshow
