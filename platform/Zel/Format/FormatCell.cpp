#include "Zel/Format/FormatCell.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Zel/Format/FormatDigits.h"

namespace Zel::FormatDetail {

namespace {

using Halvo::String;

/// A decimal number with the count of its digits.
class Decimal {
 public:
  Decimal(U64 magnitude, bool negative)
      : magnitude_(magnitude),
        digits_(magnitude < 10'000 ? smallDigits(static_cast<U32>(magnitude))
                                   : decimalDigits(magnitude)),
        negative_(negative) {}
  explicit Decimal(Number number) : Decimal(number.magnitude, number.negative) {}

  std::size_t size() const { return digits_ + (negative_ ? 1U : 0U); }

  /// Writes size() bytes. Up to 3 bytes behind them may become blanks.
  void write(char* to) const {
    *to = '-';
    to += negative_ ? 1 : 0;
    if (magnitude_ < 10'000) [[likely]] {
      // Four digits, then blanks. Leading zeros are shifted out.
      char text[8] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
      if constexpr (std::endian::native == std::endian::little) {
        U32 const value = static_cast<U32>(magnitude_);
        U16 high;
        U16 low;
        std::memcpy(&high, &decimalPairs[std::size_t{value / 100} * 2], 2);
        std::memcpy(&low, &decimalPairs[std::size_t{value % 100} * 2], 2);
        U64 const word = U64{0x2020202000000000} | U64{low} << 16 | high;
        U32 const digits = static_cast<U32>(word >> (8 * (4 - digits_)));
        std::memcpy(to, &digits, 4);
      } else {
        writeDecimal(text + digits_, magnitude_);
        std::memcpy(to, text, 4);
      }
    } else {
      writeDecimal(to + digits_, magnitude_);
    }
  }

 private:
  static U32 smallDigits(U32 value) {
    return 1U + (value >= 10 ? 1U : 0U) + (value >= 100 ? 1U : 0U) + (value >= 1000 ? 1U : 0U);
  }

  U64 magnitude_;
  U32 digits_;
  bool negative_;
};

/// A number in base 16 with the count of its digits.
class Hex {
 public:
  explicit Hex(Number number)
      : number_(number),
        digits_(std::max<U32>(static_cast<U32>(std::bit_width(number.magnitude | 1) + 3) / 4,
                              number.zeros)) {}
  std::size_t size() const { return digits_; }
  void write(char* to) const {
    const char* const alphabet =
        number_.base == Base::hexLower ? "0123456789abcdef" : "0123456789ABCDEF";
    U64 rest = number_.magnitude;
    for (char* at = to + digits_; at != to; rest >>= 4) *--at = alphabet[rest & 15];
  }

 private:
  Number number_;
  U32 digits_;
};

/// Writes a cell into memory that is filled with blanks. Returns where the cell ends. The body may
/// blank the bytes behind it: write the text after it last.
template <class Body>
[[gnu::always_inline]] inline char* putNumber(char* at, Cell cell, const Body& body) {
  std::size_t const size = body.size();
  std::size_t const field = fieldSize(cell, size);
  std::memcpy(at, &cell.before, sizeof cell.before);
  at += cell.beforeSize;
  body.write(cell.left ? at : at + (field - size));
  at += field;
  std::memcpy(at, &cell.after, sizeof cell.after);
  return at + cell.afterSize;
}

template <class Body>
[[gnu::always_inline]] inline String oneNumber(Cell cell, const Body& body) {
  String out;
  char* const at =
      out.appendUninitialized(cell.beforeSize + fieldSize(cell, body.size()) + cell.afterSize);
  std::memset(at, ' ', 48);
  *putNumber(at, cell, body) = '\0';
  return out;
}

template <class Body>
void appendNumber(String& out, Cell cell, const Body& body) {
  char text[32];
  body.write(text);
  appendCell(out, cell, {text, body.size()});
}

template <class First, class Second>
[[gnu::always_inline]] inline String twoNumbers(Cell first, const First& firstBody, Cell second,
                                                const Second& secondBody) {
  String out;
  std::size_t const size = first.beforeSize + fieldSize(first, firstBody.size()) + first.afterSize +
                           fieldSize(second, secondBody.size());
  if (size > String::inlineCapacity - cellSlack) [[unlikely]] {
    appendNumber(out, first, firstBody);
    appendNumber(out, second, secondBody);
    return out;
  }
  char* const at = out.appendUninitialized(size + second.afterSize);
  std::memset(at, ' ', String::inlineCapacity);
  *putNumber(putNumber(at, first, firstBody), second, secondBody) = '\0';
  return out;
}

// A number has at most 20 bytes, with its sign: a cell of one number always fits into a string.
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
  return number.base == Base::decimal ? oneNumber(cell, Decimal(number))
                                      : oneNumber(cell, Hex(number));
}

String numberCells(Cell first, Number firstNumber, Cell second, Number secondNumber) {
  if (firstNumber.base == Base::decimal) {
    Decimal const firstBody(firstNumber);
    return secondNumber.base == Base::decimal
               ? twoNumbers(first, firstBody, second, Decimal(secondNumber))
               : twoNumbers(first, firstBody, second, Hex(secondNumber));
  }
  Hex const firstBody(firstNumber);
  return secondNumber.base == Base::decimal
             ? twoNumbers(first, firstBody, second, Decimal(secondNumber))
             : twoNumbers(first, firstBody, second, Hex(secondNumber));
}

String decimalCell(Cell cell, U64 magnitude, bool negative) {
  return oneNumber(cell, Decimal(magnitude, negative));
}

String decimalCells(Cell first, U64 firstMagnitude, bool firstNegative, Cell second,
                    U64 secondMagnitude, bool secondNegative) {
  return twoNumbers(first, Decimal(firstMagnitude, firstNegative), second,
                    Decimal(secondMagnitude, secondNegative));
}

}  // namespace Zel::FormatDetail
