#include "Trelix.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

#include "Zel/Base/Error.h"

namespace {

using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;
using Trelix::EthAddr;
using Trelix::Ip6Addr;
using Trelix::IpAddr;
using Trelix::NetU16;

template <int family, class Address>
std::string ntop(const Address& address) {
  char text[INET6_ADDRSTRLEN];
  auto const bytes = address.bytes();
  return inet_ntop(family, bytes.data(), text, sizeof text);
}

// Writes into a buffer of exactly maxTextSize bytes, with guard bytes around it.
template <class Address>
std::string written(const Address& address) {
  constexpr std::size_t guard = 8;
  char buffer[guard + Address::maxTextSize + guard];
  std::memset(buffer, '#', sizeof buffer);
  char* const end = address.write(buffer + guard);
  EXPECT_EQ(std::string(buffer, guard), std::string(guard, '#'));
  EXPECT_EQ(std::string(buffer + guard + Address::maxTextSize, guard), std::string(guard, '#'));
  return std::string(buffer + guard, end);
}

template <class Address>
std::string streamed(const Address& address) {
  std::ostringstream out;
  out << address;
  return out.str();
}

template <class Address>
std::string parseErrorOf(std::string_view text) {
  try {
    Address::parse(text);
  } catch (const Zel::ParseError& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST(IpAddr, KeepsOrdersApart) {
  constexpr IpAddr address = IpAddr::fromHostOrder(0xC0000201);
  static_assert(address.hostOrder() == 0xC0000201);
  static_assert(address == IpAddr::fromBytes({192, 0, 2, 1}));
  EXPECT_EQ(address, IpAddr::fromNetworkOrder(htonl(0xC0000201)));
  EXPECT_EQ(address.networkOrder(), htonl(0xC0000201));
  EXPECT_EQ(address.bytes(), (std::array<U8, 4>{192, 0, 2, 1}));
  EXPECT_EQ(IpAddr().hostOrder(), 0U);
}

TEST(IpAddr, PrintsAsTheCLibraryDoes) {
  std::mt19937 random(1);
  std::vector<U32> numbers;
  for (U32 octet = 0; octet < 256; ++octet) {
    for (unsigned shift = 0; shift < 32; shift += 8) numbers.push_back(octet << shift);
    numbers.push_back(octet * 0x01010101U);
  }
  for (int i = 0; i < 200'000; ++i) numbers.push_back(static_cast<U32>(random()));
  for (U32 const number : numbers) {
    IpAddr const address = IpAddr::fromHostOrder(number);
    std::string const expected = ntop<AF_INET>(address);
    ASSERT_EQ(address.stringValue().view(), expected);
    ASSERT_EQ(written(address), expected);
    ASSERT_EQ(IpAddr::parse(expected), address);
  }
  EXPECT_EQ(streamed(IpAddr::fromHostOrder(0x0A000001)), "10.0.0.1");
}

TEST(IpAddr, RefusesWhatIsNoDottedQuad) {
  using namespace std::string_view_literals;
  struct Row {
    std::string_view text;
    const char* reason;
  } const rows[] = {
      {"", "an octet has no digit"},
      {"1", "fewer than four octets"},
      {"1.2.3", "fewer than four octets"},
      {"1.2.3.", "an octet has no digit"},
      {".1.2.3", "an octet has no digit"},
      {"1..2.3", "an octet has no digit"},
      {"1.2.3.4.", "something follows the fourth octet"},
      {"1.2.3.4.5", "something follows the fourth octet"},
      {"1.2.3.4 ", "something follows the fourth octet"},
      {"1.2.3.4\0"sv, "something follows the fourth octet"},
      {"1.2.3.4/8", "something follows the fourth octet"},
      {" 1.2.3.4", "an octet has no digit"},
      {"+1.2.3.4", "an octet has no digit"},
      {"-1.2.3.4", "an octet has no digit"},
      {"1.2.3.-4", "an octet has no digit"},
      {"256.0.0.0", "an octet is over 255"},
      {"0.0.0.256", "an octet is over 255"},
      {"1.2.3.99999999999999999999", "an octet is over 255"},
      {"01.2.3.4", "an octet has a leading zero"},
      {"1.2.3.00", "an octet has a leading zero"},
      {"1.2.003.4", "an octet has a leading zero"},
      {"1,2.3.4", "an octet is followed by something other than '.'"},
      {"0x1.2.3.4", "an octet is followed by something other than '.'"},
      {"1.2.3.a", "an octet has no digit"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(IpAddr::tryParse(row.text), std::nullopt);
    EXPECT_NE(
        parseErrorOf<IpAddr>(row.text).find(std::string(" is not an IPv4 address: ") + row.reason),
        std::string::npos)
        << parseErrorOf<IpAddr>(row.text);
  }
  EXPECT_EQ(parseErrorOf<IpAddr>("10.0.0.256"),
            "'10.0.0.256' is not an IPv4 address: an octet is over 255");
}

TEST(IpAddr, MakesMasks) {
  EXPECT_EQ(IpAddr::prefixMask(0).stringValue(), "0.0.0.0");
  EXPECT_EQ(IpAddr::prefixMask(1).stringValue(), "128.0.0.0");
  EXPECT_EQ(IpAddr::prefixMask(24).stringValue(), "255.255.255.0");
  EXPECT_EQ(IpAddr::prefixMask(32).stringValue(), "255.255.255.255");
  static_assert(IpAddr::prefixMask(8).hostOrder() == 0xFF000000);
}

TEST(Ip6Addr, KeepsOrdersApart) {
  constexpr Ip6Addr address = Ip6Addr::fromHostOrder(0x20010DB8, 0x00010002, 3, 0xFFFE0004);
  constexpr std::array<U8, 16> octets{0x20, 0x01, 0x0d, 0xb8, 0,    1,    0, 2,
                                      0,    0,    0,    3,    0xff, 0xfe, 0, 4};
  static_assert(address.hostOrder(0) == 0x20010DB8 && address.hostOrder(3) == 0xFFFE0004);
  static_assert(address == Ip6Addr::fromBytes(octets));
  static_assert(address.bytes() == octets);
  EXPECT_EQ(std::memcmp(&address, octets.data(), 16), 0);
  EXPECT_EQ(address, Ip6Addr::fromNetworkOrder(htonl(0x20010DB8), htonl(0x00010002), htonl(3),
                                               htonl(0xFFFE0004)));
  EXPECT_EQ(address.networkOrder(1), htonl(0x00010002));
}

TEST(Ip6Addr, PrintsTheCanonicalText) {
  struct Row {
    const char* in;
    const char* out;
  } const rows[] = {
      {"0:0:0:0:0:0:0:0", "::"},
      {"0:0:0:0:0:0:0:1", "::1"},
      {"1:0:0:0:0:0:0:0", "1::"},
      {"2001:DB8:0:0:0:0:0:1", "2001:db8::1"},
      {"2001:0db8:0000:0000:0000:0000:0002:0001", "2001:db8::2:1"},
      {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
      {"2001:0:0:1:0:0:0:1", "2001:0:0:1::1"},
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
      {"0:0:1:0:0:1:0:0", "::1:0:0:1:0:0"},
      {"0:1:0:1:0:1:0:1", "0:1:0:1:0:1:0:1"},
      {"1:0:1:0:1:0:1:0", "1:0:1:0:1:0:1:0"},
      {"1:2:3:4:5:6:0:0", "1:2:3:4:5:6::"},
      {"1:2:3:4:5:6:7::", "1:2:3:4:5:6:7:0"},
      {"::2:3:4:5:6:7:8", "0:2:3:4:5:6:7:8"},
      {"FFFF:ffff:FFFF:ffff:FFFF:ffff:FFFF:ffff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
      {"a:b:c:d:e:f:10:100", "a:b:c:d:e:f:10:100"},
      {"::ffff:c000:201", "::ffff:192.0.2.1"},
      {"::FFFF:192.0.2.1", "::ffff:192.0.2.1"},
      {"::ffff:0:0", "::ffff:0.0.0.0"},
      {"::ffff:ffff:ffff", "::ffff:255.255.255.255"},
      {"::192.0.2.1", "::c000:201"},
      {"::1.2.3.4", "::102:304"},
      {"::fffe:192.0.2.1", "::fffe:c000:201"},
      {"::ffff:0:192.0.2.1", "::ffff:0:c000:201"},
      {"64:ff9b::192.0.2.33", "64:ff9b::c000:221"},
      {"1:2:3:4:5:6:7.8.9.10", "1:2:3:4:5:6:708:90a"},
      {"1::255.255.255.255", "1::ffff:ffff"},
      {"1:2:3:4:5::0.0.0.0", "1:2:3:4:5::"},
      {"fe80::1:0:0:0", "fe80::1:0:0:0"},
      {"::", "::"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.in);
    Ip6Addr const address = Ip6Addr::parse(row.in);
    EXPECT_EQ(address.stringValue(), row.out);
    EXPECT_EQ(written(address), row.out);
    EXPECT_EQ(streamed(address), row.out);
    EXPECT_EQ(Ip6Addr::parse(row.out), address);
    unsigned char bytes[16];
    ASSERT_EQ(inet_pton(AF_INET6, row.in, bytes), 1);
    EXPECT_EQ(std::memcmp(&address, bytes, 16), 0);
  }
}

// The C library writes an address of ::/96, such as ::1.2.3.4, with a dotted quad. Trelix does not.
bool cLibraryMixes(const Ip6Addr& address) {
  return address.hostOrder(0) == 0 && address.hostOrder(1) == 0 && address.hostOrder(2) == 0 &&
         address.hostOrder(3) >> 16 != 0;
}

void expectAsCLibrary(const Ip6Addr& address) {
  std::string const theirs = ntop<AF_INET6>(address);
  std::string const ours = written(address);
  if (!cLibraryMixes(address)) {
    ASSERT_EQ(ours, theirs);
  }
  ASSERT_EQ(address.stringValue().view(), ours);
  ASSERT_EQ(Ip6Addr::parse(ours), address);
  ASSERT_EQ(Ip6Addr::parse(theirs), address);
}

TEST(Ip6Addr, PrintsEveryPatternOfGroupsAsTheCLibraryDoes) {
  // Eight groups that are zero or have one to four digits, in every combination.
  constexpr U32 samples[] = {0, 1, 0xF, 0x10, 0xFF, 0x100, 0xFFF, 0x1000, 0xFFFF};
  for (unsigned set = 0; set < 256; ++set) {
    for (U32 const sample : samples) {
      U32 words[4] = {};
      for (unsigned group = 0; group < 8; ++group) {
        if ((set >> group & 1) != 0) words[group / 2] |= sample << (group % 2 == 0 ? 16 : 0);
      }
      expectAsCLibrary(Ip6Addr::fromHostOrder(words[0], words[1], words[2], words[3]));
    }
  }
}

TEST(Ip6Addr, PrintsRandomAddressesAsTheCLibraryDoes) {
  std::mt19937 random(2);
  for (int i = 0; i < 200'000; ++i) {
    U32 words[4] = {};
    for (unsigned group = 0; group < 8; ++group) {
      U32 value = random() & 0xFFFF;
      if (random() % 2 == 0) value >>= random() % 17;
      words[group / 2] |= value << (group % 2 == 0 ? 16 : 0);
    }
    if (i % 16 == 0) {
      words[0] = words[1] = 0;
      words[2] = random() % 2 == 0 ? 0xFFFF : 0;
    }
    expectAsCLibrary(Ip6Addr::fromHostOrder(words[0], words[1], words[2], words[3]));
  }
}

TEST(Ip6Addr, RefusesWhatIsNoAddress) {
  using namespace std::string_view_literals;
  struct Row {
    std::string_view text;
    const char* reason;
  } const rows[] = {
      {"", "it is empty"},
      {":", "it begins with a single ':'"},
      {":1:2:3:4:5:6:7:8", "it begins with a single ':'"},
      {":1::", "it begins with a single ':'"},
      {":::", "more than two ':' in a row"},
      {"1:::2", "more than two ':' in a row"},
      {"1::2::3", "more than one \"::\""},
      {"::1::", "more than one \"::\""},
      {"1", "fewer than eight groups"},
      {"1:2:3:4:5:6:7", "fewer than eight groups"},
      {"1:2:3:4:5:6:7:", "it ends with a single ':'"},
      {"1::2:", "it ends with a single ':'"},
      {"1:2:3:4:5:6:7:8:9", "more than eight groups"},
      {"1:2:3:4:5:6:7:8:", "it ends with a single ':'"},
      {"1:2:3:4:5:6:7:8::", "eight groups and a \"::\""},
      {"::1:2:3:4:5:6:7:8", "eight groups and a \"::\""},
      {"1:2:3:4::5:6:7:8", "eight groups and a \"::\""},
      {"12345::", "a group has more than four digits"},
      {"::00001", "a group has more than four digits"},
      {"::g", "a group has no hexadecimal digit"},
      {"::-1", "a group has no hexadecimal digit"},
      {" ::1", "a group has no hexadecimal digit"},
      {"::1 ", "a group is followed by something other than ':'"},
      {"::1\0"sv, "a group is followed by something other than ':'"},
      {"fe80::1%eth0", "a group is followed by something other than ':'"},
      {"2001:db8::/32", "a group has no hexadecimal digit"},
      {"2001:db8::1/32", "a group is followed by something other than ':'"},
      {"[::1]", "a group has no hexadecimal digit"},
      {"::@", "a group has no hexadecimal digit"},
      {"::`", "a group has no hexadecimal digit"},
      {"1.2.3.4", "fewer than eight groups"},
      {"1:2:3:4:5:6:7:1.2.3.4", "no room for the dotted quad"},
      {"1:2:3:4:5:1.2.3.4", "fewer than eight groups"},
      {"1:2:3:4:5:6::1.2.3.4", "eight groups and a \"::\""},
      {"::1.2.3.4:5", "something follows the fourth octet"},
      {"::1.2.3", "fewer than four octets"},
      {"::1.2.3.256", "an octet is over 255"},
      {"::01.2.3.4", "an octet has a leading zero"},
      {"::a.2.3.4", "an octet has no digit"},
      {"::.2.3.4", "a group has no hexadecimal digit"},
      {"::1.2.3.4%1", "something follows the fourth octet"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(Ip6Addr::tryParse(row.text), std::nullopt);
    std::string const error = parseErrorOf<Ip6Addr>(row.text);
    EXPECT_NE(error.find(std::string(" is not an IPv6 address: ") + row.reason), std::string::npos)
        << error;
    unsigned char bytes[16];
    if (row.text.find('\0') == std::string_view::npos) {
      EXPECT_EQ(inet_pton(AF_INET6, std::string(row.text).c_str(), bytes), 0);
    }
  }
}

// Texts that differ from a valid address by one edit. Trelix accepts exactly those that the C
// library accepts.
TEST(Addresses, AgreeWithTheCLibraryOnDamagedText) {
  std::mt19937 random(3);
  constexpr std::string_view alphabet = "0123456789abcdefABCDEF:.::..%g /x-";
  constexpr std::string_view seeds[] = {"2001:db8::1",
                                        "::ffff:192.0.2.1",
                                        "1:2:3:4:5:6:7:8",
                                        "::",
                                        "1::",
                                        "fe80::a:b:c",
                                        "1:2:3:4:5:6:1.2.3.4",
                                        "192.0.2.1",
                                        "255.255.255.255",
                                        "0.0.0.0",
                                        "10.20.30.40"};
  int good = 0;
  for (int i = 0; i < 300'000; ++i) {
    std::string text(seeds[random() % std::size(seeds)]);
    for (auto edits = 1 + random() % 3; edits > 0; --edits) {
      auto const at = random() % (text.size() + 1);
      char const c = alphabet[random() % alphabet.size()];
      switch (random() % 3) {
        case 0:
          text.insert(at, 1, c);
          break;
        case 1:
          if (at < text.size()) text.erase(at, 1);
          break;
        default:
          if (at < text.size()) text[at] = c;
      }
    }
    unsigned char bytes[16];
    auto const six = Ip6Addr::tryParse(text);
    ASSERT_EQ(six.has_value(), inet_pton(AF_INET6, text.c_str(), bytes) == 1) << text;
    if (six) {
      ASSERT_EQ(std::memcmp(&*six, bytes, 16), 0) << text;
    }
    auto const four = IpAddr::tryParse(text);
    ASSERT_EQ(four.has_value(), inet_pton(AF_INET, text.c_str(), bytes) == 1) << text;
    if (four) {
      ASSERT_EQ(std::memcmp(four->bytes().data(), bytes, 4), 0) << text;
    }
    good += six || four ? 1 : 0;
  }
  EXPECT_GT(good, 10'000);
}

TEST(Ip6Addr, CountsTheLeadingOnesOfAMask) {
  for (unsigned length = 0; length <= 128; ++length) {
    SCOPED_TRACE(length);
    Ip6Addr const mask = Ip6Addr::prefixMask(length);
    EXPECT_EQ(ip6AddrToPrefixLen(mask), length);
    auto bytes = mask.bytes();
    for (unsigned bit = 0; bit < 128; ++bit) {
      EXPECT_EQ((bytes[bit / 8] >> (7 - bit % 8)) & 1, bit < length ? 1 : 0);
    }
    if (length < 127) {
      bytes[15] |= 1;  // no longer contiguous
      EXPECT_EQ(ip6AddrToPrefixLen(Ip6Addr::fromBytes(bytes)), length);
    }
  }
  EXPECT_EQ(ip6AddrToPrefixLen(Ip6Addr::parse("ff00:ff00::")), 8);
  EXPECT_EQ(ip6AddrToPrefixLen(Ip6Addr::parse("7fff::")), 0);
}

TEST(EthAddr, PrintsAsPrintfDoes) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 100'000; ++i) {
    U64 const number = i < 256 ? static_cast<U64>(i) * 0x010101010101U : random() >> 16;
    EthAddr const address = EthAddr::fromHostOrder(number);
    auto const& b = address.bytes();
    char text[18];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3], b[4],
                  b[5]);
    ASSERT_EQ(address.stringValue(), text);
    ASSERT_EQ(written(address), text);
    ASSERT_EQ(address.hostOrder(), number);
    ASSERT_EQ(EthAddr::parse(text), address);
  }
  EXPECT_EQ(streamed(EthAddr::fromHostOrder(0x02005E0000FF)), "02:00:5e:00:00:ff");
}

TEST(EthAddr, KeepsOrdersApart) {
  constexpr EthAddr address = EthAddr::fromHostOrder(0xFFFF'0123'4567'89ABU);
  static_assert(address == EthAddr::fromBytes({0x01, 0x23, 0x45, 0x67, 0x89, 0xAB}));
  static_assert(address.hostOrder() == 0x0123456789AB);
  EXPECT_EQ(address, EthAddr::fromNetworkOrder(htons(0x0123), htons(0x4567), htons(0x89AB)));
  EXPECT_EQ(EthAddr::parse("01:23:45:67:89:aB"), address);
}

TEST(EthAddr, RefusesWhatIsNoAddress) {
  using namespace std::string_view_literals;
  struct Row {
    std::string_view text;
    const char* reason;
  } const rows[] = {
      {"", "it is not 17 characters long"},
      {"01:23:45:67:89:a", "it is not 17 characters long"},
      {"01:23:45:67:89:abc", "it is not 17 characters long"},
      {"01:23:45:67:89:ab\0"sv, "it is not 17 characters long"},
      {"0123.4567.89ab", "it is not 17 characters long"},
      {"1:23:45:67:89:abc", "an octet is not two hexadecimal digits"},
      {"0g:23:45:67:89:ab", "an octet is not two hexadecimal digits"},
      {"01:23:45:67:89: a", "an octet is not two hexadecimal digits"},
      {"01:23:45:67:89:a\0"sv, "an octet is not two hexadecimal digits"},
      {"01-23-45-67-89-ab", "octets are not joined by ':'"},
      {"01:23:45:67:89.ab", "octets are not joined by ':'"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(EthAddr::tryParse(row.text), std::nullopt);
    std::string const error = parseErrorOf<EthAddr>(row.text);
    EXPECT_NE(error.find(std::string(" is not an Ethernet address: ") + row.reason),
              std::string::npos)
        << error;
  }
  // Every byte at every place, compared with the rule for the form.
  for (std::size_t at = 0; at < 17; ++at) {
    for (int c = 0; c < 256; ++c) {
      std::string text = "01:23:45:67:89:ab";
      text[at] = static_cast<char>(c);
      bool const good = at % 3 == 2 ? c == ':' : std::isxdigit(c) != 0;
      ASSERT_EQ(EthAddr::tryParse(text).has_value(), good) << at << ' ' << c;
    }
  }
}

TEST(NetU16, LiesInNetworkOrderAndGivesItsNumberBack) {
  for (U32 number = 0; number < 0x10000; ++number) {
    NetU16 const net(static_cast<U16>(number));
    ASSERT_EQ(net.value(), number);
    ASSERT_EQ(net.networkOrder(), htons(static_cast<U16>(number)));
    ASSERT_EQ(NetU16::fromNetworkOrder(htons(static_cast<U16>(number))), net);
    U8 bytes[2];
    std::memcpy(bytes, &net, 2);
    ASSERT_EQ(bytes[0] << 8 | bytes[1], static_cast<int>(number));
    ASSERT_EQ(NetU16::fromBytes({bytes[0], bytes[1]}), net);
    ASSERT_EQ(written(net), std::to_string(number));
    ASSERT_EQ(NetU16::parse(std::to_string(number)), net);
  }
  EXPECT_LT(NetU16(0x00FF), NetU16(0x0100));
}

TEST(NetU16, RefusesWhatIsNoNumberOf16Bits) {
  struct Row {
    const char* text;
    const char* reason;
  } const rows[] = {
      {"", "it is empty"},
      {" 1", "it holds something other than decimal digits"},
      {"1 ", "it holds something other than decimal digits"},
      {"-1", "it holds something other than decimal digits"},
      {"0x1", "it holds something other than decimal digits"},
      {"1/", "it holds something other than decimal digits"},
      {"1:", "it holds something other than decimal digits"},
      {"01", "it has a leading zero"},
      {"00", "it has a leading zero"},
      {"65536", "it is over 65535"},
      {"99999999999999999999", "it is over 65535"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(NetU16::tryParse(row.text), std::nullopt);
    EXPECT_EQ(parseErrorOf<NetU16>(row.text),
              "'" + std::string(row.text) + "' is not a 16-bit number: " + row.reason);
  }
}

TEST(NetU16, HasATextAsOneItem) {
  EXPECT_EQ(NetU16::tryParse("65535"), NetU16(65535));
  EXPECT_EQ(NetU16(443).stringValue(), "443");
  std::ostringstream out;
  out << std::setw(6) << NetU16(80) << '|';
  EXPECT_EQ(out.str(), "    80|");
}

TEST(NetU16, HashesByValue) {
  std::unordered_set<std::size_t> hashes;
  for (U32 number = 0; number < 0x10000; ++number) {
    NetU16 const net(static_cast<U16>(number));
    std::size_t const hash = std::hash<NetU16>{}(net);
    ASSERT_EQ(hash, std::hash<NetU16>{}(NetU16(static_cast<U16>(number))));
    hashes.insert(hash);
  }
  EXPECT_EQ(hashes.size(), 0x10000U);
}

template <class Address>
class OrderedAddress : public testing::Test {};
template <class Address>
Address fromOctets(std::mt19937& random) {
  using Octets = std::remove_cvref_t<decltype(Address().bytes())>;
  Octets octets;
  // Few distinct octets, so that many addresses begin alike.
  for (U8& octet : octets) octet = static_cast<U8>(std::array{0, 1, 0x80, 0xFF}[random() % 4]);
  return Address::fromBytes(octets);
}
using Addresses = testing::Types<IpAddr, Ip6Addr, EthAddr>;
TYPED_TEST_SUITE(OrderedAddress, Addresses);

TYPED_TEST(OrderedAddress, OrdersByEachOctet) {
  auto octets = TypeParam().bytes();
  for (std::size_t at = 0; at < octets.size(); ++at) {
    SCOPED_TRACE(at);
    TypeParam const less = TypeParam::fromBytes(octets);
    octets[at] = 1;
    TypeParam const more = TypeParam::fromBytes(octets);
    EXPECT_LT(less, more);
    EXPECT_GT(more, less);
    EXPECT_NE(less, more);
  }
}

TYPED_TEST(OrderedAddress, ComparesByOctetsAndHashesByValue) {
  std::mt19937 random(7);
  std::unordered_set<TypeParam> set;
  for (int i = 0; i < 20'000; ++i) {
    TypeParam const a = fromOctets<TypeParam>(random);
    TypeParam const b = fromOctets<TypeParam>(random);
    auto const expected = a.bytes() <=> b.bytes();
    ASSERT_TRUE((a <=> b) == expected);
    ASSERT_EQ(a == b, expected == 0);
    set.insert(a);
    ASSERT_TRUE(set.contains(a));
    if (a == b) {
      ASSERT_EQ(std::hash<TypeParam>{}(a), std::hash<TypeParam>{}(b));
    }
  }
}

// Addresses of one network differ in a few bits, at any place. Hash tables use the low bits.
TYPED_TEST(OrderedAddress, HashesOfNeighboursDiffer) {
  auto octets = TypeParam().bytes();
  for (std::size_t at = 0; at < octets.size(); ++at) {
    SCOPED_TRACE(at);
    std::unordered_set<std::size_t> hashes;
    std::unordered_set<std::size_t> lowBits;
    for (unsigned value = 0; value < 256; ++value) {
      octets[at] = static_cast<U8>(value);
      std::size_t const hash = std::hash<TypeParam>{}(TypeParam::fromBytes(octets));
      hashes.insert(hash);
      lowBits.insert(hash & 0xFFFF);
    }
    octets[at] = 0;
    EXPECT_EQ(hashes.size(), 256U);
    EXPECT_GE(lowBits.size(), 200U);
  }
}

TYPED_TEST(OrderedAddress, StreamsWithWidthAsOneItem) {
  std::ostringstream out;
  TypeParam const zero;
  out << std::setw(20) << std::left << zero << '|';
  std::string expected(zero.stringValue().view());
  expected.resize(20, ' ');
  EXPECT_EQ(out.str(), expected + '|');
}

TEST(Addresses, AreReadNoFurtherThanTheText) {
  EXPECT_EQ(IpAddr::tryParse(std::string_view("10.0.0.12", 8)), IpAddr::parse("10.0.0.1"));
  EXPECT_EQ(Ip6Addr::tryParse(std::string_view("1::23", 4)), Ip6Addr::parse("1::2"));
  EXPECT_EQ(Ip6Addr::tryParse(std::string_view("1:2:3:4:5:6:7:8:", 15)),
            Ip6Addr::parse("1:2:3:4:5:6:7:8"));
  EXPECT_EQ(Ip6Addr::tryParse(std::string_view("::1.2.3.45", 9)), Ip6Addr::parse("::1.2.3.4"));
  EXPECT_EQ(NetU16::tryParse(std::string_view("4431", 3)), NetU16(443));
}

TEST(AddressesDeathTest, StopOnAPrefixLongerThanTheAddress) {
  EXPECT_DEATH((void)IpAddr::prefixMask(33),
               "^assertion failed: length <= 32 at platform/Trelix/IpAddr:0 in Trelix::IpAddr "
               "Trelix::IpAddr::prefixMask\\(unsigned int\\)\n$");
  EXPECT_DEATH((void)Ip6Addr::prefixMask(129),
               "^assertion failed: length <= 128 at platform/Trelix/Ip6Addr:0 in Trelix::Ip6Addr "
               "Trelix::Ip6Addr::prefixMask\\(unsigned int\\)\n$");
}

}  // namespace
