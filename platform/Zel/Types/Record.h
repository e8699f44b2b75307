// The record notation: the text form of value types, written and read.
//
//     Agent::Flow{id=7,name="a \"b\"\x01",kind=flowKindTcp,offset=-3}
//
// A record is its type's name and, between braces, its attributes in declared order as NAME=VALUE,
// with commas between them and no blanks. Values:
//
// - Integers in decimal, with a '-' before a negative one. A number outside its type's range is an
//   error.
// - Booleans: true, false.
// - Strings between double quotes. \" and \\ stand for these two characters, \n \r \t for line
//   feed, carriage return and tab, \xHH (two hexadecimal digits) for any byte. The writer writes
//   control characters (U+0000 to U+001F, U+007F to U+009F) and bytes that are not UTF-8 that way,
//   all others as they are; so a record is one line of valid UTF-8, and every string reads back
//   unchanged. The reader does not accept a control byte as it stands.
// - Enumerations by the name of their value; any type that has the two functions below.
//
// A type takes part by two functions in its own namespace,
//
//     void valueToSequence(Halvo::String& out, const T& value);       appends the text
//     void sequenceToValue(Zel::CharRange& in, T* value);             reads it off the front
//
// or, in place of the second, a constructor `explicit T(Zel::CharRange& in)`. A record's functions
// are made of the steps below, one for each attribute:
//
//     Flow::Flow(Zel::CharRange& in) {
//       Zel::desAttrPre(in, "Agent::Flow", "id", &id_);
//       Zel::desAttrIntra(in, "name", &name_);
//       Zel::desAttrPost(in, "offset", &offset_);
//     }
//
// Readers throw ParseError, which names what was expected and the text that stands there; `in` is
// left at that text, and the value that was being read as it was.
//
// Threads: everything is safe from any thread, on values that are its own.
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
/// Throws `error` anew with the attribute's name before its text.
[[noreturn]] VELMOR_PLATFORM_API void recordErrorIn(std::string_view attribute,
                                                    const ParseError& error);
/// Throws `error` anew with the byte at which the reader stands, counted from 0, behind its text.
[[noreturn]] VELMOR_PLATFORM_API void recordErrorAt(const Halvo::String& text, const CharRange& in,
                                                    const ParseError& error);
VELMOR_PLATFORM_API void allDataConsumed(const CharRange& in);

template <class T>
constexpr T lowest = std::is_signed_v<T> ? static_cast<T>(T{1} << (8 * sizeof(T) - 1)) : T{0};

}  // namespace impl

/// Appends a number, boolean or string in the notation above.
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
/// An 8-bit enumeration: the name of its value. A number that has none is written as its decimal
/// digits, and does not read back.
template <class E>
requires std::is_enum_v<E>
void valueToSequence(Halvo::String& out, const E& value) { out += stringValue(value); }

/// Reads a number, boolean or string off the front of `in`.
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

/// One inner attribute, and the comma before it.
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
/// The opening: the type's name, the brace and the first attribute.
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
/// The last attribute and the closing brace.
template <class T>
void desAttrPost(CharRange& in, std::string_view attribute, T* value) {
  desAttrIntra(in, attribute, value);
  impl::recordMarkRead(in, '}');
}

/// The matching writers.
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

/// The value that all of `text` reads as. Throws ParseError, which also tells the byte, when it
/// does not, or when text is left over.
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

/// The text form of `value`; Zel::strepToValue reads it back.
template <class T>
Halvo::String valueToStrep(const T& value) {
  using Zel::valueToSequence;
  Halvo::String text;
  valueToSequence(text, value);
  return text;
}

}  // namespace ZelHalvo::Impl
