#include "Zel/Format/Format.h"

#include <algorithm>
#include <bit>

#include "Zel/Base/Assert.h"
#include "Zel/Format/FormatDigits.h"

namespace Zel::FormatDetail {

namespace {

constexpr AssertionSite wrongFormat{"the format's conversions fit its arguments",
                                    "platform/Zel/Format", 0,
                                    "Halvo::String Zel::_fmt(RuntimeFormat, const Args&...)"};
constexpr AssertionSite wrongAppendFormat{
    "the format's conversions fit its arguments", "platform/Zel/Format", 0,
    "void Zel::_fmtAppend(Halvo::String&, RuntimeFormat, const Args&...)"};

/// The place of the next byte, and the end of the room. Passed by value, so that both stay in
/// registers.
struct Cursor {
  char* at;
  char* limit;

  std::size_t room() const { return static_cast<std::size_t>(limit - at); }
};

/// Takes over when the room in the string is too small. The text goes on in a buffer, so that the
/// string can then be resized once. When the buffer is too small as well, the rest is only counted.
class Overflow {
 public:
  // cppcheck-suppress uninitMemberVar  // most texts never need the buffer
  explicit Overflow(char* begin) noexcept : begin_(begin) {}
  Overflow(const Overflow&) = delete;
  Overflow& operator=(const Overflow&) = delete;

  bool happened() const noexcept { return happened_; }
  /// The size of the text so far, stored or only counted.
  std::size_t size(Cursor cursor) const noexcept {
    return counted_ != 0 ? counted_ : static_cast<std::size_t>(cursor.at - begin_);
  }
  /// The text; null when it was only counted.
  const char* text() const noexcept { return counted_ != 0 ? nullptr : buffer_; }

  /// Makes room for `count` bytes. If there is none, counts them and returns a cursor without room.
  [[gnu::noinline, gnu::cold]] Cursor moreRoom(Cursor cursor, std::size_t count) noexcept {
    std::size_t const size = this->size(cursor);
    if (!happened_) {
      happened_ = true;
      if (size <= sizeof buffer_ && count <= sizeof buffer_ - size) {
        std::memcpy(buffer_, begin_, size);
        begin_ = buffer_;
        return {buffer_ + size, buffer_ + sizeof buffer_};
      }
    }
    // Never wraps: for a text above the largest string the exact size no longer matters.
    counted_ = count > Halvo::String::maxSize() || size > Halvo::String::maxSize()
                   ? Halvo::String::maxSize() + 1
                   : size + count;
    return {cursor.at, cursor.at};
  }

 private:
  char* begin_;
  std::size_t counted_ = 0;
  bool happened_ = false;
  char buffer_[512];
};

/// Whether `count` bytes may be written at the cursor. Asks `overflow` for room if need be.
[[gnu::always_inline]] inline bool claim(Cursor& cursor, Overflow& overflow, std::size_t count) {
  if (count <= cursor.room()) [[likely]] {
    return true;
  }
  cursor = overflow.moreRoom(cursor, count);
  return count <= cursor.room();
}

/// Fills at least `count` bytes at `at`, in steps of 16 if there is room. Later text overwrites the
/// bytes that were filled too far.
[[gnu::always_inline]] inline void fill(char* at, const char* limit, char byte, std::size_t count) {
  std::size_t const rounded = (count + 15) & ~std::size_t{15};
  if (count <= 64 && rounded <= static_cast<std::size_t>(limit - at)) [[likely]] {
    for (std::size_t done = 0; done < count; done += 16) std::memset(at + done, byte, 16);
  } else {
    std::memset(at, byte, count);
  }
}

/// Copies `count` bytes. A short text takes two overlapping moves and no call.
[[gnu::always_inline]] inline void copy(char* to, const char* from, std::size_t count) {
  if (count >= 8) {
    if (count <= 16) {
      U64 head;
      U64 tail;
      std::memcpy(&head, from, 8);
      std::memcpy(&tail, from + count - 8, 8);
      std::memcpy(to, &head, 8);
      std::memcpy(to + count - 8, &tail, 8);
    } else {
      std::memcpy(to, from, count);
    }
  } else if (count >= 4) {
    U32 head;
    U32 tail;
    std::memcpy(&head, from, 4);
    std::memcpy(&tail, from + count - 4, 4);
    std::memcpy(to, &head, 4);
    std::memcpy(to + count - 4, &tail, 4);
  } else if (count != 0) {
    char const middle = from[count / 2];
    char const last = from[count - 1];
    to[0] = from[0];
    to[count / 2] = middle;
    to[count - 1] = last;
  }
}

/// The flags, width and precision of one conversion, including those given by arguments.
struct Field {
  U32 width;
  S32 precision;
  U8 flags;

  bool has(Flag flag) const { return (flags & flag) != 0; }
};

/// The sign and the base mark before a number: at most three bytes, the first one lowest.
struct Prefix {
  U32 bytes = 0;
  U32 size = 0;

  void add(char byte) { bytes |= static_cast<U32>(byte) << (8 * size++); }
};

/// Lays out a number of `digits` digits. Returns where the digits go; null when the number is only
/// counted.
[[gnu::always_inline]] inline char* placeNumber(Cursor& cursor, Overflow& overflow,
                                                const Field& field, const Prefix& prefix,
                                                U32 digits) {
  std::size_t zeros = 0;
  if (field.precision > 0 && static_cast<U32>(field.precision) > digits) {
    zeros = static_cast<U32>(field.precision) - digits;
  }
  std::size_t const body = prefix.size + zeros + digits;
  std::size_t blanks = field.width > body ? field.width - body : 0;
  if (!claim(cursor, overflow, body + blanks)) return nullptr;
  char* at = cursor.at;
  cursor.at += body + blanks;
  if (blanks != 0) {
    if (field.has(left)) {
      fill(at + body, cursor.limit, ' ', blanks);
    } else if (field.has(zero)) {
      zeros += blanks;
    } else {
      fill(at, cursor.limit, ' ', blanks);
      at += blanks;
    }
  }
  for (U32 bytes = prefix.bytes; bytes != 0; bytes >>= 8) *at++ = static_cast<char>(bytes);
  if (zeros != 0) {
    // A left-aligned field already has its blanks: write no byte too far here.
    if (field.has(left)) {
      std::memset(at, '0', zeros);
    } else {
      fill(at, cursor.limit, '0', zeros);
    }
  }
  return at + zeros;
}

[[gnu::always_inline]] inline void putText(Cursor& cursor, Overflow& overflow, const Field& field,
                                           const char* text, std::size_t size) {
  std::size_t const blanks = field.width > size ? field.width - size : 0;
  // A separate test, so that the sum below cannot wrap.
  if (size > Halvo::String::maxSize()) [[unlikely]] {
    cursor = overflow.moreRoom(cursor, size);
    return;
  }
  if (!claim(cursor, overflow, size + blanks)) return;
  char* const at = cursor.at;
  cursor.at += size + blanks;
  if (blanks == 0) {
    copy(at, text, size);
  } else if (field.has(left)) {
    fill(at + size, cursor.limit, ' ', blanks);
    copy(at, text, size);
  } else {
    fill(at, cursor.limit, ' ', blanks);
    copy(at + blanks, text, size);
  }
}

[[gnu::always_inline]] inline void putLiteral(Cursor& cursor, Overflow& overflow, const char* text,
                                              std::size_t size) {
  if (!claim(cursor, overflow, size)) return;
  copy(cursor.at, text, size);
  cursor.at += size;
}

/// Writes literal text in which each percent sign stands twice.
[[gnu::noinline, gnu::cold]] Cursor putEscaped(Cursor cursor, Overflow& overflow, const char* text,
                                               std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    putLiteral(cursor, overflow, text + i, 1);
    if (text[i] == '%') ++i;
  }
  return cursor;
}

/// Writes the lowest `digits` digits, in base 2^bits, so that they end at `end`.
[[gnu::always_inline]] inline void writeBits(char* end, U64 value, U32 digits, U32 bits,
                                             const char* alphabet) {
  for (char* const begin = end - digits; end != begin; value >>= bits) {
    *--end = alphabet[value & ((1U << bits) - 1)];
  }
}

[[gnu::always_inline]] inline void putNumber(Cursor& cursor, Overflow& overflow, Field& field,
                                             const Directive& directive, U64 value) {
  Conversion const conversion = directive.conversion;
  // Keeps the bits that the length modifier asks for, with the sign of the conversion.
  value <<= directive.shift;
  if (conversion == Conversion::signedDecimal) {
    value = static_cast<U64>(static_cast<S64>(value) >> directive.shift);
  } else {
    value >>= directive.shift;
  }
  Prefix prefix;
  U32 digits;
  switch (conversion) {
    case Conversion::signedDecimal:
      if (static_cast<S64>(value) < 0) {
        prefix.add('-');
        value = 0 - value;
      } else if (field.has(plus)) {
        prefix.add('+');
      } else if (field.has(space)) {
        prefix.add(' ');
      }
      digits = decimalDigits(value);
      break;
    case Conversion::octal:
      digits = static_cast<U32>(std::bit_width(value | 1) + 2) / 3;
      break;
    case Conversion::pointer:
      if (field.has(plus)) {
        prefix.add('+');
      } else if (field.has(space)) {
        prefix.add(' ');
      }
      [[fallthrough]];
    case Conversion::hexLower:
    case Conversion::hexUpper:
      if (field.has(alternate) && value != 0) {
        prefix.add('0');
        prefix.add(conversion == Conversion::hexUpper ? 'X' : 'x');
      }
      digits = static_cast<U32>(std::bit_width(value | 1) + 3) / 4;
      break;
    default:
      digits = decimalDigits(value);
      break;
  }
  if (field.precision == 0 && value == 0) digits = 0;
  // The mark of base 8 is a leading 0, which the precision may already have produced.
  if (conversion == Conversion::octal && field.has(alternate) && (value != 0 || digits == 0)) {
    field.precision = std::max(field.precision, static_cast<S32>(digits) + 1);
  }
  char* const at = placeNumber(cursor, overflow, field, prefix, digits);
  if (at == nullptr || digits == 0) return;
  switch (conversion) {
    case Conversion::octal:
      writeBits(at + digits, value, digits, 3, "01234567");
      break;
    case Conversion::pointer:
    case Conversion::hexLower:
      writeBits(at + digits, value, digits, 4, "0123456789abcdef");
      break;
    case Conversion::hexUpper:
      writeBits(at + digits, value, digits, 4, "0123456789ABCDEF");
      break;
    default:
      writeDecimal(at + digits, value);
      break;
  }
}

/// As putNumber, for the most frequent case: a decimal number without a precision, and with no flag
/// other than "-".
[[gnu::always_inline]] inline void putPlainDecimal(Cursor& cursor, Overflow& overflow,
                                                   const Field& field, U64 value, bool negative) {
  if (negative) value = 0 - value;
  std::size_t const size = decimalDigits(value) + (negative ? 1 : 0);
  std::size_t const total = std::max(size, std::size_t{field.width});
  if (!claim(cursor, overflow, total)) return;
  char* at = cursor.at;
  cursor.at += total;
  if (total != size) {
    if (field.has(left)) {
      fill(at + size, cursor.limit, ' ', total - size);
    } else {
      fill(at, cursor.limit, ' ', total - size);
      at += total - size;
    }
  }
  if (negative) *at = '-';
  writeDecimal(at + size, value);
}

/// The size of a text that ends at its first NUL or at the precision.
[[gnu::always_inline]] inline std::size_t boundedSize(const char* text, S32 precision) {
  if (precision < 0) return std::strlen(text);
  auto const bound = static_cast<std::size_t>(precision);
  const void* const nul = std::memchr(text, 0, bound);
  return nul == nullptr ? bound : static_cast<std::size_t>(static_cast<const char*>(nul) - text);
}

/// Writes one conversion and moves `arg` past its arguments. They were checked to fit.
[[gnu::always_inline]] inline void putConversion(Cursor& cursor, Overflow& overflow,
                                                 const Directive& directive, const Arg*& arg) {
  Field field{static_cast<U32>(directive.width), directive.precision, directive.flags};
  if ((field.flags & (widthFromArg | precisionFromArg)) != 0) [[unlikely]] {
    if (field.has(widthFromArg)) {
      U32 const width = static_cast<U32>(arg++->number);
      bool const negative = width >> 31 != 0;
      field.width = negative ? 0 - width : width;
      if (negative) field.flags = static_cast<U8>((field.flags | left) & ~zero);
    }
    if (field.has(precisionFromArg)) {
      field.precision = static_cast<S32>(arg++->number);
      if (field.precision < 0) {
        field.precision = -1;
      } else {
        field.flags = static_cast<U8>(field.flags & ~zero);
      }
    }
  }
  const Arg& value = *arg++;
  const char* text = nullptr;
  std::size_t size = 0;
  bool number = false;
  char byte;
  switch (directive.conversion) {
    case Conversion::text:
      text = value.text;
      size = value.size;
      if (field.precision >= 0) size = std::min(size, static_cast<std::size_t>(field.precision));
      break;
    case Conversion::cString:
      text = value.text;
      if (text != nullptr) [[likely]] {
        size = boundedSize(text, field.precision);
      } else {
        text = "(null)";
        size = field.precision < 0 || field.precision >= 6 ? 6 : 0;
      }
      break;
    case Conversion::character:
      byte = static_cast<char>(value.number);
      text = &byte;
      size = 1;
      break;
    case Conversion::pointer:
      number = value.number != 0;
      text = "(nil)";
      size = 5;
      break;
    case Conversion::signedDecimal:
    case Conversion::unsignedDecimal:
      if (field.precision < 0 && (field.flags & (zero | plus | space)) == 0) [[likely]] {
        U64 const shifted = value.number << directive.shift;
        if (directive.conversion == Conversion::signedDecimal) {
          S64 const narrow = static_cast<S64>(shifted) >> directive.shift;
          putPlainDecimal(cursor, overflow, field, static_cast<U64>(narrow), narrow < 0);
        } else {
          putPlainDecimal(cursor, overflow, field, shifted >> directive.shift, false);
        }
        return;
      }
      [[fallthrough]];
    default:
      number = true;
      break;
  }
  if (number) {
    putNumber(cursor, overflow, field, directive, value.number);
  } else {
    putText(cursor, overflow, field, text, size);
  }
}

/// A format that was parsed and checked at compile time.
struct ReadFormat {
  const Head& head;
  const Directive* directives;
  const Arg* args;

  [[gnu::always_inline]] Cursor put(Cursor cursor, Overflow& overflow) const {
    const Arg* arg = args;
    for (const Directive *directive = directives, *const end = directives + head.conversions;
         directive != end; ++directive) {
      putPiece(cursor, overflow, directive->literalBegin, directive->literalSize,
               (directive->flags & escapes) != 0);
      putConversion(cursor, overflow, *directive, arg);
    }
    putPiece(cursor, overflow, head.tailBegin, head.tailSize, head.tailEscapes);
    return cursor;
  }

 private:
  [[gnu::always_inline]] void putPiece(Cursor& cursor, Overflow& overflow, std::size_t begin,
                                       std::size_t size, bool escaped) const {
    if (size == 0) return;
    if (escaped) [[unlikely]] {
      cursor = putEscaped(cursor, overflow, head.text + begin, size);
    } else {
      putLiteral(cursor, overflow, head.text + begin, size);
    }
  }
};

/// A format that is parsed while it is written.
struct UnreadFormat {
  std::string_view text;
  const Arg* args;
  const ArgKind* kinds;
  std::size_t count;
  const AssertionSite& site;

  [[gnu::always_inline]] Cursor put(Cursor cursor, Overflow& overflow) const {
    const char* at = text.data();
    const char* const end = at + text.size();
    const Arg* arg = args;
    std::size_t next = 0;
    while (at != end) {
      const char* const literal = at;
      while (at != end && *at != '%') ++at;
      if (at != literal) {
        putLiteral(cursor, overflow, literal, static_cast<std::size_t>(at - literal));
        if (at == end) break;
      }
      ++at;
      if (at != end && *at == '%') {
        putLiteral(cursor, overflow, at++, 1);
        continue;
      }
      Directive directive;
      assertThat(readConversion(at, end, directive) == Fault::none, site);
      assertThat(bindConversion(directive, kinds, count, next) == Fault::none, site);
      putConversion(cursor, overflow, directive, arg);
    }
    assertThat(next == count, site);
    return cursor;
  }
};

/// Writes a format, in one shared copy of the code. Only format() has a copy of its own.
template <class Format>
[[gnu::noinline]] Cursor putApart(const Format& format, Cursor cursor, Overflow& overflow) {
  return format.put(cursor, overflow);
}

/// Completes a text that did not fit into the string. The string is back at its first size.
template <class Format>
[[gnu::noinline, gnu::cold]] void appendOverflowed(Halvo::String& out, const Format& format,
                                                   Overflow& overflow, Cursor cursor) {
  std::size_t const size = overflow.size(cursor);
  char* const to = out.appendUninitialized(size);
  if (const char* const text = overflow.text()) {
    std::memcpy(to, text, size);
  } else {
    Overflow exact(to);
    Cursor const end = putApart(format, {to, to + size}, exact);
    // Another thread may have changed a text since it was measured.
    out.shrinkBy(end.room());
  }
}

template <class Format>
[[gnu::always_inline]] inline void finish(Halvo::String& out, const Format& format, Cursor cursor,
                                          Overflow& overflow, std::size_t room) {
  if (!overflow.happened()) [[likely]] {
    out.shrinkBy(cursor.room());
  } else {
    out.shrinkBy(room);
    appendOverflowed(out, format, overflow, cursor);
  }
}

template <class Format>
void appendTo(Halvo::String& out, const Format& format, std::size_t room) {
  char* const to = out.appendUninitialized(room);
  Overflow overflow(to);
  Cursor const cursor = putApart(format, {to, to + room}, overflow);
  finish(out, format, cursor, overflow, room);
}

/// Whether `pointer` points into the text of `out` or to its end.
bool liesIn(const Halvo::String& out, const char* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer) - reinterpret_cast<std::uintptr_t>(out.data()) <=
         out.size();
}

template <class Format>
void appendBeside(Halvo::String& out, const Format& format, const char* text, std::size_t count) {
  // Writing overwrites the NUL of `out`, and growing moves its text. Neither may happen while
  // arguments that point into `out` are read: then the text is built apart. An integer that looks
  // like such a pointer only costs that copy.
  bool within = liesIn(out, text);
  for (std::size_t i = 0; i < count; ++i) within |= liesIn(out, format.args[i].text);
  if (within) [[unlikely]] {
    Halvo::String apart;
    appendTo(apart, format, Halvo::String::inlineCapacity);
    out.append(apart.view());
  } else {
    appendTo(out, format, out.capacity() - out.size());
  }
}

}  // namespace

Halvo::String format(const Head& head, const Directive* directives, const Arg* args) {
  Halvo::String result;
  constexpr std::size_t room = Halvo::String::inlineCapacity;
  char* const to = result.appendUninitialized(room);
  Overflow overflow(to);
  ReadFormat const format{head, directives, args};
  Cursor const cursor = format.put({to, to + room}, overflow);
  finish(result, format, cursor, overflow, room);
  return result;
}

void formatAppend(Halvo::String& out, const Head& head, const Directive* directives,
                  const Arg* args, std::size_t count) {
  appendBeside(out, ReadFormat{head, directives, args}, head.text, count);
}

namespace {

/// Reads `text` as one cell of text with nothing before it, for example "%13s|". Returns false when
/// it has another form.
bool readTextCell(Cell& cell, std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  if (at == end || *at++ != '%') return false;
  if (at != end && *at == '0') return false;
  std::size_t width = 0;
  while (at != end && *at >= '0' && *at <= '9' && width <= Cell::maxWidth) {
    width = width * 10 + static_cast<std::size_t>(*at++ - '0');
  }
  if (at == end || *at++ != 's' || width > Cell::maxWidth) return false;
  std::string_view const after(at, static_cast<std::size_t>(end - at));
  if (after.find('%') != after.npos || !packText(cell.after, cell.afterSize, after)) return false;
  cell.width = static_cast<U8>(width);
  return true;
}

}  // namespace

Halvo::String formatRuntime(std::string_view text, const Arg* args, const ArgKind* kinds,
                            std::size_t count) {
  if (count == 1 && kinds[0] == ArgKind::text) {
    Cell cell;
    if (readTextCell(cell, text)) return textCell(cell, {args[0].text, args[0].size});
  }
  Halvo::String result;
  appendTo(result, UnreadFormat{text, args, kinds, count, wrongFormat},
           Halvo::String::inlineCapacity);
  return result;
}

void formatAppendRuntime(Halvo::String& out, std::string_view text, const Arg* args,
                         const ArgKind* kinds, std::size_t count) {
  appendBeside(out, UnreadFormat{text, args, kinds, count, wrongAppendFormat}, text.data(), count);
}

}  // namespace Zel::FormatDetail
