// The fast way of formatting, for the cells of tables: a format of one or two fields of text or
// integers, with a little literal text around them. For Zel/Format/Format.h only.
//
// Threads: pure functions; safe from any thread.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Format/FormatGrammar.h"

namespace Zel::FormatDetail {

/// Packs up to `sizeof(Word)` bytes of text into one word, padded with blanks. The first byte of
/// the text comes first in memory. A word, unlike an array, becomes a constant in the code. Returns
/// false when the text is too long.
template <class Word>
constexpr bool packText(Word& word, U8& size, std::string_view text) {
  if (text.size() > sizeof(Word)) return false;
  char bytes[sizeof(Word)] = {};
  for (std::size_t i = 0; i < sizeof(Word); ++i) bytes[i] = i < text.size() ? text[i] : ' ';
  word = 0;
  for (std::size_t i = 0; i < sizeof(Word); ++i) {
    std::size_t const place = std::endian::native == std::endian::little ? i : sizeof(Word) - 1 - i;
    word |= static_cast<Word>(static_cast<Word>(static_cast<U8>(bytes[i])) << (8 * place));
  }
  size = static_cast<U8>(text.size());
  return true;
}

/// One field, for example "%-7s", and the literal text before and after it. 16 bytes: a call passes
/// it in two registers.
struct Cell {
  static constexpr std::size_t maxWidth = 44;

  U64 after = 0x2020202020202020;
  U32 before = 0x20202020;
  U8 width = 0;
  bool left = false;
  U8 beforeSize = 0;
  U8 afterSize = 0;
};
static_assert(sizeof(Cell) == 16);

constexpr bool isHex(const Directive& directive) {
  return directive.conversion == Conversion::hexLower ||
         directive.conversion == Conversion::hexUpper;
}

/// Whether the field of this conversion can be a cell. Its width must be short and known. It must
/// have no precision, and no flag other than "-" or, for base 16, "0".
constexpr bool isCell(const Directive& directive) {
  bool const number = directive.conversion == Conversion::signedDecimal ||
                      directive.conversion == Conversion::unsignedDecimal || isHex(directive);
  bool const text =
      directive.conversion == Conversion::text || directive.conversion == Conversion::cString;
  int const allowed = isHex(directive) && (directive.flags & left) == 0 ? zero : left;
  return ((number && (directive.shift == 0 || directive.shift == 32)) || text) &&
         (directive.flags & ~allowed) == 0 && directive.precision < 0 && directive.width >= 0 &&
         static_cast<std::size_t>(directive.width) <=
             ((directive.flags & zero) != 0 ? 16 : Cell::maxWidth);
}

/// Reads a format of one or two conversions as that many cells. Returns false when it does not have
/// the form of cells.
constexpr bool readCells(Cell* cells, std::string_view text, const Directive* directives,
                         std::size_t count, std::size_t tailBegin) {
  if (count == 0 || count > 2) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const Directive& directive = directives[i];
    if (!isCell(directive)) return false;
    // Leading zeros belong to the number, not to the cell.
    cells[i].width = (directive.flags & zero) != 0 ? U8{0} : static_cast<U8>(directive.width);
    cells[i].left = (directive.flags & left) != 0;
    // The text between two cells belongs to the first.
    std::string_view const literal = text.substr(directive.literalBegin, directive.literalSize);
    if (i == 0 ? !packText(cells[0].before, cells[0].beforeSize, literal)
               : !packText(cells[i - 1].after, cells[i - 1].afterSize, literal)) {
      return false;
    }
  }
  std::string_view const tail = text.substr(tailBegin);
  return packText(cells[count - 1].after, cells[count - 1].afterSize, tail);
}

enum class Base : U8 { decimal, hexLower, hexUpper };

/// A number as its conversion reads it. 16 bytes, like Cell.
struct Number {
  U64 magnitude;
  bool negative;
  Base base;
  U8 zeros;  ///< the least number of digits, for base 16
};

/// The number that a conversion reads from the 64 bits of an argument.
constexpr Number numberOf(const Directive& directive, U64 bits) {
  if (directive.conversion != Conversion::signedDecimal) {
    U64 const magnitude = directive.shift == 0 ? bits : U64{static_cast<U32>(bits)};
    if (!isHex(directive)) return {magnitude, false, Base::decimal, 0};
    return {magnitude, false,
            directive.conversion == Conversion::hexLower ? Base::hexLower : Base::hexUpper,
            (directive.flags & zero) != 0 ? static_cast<U8>(directive.width) : U8{0}};
  }
  S64 const number = directive.shift == 0 ? static_cast<S64>(bits) : S64{static_cast<S32>(bits)};
  bool const negative = number < 0;
  return {negative ? 0 - static_cast<U64>(number) : static_cast<U64>(number), negative,
          Base::decimal, 0};
}

/// Copies at most 63 bytes. A short text takes two overlapping moves.
[[gnu::always_inline]] inline void copyBody(char* to, const char* from, std::size_t size) {
  if (size >= 8) {
    if (size > 16) [[unlikely]] {
      std::memcpy(to, from, size);
      return;
    }
    U64 head;
    U64 tail;
    std::memcpy(&head, from, 8);
    std::memcpy(&tail, from + size - 8, 8);
    std::memcpy(to, &head, 8);
    std::memcpy(to + size - 8, &tail, 8);
  } else if (size >= 4) {
    U32 head;
    U32 tail;
    std::memcpy(&head, from, 4);
    std::memcpy(&tail, from + size - 4, 4);
    std::memcpy(to, &head, 4);
    std::memcpy(to + size - 4, &tail, 4);
  } else if (size != 0) {
    char const middle = from[size / 2];
    char const last = from[size - 1];
    to[0] = from[0];
    to[size / 2] = middle;
    to[size - 1] = last;
  }
}

/// Appends a cell of any size.
VELMOR_PLATFORM_API void appendCell(Halvo::String& out, Cell cell, std::string_view text);

/// The text on a side is moved as a whole word: a cell may overwrite this many bytes behind its
/// own. They must end before the last byte of a string, which holds the string's state.
inline constexpr std::size_t cellSlack = sizeof(Cell::after);

/// The number of bytes between the sides of a cell, for a body of `size` bytes.
constexpr std::size_t fieldSize(Cell cell, std::size_t size) {
  return size > cell.width ? size : cell.width;
}

/// Writes a cell into memory that is filled with blanks. Returns where the cell ends.
[[gnu::always_inline]] inline char* putTextCell(char* at, Cell cell, std::string_view text) {
  std::size_t const field = fieldSize(cell, text.size());
  if (cell.beforeSize != 0) std::memcpy(at, &cell.before, sizeof cell.before);
  at += cell.beforeSize;
  std::memcpy(at + field, &cell.after, sizeof cell.after);
  copyBody(cell.left ? at : at + (field - text.size()), text.data(), text.size());
  return at + field + cell.afterSize;
}

/// One cell of text, for example "%11s|". In the header, so that the cell's values become constants
/// in the code. A text of ordinary size needs no call.
[[gnu::always_inline]] inline Halvo::String inlineTextCell(Cell cell, std::string_view text) {
  Halvo::String out;
  if (text.size() > Halvo::String::inlineCapacity - cellSlack - cell.beforeSize) [[unlikely]] {
    appendCell(out, cell, text);
    return out;
  }
  char* const at =
      out.appendUninitialized(cell.beforeSize + fieldSize(cell, text.size()) + cell.afterSize);
  // A fixed size: three moves.
  static_assert(Cell::maxWidth + sizeof(Cell::before) == 48);
  std::memset(at, ' ', 48);
  *putTextCell(at, cell, text) = '\0';
  return out;
}

/// Two cells of text, for example "%15s|%15s|".
[[gnu::always_inline]] inline Halvo::String inlineTextCells(Cell first, std::string_view firstText,
                                                            Cell second,
                                                            std::string_view secondText) {
  constexpr std::size_t most = Halvo::String::inlineCapacity;
  Halvo::String out;
  std::size_t const size = first.beforeSize + fieldSize(first, firstText.size()) + first.afterSize +
                           fieldSize(second, secondText.size());
  if (firstText.size() > most || secondText.size() > most || size > most - cellSlack) [[unlikely]] {
    appendCell(out, first, firstText);
    appendCell(out, second, secondText);
    return out;
  }
  char* const at = out.appendUninitialized(size + second.afterSize);
  std::memset(at, ' ', most);
  *putTextCell(putTextCell(at, first, firstText), second, secondText) = '\0';
  return out;
}

// The same as functions that are not inlined.
VELMOR_PLATFORM_API Halvo::String textCell(Cell cell, std::string_view text);
VELMOR_PLATFORM_API Halvo::String textCells(Cell first, std::string_view firstText, Cell second,
                                            std::string_view secondText);

VELMOR_PLATFORM_API Halvo::String numberCell(Cell cell, Number number);
VELMOR_PLATFORM_API Halvo::String numberCells(Cell first, Number firstNumber, Cell second,
                                              Number secondNumber);
// The same for decimal numbers.
VELMOR_PLATFORM_API Halvo::String decimalCell(Cell cell, U64 magnitude, bool negative);
VELMOR_PLATFORM_API Halvo::String decimalCells(Cell first, U64 firstMagnitude, bool firstNegative,
                                               Cell second, U64 secondMagnitude,
                                               bool secondNegative);

/// Chooses between the two. The bases are known at compile time.
[[gnu::always_inline]] inline Halvo::String numberCellOf(Cell cell, Number number) {
  return number.base == Base::decimal ? decimalCell(cell, number.magnitude, number.negative)
                                      : numberCell(cell, number);
}
[[gnu::always_inline]] inline Halvo::String numberCellsOf(Cell first, Number a, Cell second,
                                                          Number b) {
  return a.base == Base::decimal && b.base == Base::decimal
             ? decimalCells(first, a.magnitude, a.negative, second, b.magnitude, b.negative)
             : numberCells(first, a, second, b);
}

}  // namespace Zel::FormatDetail
