// The generic conversions of 8-bit enumerations.
//
// An enumeration is known by its module and its index in it (TypeModule::types), and its values and
// names by the type's TypeDescriptor::enumValues. A header declares an enumeration's conversions
// with ZEL_DECLARE_ENUM8, and the module's source defines them with ZEL_DEFINE_ENUM8:
//
//     ZEL_DECLARE_ENUM8(AGENT_API, StageType);
//     ZEL_DEFINE_ENUM8(StageType, agentTypes, 0)
//
//     StageTypeInstance(2) == StageTypeInstance("ingress")      stringValue(StageType(9))
//
// Cost: a number is found by binary search, in one probe where the values are numbered 0, 1, 2...
// A name that was looked up before is found in one hash and one comparison through a small table of
// remembered places that all enumerations share; a first look-up, and an unknown name, compares
// with each name in turn. The table is a memory of hints, each checked before it is used: it needs
// no preparation, and nothing goes stale when a library that declares enumerations is unloaded.
//
// Threads: everything here is safe from any thread, the table of hints too. A type index that is
// not in the module, or is not an enumeration's, stops the process.
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

/// `number` as a value of the type. Throws RangeError, which names the type and the number, when
/// no value has it.
VELMOR_PLATFORM_API U8 enum8FromNumber(const TypeModule& module, std::size_t type, U32 number);

/// The value called `name`, to the letter. Throws ParseError, which names the type and the text,
/// when there is none.
VELMOR_PLATFORM_API U8 enum8FromName(const TypeModule& module, std::size_t type,
                                     std::string_view name);

/// The name of `value`; null when it has none. Lives as long as the module.
VELMOR_PLATFORM_API const char* enum8Name(const TypeModule& module, std::size_t type,
                                          U8 value) noexcept;

/// The name of `value`. A number that has none gives the type's name without namespace and the
/// number: "CliHeaderType(9)".
VELMOR_PLATFORM_API Halvo::String enum8StringValue(const TypeModule& module, std::size_t type,
                                                   U8 value);

/// Writes the text of enum8StringValue as one item: width, fill and adjustment of `out` apply.
VELMOR_PLATFORM_API std::ostream& enum8Write(std::ostream& out, const TypeModule& module,
                                             std::size_t type, U8 value);

/// Reads a name off the front of `in`: the longest run of letters, digits and '_' (ASCII). Advances
/// past it. Throws ParseError, and leaves `in` as it was, when the run is empty or no value's name.
VELMOR_PLATFORM_API U8 enum8FromSequence(CharRange& in, const TypeModule& module, std::size_t type);

/// As the functions above, for the enumeration's descriptor. Another type's stops the process.
VELMOR_PLATFORM_API U8 enum8FromName(const TypeDescriptor& type, std::string_view name);
VELMOR_PLATFORM_API Halvo::String enum8StringValue(const TypeDescriptor& type, U8 value);

}  // namespace Zel

/// The five conversions of the enumeration E, which has U8 as its underlying type:
///
///     E EInstance(U32 number)                       throws RangeError
///     E EInstance(const Halvo::String& name)        throws ParseError
///     Halvo::String stringValue(E value)            "E(9)" for a number that has no name
///     std::ostream& operator<<(std::ostream&, const E&)
///     void sequenceToValue(Zel::CharRange& in, E* value)
///                                                   reads a name off the front; ParseError
///
/// and the enumeration's descriptor, which Zel::typeOf<E>() gives.
// NOLINTBEGIN(bugprone-macro-parentheses): a type and an attribute take none
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
