// The record notation: the text form of value types, and how it is written and read.
//
//     Agent::Flow{id=7,name="a \"b\"\x01",kind=flowKindTcp,offset=-3}
//
// A record is the name of its type and, in braces, its attributes in declared order. Each attribute
// is NAME=VALUE; commas separate them, and there are no blanks. Values:
//
// - Integers: decimal digits, with a '-' before a negative number. A number outside the range of
//   its type is an error.
// - Booleans: true, false.
// - Strings: in double quotes. \" and \\ stand for these two characters, \n \r \t for line feed,
//   carriage return and tab, \xHH (two hexadecimal digits) for any byte. The writer escapes these
//   two characters, control characters (U+0000 to U+001F, U+007F to U+009F) and bytes that are not
//   UTF-8; it writes everything else as it is. So a record is one line of valid UTF-8, and every
//   string reads back unchanged. The reader rejects control bytes that are not escaped.
// - Enumerations: the name of the value.
// - Any type that has the two functions below: what they write and read.
//
// To take part, a type has two functions in its own namespace,
//
//     void valueToSequence(Halvo::String& out, const T& value);       appends the text
//     void sequenceToValue(Zel::CharRange& in, T* value);             reads it from the front
//
// or, instead of the second, a constructor `explicit T(Zel::CharRange& in)`. The functions of a
// record consist of the steps below, one for each attribute:
//
//     Flow::Flow(Zel::CharRange& in) {
//       Zel::desAttrPre(in, "Agent::Flow", "id", &id_);
//       Zel::desAttrIntra(in, "name", &name_);
//       Zel::desAttrPost(in, "offset", &offset_);
//     }
//
// Readers throw ParseError, which names what was expected and the text that was found there. They
// leave `in` at that text, and do not change the value that was being read.
//
// Threads: safe from any thread, on values that no other thread uses.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>

#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/CharRange.h"
#include "Zel/Base/Error.h"
#include "Zel/Base/Types.h"

namespace Zel {

namespace impl {

template <class T>
concept RecordInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char>;

VELMOR_PLATFORM_API U64 recordUnsigned(CharRange& in, U64 most);
VELMOR_PLATFORM_API Halvo::S64 recordSigned(CharRange& in, Halvo::S64 least, Halvo::S64 most);
VELMOR_PLATFORM_API void recordUnsignedWrite(Halvo::String& out, U64 number);
VELMOR_PLATFORM_API void recordSignedWrite(Halvo::String& out, Halvo::S64 number);

VELMOR_PLATFORM_API void recordOpeningRead(CharRange& in, std::string_view type);
VELMOR_PLATFORM_API void recordMarkRead(CharRange& in, char mark);
VELMOR_PLATFORM_API void recordAttributeRead(CharRange& in, std::string_view attribute);
VELMOR_PLATFORM_API void recordAttributeWrite(Halvo::String& out, std::string_view attribute);
/// Throws a new error: the name of the attribute, then the text of `error`.
[[noreturn]] VELMOR_PLATFORM_API void recordErrorIn(std::string_view attribute,
                                                    const ParseError& error);
/// Throws a new error: the text of `error`, then the byte where the reader stands, counted from 0.
[[noreturn]] VELMOR_PLATFORM_API void recordErrorAt(const Halvo::String& text, const CharRange& in,
                                                    const ParseError& error);
VELMOR_PLATFORM_API void allDataConsumed(const CharRange& in);

template <class T>
constexpr T lowest = std::is_signed_v<T> ? static_cast<T>(T{1} << (8 * sizeof(T) - 1)) : T{0};

}  // namespace impl

/// Appends a number, a boolean or a string in the notation above.
template <impl::RecordInteger T>
void valueToSequence(Halvo::String& out, T value) {
  if constexpr (std::is_signed_v<T>) {
    impl::recordSignedWrite(out, value);
  } else {
    impl::recordUnsignedWrite(out, value);
  }
}
VELMOR_PLATFORM_API void valueToSequence(Halvo::String& out, const bool& value);
VELMOR_PLATFORM_API void valueToSequence(Halvo::String& out, const Halvo::String& value);
/// Appends an 8-bit enumeration: the name of the value, as stringValue() returns it. A number
/// without a name does not read back.
template <class E>
requires std::is_enum_v<E>
void valueToSequence(Halvo::String& out, const E& value) { out += stringValue(value); }

/// Reads a number, a boolean or a string from the front of `in`.
template <impl::RecordInteger T>
void sequenceToValue(CharRange& in, T* value) {
  constexpr T most = static_cast<T>(~impl::lowest<T>);
  if constexpr (std::is_signed_v<T>) {
    *value = static_cast<T>(impl::recordSigned(in, impl::lowest<T>, most));
  } else {
    *value = static_cast<T>(impl::recordUnsigned(in, most));
  }
}
VELMOR_PLATFORM_API void sequenceToValue(CharRange& in, bool* value);
VELMOR_PLATFORM_API void sequenceToValue(CharRange& in, Halvo::String* value);

/// Reads a comma and one inner attribute.
template <class T>
void desAttrIntra(CharRange& in, std::string_view attribute, T* value) {
  try {
    impl::recordMarkRead(in, ',');
    impl::recordAttributeRead(in, attribute);
    sequenceToValue(in, value);
  } catch (const ParseError& error) {
    impl::recordErrorIn(attribute, error);
  }
}
/// Reads the opening: the name of the type, the brace and the first attribute.
template <class T>
void desAttrPre(CharRange& in, std::string_view type, std::string_view attribute, T* value) {
  impl::recordOpeningRead(in, type);
  try {
    impl::recordAttributeRead(in, attribute);
    sequenceToValue(in, value);
  } catch (const ParseError& error) {
    impl::recordErrorIn(attribute, error);
  }
}
/// Reads a comma, the last attribute and the closing brace.
template <class T>
void desAttrPost(CharRange& in, std::string_view attribute, T* value) {
  desAttrIntra(in, attribute, value);
  impl::recordMarkRead(in, '}');
}

/// The matching functions for writing.
template <class T>
void serAttrIntra(Halvo::String& out, std::string_view attribute, const T& value) {
  out += ',';
  impl::recordAttributeWrite(out, attribute);
  valueToSequence(out, value);
}
template <class T>
void serAttrPre(Halvo::String& out, std::string_view type, std::string_view attribute,
                const T& value) {
  out += type;
  out += '{';
  impl::recordAttributeWrite(out, attribute);
  valueToSequence(out, value);
}
template <class T>
void serAttrPost(Halvo::String& out, std::string_view attribute, const T& value) {
  serAttrIntra(out, attribute, value);
  out += '}';
}

/// Reads all of `text` as a value. Throws ParseError, which also names the byte, when the text is
/// not such a value or when text is left over.
template <class T>
T strepToValue(const Halvo::String& text) {
  CharRange in(text.view());
  try {
    if constexpr (std::is_constructible_v<T, CharRange&>) {
      T value(in);
      impl::allDataConsumed(in);
      return value;
    } else {
      T value{};
      sequenceToValue(in, &value);
      impl::allDataConsumed(in);
      return value;
    }
  } catch (const ParseError& error) {
    impl::recordErrorAt(text, in, error);
  }
}

}  // namespace Zel

namespace ZelHalvo::Impl {

/// The text form of `value`. Zel::strepToValue() reads it back.
template <class T>
Halvo::String valueToStrep(const T& value) {
  using Zel::valueToSequence;
  Halvo::String text;
  valueToSequence(text, value);
  return text;
}

}  // namespace ZelHalvo::Impl
