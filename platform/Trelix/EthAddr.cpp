#include "Trelix/EthAddr.h"

#include "Trelix/TextOut.h"

namespace Trelix {

namespace {

const char* read(std::string_view text, std::array<U8, 6>& octets) noexcept {
  if (text.size() != EthAddr::maxTextSize) return "it is not 17 characters long";
  for (std::size_t i = 0; i < 6; ++i) {
    unsigned const high = hexValue(text[3 * i]);
    unsigned const low = hexValue(text[3 * i + 1]);
    if ((high | low) > 15) return "an octet is not two hexadecimal digits";
    if (i != 5 && text[3 * i + 2] != ':') return "octets are not joined by ':'";
    octets[i] = static_cast<U8>(high << 4 | low);
  }
  return nullptr;
}

}  // namespace

char* EthAddr::write(char* out) const noexcept {
  // In these words the lowest byte is the first character.
  U64 const number = hostOrder();
  U64 const first = hexDigits(static_cast<U32>(number >> 16));          // aabbccdd
  U64 const last = hexDigits(static_cast<U32>(number & 0xFFFF) << 16);  // eeff....
  constexpr U64 colon = ':';
  storeLowFirst(out, (first & 0xFFFF) | colon << 16 | (first >> 16 & 0xFFFF) << 24 | colon << 40 |
                         (first >> 32 & 0xFFFF) << 48);
  storeLowFirst(out + 8, colon | (first >> 48) << 8 | colon << 24 | (last & 0xFFFF) << 32 |
                             colon << 48 | (last >> 16 & 0xFF) << 56);
  out[16] = static_cast<char>(last >> 24 & 0xFF);
  return out + maxTextSize;
}

EthAddr EthAddr::parse(std::string_view text) {
  std::array<U8, 6> octets;
  if (const char* const reason = read(text, octets)) {
    throwParseError(text, "an Ethernet address", reason);
  }
  return fromBytes(octets);
}

std::optional<EthAddr> EthAddr::tryParse(std::string_view text) noexcept {
  std::array<U8, 6> octets;
  if (read(text, octets) != nullptr) return std::nullopt;
  return fromBytes(octets);
}

Halvo::String EthAddr::stringValue() const { return textOf(*this); }

std::ostream& operator<<(std::ostream& out, const EthAddr& address) {
  return writeTo(out, address);
}

}  // namespace Trelix

std::size_t std::hash<Trelix::EthAddr>::operator()(const Trelix::EthAddr& address) const noexcept {
  return Trelix::hashOf(address.hostOrder());
}
