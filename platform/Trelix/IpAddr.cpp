#include "Trelix/IpAddr.h"

#include <array>

#include "Trelix/ParseIp.h"
#include "Trelix/TextOut.h"

namespace Trelix {

namespace {

// The decimal text of each octet: its characters in the three low bytes, the first one lowest, and
// its size in the top byte. So it takes one load, one store and one addition to print an octet.
constexpr std::array<U32, 256> octetTexts = [] {
  std::array<U32, 256> texts{};
  for (U32 v = 0; v < 256; ++v) {
    U32 const hundreds = v / 100 + '0';
    U32 const tens = v / 10 % 10 + '0';
    U32 const ones = v % 10 + '0';
    if (v >= 100) {
      texts[v] = hundreds | tens << 8 | ones << 16 | U32{3} << 24;
    } else if (v >= 10) {
      texts[v] = tens | ones << 8 | U32{2} << 24;
    } else {
      texts[v] = ones | U32{1} << 24;
    }
  }
  return texts;
}();

// Stores four bytes. The dot overwrites the first one that is not text.
char* writeOctetAndDot(char* out, U32 octet) noexcept {
  U32 const text = octetTexts[octet];
  storeLowFirst(out, text);
  out += text >> 24;
  *out = '.';
  return out + 1;
}

}  // namespace

char* IpAddr::write(char* out) const noexcept {
  out = writeOctetAndDot(out, number_ >> 24);
  out = writeOctetAndDot(out, (number_ >> 16) & 255);
  out = writeOctetAndDot(out, (number_ >> 8) & 255);
  // Only three bytes: the buffer may end right behind the longest text.
  U32 const text = octetTexts[number_ & 255];
  out[0] = static_cast<char>(text);
  out[1] = static_cast<char>(text >> 8);
  out[2] = static_cast<char>(text >> 16);
  return out + (text >> 24);
}

const char* readDottedQuad(std::string_view text, IpAddr& address) noexcept {
  U32 number = 0;
  std::size_t at = 0;
  for (int octet = 0; octet < 4; ++octet) {
    if (octet != 0) {
      if (at == text.size()) return "fewer than four octets";
      if (text[at] != '.') return "an octet is followed by something other than '.'";
      ++at;
    }
    std::size_t const begin = at;
    U32 value = 0;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
      value = value * 10 + static_cast<U32>(text[at] - '0');
      if (value > 255) return "an octet is over 255";
      ++at;
    }
    if (at == begin) return "an octet has no digit";
    if (at - begin > 1 && text[begin] == '0') return "an octet has a leading zero";
    number = number << 8 | value;
  }
  if (at != text.size()) return "something follows the fourth octet";
  address = IpAddr::fromHostOrder(number);
  return nullptr;
}

IpAddr IpAddr::parse(std::string_view text) {
  IpAddr address;
  if (const char* const reason = readDottedQuad(text, address)) {
    throwParseError(text, "an IPv4 address", reason);
  }
  return address;
}

std::optional<IpAddr> IpAddr::tryParse(std::string_view text) noexcept {
  IpAddr address;
  if (readDottedQuad(text, address) != nullptr) return std::nullopt;
  return address;
}

Halvo::String IpAddr::stringValue() const { return textOf(*this); }

std::ostream& operator<<(std::ostream& out, const IpAddr& address) { return writeTo(out, address); }

}  // namespace Trelix

std::size_t std::hash<Trelix::IpAddr>::operator()(const Trelix::IpAddr& address) const noexcept {
  return Trelix::hashOf(address.hostOrder());
}
