// The grammar of formats: how a conversion is read, and which arguments it takes. Formats at
// compile time and at run time go through the same reader. For Zel/Format/Format.h only.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <cstddef>

#include "Zel/Base/Types.h"

namespace Zel::FormatDetail {

/// The kinds of arguments that conversions tell apart.
enum class ArgKind : U8 {
  unsupported,
  int4,     ///< an integer of 4 bytes after promotion
  int8,     ///< an integer of 8 bytes
  cString,  ///< a pointer to text that ends at a NUL or at the precision
  text,     ///< text of a known size
  array,    ///< an array of char: for %s its text up to a NUL or its end, for %p its address
  pointer,
};

enum class Conversion : U8 {
  signedDecimal,
  unsignedDecimal,
  octal,
  hexLower,
  hexUpper,
  pointer,
  character,
  cString,
  text,
};

enum Flag : U8 {
  left = 1,
  zero = 2,
  alternate = 4,
  plus = 8,
  space = 16,
  widthFromArg = 32,
  precisionFromArg = 64,
  escapes = 128,  ///< the literal text before the conversion holds "%%"
};

/// One parsed conversion. 16 bytes, so that a call site stores it with one instruction.
struct Directive {
  U16 literalBegin = 0;  ///< the literal text before the conversion, as the format spells it
  U16 literalSize = 0;
  S32 width = 0;
  S32 precision = -1;  ///< -1: none
  Conversion conversion = Conversion::text;
  U8 flags = 0;
  U8 shift = 0;       ///< 64 minus the number of bits that the length modifier keeps
  bool wide = false;  ///< the length modifier asks for 8 bytes
};
static_assert(sizeof(Directive) == 16);

enum class Fault : U8 {
  none,
  incompleteConversion,
  unknownConversion,
  numberTooLarge,
  modifierNotForConversion,
  tooFewArguments,
  tooManyArguments,
  starNeedsInt,
  notAnInteger,
  integerSize,
  notText,
  notAPointer,
};

/// Reads the digits at `at` into `number`, and moves `at` behind them.
constexpr Fault readNumber(const char*& at, const char* end, S32& number) {
  constexpr U64 largest = 0x7FFFFFFF;
  U64 value = 0;
  for (; at != end; ++at) {
    U32 const digit = static_cast<U32>(*at) - '0';
    if (digit > 9) break;
    value = value * 10 + digit;
    if (value > largest) return Fault::numberTooLarge;
  }
  number = static_cast<S32>(value);
  return Fault::none;
}

/// Reads hh, h, l, ll, j, z or t, and returns whether there was one. Length modifiers are for
/// integers only.
constexpr bool readLengthModifier(const char*& at, const char* end, Directive& directive) {
  directive.shift = 32;
  if (at == end) return false;
  switch (*at) {
    case 'h':
      directive.shift = 48;
      if (++at != end && *at == 'h') {
        directive.shift = 56;
        ++at;
      }
      return true;
    case 'l':
      if (++at != end && *at == 'l') ++at;
      break;
    case 'j':
    case 'z':
    case 't':
      ++at;
      break;
    default:
      return false;
  }
  directive.shift = 0;
  directive.wide = true;
  return true;
}

/// Reads one conversion. `at` must be behind its '%'; it is left behind its letter.
constexpr Fault readConversion(const char*& at, const char* end, Directive& directive) {
  U32 flags = 0;
  // No flag character is above '0'.
  for (; at != end && *at <= '0'; ++at) {
    if (*at == '-') {
      flags |= left;
    } else if (*at == '0') {
      flags |= zero;
    } else if (*at == '#') {
      flags |= alternate;
    } else if (*at == '+') {
      flags |= plus;
    } else if (*at == ' ') {
      flags |= space;
    } else {
      break;
    }
  }
  if (at != end && *at == '*') {
    flags |= widthFromArg;
    ++at;
  } else if (Fault const fault = readNumber(at, end, directive.width); fault != Fault::none) {
    return fault;
  }
  if (at != end && *at == '.') {
    ++at;
    if (at != end && *at == '*') {
      flags |= precisionFromArg;
      ++at;
    } else if (Fault const fault = readNumber(at, end, directive.precision); fault != Fault::none) {
      return fault;
    }
  }
  bool const modified = readLengthModifier(at, end, directive);
  if (at == end) return Fault::incompleteConversion;
  U32 meaningful = left | widthFromArg | precisionFromArg;
  bool number = true;
  switch (*at++) {
    case 'd':
    case 'i':
      directive.conversion = Conversion::signedDecimal;
      meaningful |= zero | plus | space;
      break;
    case 'u':
      directive.conversion = Conversion::unsignedDecimal;
      meaningful |= zero;
      break;
    case 'o':
      directive.conversion = Conversion::octal;
      meaningful |= zero | alternate;
      break;
    case 'x':
      directive.conversion = Conversion::hexLower;
      meaningful |= zero | alternate;
      break;
    case 'X':
      directive.conversion = Conversion::hexUpper;
      meaningful |= zero | alternate;
      break;
    case 'p':
      directive.conversion = Conversion::pointer;
      meaningful |= zero | plus | space | alternate;
      flags |= alternate;
      directive.shift = 0;
      number = false;
      break;
    case 'c':
      directive.conversion = Conversion::character;
      number = false;
      break;
    case 's':
      directive.conversion = Conversion::text;
      number = false;
      break;
    default:
      return Fault::unknownConversion;
  }
  if (modified && !number) return Fault::modifierNotForConversion;
  if ((flags & left) != 0 || directive.precision >= 0) meaningful &= ~U32{zero};
  directive.flags = static_cast<U8>(flags & meaningful);
  return Fault::none;
}

/// Checks the conversion against the arguments from number `next` on, and moves `next` past those
/// it takes.
constexpr Fault bindConversion(Directive& directive, const ArgKind* kinds, std::size_t count,
                               std::size_t& next) {
  U32 const stars = ((directive.flags & widthFromArg) != 0 ? 1U : 0U) +
                    ((directive.flags & precisionFromArg) != 0 ? 1U : 0U);
  if (count - next <= stars) return Fault::tooFewArguments;
  for (U32 star = 0; star < stars; ++star) {
    if (kinds[next++] != ArgKind::int4) return Fault::starNeedsInt;
  }
  ArgKind const kind = kinds[next++];
  bool const integer = kind == ArgKind::int4 || kind == ArgKind::int8;
  switch (directive.conversion) {
    case Conversion::text:
    case Conversion::cString:
      if (kind == ArgKind::cString) {
        directive.conversion = Conversion::cString;
      } else if (kind != ArgKind::text && kind != ArgKind::array) {
        return Fault::notText;
      }
      return Fault::none;
    case Conversion::pointer:
      return kind == ArgKind::pointer || kind == ArgKind::cString || kind == ArgKind::array
                 ? Fault::none
                 : Fault::notAPointer;
    default:
      if (!integer) return Fault::notAnInteger;
      return directive.wide == (kind == ArgKind::int8) ? Fault::none : Fault::integerSize;
  }
}

// Never defined: when a format is wrong, the compiler's message names one of these.
void theFormatEndsWithinAConversion();
void theConversionIsUnknown();
void theWidthOrPrecisionIsTooLarge();
void theLengthModifierIsNotForThisConversion();
void theFormatHasMoreConversionsThanArguments();
void theFormatHasFewerConversionsThanArguments();
void theArgumentOfAStarIsNotAnInt();
void theArgumentIsNotAnInteger();
void theArgumentSizeDoesNotFitTheLengthModifier();
void theArgumentIsNotText();
void theArgumentIsNotAPointer();
void theFormatHoldsANulByte();
void theFormatIsTooLong();

/// Does not compile if there is a fault. The compiler's message then names it.
consteval void compileFault(Fault fault) {
  switch (fault) {
    case Fault::none:
      break;
    case Fault::incompleteConversion:
      theFormatEndsWithinAConversion();
      break;
    case Fault::unknownConversion:
      theConversionIsUnknown();
      break;
    case Fault::numberTooLarge:
      theWidthOrPrecisionIsTooLarge();
      break;
    case Fault::modifierNotForConversion:
      theLengthModifierIsNotForThisConversion();
      break;
    case Fault::tooFewArguments:
      theFormatHasMoreConversionsThanArguments();
      break;
    case Fault::tooManyArguments:
      theFormatHasFewerConversionsThanArguments();
      break;
    case Fault::starNeedsInt:
      theArgumentOfAStarIsNotAnInt();
      break;
    case Fault::notAnInteger:
      theArgumentIsNotAnInteger();
      break;
    case Fault::integerSize:
      theArgumentSizeDoesNotFitTheLengthModifier();
      break;
    case Fault::notText:
      theArgumentIsNotText();
      break;
    case Fault::notAPointer:
      theArgumentIsNotAPointer();
      break;
  }
}

}  // namespace Zel::FormatDetail
