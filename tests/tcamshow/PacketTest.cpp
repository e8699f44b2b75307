// Field values and packets, as people write them.
#include "match/Packet.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tcamshow {
namespace {

std::string valuesText(const FieldName& name, const FieldSets& sets) {
  std::string text;
  for (const FieldSet& set : sets) {
    if (!text.empty()) text += " or ";
    valuesAppend(text, name, set);
  }
  return text.empty() ? "nothing" : text;
}

TEST(FieldText, ReadsValuesAndWritesThemShort) {
  struct Row {
    const char* field;
    const char* text;
    const char* written;
  } const rows[] = {
      {"src", "any", "*"},
      {"src", "*", "*"},
      {"src", "10.0.0.1", "10.0.0.1"},
      {"src", "10.1.2.3/8", "10.0.0.0/8"},
      {"src", "10.1.2.3/0", "*"},
      {"src", "10.0.0.1/32", "10.0.0.1"},
      {"src", "10.0.0.0/255.0.0.0", "10.0.0.0/8"},
      {"src", "10.0.0.1/255.0.0.255", "10.0.0.1/255.0.0.255"},
      {"src", "10.0.0.0-10.0.0.255", "10.0.0.0/24"},
      {"src", "10.0.0.1-10.0.0.9", "10.0.0.1-10.0.0.9"},
      {"dst6", "2001:db8::1", "2001:db8::1"},
      {"dst6", "2001:db8::/32", "2001:db8::/32"},
      {"dst6", "::/ffff::ffff", "::/ffff::ffff"},
      {"dst6", "::1-::2", "::1-::2"},
      {"smac", "00:1c:73:00:00:01", "00:1c:73:00:00:01"},
      {"smac", "00:1c:73:00:00:01/24", "00:1c:73:00:00:00/24"},
      {"smac", "00:00:00:00:00:01/00:00:00:00:00:0f", "00:00:00:00:00:01/00:00:00:00:00:0f"},
      {"ethertype", "0x0806", "0x806"},
      {"ethertype", "arp", "0x806"},
      {"ethertype", "2048", "0x800"},
      {"vlan", "100", "100"},
      {"vlan", "0x64", "100"},
      {"vlan", "100-199", "100-199"},
      {"vlan", "1/1", "1/0x1"},
      {"vlan", "0-4095", "*"},
      {"proto", "tcp", "tcp"},
      {"proto", "6", "tcp"},
      {"proto", "icmp6", "icmp6"},
      {"proto", "200", "200"},
      {"proto", "1-6", "icmp-tcp"},
      {"sport", "1024/0xfc00", "1024-2047"},
      {"sport", "80", "80"},
      {"sport", "1/1&100-200", "1/0xff01&101-199"},
      {"sport", "1-10&20-30", "nothing"},
      {"sport", "1-10&any", "1-10"},
      {"frag", "yes", "yes"},
      {"frag", "no", "no"},
      {"frag", "any", "*"},
      {"flags", "+S-A", "+S-A"},
      {"flags", "-A+S", "+S-A"},
      {"flags", "+SA", "+SA"},
      {"flags", "+S+A-F", "+SA-F"},
      {"flags", "2/0x12", "+S-A"},
      {"flags", "2", "+S-FRPAU"},
      {"flags", "1-2", "1-2"},
      {"tc", "184", "184"},
      {"dscp", "46", "46"},
      {"dscp", "0-7", "0-7"},
      {"icmp-type", "8", "8"},
      {"icmp-code", "0-3", "0-3"},
      {"hoplimit", "255", "255"},
      {"length", "64-1500", "64-1500"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.field) + "=" + row.text);
    const FieldName* const name = fieldByName(row.field);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(valuesText(*name, valuesFromText(*name, row.text)), row.written);
  }
}

TEST(FieldText, ReadsBackWhatItWrites) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 20'000; ++round) {
    const FieldName& name = fieldNames()[random() % fieldNames().size()];
    unsigned const bits = name.bits;
    auto const drawn = [&] { return (Word{random()} << 64 | random()) & lowOnes(bits); };
    Word const a = drawn();
    Word const b = drawn();
    auto set = random() % 2 == 0 ? FieldSet::cube(a, b, bits)
                                 : FieldSet::range(std::min(a, b), std::max(a, b), bits);
    if (random() % 4 == 0)
      set = set->intersection(FieldSet::prefix(drawn(), random() % 4 % (bits + 1), bits));
    if (!set) continue;
    std::string text;
    valuesAppend(text, name, *set);
    FieldSets const read = valuesFromText(name, text);
    ASSERT_EQ(read.size(), 1U) << name.name << "=" << text;
    ASSERT_TRUE(read[0] == *set) << name.name << "=" << text;
  }
}

TEST(FieldText, SaysWhatIsWrongAndWhere) {
  struct Row {
    const char* field;
    const char* text;
    std::size_t at;
    const char* message;
  } const rows[] = {
      {"src", "10.0.0", 0,
       "\"10.0.0\" is not a value of src: expected an IPv4 address, ADDRESS/LENGTH, ADDRESS/MASK "
       "or "
       "LOW-HIGH"},
      {"src", "10.0.0.0/33", 9, "the prefix length \"33\" is over 32"},
      {"src", "10.0.0.9-10.0.0.1", 9, "the range \"10.0.0.9-10.0.0.1\" ends before it begins"},
      {"src", "::1", 0,
       "\"::1\" is not a value of src: expected an IPv4 address, ADDRESS/LENGTH, ADDRESS/MASK or "
       "LOW-HIGH"},
      {"dport", "65536", 0,
       "\"65536\" is not a value of dport: expected a number up to 65535, NUMBER/MASK or LOW-HIGH"},
      {"dport", "80&http", 3,
       "\"http\" is not a value of dport: expected a number up to 65535, NUMBER/MASK or LOW-HIGH"},
      {"dport", "", 0,
       "\"\" is not a value of dport: expected a number up to 65535, NUMBER/MASK or LOW-HIGH"},
      {"dport", "-1", 0,
       "\"-1\" is not a value of dport: expected a number up to 65535, NUMBER/MASK or LOW-HIGH"},
      {"dscp", "64", 0,
       "\"64\" is not a value of dscp: expected a number up to 63, NUMBER/MASK or LOW-HIGH"},
      {"proto", "tpc", 0,
       "\"tpc\" is not a value of proto: expected a protocol's name, a number up to 255, "
       "NUMBER/MASK or LOW-HIGH"},
      {"flags", "+SX", 2, "\"X\" is no TCP flag: expected F, S, R, P, A or U"},
      {"flags", "+S-S", 3, "the flag S stands twice"},
      {"flags", "+", 1, "expected a TCP flag: F, S, R, P, A or U"},
      {"frag", "maybe", 0, "\"maybe\" is not a value of frag: expected yes or no"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.field) + "=" + row.text);
    try {
      static_cast<void>(valuesFromText(*fieldByName(row.field), row.text));
      ADD_FAILURE() << "it is read";
    } catch (const TextFault& fault) {
      EXPECT_STREQ(fault.what(), row.message);
      EXPECT_EQ(fault.at(), row.at);
    }
  }
}

std::string textOf(const Packets& packets) {
  std::string text;
  for (const Match& box : packets.boxes) {
    if (!text.empty()) text += " | ";
    std::string one;
    for (const FieldName& name : fieldNames().first(fieldCount)) {
      if (box.isAny(name.field)) continue;
      if (!one.empty()) one += ' ';
      one += std::string(name.name) + "=";
      valuesAppend(one, name, box[name.field]);
    }
    text += one.empty() ? "*" : one;
  }
  return text;
}

TEST(Packet, IsASetOfPackets) {
  struct Row {
    const char* text;
    const char* packets;
  } const rows[] = {
      {"", "*"},
      {"ip", "ethertype=0x800"},
      {"ip6", "ethertype=0x86dd"},
      {"src=10.1.2.3", "src=10.1.2.3 ethertype=0x800"},
      {"dst6=2001:db8::/32", "dst6=2001:db8::/32 ethertype=0x86dd"},
      {"hoplimit=1", "ethertype=0x86dd hoplimit=1"},
      {"tcp src=10.1.2.3 sport=1024-65535 dst=192.0.2.80 dport=443 flags=+S-A",
       "src=10.1.2.3 dst=192.0.2.80 ethertype=0x800 proto=tcp flags=+S-A sport=1024-65535 "
       "dport=443"},
      {"tcp", "ethertype=0x800 proto=tcp | ethertype=0x86dd proto=tcp"},
      {"udp dport=53", "ethertype=0x800 proto=udp dport=53 | ethertype=0x86dd proto=udp dport=53"},
      {"dscp=46", "ethertype=0x800 tc=184-187 | ethertype=0x86dd tc=184-187"},
      {"ip dscp=10-11", "ethertype=0x800 tc=40-47"},
      {"ip tc=1", "ethertype=0x800 tc=1"},
      {"ip frag=yes", "ethertype=0x800 frag=yes"},
      {"ip length=64-100", "ethertype=0x800 length=64-100"},
      {"proto=47 ip6", "ethertype=0x86dd proto=gre"},
      {"icmp", "ethertype=0x800 proto=icmp"},
      {"icmp icmp-type=8", "ethertype=0x800 proto=icmp sport=2048-2303"},
      {"icmp-type=0-1 icmp", "ethertype=0x800 proto=icmp sport=0-511"},
      {"icmp6 icmp-type=135 icmp-code=0",
       "ethertype=0x86dd proto=icmp6 sport=34560-34815 dport=0/0xff"},
      {"icmp icmp-code=1-2",
       "ethertype=0x800 proto=icmp dport=1/0xff | ethertype=0x800 proto=icmp dport=2/0xff"},
      {"smac=00:1c:73:00:00:01", "smac=00:1c:73:00:00:01"},
      {"vlan=100", "vlan=100"},
      {"vlan=100 tcp", "ethertype=0x800 vlan=100 proto=tcp | ethertype=0x86dd vlan=100 proto=tcp"},
      {"ethertype=0x0806", "ethertype=0x806"},
      {"ethertype=0x0806 proto=1", "ethertype=0x806 proto=icmp"},
      {"ethertype=any tcp", "proto=tcp"},
      {"ip ethertype=0x0800", "ethertype=0x800"},
      {"  tcp \t ip  ", "ethertype=0x800 proto=tcp"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(textOf(packetsFromText(row.text)), row.packets);
  }
}

TEST(Packet, SaysWhatIsWrongAndWhere) {
  struct Row {
    const char* text;
    std::size_t at;
    const char* message;
  } const rows[] = {
      {"tpc", 0, "\"tpc\" is neither FIELD=VALUE nor one of tcp, udp, icmp, icmp6, ip, ip6"},
      {"tcp port=80", 4,
       "\"port\" is no field: expected one of src, dst, src6, dst6, smac, dmac, ethertype, vlan, "
       "proto, tc, frag, flags, sport, dport, hoplimit, length, dscp, icmp-type, icmp-code"},
      {"tcp dport=x", 10,
       "\"x\" is not a value of dport: expected a number up to 65535, NUMBER/MASK or LOW-HIGH"},
      {"ip src6=::1", 3, "\"src6\" is IPv6, and what stands before it is IPv4"},
      {"src6=::1 dst=1.2.3.4", 9, "\"dst\" is IPv4, and what stands before it is IPv6"},
      {"icmp hoplimit=1", 5, "\"hoplimit\" is IPv6, and what stands before it is IPv4"},
      {"tcp udp", 4, "\"udp\" names proto a second time"},
      {"tcp proto=6", 4, "\"proto\" names proto a second time"},
      {"dport=1 dport=1", 8, "\"dport\" names dport a second time"},
      {"dscp=1 tc=4", 7, "\"tc\" names tc a second time"},
      {"icmp icmp-type=8 sport=1", 17, "\"sport\" names sport a second time"},
      {"tcp icmp-type=8", 4, "icmp-type and icmp-code need icmp or icmp6"},
      {"dport=1-2&4-5", 6, "\"1-2&4-5\" holds no value"},
      {"ip ethertype=0x86dd", 0, "no packet is like that: it contradicts itself"},
      {"src=1.2.3.4 ethertype=0x0806", 0, "no packet is like that: it contradicts itself"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    try {
      static_cast<void>(packetsFromText(row.text));
      ADD_FAILURE() << "it is read";
    } catch (const TextFault& fault) {
      EXPECT_STREQ(fault.what(), row.message);
      EXPECT_EQ(fault.at(), row.at);
    }
  }
}

TEST(Packet, IsWrittenAsItIsRead) {
  struct Row {
    const char* text;
    FieldMask named;
    const char* written;
  } const rows[] = {
      {"tcp src=10.1.2.3 dport=443", 0, "tcp src=10.1.2.3 dport=443"},
      {"tcp ip dport=443", 0, "ip tcp dport=443"},
      {"icmp", 0, "icmp"},
      {"icmp6 icmp-type=8", 0, "icmp6 sport=2048"},
      {"ip6 proto=1", 0, "ip6 proto=icmp"},
      {"ip proto=47", 0, "ip proto=gre"},
      {"src=10.0.0.0/8", 0, "src=10.0.0.0"},
      {"src=10.0.0.0/8", bitOf(Field::dport), "src=10.0.0.0 dport=0"},
      {"ethertype=0x0806 proto=6", 0, "ethertype=0x806 proto=tcp"},
      {"vlan=7", bitOf(Field::src), "src=0.0.0.0 vlan=7"},
      {"ethertype=0x0806", bitOf(Field::src6), "ethertype=0x806"},
      {"ip", bitOf(Field::src6) | bitOf(Field::hoplimit), "ip"},
      {"flags=+S ip", 0, "ip flags=+S-FRPAU"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    Packets const packets = packetsFromText(row.text);
    std::string const written =
        packetText(packets.boxes.front(), static_cast<FieldMask>(packets.named | row.named));
    EXPECT_EQ(written, row.written);
    // It is one packet of those.
    Packets const read = packetsFromText(written);
    EXPECT_TRUE(packets.boxes.front().contains(read.boxes.front()) || row.named != 0);
  }
}

}  // namespace
}  // namespace tcamshow
