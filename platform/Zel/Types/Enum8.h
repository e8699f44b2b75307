// The conversions of 8-bit enumerations between numbers, names and values.
//
// The functions find an enumeration by its module and its index in TypeModule::types. The type's
// TypeDescriptor::enumValues has its values and names. A header declares the conversions of an
// enumeration with ZEL_DECLARE_ENUM8; the source of the module defines them with ZEL_DEFINE_ENUM8:
//
//     ZEL_DECLARE_ENUM8(AGENT_API, StageType);
//     ZEL_DEFINE_ENUM8(StageType, agentTypes, 0)
//
//     StageTypeInstance(2) == StageTypeInstance("ingress")      stringValue(StageType(9))
//
// Cost: a number takes a binary search, or one comparison where the values are numbered 0, 1, 2...
// A name that was found before takes one hash and one comparison: a small table, which all
// enumerations share, remembers where it was found. A new or unknown name is compared with each
// name in turn. The table holds only hints, and each hint is checked before it is used. So the
// table needs no preparation, and nothing in it becomes invalid when a library with enumerations is
// unloaded.
//
// Threads: everything here is safe from any thread, also the table of hints. A type index that is
// outside the module, or does not belong to an enumeration, stops the process.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string_view>

#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/CharRange.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/TypeModule.h"

namespace Zel {

/// Converts `number` to a value. Throws RangeError, which names the type and the number, when no
/// value has this number.
VELMOR_PLATFORM_API U8 enum8FromNumber(const TypeModule& module, std::size_t type, U32 number);

/// The value with exactly this name. Throws ParseError, which names the type and the text, when
/// there is none.
VELMOR_PLATFORM_API U8 enum8FromName(const TypeModule& module, std::size_t type,
                                     std::string_view name);

/// The name of `value`; null when it has none. The text lives as long as the module.
VELMOR_PLATFORM_API const char* enum8Name(const TypeModule& module, std::size_t type,
                                          U8 value) noexcept;

/// The name of `value`. For a number without a name: the name of the type without its namespace,
/// and the number, as in "CliHeaderType(9)".
VELMOR_PLATFORM_API Halvo::String enum8StringValue(const TypeModule& module, std::size_t type,
                                                   U8 value);

/// Writes the text of enum8StringValue() as one item of the stream: width, fill and adjustment of
/// `out` apply.
VELMOR_PLATFORM_API std::ostream& enum8Write(std::ostream& out, const TypeModule& module,
                                             std::size_t type, U8 value);

/// Reads a name from the front of `in` and advances past it. The name is the longest run of ASCII
/// letters, digits and '_'. Throws ParseError, and leaves `in` as it was, when the run is empty or
/// is not the name of a value.
VELMOR_PLATFORM_API U8 enum8FromSequence(CharRange& in, const TypeModule& module, std::size_t type);

/// As the functions above, for the descriptor of an enumeration. The descriptor of another type
/// stops the process.
VELMOR_PLATFORM_API U8 enum8FromName(const TypeDescriptor& type, std::string_view name);
VELMOR_PLATFORM_API Halvo::String enum8StringValue(const TypeDescriptor& type, U8 value);

}  // namespace Zel

/// Declares the five conversions of the enumeration E, whose underlying type is U8:
///
///     E EInstance(U32 number)                       throws RangeError
///     E EInstance(const Halvo::String& name)        throws ParseError
///     Halvo::String stringValue(E value)            "E(9)" for a number that has no name
///     std::ostream& operator<<(std::ostream&, const E&)
///     void sequenceToValue(Zel::CharRange& in, E* value)
///                                                   reads a name from the front;
///                                                   throws ParseError
///
/// and its descriptor, which Zel::typeOf<E>() returns.
// NOLINTBEGIN(bugprone-macro-parentheses): types and attributes take no parentheses
#define ZEL_DECLARE_ENUM8(EXPORT, E)                                      \
  EXPORT E E##Instance(::Zel::U32 number);                                \
  EXPORT E E##Instance(const ::Halvo::String& name);                      \
  EXPORT ::Halvo::String stringValue(E value);                            \
  EXPORT ::std::ostream& operator<<(::std::ostream& out, const E& value); \
  EXPORT void sequenceToValue(::Zel::CharRange& in, E* value);            \
  EXPORT const ::Zel::TypeDescriptor& typeDescriptor(::Zel::TypeTag<E>) noexcept

#define ZEL_DEFINE_ENUM8(E, MODULE, INDEX)                                                       \
  E E##Instance(::Zel::U32 number) {                                                             \
    return static_cast<E>(::Zel::enum8FromNumber(MODULE, INDEX, number));                        \
  }                                                                                              \
  E E##Instance(const ::Halvo::String& name) {                                                   \
    return static_cast<E>(::Zel::enum8FromName(MODULE, INDEX, name));                            \
  }                                                                                              \
  ::Halvo::String stringValue(E value) { return ::Zel::enum8StringValue(MODULE, INDEX, value); } \
  ::std::ostream& operator<<(::std::ostream& out, const E& value) {                              \
    return ::Zel::enum8Write(out, MODULE, INDEX, value);                                         \
  }                                                                                              \
  void sequenceToValue(::Zel::CharRange& in, E* value) {                                         \
    *value = static_cast<E>(::Zel::enum8FromSequence(in, MODULE, INDEX));                        \
  }                                                                                              \
  const ::Zel::TypeDescriptor& typeDescriptor(::Zel::TypeTag<E>) noexcept {                      \
    return *(MODULE).types[INDEX];                                                               \
  }
// NOLINTEND(bugprone-macro-parentheses)
