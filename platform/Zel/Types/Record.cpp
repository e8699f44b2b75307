#include "Zel/Types/Record.h"

#include <algorithm>

#include "Zel/Format/LineText.h"

namespace Zel {

namespace {

[[noreturn]] void expected(const std::string& what, const CharRange& in) {
  std::string const found = in.empty() ? std::string("the end") : quotedForMessage(in.view());
  throw ParseError("expected " + what + ", found " + found);
}

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Converts digits to a number. False when it is greater than `most`. No digits give 0.
bool magnitude(std::string_view digits, U64 most, U64& number) noexcept {
  number = 0;
  for (char const c : digits) {
    U64 const digit = static_cast<U64>(c - '0');
    if (number > (most - std::min(most, digit)) / 10 || digit > most) return false;
    number = number * 10 + digit;
  }
  return true;
}

std::string decimal(bool isNegative, U64 number) {
  char digits[maxDecimalSize];
  return (isNegative ? "-" : "") + std::string(digits, writeDecimal(digits, number));
}

U64 absolute(Halvo::S64 number) noexcept {
  return number < 0 ? U64{0} - static_cast<U64>(number) : static_cast<U64>(number);
}

// The size of the UTF-8 character at the front of `text`. 0 when it must be escaped: it is not
// UTF-8, or is a control character.
std::size_t plainCharacter(std::string_view text) noexcept {
  auto const byte = [&](std::size_t i) -> unsigned {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  auto const follows = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
  unsigned const lead = byte(0);
  if (lead < 0x80) return lead >= 0x20 && lead != 0x7F ? 1 : 0;
  if (lead < 0xE0) {
    bool const isControl = lead == 0xC2 && byte(1) < 0xA0;
    return lead >= 0xC2 && follows(1) && !isControl ? 2 : 0;
  }
  if (lead < 0xF0) {
    bool const isOverlong = lead == 0xE0 && byte(1) < 0xA0;
    bool const isSurrogate = lead == 0xED && byte(1) >= 0xA0;
    return follows(1) && follows(2) && !isOverlong && !isSurrogate ? 3 : 0;
  }
  bool const isOutside =
      lead > 0xF4 || (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) >= 0x90);
  return follows(1) && follows(2) && follows(3) && !isOutside ? 4 : 0;
}

int hexDigit(char c) noexcept {
  if (isDigit(c)) return c - '0';
  char const lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Reads an escape: a backslash and what follows it.
char escaped(CharRange& in) {
  CharRange rest = in;
  rest.advance();
  char const kind = rest.empty() ? '\0' : rest.front();
  if (!rest.empty()) rest.advance();
  char result = 0;
  switch (kind) {
    case '"':
    case '\\':
      result = kind;
      break;
    case 'n':
      result = '\n';
      break;
    case 'r':
      result = '\r';
      break;
    case 't':
      result = '\t';
      break;
    case 'x': {
      std::string_view const digits = rest.view().substr(0, 2);
      if (digits.size() < 2 || hexDigit(digits[0]) < 0 || hexDigit(digits[1]) < 0) {
        expected("two hexadecimal digits behind \\x", in);
      }
      result = static_cast<char>(hexDigit(digits[0]) * 16 + hexDigit(digits[1]));
      rest.advance(2);
      break;
    }
    default:
      expected(R"(one of \" \\ \n \r \t \xHH)", in);
  }
  in = rest;
  return result;
}

bool standsForItself(char c) noexcept {
  auto const byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte != 0x7F && c != '"' && c != '\\';
}

}  // namespace

namespace impl {

U64 recordUnsigned(CharRange& in, U64 most) {
  std::string_view const digits = in.peekWhile(isDigit);
  if (digits.empty()) expected("a number", in);
  U64 number = 0;
  if (!magnitude(digits, most, number)) expected("a number up to " + decimal(false, most), in);
  in.advance(digits.size());
  return number;
}

Halvo::S64 recordSigned(CharRange& in, Halvo::S64 least, Halvo::S64 most) {
  CharRange rest = in;
  bool const isNegative = rest.skipPrefix('-');
  std::string_view const digits = rest.peekWhile(isDigit);
  if (digits.empty()) expected("a number", in);
  U64 number = 0;
  if (!magnitude(digits, absolute(isNegative ? least : most), number)) {
    expected(
        "a number from " + decimal(true, absolute(least)) + " to " + decimal(false, absolute(most)),
        in);
  }
  rest.advance(digits.size());
  in = rest;
  return static_cast<Halvo::S64>(isNegative ? U64{0} - number : number);
}

void recordUnsignedWrite(Halvo::String& out, U64 number) { appendDecimal(out, number); }

void recordSignedWrite(Halvo::String& out, Halvo::S64 number) {
  if (number < 0) out += '-';
  appendDecimal(out, absolute(number));
}

void recordOpeningRead(CharRange& in, std::string_view type) {
  CharRange rest = in;
  if (!rest.skipPrefix(type) || !rest.skipPrefix('{')) expected(std::string(type) + "{", in);
  in = rest;
}

void recordMarkRead(CharRange& in, char mark) {
  if (!in.skipPrefix(mark)) expected(std::string("'") + mark + "'", in);
}

void recordAttributeRead(CharRange& in, std::string_view attribute) {
  CharRange rest = in;
  if (!rest.skipPrefix(attribute) || !rest.skipPrefix('=')) {
    expected(std::string(attribute) + "=", in);
  }
  in = rest;
}

void recordAttributeWrite(Halvo::String& out, std::string_view attribute) {
  out += attribute;
  out += '=';
}

void recordErrorIn(std::string_view attribute, const ParseError& error) {
  throw ParseError(std::string(attribute) + ": " + error.what());
}

void recordErrorAt(const Halvo::String& text, const CharRange& in, const ParseError& error) {
  throw ParseError(std::string(error.what()) + ", at byte " +
                   decimal(false, static_cast<U64>(in.begin() - text.data())));
}

void allDataConsumed(const CharRange& in) {
  if (!in.empty()) expected("the end", in);
}

}  // namespace impl

void valueToSequence(Halvo::String& out, const bool& value) {
  out += value ? std::string_view("true") : std::string_view("false");
}

void valueToSequence(Halvo::String& out, const Halvo::String& value) {
  constexpr char digits[] = "0123456789abcdef";
  out += '"';
  std::string_view rest = value.view();
  while (!rest.empty()) {
    // Most strings need no escape: they are one run.
    std::size_t run = 0;
    while (run < rest.size() && static_cast<unsigned char>(rest[run]) < 0x80 &&
           standsForItself(rest[run])) {
      ++run;
    }
    out.append(rest.substr(0, run));
    rest.remove_prefix(run);
    if (rest.empty()) break;
    char const c = rest.front();
    std::size_t size = 1;
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        size = plainCharacter(rest);
        if (size == 0) {
          size = 1;
          auto const byte = static_cast<unsigned char>(c);
          out += "\\x";
          out += digits[byte >> 4];
          out += digits[byte & 0xF];
        } else {
          out.append(rest.substr(0, size));
        }
    }
    rest.remove_prefix(size);
  }
  out += '"';
}

void sequenceToValue(CharRange& in, bool* value) {
  if (in.skipPrefix("true")) {
    *value = true;
  } else if (in.skipPrefix("false")) {
    *value = false;
  } else {
    expected("true or false", in);
  }
}

void sequenceToValue(CharRange& in, Halvo::String* value) {
  if (!in.startsWith("\"")) expected("a string in double quotes", in);
  in.advance();
  Halvo::String text;
  for (;;) {
    text.append(in.takeWhile(standsForItself));
    if (in.skipPrefix('"')) break;
    if (in.empty() || in.front() != '\\') expected("the string's closing quote", in);
    text += escaped(in);
  }
  *value = std::move(text);
}

}  // namespace Zel
