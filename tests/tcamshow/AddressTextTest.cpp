#include "snapshot/AddressText.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tcamshow {
namespace {

TEST(AddressText, ReadsOnlyStrictIpv4) {
  std::uint32_t address = 0;
  EXPECT_TRUE(ipFromText("0.0.0.0", address));
  EXPECT_EQ(address, 0u);
  EXPECT_TRUE(ipFromText("255.255.255.255", address));
  EXPECT_EQ(address, 0xFFFFFFFFu);
  EXPECT_TRUE(ipFromText("1.2.3.4", address));
  for (const char* const text :
       {"", "1", "1.2.3", "1.2.3.4.", "1.2.3.4.5", ".1.2.3", "1..2.3", "01.2.3.4", "1.2.3.00",
        "256.1.1.1", "1.2.3.1000", "1.2.3.4 ", " 1.2.3.4", "+1.2.3.4", "0x1.2.3.4", "1.2.3.-4"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(ipFromText(text, address));
    EXPECT_EQ(address, 0x01020304u);
  }
}

TEST(AddressText, ReadsOnlyStrictIpv6) {
  Ip6Octets address{};
  for (const char* const text : {"::", "::1", "1::", "1:2:3:4:5:6:7:8", "::ffff:1.2.3.4", "A::b"}) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(ip6FromText(text, address));
  }
  for (const char* const text :
       {"", ":", ":::", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "12345::", "::1%lo",
        "::1 ", "::g", "1.2.3.4", "::1.2.3", "0000:0000:0000:0000:0000:ffff:255.255.255.2550"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(ip6FromText(text, address));
  }
  EXPECT_FALSE(ip6FromText(std::string_view("::1\0", 4), address));
}

TEST(AddressText, ReadsOnlyStrictMac) {
  MacOctets address{};
  EXPECT_TRUE(macFromText("00:1a:2B:3c:4d:ff", address));
  for (const char* const text :
       {"", "00:1a:2b:3c:4d", "00:1a:2b:3c:4d:5", "00-1a-2b-3c-4d-5e", "00:1a:2b:3c:4d:5e:6f",
        "0g:1a:2b:3c:4d:5e", "001a2b3c4d5e", "00:1a:2b:3c:4d:5e ", ":00:1a:2b:3c:4d:5"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(macFromText(text, address));
  }
}

TEST(AddressText, RoundTrips) {
  std::mt19937 random(5);
  for (int i = 0; i < 2000; ++i) {
    auto const ip = static_cast<std::uint32_t>(random());
    std::string text;
    appendIp(text, ip);
    in_addr oracle{htonl(ip)};
    char buffer[INET_ADDRSTRLEN];
    EXPECT_EQ(text, inet_ntop(AF_INET, &oracle, buffer, sizeof buffer));
    std::uint32_t ipAgain = 0;
    ASSERT_TRUE(ipFromText(text, ipAgain));
    EXPECT_EQ(ipAgain, ip);

    Ip6Octets ip6;
    for (std::uint8_t& octet : ip6)
      octet = random() % 3 == 0 ? static_cast<std::uint8_t>(random()) : 0;
    text.clear();
    appendIp6(text, ip6);
    Ip6Octets ip6Again;
    ASSERT_TRUE(ip6FromText(text, ip6Again));
    EXPECT_EQ(ip6Again, ip6);

    MacOctets mac;
    for (std::uint8_t& octet : mac) octet = static_cast<std::uint8_t>(random());
    text.clear();
    appendMac(text, mac);
    MacOctets macAgain;
    ASSERT_TRUE(macFromText(text, macAgain));
    EXPECT_EQ(macAgain, mac);
  }
}

TEST(AddressText, MasksHaveTheirLength) {
  EXPECT_EQ(ipMask(0), 0u);
  EXPECT_EQ(ipMask(1), 0x80000000u);
  EXPECT_EQ(ipMask(32), 0xFFFFFFFFu);
  for (unsigned length = 0; length <= 128; ++length) {
    SCOPED_TRACE(length);
    Ip6Octets const mask = ip6Mask(length);
    for (unsigned bit = 0; bit < 128; ++bit) {
      EXPECT_EQ(mask[bit / 8] >> (7 - bit % 8) & 1, bit < length ? 1 : 0);
    }
  }
}

}  // namespace
}  // namespace tcamshow
