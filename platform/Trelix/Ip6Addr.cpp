#include "Trelix/Ip6Addr.h"

#include <cstring>

#include "Trelix/ParseIp.h"
#include "Trelix/TextOut.h"

namespace Trelix {

namespace {

constexpr std::size_t groupCount = 8;

// The zero groups that "::" stands for. The size is 0 when no run has two or more groups.
struct ZeroRun {
  U8 begin;
  U8 size;
};

// The run for each set of zero groups. Bit i of the index stands for group i.
constexpr std::array<ZeroRun, 256> zeroRuns = [] {
  std::array<ZeroRun, 256> runs{};
  for (unsigned set = 0; set < 256; ++set) {
    ZeroRun best{groupCount, 0};
    for (unsigned begin = 0; begin < groupCount; ++begin) {
      unsigned end = begin;
      while (end < groupCount && (set >> end & 1) != 0) ++end;
      unsigned const size = end - begin;
      // Only a longer run replaces a run further left.
      if (size >= 2 && size > best.size) best = {static_cast<U8>(begin), static_cast<U8>(size)};
    }
    runs[set] = best;
  }
  return runs;
}();

// Writes a group without leading zeros. `digits` has its four digits, the first one in the low
// byte.
char* writeGroup(char* out, U32 group, U32 digits) noexcept {
  auto const zeros = static_cast<U32>(__builtin_clz((group | 1) << 16)) / 4;
  // Always stores four bytes: those behind the text are overwritten by later text, or are never
  // read.
  storeLowFirst(out, digits >> (zeros * 8));
  return out + (4 - zeros);
}

// The eight groups of an address. write() writes groups `begin` to `end` - 1, joined by colons.
struct Groups {
  U32 words[4];
  U64 digits[4];

  char* write(char* out, std::size_t begin, std::size_t end) const noexcept {
    for (std::size_t i = begin; i < end; ++i) {
      if (i != begin) *out++ = ':';
      bool const low = (i & 1) != 0;
      U32 const word = words[i / 2];
      U64 const text = digits[i / 2];
      out = writeGroup(out, low ? word & 0xFFFF : word >> 16,
                       static_cast<U32>(low ? text >> 32 : text));
    }
    return out;
  }
};

const char* readGroups(std::string_view text, std::array<U8, 16>& octets) noexcept {
  constexpr std::size_t none = groupCount + 1;
  U32 groups[groupCount];
  std::size_t count = 0;
  std::size_t gap = none;  // how many groups come before the "::"
  std::size_t at = 0;
  if (text.empty()) return "it is empty";
  if (text.starts_with("::")) {
    gap = 0;
    at = 2;
  } else if (text.front() == ':') {
    return "it begins with a single ':'";
  }
  while (at < text.size()) {
    if (count == groupCount) return "more than eight groups";
    std::size_t const begin = at;
    U32 value = 0;
    for (; at < text.size(); ++at) {
      unsigned const digit = hexValue(text[at]);
      if (digit > 15) break;
      if (at - begin == 4) return "a group has more than four digits";
      value = value << 4 | digit;
    }
    if (at == begin) {
      return text[at] == ':' ? "more than two ':' in a row" : "a group has no hexadecimal digit";
    }
    if (at < text.size() && text[at] == '.') {
      if (count > groupCount - 2) return "no room for the dotted quad";
      IpAddr quad;
      if (const char* const reason = readDottedQuad(text.substr(begin), quad)) return reason;
      groups[count++] = quad.hostOrder() >> 16;
      groups[count++] = quad.hostOrder() & 0xFFFF;
      break;
    }
    groups[count++] = value;
    if (at == text.size()) break;
    if (text[at] != ':') return "a group is followed by something other than ':'";
    ++at;
    if (at == text.size()) return "it ends with a single ':'";
    if (text[at] == ':') {
      if (gap != none) return "more than one \"::\"";
      gap = count;
      ++at;
    }
  }
  std::size_t zeros = 0;
  if (gap == none) {
    if (count < groupCount) return "fewer than eight groups";
    gap = count;
  } else {
    if (count == groupCount) return "eight groups and a \"::\"";
    zeros = groupCount - count;
  }
  octets = {};
  for (std::size_t i = 0; i < count; ++i) {
    std::size_t const place = 2 * (i < gap ? i : i + zeros);
    octets[place] = static_cast<U8>(groups[i] >> 8);
    octets[place + 1] = static_cast<U8>(groups[i]);
  }
  return nullptr;
}

}  // namespace

char* Ip6Addr::write(char* out) const noexcept {
  if (isIp4Mapped()) {
    std::memcpy(out, "::ffff:", 7);  // NOLINT(bugprone-not-null-terminated-result): more follows
    return IpAddr::fromNetworkOrder(words_[3]).write(out + 7);
  }
  Groups groups;
  unsigned zeroSet = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    U32 const word = hostOrder(i);
    groups.words[i] = word;
    groups.digits[i] = hexDigits(word);
    zeroSet |= static_cast<unsigned>(word >> 16 == 0) << (2 * i) |
               static_cast<unsigned>((word & 0xFFFF) == 0) << (2 * i + 1);
  }
  ZeroRun const run = zeroRuns[zeroSet];
  out = groups.write(out, 0, run.begin);
  if (run.size != 0) {
    *out++ = ':';
    *out++ = ':';
    out = groups.write(out, std::size_t{run.begin} + run.size, groupCount);
  }
  return out;
}

Ip6Addr Ip6Addr::parse(std::string_view text) {
  std::array<U8, 16> octets;
  if (const char* const reason = readGroups(text, octets)) {
    throwParseError(text, "an IPv6 address", reason);
  }
  return fromBytes(octets);
}

std::optional<Ip6Addr> Ip6Addr::tryParse(std::string_view text) noexcept {
  std::array<U8, 16> octets;
  if (readGroups(text, octets) != nullptr) return std::nullopt;
  return fromBytes(octets);
}

Halvo::String Ip6Addr::stringValue() const { return textOf(*this); }

U8 ip6AddrToPrefixLen(const Ip6Addr& mask) noexcept {
  int ones = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    int const inWord = std::countl_one(mask.hostOrder(i));
    ones += inWord;
    if (inWord != 32) break;
  }
  return static_cast<U8>(ones);
}

std::ostream& operator<<(std::ostream& out, const Ip6Addr& address) {
  return writeTo(out, address);
}

}  // namespace Trelix

std::size_t std::hash<Trelix::Ip6Addr>::operator()(const Trelix::Ip6Addr& address) const noexcept {
  using Trelix::U64;
  auto const half = [&](std::size_t i) {
    return U64{address.networkOrder(i)} << 32 | address.networkOrder(i + 1);
  };
  return Trelix::hashOf(half(0) ^ Trelix::hashOf(half(2) + 1));
}
