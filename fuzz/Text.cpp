// Text forms: addresses against the C library, names of enumerations against their lists, and
// records. Whatever reads can be printed, and the printed text reads back as the same value.
#include <arpa/inet.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "Ip6Text.h"
#include "Target.h"
#include "Trelix.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Base/Error.h"
#include "Zel/Types/Record.h"
#include "Zel/Types/Reflect.h"
#include "Zel/Types/Value.h"

namespace {

using Halvo::String;
using Trelix::EthAddr;
using Trelix::Ip6Addr;
using Trelix::IpAddr;
using Trelix::NetU16;
using velmorfuzz::Input;
using Zel::Value;

/// The C library's result for the text. It knows no text with a NUL.
template <int family, class Octets>
std::optional<Octets> readByLibc(std::string_view text) {
  Octets octets{};
  std::string const copy(text);
  if (copy.find('\0') != copy.npos || ::inet_pton(family, copy.c_str(), &octets) != 1) return {};
  return octets;
}

template <class Address>
void checkParse(std::string_view text, const std::optional<Address>& expected) {
  std::optional<Address> const address = Address::tryParse(text);
  FUZZ_CHECK(address == expected);
  try {
    FUZZ_CHECK(std::optional(Address::parse(text)) == expected);
  } catch (const Zel::ParseError& error) {
    FUZZ_CHECK(!expected.has_value());
    FUZZ_CHECK(std::string_view(error.what()).find('\n') == std::string_view::npos);
  }
}

template <class Address>
void checkPrint(const Address& address, std::string_view expected) {
  String const text = address.stringValue();
  FUZZ_CHECK_TEXT(text, expected);
  FUZZ_CHECK(Address::parse(text) == address);
  char buffer[Address::maxTextSize];
  FUZZ_CHECK_TEXT(
      std::string_view(buffer, static_cast<std::size_t>(address.write(buffer) - buffer)), expected);
  std::ostringstream out;
  out << address;
  FUZZ_CHECK_TEXT(out.str(), expected);
}

void ipParse(Input& in) {
  std::string_view const text = in.rest();
  auto const octets = readByLibc<AF_INET, std::array<std::uint8_t, 4>>(text);
  checkParse<IpAddr>(text, octets ? std::optional(IpAddr::fromBytes(*octets)) : std::nullopt);
}

void ip6Parse(Input& in) {
  std::string_view const text = in.rest();
  auto const octets = readByLibc<AF_INET6, std::array<std::uint8_t, 16>>(text);
  checkParse<Ip6Addr>(text, octets ? std::optional(Ip6Addr::fromBytes(*octets)) : std::nullopt);
}

void ethParse(Input& in) {
  std::string_view const text = in.rest();
  std::optional<EthAddr> expected;
  if (text.size() == 17) {
    static constexpr std::string_view digits = "0123456789abcdef0123456789ABCDEF";
    std::uint64_t number = 0;
    bool isGood = true;
    for (std::size_t i = 0; i < 17; ++i) {
      if (i % 3 == 2) {
        isGood &= text[i] == ':';
      } else {
        std::size_t const digit = digits.find(text[i]);
        isGood &= digit != digits.npos;
        number = number << 4 | (digit & 15);
      }
    }
    if (isGood) expected = EthAddr::fromHostOrder(number);
  }
  checkParse<EthAddr>(text, expected);
}

void netU16Parse(Input& in) {
  std::string_view const text = in.rest();
  std::optional<NetU16> expected;
  unsigned long number = 0;
  bool const isGood =
      !text.empty() && text.size() <= 5 && text.find_first_not_of("0123456789") == text.npos &&
      (text.size() == 1 || text[0] != '0') &&
      std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
  if (isGood && number <= 65535) expected = NetU16(static_cast<Halvo::U16>(number));
  checkParse<NetU16>(text, expected);
}

/// Often zeros and ones, so that runs and masks occur.
std::array<std::uint8_t, 16> oddOctets(Input& in) {
  std::array<std::uint8_t, 16> octets{};
  unsigned const zeros = in.number<std::uint16_t>();
  for (unsigned i = 0; i < 16; ++i) {
    if ((zeros >> (i / 2) & 1) != 0) {
      octets[i] = (zeros >> (8 + i / 2) & 1) != 0 ? 0xFF : 0;
    } else {
      octets[i] = in.u8();
    }
  }
  return octets;
}

void addressPrint(Input& in) {
  std::array<std::uint8_t, 16> const octets = oddOctets(in);
  std::array<std::uint8_t, 4> const quad{octets[0], octets[1], octets[2], octets[3]};
  char text[INET6_ADDRSTRLEN];
  FUZZ_CHECK(::inet_ntop(AF_INET, quad.data(), text, sizeof text) != nullptr);
  checkPrint(IpAddr::fromBytes(quad), text);

  Ip6Addr const ip6 = Ip6Addr::fromBytes(octets);
  std::string const expected = velmorfuzz::ip6Text(octets);
  checkPrint(ip6, expected);
  // The C library writes the old IPv4-compatible addresses in another form.
  if (ip6.hostOrder(0) != 0 || ip6.hostOrder(1) != 0 || ip6.hostOrder(2) != 0) {
    FUZZ_CHECK(::inet_ntop(AF_INET6, octets.data(), text, sizeof text) != nullptr);
    FUZZ_CHECK_TEXT(text, expected);
  }
  unsigned length = 0;
  while (length < 128 && (octets[length / 8] >> (7 - length % 8) & 1) != 0) ++length;
  FUZZ_CHECK(Trelix::ip6AddrToPrefixLen(ip6) == length);
  FUZZ_CHECK(Trelix::ip6AddrToPrefixLen(Ip6Addr::prefixMask(length)) == length);
  FUZZ_CHECK((ip6 == Ip6Addr::prefixMask(length)) == (ip6 <= Ip6Addr::prefixMask(length)));

  EthAddr const mac =
      EthAddr::fromBytes({octets[4], octets[5], octets[6], octets[7], octets[8], octets[9]});
  std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", octets[4], octets[5], octets[6],
                octets[7], octets[8], octets[9]);
  checkPrint(mac, text);

  NetU16 const word = NetU16::fromBytes({octets[10], octets[11]});
  std::snprintf(text, sizeof text, "%u", octets[10] * 256U + octets[11]);
  checkPrint(word, text);
}

/// Whether `body` parses. The message of an error must be one line and not empty.
template <class Body>
bool parses(Body body) {
  try {
    body();
    return true;
  } catch (const Zel::ParseError& error) {
    FUZZ_CHECK(std::string_view(error.what()).find('\n') == std::string_view::npos);
    FUZZ_CHECK(error.what()[0] != '\0');
    return false;
  }
}

template <class E>
void enumeration(Input& in, E (*fromNumber)(Halvo::U32), E (*fromName)(const String&)) {
  auto const number = in.oddNumber<std::uint32_t>();
  std::string_view const text = in.rest();
  auto const values = Zel::typeOf<E>().enumValues;

  const char* name = nullptr;
  for (auto const& value : values) {
    if (value.number == number) name = value.name;
  }
  try {
    FUZZ_CHECK(fromNumber(number) == static_cast<E>(number) && name != nullptr);
    FUZZ_CHECK_TEXT(stringValue(static_cast<E>(number)), name);
    FUZZ_CHECK(fromName(name) == static_cast<E>(number));
  } catch (const Zel::RangeError&) {
    FUZZ_CHECK(name == nullptr);
    std::string const type = Zel::typeOf<E>().name;
    if (number < 256) {
      FUZZ_CHECK_TEXT(stringValue(static_cast<E>(number)),
                      type.substr(type.rfind(':') + 1) + "(" + std::to_string(number) + ")");
    }
  }

  auto const isWordCharacter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  };
  std::size_t word = 0;
  while (word < text.size() && isWordCharacter(text[word])) ++word;
  const Zel::EnumValue* ofWord = nullptr;
  const Zel::EnumValue* ofText = nullptr;
  for (auto const& value : values) {
    if (text.substr(0, word) == value.name) ofWord = &value;
    if (text == value.name) ofText = &value;
  }
  E read{};
  bool const isText = parses([&] { read = fromName(String(text)); });
  FUZZ_CHECK(isText == (ofText != nullptr) && (!isText || read == static_cast<E>(ofText->number)));
  Zel::CharRange range(text);
  bool const isWord = parses([&] { sequenceToValue(range, &read); });
  FUZZ_CHECK(isWord == (ofWord != nullptr) && (!isWord || read == static_cast<E>(ofWord->number)));
  FUZZ_CHECK_TEXT(range.view(), text.substr(isWord ? word : 0));
}

void enumerations(Input& in) {
  using namespace VelmorTcam;
  switch (in.below(6)) {
    case 0:
      return enumeration<CliHeaderType>(in, CliHeaderTypeInstance, CliHeaderTypeInstance);
    case 1:
      return enumeration<CliOutputType>(in, CliOutputTypeInstance, CliOutputTypeInstance);
    case 2:
      return enumeration<QualifierType>(in, QualifierTypeInstance, QualifierTypeInstance);
    case 3:
      return enumeration<RangeCheckerType>(in, RangeCheckerTypeInstance, RangeCheckerTypeInstance);
    case 4:
      return enumeration<HwQualStatus>(in, HwQualStatusInstance, HwQualStatusInstance);
    default:
      return enumeration<StageType>(in, StageTypeInstance, StageTypeInstance);
  }
}

/// A record is one line of valid UTF-8 without control characters.
void checkIsPlain(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    auto const byte = [&](std::size_t at) {
      return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    unsigned const first = byte(i);
    std::size_t const size = first < 0x80 ? 1 : first >> 5 == 6 ? 2 : first >> 4 == 14 ? 3 : 4;
    FUZZ_CHECK(first < 0x80 || (first >= 0xC2 && first <= 0xF4));
    unsigned code = size == 1 ? first : first & (0xFFU >> (size + 1));
    for (std::size_t j = 1; j < size; ++j) {
      FUZZ_CHECK(byte(i + j) >> 6 == 2);
      code = code << 6 | (byte(i + j) & 63);
    }
    static constexpr unsigned least[] = {0, 0, 0x80, 0x800, 0x10000};
    FUZZ_CHECK(code >= least[size] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF));
    FUZZ_CHECK(code >= 0x20 && (code < 0x7F || code > 0x9F));
    i += size;
  }
}

/// Prints and reads a value of one type. `same` compares two values in full.
template <class T, class Same>
void recordText(std::string_view text, Same same) {
  std::optional<T> value;
  if (!parses([&] { value.emplace(Zel::strepToValue<T>(String(text))); })) return;
  String const printed = ZelHalvo::Impl::valueToStrep(*value);
  checkIsPlain(printed);
  T const again = Zel::strepToValue<T>(printed);
  FUZZ_CHECK(same(*value, again));
  FUZZ_CHECK_TEXT(ZelHalvo::Impl::valueToStrep(again), printed);
}

template <class T>
void recordText(std::string_view text) {
  recordText<T>(text, [](const T& a, const T& b) { return a == b; });
}

bool isSame(const VelmorTcam::CliShowTcamUsageEntryInfo& a,
            const VelmorTcam::CliShowTcamUsageEntryInfo& b) {
  return a == b && a.description() == b.description() && a.hits() == b.hits();
}

void recordTexts(Input& in) {
  unsigned const type = in.below(16);
  std::string_view const text = in.rest();
  switch (type) {
    case 0:
      return recordText<bool>(text);
    case 1:
      return recordText<Halvo::U8>(text);
    case 2:
      return recordText<Halvo::U16>(text);
    case 3:
      return recordText<Halvo::U32>(text);
    case 4:
      return recordText<Halvo::U64>(text);
    case 5:
      return recordText<Halvo::S16>(text);
    case 6:
      return recordText<Halvo::S32>(text);
    case 7:
      return recordText<Halvo::S64>(text);
    case 8:
      return recordText<String>(text);
    case 9:
      return recordText<VelmorTcam::RequestKey>(text);
    case 10:
      return recordText<VelmorTcam::RuleId>(text);
    case 11:
      return recordText<VelmorTcam::TcamGroupId>(text);
    case 12:
      return recordText<VelmorTcam::CliDisplayStrings>(
          text, [](auto const&, auto const&) { return true; });
    case 13:
      return recordText<VelmorTcam::StageType>(text);
    case 14:
      return recordText<Halvo::S8>(text);
    default:
      return recordText<VelmorTcam::CliShowTcamUsageEntryInfo>(text, isSame);
  }
}

/// Reads and prints values by the name of their type, as inspection does.
void valueTexts(Input& in) {
  static constexpr const char* names[] = {
      "VelmorTcam::CliDisplayStrings", "VelmorTcam::CliShowTcamUsageEntryInfo",
      "VelmorTcam::RequestKey",        "VelmorTcam::RuleId",
      "VelmorTcam::TcamGroupId",       "VelmorTcam::StageType",
      "VelmorTcam::CliOutputType",     "VelmorTcam::CliShowTcamUsageChipInfo"};
  const Zel::TypeDescriptor* const type = Zel::findType(names[in.below(8)]);
  FUZZ_CHECK(type != nullptr);
  std::string_view const text = in.rest();
  Value value;
  if (!parses([&] { value = Value::fromText(*type, String(text)); })) return;
  FUZZ_CHECK(value.type() == type);
  String const printed = value.text();
  checkIsPlain(printed);
  Value const again = Value::fromText(*type, printed);
  FUZZ_CHECK(again == value);
  FUZZ_CHECK_TEXT(again.text(), printed);
}

void entryPrint(Input& in) {
  VelmorTcam::CliShowTcamUsageEntryInfo entry(in.oddNumber<std::uint32_t>(),
                                              in.oddNumber<std::uint32_t>());
  entry.hitsIs(in.oddNumber<std::uint64_t>());
  entry.descriptionIs(String(in.rest()));
  String const printed = ZelHalvo::Impl::valueToStrep(entry);
  checkIsPlain(printed);
  auto const again = Zel::strepToValue<VelmorTcam::CliShowTcamUsageEntryInfo>(printed);
  FUZZ_CHECK(isSame(entry, again));
  // Reading from the front takes exactly the record.
  Zel::CharRange range(printed);
  VelmorTcam::CliShowTcamUsageEntryInfo const front(range);
  FUZZ_CHECK(range.empty() && isSame(entry, front));
  // A record that is cut short cannot be read.
  std::size_t const cut = entry.hits() % printed.size();
  FUZZ_CHECK(!parses([&] {
    (void)Zel::strepToValue<VelmorTcam::CliShowTcamUsageEntryInfo>(printed.substr(0, cut));
  }));
}

}  // namespace

FUZZ_TARGET(text) {
  static constexpr velmorfuzz::Run parts[] = {ipParse,     ip6Parse,     ethParse,
                                              netU16Parse, addressPrint, enumerations,
                                              recordTexts, valueTexts,   entryPrint};
  parts[in.below(std::size(parts))](in);
}
