// Formatting: printf into a String. Formats are checked when they are compiled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Format/FormatCell.h"
#include "Zel/Format/FormatGrammar.h"

// The formats are the printf formats of C, in the "C" locale:
//
//     format     ::= { text | "%%" | conversion }
//     conversion ::= "%" { flag } [ width ] [ "." [ precision ] ] [ length ] letter
//     flag       ::= "-" | "+" | " " | "#" | "0"
//     width      ::= number | "*"            in bytes; at most 2147483647
//     precision  ::= number | "*"            absent after "." means 0; at most 2147483647
//     length     ::= "hh" | "h" | "l" | "ll" | "j" | "z" | "t"
//     letter     ::= "d" | "i" | "u" | "x" | "X" | "o" | "c" | "s" | "p"
//
//     letter           length       argument
//     d i u x X o      none, h, hh  integer, bool, char, unscoped enumeration of at most 4 bytes
//     d i u x X o      l ll j z t   the same, of exactly 8 bytes
//     c                none         as d; prints its low byte
//     s                none         const char*, array of char, Halvo::String, std::string,
//                                   std::string_view
//     p                none         pointer to data, nullptr, array
//     the "*" of any                as d; a negative width means "-" and its absolute value, a
//                                   negative precision means none
//
// Exactly as in C:
// - The conversion decides on the sign: an unsigned 4294967295 prints "-1" by %d, an int -1 prints
//   "4294967295" by %u. h and hh cut the value: 300 prints "44" by %hhd.
// - "0" is ignored when there is a "-" or, for integers, a precision. A flag that has no meaning
//   for its letter is ignored too ("+" for u, "#" for d, "0" for s).
// - With precision 0, the value 0 prints no digit, except by %#o.
// - %p prints "0x..." in lower case, and "(nil)" for null. A null const char* prints "(null)", or
//   nothing when the precision is below 6.
// - A const char* is read up to its NUL or its precision, whichever comes first.
//
// Where C leaves it open, or is different:
// - A text that knows its size prints all its bytes, also NUL bytes. An array of char prints up to
//   its first NUL; without a NUL it prints whole.
// - Not supported: %n, floating point, wide text, "%1$d", and anything between the two signs of
//   "%%".
// - Refused: a length modifier before c, s or p, and a NUL byte in a literal format.

namespace Zel {

namespace FormatDetail {

/// An argument. Its type is stored elsewhere.
struct Arg {
  union {
    U64 number;  ///< integers, extended to 64 bits by their own sign; the address of a pointer
    const char* text;
  };
  std::size_t size;  ///< size of a text that knows its size
};
static_assert(sizeof(Arg) == 16);

template <std::size_t count>
using ArgArray = Arg[count == 0 ? 1 : count];

/// The part of a parsed format that does not depend on the number of its arguments. Its conversions
/// are stored beside it.
struct Head {
  const char* text = nullptr;
  U16 conversions = 0;
  U16 tailBegin = 0;  ///< the literal text after the last conversion
  U16 tailSize = 0;
  bool tailEscapes = false;
};

template <class T>
inline constexpr bool isSizedText =
    std::is_same_v<T, Halvo::String> || std::is_same_v<T, std::string> ||
    std::is_same_v<T, std::string_view>;

template <class T>
inline constexpr bool isInteger = std::is_integral_v<T> ||
                                  (std::is_enum_v<T> && std::is_convertible_v<T, U64>);

/// The kind of an argument of type T. T has no const.
template <class T>
consteval ArgKind kindOf() {
  using Decayed = std::decay_t<T>;
  if constexpr (isInteger<T>) {
    return sizeof(+T{}) == 8 ? ArgKind::int8 : ArgKind::int4;
  } else if constexpr (isSizedText<T>) {
    return ArgKind::text;
  } else if constexpr (std::is_same_v<Decayed, char*> || std::is_same_v<Decayed, const char*>) {
    return (std::is_array_v<T>) ? ArgKind::array : ArgKind::cString;
  } else if constexpr (std::is_null_pointer_v<T>) {
    return ArgKind::pointer;
  } else if constexpr (std::is_pointer_v<Decayed>) {
    return (std::is_function_v<std::remove_pointer_t<Decayed>>) ? ArgKind::unsupported
                                                                : ArgKind::pointer;
  } else {
    return ArgKind::unsupported;
  }
}

template <std::size_t count>
using KindArray = ArgKind[count == 0 ? 1 : count];

/// The number of bytes before the first NUL in an array of `size` chars. The compiler counts them
/// for a literal.
inline std::size_t arraySize(const char* text, std::size_t size) noexcept {
  if (__builtin_constant_p(std::strlen(text)) != 0 && std::strlen(text) < size) {
    return std::strlen(text);
  }
  const void* const nul = std::memchr(text, 0, size);
  return nul == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(nul) - text);
}

template <class T>
inline Arg argOf(const T& value) noexcept {
  constexpr ArgKind kind = kindOf<T>();
  Arg arg;
  arg.size = 0;
  if constexpr (isInteger<T>) {
    arg.number = static_cast<U64>(+value);
  } else if constexpr (kind == ArgKind::text) {
    arg.text = value.data();
    arg.size = value.size();
  } else if constexpr (kind == ArgKind::array) {
    arg.text = value;
    arg.size = arraySize(value, sizeof value);
  } else if constexpr (kind == ArgKind::cString) {
    arg.text = value;
  } else if constexpr (std::is_null_pointer_v<T>) {
    arg.number = 0;
  } else {
    static_assert(kind == ArgKind::pointer, "no conversion takes an argument of this type");
    const volatile void* const pointer = value;
    arg.number = reinterpret_cast<std::uintptr_t>(pointer);
  }
  return arg;
}

template <class... Args>
inline constexpr bool areNumbers = (isInteger<Args> && ...);
template <class... Args>
inline constexpr bool areTexts = ((kindOf<Args>() == ArgKind::text ||
                                   kindOf<Args>() == ArgKind::array ||
                                   kindOf<Args>() == ArgKind::cString) &&
                                  ...);

/// The text that %s prints for an argument.
template <class T>
inline std::string_view textOf(const T& value) noexcept {
  if constexpr (kindOf<T>() == ArgKind::cString) {
    const char* const text = value;
    return text == nullptr ? std::string_view("(null)") : std::string_view(text);
  } else {
    Arg const arg = argOf(value);
    return {arg.text, arg.size};
  }
}

/// Whether the cell of this text is built inline. Not for an array whose end is only known at run
/// time: compilers would warn about moves that its size cannot have.
template <class T>
[[gnu::always_inline]] inline bool isInPlace(std::string_view text) noexcept {
  return kindOf<T>() != ArgKind::array || __builtin_constant_p(text.size());
}

template <class T>
[[gnu::always_inline]] inline Halvo::String textCellOf(const Cell* cells, const T& value) {
  std::string_view const text = textOf(value);
  return isInPlace<T>(text) ? inlineTextCell(cells[0], text) : textCell(cells[0], text);
}

template <class T, class U>
[[gnu::always_inline]] inline Halvo::String textCellsOf(const Cell* cells, const T& first,
                                                        const U& second) {
  std::string_view const a = textOf(first);
  std::string_view const b = textOf(second);
  return isInPlace<T>(a) && isInPlace<U>(b) ? inlineTextCells(cells[0], a, cells[1], b)
                                            : textCells(cells[0], a, cells[1], b);
}

VELMOR_PLATFORM_API Halvo::String format(const Head& head, const Directive* directives,
                                         const Arg* args);
VELMOR_PLATFORM_API void formatAppend(Halvo::String& out, const Head& head,
                                      const Directive* directives, const Arg* args,
                                      std::size_t count);
VELMOR_PLATFORM_API Halvo::String formatRuntime(std::string_view text, const Arg* args,
                                                const ArgKind* kinds, std::size_t count);
VELMOR_PLATFORM_API void formatAppendRuntime(Halvo::String& out, std::string_view text,
                                             const Arg* args, const ArgKind* kinds,
                                             std::size_t count);

}  // namespace FormatDetail

/// A format, parsed and checked at compile time: its conversions fit arguments of the types Args. A
/// format that does not fit does not compile. The compiler's message names a function that says
/// what is wrong, such as theFormatHasMoreConversionsThanArguments. A format has at most 65535
/// bytes.
template <class... Args>
class FormatString {
 public:
  /// `literal` is a string literal or another constant text.
  template <class T>
  requires std::is_convertible_v<const T&, std::string_view>
  consteval FormatString(const T& literal) {
    std::string_view text = literal;
    // An array is read to its end, so that a NUL in a literal cannot silently end the format.
    // cppcheck-suppress compareBoolExpressionWithInt  // nothing is compared
    if constexpr (std::is_array_v<T>) text = {literal, std::extent_v<T> - 1};
    read(text);
  }

  const FormatDetail::Head& head() const noexcept { return head_; }
  const FormatDetail::Directive* directives() const noexcept { return directives_; }
  /// Whether the format consists of one or two cells, which cells() then returns.
  bool isCells() const noexcept { return isCells_; }
  const FormatDetail::Cell* cells() const noexcept { return cells_; }

 private:
  static_assert(((FormatDetail::kindOf<Args>() != FormatDetail::ArgKind::unsupported) && ...),
                "no conversion takes an argument of this type");

  consteval void read(std::string_view text) {
    if (text.size() > 0xFFFF) FormatDetail::theFormatIsTooLong();
    if (text.find('\0') != text.npos) FormatDetail::theFormatHoldsANulByte();
    constexpr std::size_t count = sizeof...(Args);
    constexpr FormatDetail::KindArray<count> kinds = {FormatDetail::kindOf<Args>()...};
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* literal = begin;
    const char* at = begin;
    bool escapes = false;
    std::size_t next = 0;
    while (at != end) {
      if (*at != '%') {
        ++at;
        continue;
      }
      if (end - at > 1 && at[1] == '%') {
        escapes = true;
        at += 2;
        continue;
      }
      FormatDetail::Directive directive;
      directive.literalBegin = static_cast<U16>(literal - begin);
      directive.literalSize = static_cast<U16>(at - literal);
      ++at;
      FormatDetail::compileFault(FormatDetail::readConversion(at, end, directive));
      FormatDetail::compileFault(FormatDetail::bindConversion(directive, kinds, count, next));
      if (escapes) directive.flags = static_cast<U8>(directive.flags | FormatDetail::escapes);
      directives_[head_.conversions++] = directive;
      literal = at;
      escapes = false;
    }
    if (next != count) FormatDetail::compileFault(FormatDetail::Fault::tooManyArguments);
    head_.text = begin;
    head_.tailBegin = static_cast<U16>(literal - begin);
    head_.tailSize = static_cast<U16>(end - literal);
    head_.tailEscapes = escapes;
    for (std::size_t i = 0; i < head_.conversions; ++i)
      escapes |= (directives_[i].flags & FormatDetail::escapes) != 0;
    isCells_ =
        !escapes && FormatDetail::readCells(cells_, text, directives_, count, head_.tailBegin);
  }

  FormatDetail::Head head_;
  FormatDetail::Directive directives_[sizeof...(Args) == 0 ? 1 : sizeof...(Args)];
  FormatDetail::Cell cells_[2];
  bool isCells_ = false;
};

/// A format that is known only at run time. It refers to its text: pass it on at once, as an
/// argument.
class RuntimeFormat {
 public:
  std::string_view text() const noexcept { return text_; }

 private:
  explicit RuntimeFormat(std::string_view text) noexcept : text_(text) {}
  friend RuntimeFormat runtimeFormat(std::string_view text) noexcept;

  std::string_view text_;
};

/// Marks a text as a format that the compiler cannot check. The size of the text says where it
/// ends: a NUL byte in it is literal text.
inline RuntimeFormat runtimeFormat(std::string_view text) noexcept { return RuntimeFormat(text); }

/// Returns the text of `format` with its conversions replaced by the arguments, as C's printf does.
/// The table above says which arguments fit.
///
/// A result of at most 63 bytes allocates nothing; a longer one allocates once. Throws
/// std::bad_alloc when memory runs out and std::length_error beyond Halvo::String::maxSize(). Never
/// stops the process: a format that does not fit does not compile.
///
/// Threads: pure; safe from any thread.
///
///     Zel::_fmt("%-7u|", 12U)             // "12     |"
///     Zel::_fmt("%d/0x%02X", 46, 63)      // "46/0x3F"
///     Zel::_fmt("%.*s", 3, "abcdef")      // "abc"
template <class... Args>
[[gnu::always_inline]] inline Halvo::String _fmt(FormatString<std::type_identity_t<Args>...> format,
                                                 const Args&... args) {
  FormatDetail::ArgArray<sizeof...(Args)> const erased = {FormatDetail::argOf(args)...};
  // The compiler knows which branch applies; the others generate no code.
  if constexpr (sizeof...(Args) == 1 && FormatDetail::areNumbers<Args...>) {
    if (format.isCells()) {
      return FormatDetail::numberCellOf(
          format.cells()[0], FormatDetail::numberOf(format.directives()[0], erased[0].number));
    }
  } else if constexpr (sizeof...(Args) == 2 && FormatDetail::areNumbers<Args...>) {
    if (format.isCells()) {
      return FormatDetail::numberCellsOf(
          format.cells()[0], FormatDetail::numberOf(format.directives()[0], erased[0].number),
          format.cells()[1], FormatDetail::numberOf(format.directives()[1], erased[1].number));
    }
  } else if constexpr (sizeof...(Args) == 1 && FormatDetail::areTexts<Args...>) {
    if (format.isCells()) return FormatDetail::textCellOf(format.cells(), args...);
  } else if constexpr (sizeof...(Args) == 2 && FormatDetail::areTexts<Args...>) {
    if (format.isCells()) return FormatDetail::textCellsOf(format.cells(), args...);
  }
  return FormatDetail::format(format.head(), format.directives(), erased);
}

/// Appends the text that _fmt would return to `out`, without a string in between. If it throws,
/// `out` is unchanged. The arguments may refer to `out`.
template <class... Args>
[[gnu::always_inline]] inline void _fmtAppend(Halvo::String& out,
                                              FormatString<std::type_identity_t<Args>...> format,
                                              const Args&... args) {
  FormatDetail::ArgArray<sizeof...(Args)> const erased = {FormatDetail::argOf(args)...};
  FormatDetail::formatAppend(out, format.head(), format.directives(), erased, sizeof...(Args));
}

/// As the other _fmt, for a format known only at run time. Stops the process (assertion "the
/// format's conversions fit its arguments") when the conversions do not fit the arguments in kind,
/// size or number, when a conversion is unknown, or when the format ends within one. It never reads
/// an argument that is not there.
///
///     Zel::_fmt(Zel::runtimeFormat(format), text)
template <class... Args>
// cppcheck-suppress passedByValue  // two registers
Halvo::String _fmt(RuntimeFormat format, const Args&... args) {
  FormatDetail::ArgArray<sizeof...(Args)> const erased = {FormatDetail::argOf(args)...};
  FormatDetail::KindArray<sizeof...(Args)> const kinds = {FormatDetail::kindOf<Args>()...};
  return FormatDetail::formatRuntime(format.text(), erased, kinds, sizeof...(Args));
}

/// As the other _fmtAppend, for a format known only at run time. `format` may refer to `out`.
template <class... Args>
// cppcheck-suppress passedByValue  // two registers
void _fmtAppend(Halvo::String& out, RuntimeFormat format, const Args&... args) {
  FormatDetail::ArgArray<sizeof...(Args)> const erased = {FormatDetail::argOf(args)...};
  FormatDetail::KindArray<sizeof...(Args)> const kinds = {FormatDetail::kindOf<Args>()...};
  FormatDetail::formatAppendRuntime(out, format.text(), erased, kinds, sizeof...(Args));
}

}  // namespace Zel
