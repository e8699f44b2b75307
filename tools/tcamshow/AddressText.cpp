#include "AddressText.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <cstring>

namespace tcamshow {
namespace {

int hexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool ipFromText(std::string_view text, std::uint32_t& address) noexcept {
  std::uint32_t result = 0;
  const char* at = text.data();
  const char* const end = at + text.size();
  for (int octet = 0; octet < 4; ++octet) {
    if (octet != 0 && (at == end || *at++ != '.')) return false;
    const char* const from = at;
    unsigned number = 0;
    while (at != end && *at >= '0' && *at <= '9' && at - from < 3) {
      number = number * 10 + static_cast<unsigned>(*at++ - '0');
    }
    if (at == from || number > 255 || (*from == '0' && at - from > 1)) return false;
    result = result << 8 | number;
  }
  if (at != end) return false;
  address = result;
  return true;
}

bool ip6FromText(std::string_view text, Ip6Octets& address) noexcept {
  char terminated[INET6_ADDRSTRLEN];
  if (text.size() >= sizeof terminated) return false;
  for (char const c : text) {
    if (hexDigit(c) < 0 && c != ':' && c != '.') return false;
  }
  std::memcpy(terminated, text.data(), text.size());
  terminated[text.size()] = '\0';
  in6_addr result;
  if (inet_pton(AF_INET6, terminated, &result) != 1) return false;
  std::memcpy(address.data(), &result, address.size());
  return true;
}

bool macFromText(std::string_view text, MacOctets& address) noexcept {
  if (text.size() != 17) return false;
  MacOctets result{};
  for (std::size_t i = 0; i < result.size(); ++i) {
    int const high = hexDigit(text[3 * i]);
    int const low = hexDigit(text[3 * i + 1]);
    if (high < 0 || low < 0 || (i != 0 && text[3 * i - 1] != ':')) return false;
    result[i] = static_cast<std::uint8_t>(high * 16 + low);
  }
  address = result;
  return true;
}

void appendIp(std::string& out, std::uint32_t address) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    char digits[3];
    auto const result = std::to_chars(digits, digits + sizeof digits, address >> shift & 0xFF);
    out.append(digits, result.ptr);
    if (shift != 0) out += '.';
  }
}

void appendIp6(std::string& out, const Ip6Octets& address) {
  char text[INET6_ADDRSTRLEN];
  out += inet_ntop(AF_INET6, address.data(), text, sizeof text);
}

void appendMac(std::string& out, const MacOctets& address) {
  static constexpr char digits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < address.size(); ++i) {
    if (i != 0) out += ':';
    out += digits[address[i] >> 4];
    out += digits[address[i] & 15];
  }
}

}  // namespace tcamshow
