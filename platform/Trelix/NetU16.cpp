#include "Trelix/NetU16.h"

#include "Trelix/TextOut.h"

namespace Trelix {

namespace {

const char* read(std::string_view text, U16& number) noexcept {
  if (text.empty()) return "it is empty";
  U32 value = 0;
  for (char const c : text) {
    if (c < '0' || c > '9') return "it holds something other than decimal digits";
    value = value * 10 + static_cast<U32>(c - '0');
    if (value > 65535) return "it is over 65535";
  }
  if (text.size() > 1 && text.front() == '0') return "it has a leading zero";
  number = static_cast<U16>(value);
  return nullptr;
}

}  // namespace

char* NetU16::write(char* out) const noexcept { return Zel::writeDecimal(out, value()); }

NetU16 NetU16::parse(std::string_view text) {
  U16 number = 0;
  if (const char* const reason = read(text, number)) {
    throwParseError(text, "a 16-bit number", reason);
  }
  return NetU16(number);
}

std::optional<NetU16> NetU16::tryParse(std::string_view text) noexcept {
  U16 number = 0;
  if (read(text, number) != nullptr) return std::nullopt;
  return NetU16(number);
}

Halvo::String NetU16::stringValue() const { return textOf(*this); }

std::ostream& operator<<(std::ostream& out, const NetU16& number) { return writeTo(out, number); }

}  // namespace Trelix

std::size_t std::hash<Trelix::NetU16>::operator()(const Trelix::NetU16& number) const noexcept {
  return Trelix::hashOf(number.value());
}
