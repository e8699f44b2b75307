#include "Zel/FormatCell.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Zel/FormatDigits.h"

namespace Zel::FormatDetail {

namespace {

using Halvo::String;

/// A number whose digits are counted.
class Digits {
 public:
  explicit Digits(Number number)
      : number_(number),
        digits_(number.base == Base::decimal
                    ? decimalDigits(number.magnitude)
                    : std::max<U32>(static_cast<U32>(std::bit_width(number.magnitude | 1) + 3) / 4,
                                    number.zeros)) {}
  std::size_t size() const { return digits_ + (number_.negative ? 1U : 0U); }

  /// Writes exactly size() bytes.
  void write(char* to) const {
    char* at = to + size();
    *to = '-';
    if (number_.base == Base::decimal) {
      writeDecimal(at, number_.magnitude);
      return;
    }
    const char* const alphabet =
        number_.base == Base::hexLower ? "0123456789abcdef" : "0123456789ABCDEF";
    U64 rest = number_.magnitude;
    do {
      *--at = alphabet[rest & 15];
      rest >>= 4;
    } while (at != to);
  }

 private:
  Number number_;
  U32 digits_;
};

/// Writes a cell into a room of blanks; where it ends.
[[gnu::always_inline]] inline char* putNumberCell(char* at, Cell cell, const Digits& digits) {
  std::size_t const size = digits.size();
  std::size_t const field = fieldSize(cell, size);
  std::memcpy(at, &cell.before, sizeof cell.before);
  at += cell.beforeSize;
  std::memcpy(at + field, &cell.after, sizeof cell.after);
  digits.write(cell.left ? at : at + (field - size));
  return at + field + cell.afterSize;
}

// A number has at most 20 bytes: a cell of one always fits into a string.
constexpr std::size_t widestCell = sizeof(Cell::before) + Cell::maxWidth + sizeof(Cell::after);
static_assert(widestCell <= String::inlineCapacity && Cell::maxWidth >= 20);

}  // namespace

void appendCell(String& out, Cell cell, std::string_view text) {
  std::size_t const blanks = fieldSize(cell, text.size()) - text.size();
  out.append(reinterpret_cast<const char*>(&cell.before), cell.beforeSize);
  if (!cell.left) out.append(blanks, ' ');
  out.append(text);
  if (cell.left) out.append(blanks, ' ');
  out.append(reinterpret_cast<const char*>(&cell.after), cell.afterSize);
}

String textCell(Cell cell, std::string_view text) { return inlineTextCell(cell, text); }

String textCells(Cell first, std::string_view firstText, Cell second, std::string_view secondText) {
  return inlineTextCells(first, firstText, second, secondText);
}

String numberCell(Cell cell, Number number) {
  Digits const digits(number);
  String out;
  char* const at =
      out.appendUninitialized(cell.beforeSize + fieldSize(cell, digits.size()) + cell.afterSize);
  std::memset(at, ' ', 48);
  *putNumberCell(at, cell, digits) = '\0';
  return out;
}

String numberCells(Cell first, Number firstNumber, Cell second, Number secondNumber) {
  Digits const firstDigits(firstNumber);
  Digits const secondDigits(secondNumber);
  String out;
  std::size_t const size = first.beforeSize + fieldSize(first, firstDigits.size()) +
                           first.afterSize + fieldSize(second, secondDigits.size());
  if (size > String::inlineCapacity - cellSlack) [[unlikely]] {
    char text[24];
    firstDigits.write(text);
    appendCell(out, first, {text, firstDigits.size()});
    secondDigits.write(text);
    appendCell(out, second, {text, secondDigits.size()});
    return out;
  }
  char* const at = out.appendUninitialized(size + second.afterSize);
  std::memset(at, ' ', String::inlineCapacity);
  *putNumberCell(putNumberCell(at, first, firstDigits), second, secondDigits) = '\0';
  return out;
}

}  // namespace Zel::FormatDetail
