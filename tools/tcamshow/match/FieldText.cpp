#include "match/FieldText.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "io/SafeText.h"
#include "snapshot/AddressText.h"

namespace tcamshow {

TextFault::TextFault(std::size_t at, const std::string& message)
    : std::runtime_error(message), at_(at) {}
TextFault::~TextFault() = default;

namespace {

struct NamedNumber {
  std::string_view name;
  std::uint16_t number;
};
// The names of https://www.iana.org/assignments/protocol-numbers, in lower case, with ICMPv6's
// shorter one.
constexpr std::array protocols = std::to_array<NamedNumber>({{"tcp", 6},
                                                             {"udp", 17},
                                                             {"icmp", 1},
                                                             {"icmp6", 58},
                                                             {"igmp", 2},
                                                             {"gre", 47},
                                                             {"esp", 50},
                                                             {"ah", 51},
                                                             {"ospf", 89},
                                                             {"pim", 103},
                                                             {"vrrp", 112},
                                                             {"sctp", 132}});
constexpr std::array etherTypes =
    std::to_array<NamedNumber>({{"ip", 0x0800}, {"ip6", 0x86DD}, {"arp", 0x0806}});
constexpr std::string_view flagLetters = "FSRPAU";

template <std::size_t size>
bool numberByName(const std::array<NamedNumber, size>& list, std::string_view name,
                  Word& number) noexcept {
  auto const found = std::find_if(list.begin(), list.end(),
                                  [name](const NamedNumber& n) { return n.name == name; });
  if (found == list.end()) return false;
  number = found->number;
  return true;
}

template <std::size_t size>
Word wordOf(const std::array<std::uint8_t, size>& octets) noexcept {
  Word word = 0;
  for (std::uint8_t const octet : octets) word = word << 8 | octet;
  return word;
}
template <std::size_t size>
std::array<std::uint8_t, size> octetsOf(Word word) noexcept {
  std::array<std::uint8_t, size> octets{};
  for (std::size_t i = size; i-- > 0; word >>= 8) octets[i] = static_cast<std::uint8_t>(word);
  return octets;
}

/// A decimal number, or a hexadecimal one with 0x, of at most 64 bits.
bool numberFromText(std::string_view text, Word& number) noexcept {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
  }
  std::uint64_t read = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), read, base);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  number = read;
  return true;
}

/// Reads one text's values.
class ValueReader {
 public:
  ValueReader(const FieldName& name, std::string_view text) noexcept : name_(name), all_(text) {}

  FieldSets read() {
    FieldSets sets;
    std::size_t from = 0;
    for (;;) {
      std::size_t const end = std::min(all_.find('&', from), all_.size());
      auto const part = partOf(from, all_.substr(from, end - from));
      if (from == 0) {
        if (part) sets.push_back(*part);
      } else if (!sets.empty()) {
        auto const common = part ? sets.front().intersection(*part) : std::nullopt;
        sets.clear();
        if (common) sets.push_back(*common);
      }
      if (end == all_.size()) return sets;
      from = end + 1;
    }
  }

 private:
  [[noreturn]] void fail(std::size_t at, const std::string& message) const {
    throw TextFault(at, message);
  }
  unsigned bits() const noexcept { return name_.bits; }
  bool isAddress() const noexcept {
    return name_.form == ValueForm::ip || name_.form == ValueForm::ip6 ||
           name_.form == ValueForm::mac;
  }
  std::string expected() const {
    switch (name_.form) {
      case ValueForm::ip:
        return "an IPv4 address, ADDRESS/LENGTH, ADDRESS/MASK or LOW-HIGH";
      case ValueForm::ip6:
        return "an IPv6 address, ADDRESS/LENGTH, ADDRESS/MASK or LOW-HIGH";
      case ValueForm::mac:
        return "an address such as 00:1c:73:00:00:01, ADDRESS/MASK or LOW-HIGH";
      case ValueForm::protocol:
        return "a protocol's name, a number up to 255, NUMBER/MASK or LOW-HIGH";
      case ValueForm::frag:
        return "yes or no";
      case ValueForm::flags:
        return "flags such as +S-A, of F S R P A U, or a number up to 63";
      case ValueForm::etherType:
      case ValueForm::number:
        break;
    }
    return "a number up to " + std::to_string(static_cast<std::uint64_t>(lowOnes(bits()))) +
           ", NUMBER/MASK or LOW-HIGH";
  }

  Word value(std::size_t at, std::string_view text) const {
    Word word = 0;
    bool isRead = false;
    switch (name_.form) {
      case ValueForm::ip: {
        std::uint32_t address = 0;
        isRead = ipFromText(text, address);
        word = address;
        break;
      }
      case ValueForm::ip6: {
        Ip6Octets octets{};
        isRead = ip6FromText(text, octets);
        word = wordOf(octets);
        break;
      }
      case ValueForm::mac: {
        MacOctets octets{};
        isRead = macFromText(text, octets);
        word = wordOf(octets);
        break;
      }
      case ValueForm::protocol:
        isRead = protocolByName(text, word) || numberFromText(text, word);
        break;
      case ValueForm::etherType:
        isRead = numberByName(etherTypes, text, word) || numberFromText(text, word);
        break;
      case ValueForm::frag:
        isRead = text == "yes" || text == "no";
        word = text == "yes" ? 1 : 0;
        break;
      case ValueForm::flags:
      case ValueForm::number:
        isRead = numberFromText(text, word);
        break;
    }
    if (!isRead || word > lowOnes(bits())) {
      fail(at, inQuotes(text) + " is not a value of " + std::string(name_.name) + ": expected " +
                   expected());
    }
    return word;
  }

  std::optional<FieldSet> partOf(std::size_t at, std::string_view text) const {
    if (text == "any" || text == "*") return FieldSet::any(bits());
    if (name_.form == ValueForm::flags && (text.starts_with('+') || text.starts_with('-'))) {
      return flags(at, text);
    }
    if (std::size_t const slash = text.find('/'); slash != text.npos) {
      Word const word = value(at, text.substr(0, slash));
      return masked(word, at + slash + 1, text.substr(slash + 1));
    }
    // A range's ends; an address has no dash.
    if (std::size_t const dash = text.find('-', 1); !text.empty() && dash != text.npos) {
      Word const low = value(at, text.substr(0, dash));
      Word const high = value(at + dash + 1, text.substr(dash + 1));
      if (low > high) fail(at + dash + 1, "the range " + inQuotes(text) + " ends before it begins");
      return FieldSet::range(low, high, bits());
    }
    return FieldSet::exactly(value(at, text));
  }

  std::optional<FieldSet> masked(Word word, std::size_t at, std::string_view text) const {
    Word length = 0;
    if (isAddress() && numberFromText(text, length)) {
      if (length > bits()) {
        fail(at, "the prefix length " + inQuotes(text) + " is over " + std::to_string(bits()));
      }
      return FieldSet::prefix(word, static_cast<unsigned>(length), bits());
    }
    return FieldSet::cube(word, value(at, text), bits());
  }

  std::optional<FieldSet> flags(std::size_t at, std::string_view text) const {
    Word set = 0;
    Word mask = 0;
    bool isSet = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '+' || text[i] == '-') {
        isSet = text[i] == '+';
        continue;
      }
      std::size_t const letter = flagLetters.find(text[i]);
      if (letter == flagLetters.npos) {
        fail(at + i, inQuotes(text.substr(i, 1)) + " is no TCP flag: expected F, S, R, P, A or U");
      }
      Word const bit = Word{1} << letter;
      if ((mask & bit) != 0) fail(at + i, "the flag " + std::string(1, text[i]) + " stands twice");
      mask |= bit;
      if (isSet) set |= bit;
    }
    if (mask == 0) fail(at + text.size(), "expected a TCP flag: F, S, R, P, A or U");
    return FieldSet::cube(set, mask, bits());
  }

  const FieldName& name_;
  std::string_view all_;
};

void appendNumber(std::string& out, Word number, int base = 10) {
  char digits[24];
  auto const [end, error] =
      std::to_chars(digits, digits + sizeof digits, static_cast<std::uint64_t>(number), base);
  static_cast<void>(error);
  if (base == 16) out += "0x";
  out.append(digits, end);
}

void appendValue(std::string& out, const FieldName& name, Word value) {
  switch (name.form) {
    case ValueForm::ip:
      appendIp(out, static_cast<std::uint32_t>(value));
      break;
    case ValueForm::ip6:
      appendIp6(out, octetsOf<16>(value));
      break;
    case ValueForm::mac:
      appendMac(out, octetsOf<6>(value));
      break;
    case ValueForm::protocol:
      out += protocolText(value);
      break;
    case ValueForm::etherType:
      appendNumber(out, value, 16);
      break;
    case ValueForm::frag:
      out += value != 0 ? "yes" : "no";
      break;
    case ValueForm::flags:
    case ValueForm::number:
      appendNumber(out, value);
      break;
  }
}

void appendFlags(std::string& out, const FieldSet& set, unsigned bits) {
  // Those that are set come first: "+SA-F".
  Word const mask = set.mask() & lowOnes(bits);
  for (bool const isSet : {true, false}) {
    char sign = isSet ? '+' : '-';
    for (unsigned i = 0; i < flagLetters.size(); ++i) {
      Word const bit = Word{1} << i;
      if ((mask & bit) == 0 || ((set.value() & bit) != 0) != isSet) continue;
      if (sign != '\0') out += sign;
      sign = '\0';
      out += flagLetters[i];
    }
  }
}

}  // namespace

FieldSets valuesFromText(const FieldName& name, std::string_view text) {
  return ValueReader(name, text).read();
}

void valuesAppend(std::string& out, const FieldName& name, const FieldSet& set) {
  unsigned const bits = name.bits;
  if (set.isAny(bits)) {
    out += '*';
    return;
  }
  if (name.form == ValueForm::flags && set.isCube()) return appendFlags(out, set, bits);
  if (set.isExact()) return appendValue(out, name, set.low());
  bool const isAddress =
      name.form == ValueForm::ip || name.form == ValueForm::ip6 || name.form == ValueForm::mac;
  if (auto const length = set.prefixLength(bits); length && isAddress) {
    appendValue(out, name, set.value());
    out += '/';
    appendNumber(out, *length);
    return;
  }
  if (!set.isRange()) {
    appendValue(out, name, set.value());
    out += '/';
    if (isAddress) {
      appendValue(out, name, set.mask() & lowOnes(bits));
    } else {
      appendNumber(out, set.mask() & lowOnes(bits), 16);
    }
    if (set.isCube()) return;
    out += '&';
  }
  appendValue(out, name, set.low());
  out += '-';
  appendValue(out, name, set.high());
}

std::string protocolText(Word protocol) {
  auto const* const found =
      std::find_if(protocols.begin(), protocols.end(),
                   [protocol](const NamedNumber& named) { return named.number == protocol; });
  if (found != protocols.end()) return std::string(found->name);
  return std::to_string(static_cast<std::uint64_t>(protocol));
}

bool protocolByName(std::string_view name, Word& protocol) noexcept {
  return numberByName(protocols, name, protocol);
}

}  // namespace tcamshow
