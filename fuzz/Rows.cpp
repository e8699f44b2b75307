// Rows and cells of whole entries: makes a shadow from bytes, and compares the formatters' output
// with rows made by the C library's printf.
//
// The shadows keep their contract: a programmed qualifier has its record, of the kind that it
// takes. (Only an IPv6 address may lack its record; it then reads as zero.)
#include <arpa/inet.h>

#include <array>
#include <cstdio>
#include <map>
#include <string>

#include "Halvo/Ptr.h"
#include "Ip6Text.h"
#include "Target.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace {

using namespace VelmorTcam;
using Halvo::Ptr;
using Halvo::String;
using velmorfuzz::Input;
using Octets = std::array<std::uint8_t, 16>;

/// The match of an entry as plain values: the oracle's counterpart of a shadow.
struct Entry {
  struct Data {
    std::uint8_t status = 0;
    std::uint32_t value = 0;
    std::uint32_t mask = 0;
    Octets address{};
    Octets addressMask{};
  };
  struct Range {
    int low = 0;
    int high = 0;
    std::uint8_t status = 0;
  };
  std::uint64_t id = 0;
  std::uint8_t counterStatus = 0;
  std::map<int, Data> qualifiers;
  std::map<int, Range> ranges;
  std::string action;

  /// Null if the qualifier is not programmed.
  const Data* programmed(int type) const {
    auto const found = qualifiers.find(type);
    return found == qualifiers.end() || found->second.status != 7 ? nullptr : &found->second;
  }
};

template <class... Args>
std::string format(const char* text, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  int const size = std::snprintf(nullptr, 0, text, args...);
  std::string made(static_cast<std::size_t>(size) + 1, '\0');
  std::snprintf(made.data(), made.size(), text, args...);
#pragma GCC diagnostic pop
  made.pop_back();
  return made;
}

// --- the cells, as printf makes them

std::string quad(std::uint32_t word) {
  char text[INET_ADDRSTRLEN];
  std::uint32_t const network = htonl(word);
  return ::inet_ntop(AF_INET, &network, text, sizeof text);
}

std::string protocol(const Entry& e) {
  std::string text = "*";
  if (const auto* const q = e.programmed(101)) {
    unsigned const number = q->value & 255;
    if (number == 6) {
      text = "TCP";
    } else if (number == 17) {
      text = "UDP";
    } else if (number == 1) {
      text = "ICMP";
    } else if (number == 58) {
      text = "ICMPv6";
    } else if (number != 0) {
      text = format("0x%02x", number);
    }
  }
  return format(" %-6s|", text.c_str());
}

std::string flags(const Entry& e) {
  std::string text;
  if (const auto* const q = e.programmed(182)) {
    for (unsigned bit = 0; bit < 6; ++bit) text += (q->value >> bit & 1) != 0 ? "FSRPAU"[bit] : ' ';
  }
  return format(" %-6s|", text.c_str());
}

std::string range(const Entry& e, int checker) {
  auto const found = e.ranges.find(checker);
  if (found == e.ranges.end() || found->second.status != 7) return "";
  return format("%11s|", format("%d-%d", found->second.low, found->second.high).c_str());
}

/// -1 if the port carries no ICMP type or code.
int icmp(const Entry& e, int type) {
  const auto* const proto = e.programmed(101);
  if (proto == nullptr || e.programmed(118) == nullptr) return -1;
  const auto* const port = e.programmed(type);
  unsigned const number = proto->value & 255;
  if (number != 1 && number != 58) return -1;
  if ((port->mask & 0xFF00) != 0 && type == 118) return static_cast<int>(port->value >> 8 & 255);
  if ((port->mask & 0xFF) != 0 && type == 116) return static_cast<int>(port->value & 255);
  return -1;
}

std::string port(const Entry& e, int type, int checker) {
  std::string const cell = range(e, checker);
  if (!cell.empty()) return cell;
  std::string text = "*";
  if (const auto* const q = e.programmed(type)) {
    int const low = static_cast<int>(q->value & 0xFFFF);
    int const high = static_cast<int>((q->value | ~q->mask) & 0xFFFF);
    if (int const number = icmp(e, type); number >= 0) {
      text = format("%d", number);
    } else if (low == high) {
      text = format("%d", low);
    } else if (low != 0 || high != 0xFFFF) {
      text = format("%d-%d", low, high);
    }
  }
  return format("%11s|", text.c_str());
}

std::string vlan(const Entry& e) {
  const auto* const q = e.programmed(132);
  if (q == nullptr) return "          *|          *|";
  return format("%11u|%11u|", q->value, q->mask);
}

std::string length(const Entry& e, const char* cell) {
  std::string text = range(e, 3);
  if (text.empty()) text = "*";
  return format(cell, text.c_str());
}

std::string ip(const Entry& e, int type) {
  std::string address = "*";
  std::string mask = "*";
  if (const auto* const q = e.programmed(type)) {
    if (q->mask != 0) address = quad(q->value);
    if (q->mask != 0 && q->mask != 0xFFFFFFFF) mask = quad(q->mask);
  }
  return format("%15s|%15s|", address.c_str(), mask.c_str());
}

std::string dscp(const Entry& e) {
  std::string text;
  if (const auto* const q = e.programmed(8)) {
    text = format("%d/0x%02X", static_cast<int>(q->value), q->mask);
  }
  return format("%10s|", text.c_str());
}

std::string fragment(const Entry& e) {
  const char* text = "*";
  if (const auto* const q = e.programmed(97)) {
    if (q->value == 1 || q->value == 2) text = "N";
    if (q->value == 3) text = "Y";
  }
  return format(" %3s   |", text);
}

std::string ip6(const Entry& e, int type, int alternative) {
  const auto* q = e.programmed(type);
  if (q == nullptr) q = e.programmed(alternative);
  unsigned ones = 0;
  if (q != nullptr) {
    while (ones < 128 && (q->addressMask[ones / 8] >> (7 - ones % 8) & 1) != 0) ++ones;
  }
  std::string const address = ones == 0 ? "*" : velmorfuzz::ip6Text(q->address);
  std::string const prefix = ones == 0 || ones == 128 ? "*" : format("%u", ones);
  return format("%39s|%13s|", address.c_str(), prefix.c_str());
}

std::string trafficClass(const Entry& e) {
  std::string text;
  const auto* const q = e.programmed(95);
  if (q != nullptr && q->mask != 0) {
    text = format("%d/0x%02X", static_cast<int>(q->value), q->mask);
  }
  return format(" %8s |", text.c_str());
}

std::string hopLimit(const Entry& e) {
  std::string text;
  const auto* const q = e.programmed(92);
  if (q != nullptr && q->mask != 0) text = format("%d", static_cast<int>(q->value));
  return format("%11s|", text.c_str());
}

std::string mac(const Entry& e, int type) {
  const auto* const q = e.programmed(type);
  if (q == nullptr) return "||";
  std::string cells;
  for (const Octets* octets : {&q->address, &q->addressMask}) {
    for (unsigned i = 0; i < 6; ++i) cells += format(i == 0 ? "%02x" : ":%02x", (*octets)[i]);
    cells += '|';
  }
  return cells;
}

std::string etherType(const Entry& e) {
  const auto* const q = e.programmed(36);
  if (q == nullptr) return "|";
  return q->mask == 0 ? "*|" : format("%xh|", q->value);
}

std::string sequence(std::uint32_t number, int width) {
  return number == 0xFFFFFFFF ? format("%-*s|", width, "Drop") : format("%-*u|", width, number);
}

std::string hitsCell(const Entry& e, std::uint64_t hits) {
  return e.counterStatus == 7 ? format("%11lu", hits) : "";
}

std::string ipRow(const Entry& e, std::uint32_t number, std::uint64_t hits) {
  return format("%-10lu|", e.id) + sequence(number, 7) + protocol(e) + ip(e, 153) +
         port(e, 118, 1) + vlan(e) + hitsCell(e, hits) + "\n" + dscp(e) + fragment(e) + flags(e) +
         ip(e, 15) + port(e, 116, 2) + length(e, "%11s|") + e.action + "\n";
}

std::string ip6Row(const Entry& e, std::uint32_t number, std::uint64_t hits) {
  return format("%-5lu|", e.id) + sequence(number, 9) + protocol(e) + ip6(e, 158, 163) +
         port(e, 118, 1) + vlan(e) + hitsCell(e, hits) + "\n     |          |" + flags(e) +
         ip6(e, 20, 25) + port(e, 116, 2) + e.action + "\n     |" + trafficClass(e) +
         "       |                                       |" + length(e, "%13s|") + hopLimit(e) +
         "\n";
}

// --- from bytes to an entry and its shadow

Octets octetsOf(Input& in) {
  Octets octets{};
  unsigned const shape = in.u8();
  // Either a mask or an address with runs of zeros.
  if ((shape & 128) != 0) {
    unsigned const ones = in.below(129);
    for (unsigned i = 0; i < ones; ++i) octets[i / 8] |= static_cast<std::uint8_t>(128 >> i % 8);
    if ((shape & 64) != 0) octets[shape % 16] ^= in.u8();
  } else {
    for (unsigned i = 0; i < 16; ++i) {
      if ((shape >> (i / 2) % 7 & 1) != 0) octets[i] = in.u8();
    }
    if ((shape & 64) != 0) octets[10] = octets[11] = 0xFF;
  }
  return octets;
}

std::uint8_t statusOf(Input& in) {
  unsigned const choice = in.u8();
  return static_cast<std::uint8_t>(choice < 200 ? 7 : choice - 200);
}

constexpr int listed[] = {8,   15,  20,  25,  28,  36,  92,  95,  97,
                          101, 116, 118, 132, 153, 158, 163, 164, 182};

bool isIp6(int type) { return type == 20 || type == 25 || type == 158 || type == 163; }
bool isMac(int type) { return type == 28 || type == 164; }

/// Changes one thing in the entry and in its shadow.
void change(Input& in, Entry& entry, VelmorTcamEntryShadow& shadow) {
  unsigned const what = in.below(24);
  if (what < 18) {
    int const number = listed[what];
    auto const type = static_cast<QualifierType>(number);
    Entry::Data data;
    data.status = statusOf(in);
    auto const status = static_cast<HwQualStatus>(data.status);
    if (isIp6(number)) {
      data.address = octetsOf(in);
      data.addressMask = octetsOf(in);
      shadow.hwQualIs(type,
                      Ip6AddrQualifier(Trelix::Ip6Addr::fromBytes(data.address),
                                       Trelix::Ip6Addr::fromBytes(data.addressMask)),
                      status);
    } else if (isMac(number)) {
      data.address = octetsOf(in);
      data.addressMask = octetsOf(in);
      auto const ethAddr = [](const Octets& octets) {
        return Trelix::EthAddr::fromBytes(
            {octets[0], octets[1], octets[2], octets[3], octets[4], octets[5]});
      };
      shadow.hwQualIs(type, EthAddrQualifier(ethAddr(data.address), ethAddr(data.addressMask)),
                      status);
    } else {
      data.value = in.oddNumber<std::uint32_t>();
      data.mask = in.oddNumber<std::uint32_t>();
      shadow.hwQualIs(type, Qualifier(data.value, data.mask), status);
    }
    entry.qualifiers[number] = data;
    return;
  }
  switch (what) {
    case 18:
    case 19: {
      int const checker = 1 + static_cast<int>(in.below(3));
      Entry::Range made;
      made.low = in.oddNumber<std::int32_t>();
      made.high = in.oddNumber<std::int32_t>();
      made.status = statusOf(in);
      shadow.rangeCheckerIs(
          static_cast<RangeCheckerType>(checker),
          RangeCheckerStatus(made.low, made.high, static_cast<HwQualStatus>(made.status)));
      entry.ranges[checker] = made;
      break;
    }
    case 20: {
      int const number = in.flag() ? listed[in.below(18)] : in.u8();
      shadow.qualifierDel(static_cast<QualifierType>(number));
      entry.qualifiers.erase(number);
      break;
    }
    case 21: {
      int const checker = static_cast<int>(in.below(5));
      FUZZ_CHECK(shadow.rangeCheckerDel(static_cast<RangeCheckerType>(checker)) ==
                 (entry.ranges.erase(checker) != 0));
      break;
    }
    case 22: {
      // A qualifier implemented by another one changes no cell.
      auto const type = static_cast<QualifierType>(listed[in.below(18)]);
      auto const other = static_cast<QualifierType>(in.u8());
      auto const status = static_cast<HwQualStatus>(in.u8());
      if (other != type) {
        shadow.hwQualStatusIs(type, other, status);
        FUZZ_CHECK(shadow.getHwQualStatus(type, other) == status);
        if (entry.qualifiers.count(type) != 0) {
          shadow.qualifierIs(type)->hwQualDataIs(other)->qualIs(Qualifier(1, 2));
        }
      }
      break;
    }
    default: {
      // For an IPv6 qualifier a record of another kind reads as zero.
      int const number = listed[std::array{2, 3, 14, 15}[in.below(4)]];
      auto const type = static_cast<QualifierType>(number);
      shadow.hwQualIs(type, Qualifier(in.number<std::uint32_t>(), 0xFFFFFFFF));
      entry.qualifiers[number] = {};
      entry.qualifiers[number].status = 7;
      break;
    }
  }
}

template <class Base>
class WithAction : public Base {
 public:
  explicit WithAction(String action) : action_(std::move(action)) {}
  String formatActions(const VelmorTcamEntryShadow::PtrConst&) const override { return action_; }

 private:
  String action_;
};

}  // namespace

FUZZ_TARGET(rows) {
  Entry entry;
  entry.id = in.oddNumber<std::uint64_t>();
  entry.counterStatus = statusOf(in);
  auto const number = in.oddNumber<std::uint32_t>();
  auto const hits = in.oddNumber<std::uint64_t>();
  entry.action = in.text(in.below(90));
  std::string const description(in.text(in.below(90)));
  auto const shadow = Halvo::makePtr<VelmorTcamEntryShadow>(entry.id);
  shadow->counterStatusIs(entry.counterStatus);
  shadow->countersIs(CounterSet(hits / 2, hits));
  while (!in.empty()) change(in, entry, *shadow);

  VelmorTcamEntryShadow::PtrConst const constShadow(shadow);
  RequestKey const key((String(description)));
  RuleId const rule(number);
  WithAction<IpEntryRequestCliFormat> const ipFormat((String(entry.action)));
  WithAction<Ip6EntryRequestCliFormat> const ip6Format((String(entry.action)));
  FUZZ_CHECK_TEXT(ipFormat.formatEntryRequest(key, rule, description, constShadow, hits),
                  ipRow(entry, number, hits));
  FUZZ_CHECK_TEXT(ip6Format.formatEntryRequest(key, rule, description, constShadow, hits),
                  ip6Row(entry, number, hits));
  FUZZ_CHECK_TEXT(ip6Format.formatQualifierDSCP(constShadow), dscp(entry));
  FUZZ_CHECK_TEXT(ipFormat.formatQualifierIpLength(constShadow, "<%-20s>"),
                  length(entry, "<%-20s>"));

  MacEntryRequestCliFormat const macFormat;
  FUZZ_CHECK_TEXT(macFormat.formatQualifierMacAddr(constShadow, qualifierSrcMac), mac(entry, 164));
  FUZZ_CHECK_TEXT(macFormat.formatQualifierMacAddr(constShadow, qualifierDstMac), mac(entry, 28));
  FUZZ_CHECK_TEXT(macFormat.formatQualifierEtherType(constShadow), etherType(entry));

  VelmorTcamCliFormat const tcamFormat;
  FUZZ_CHECK_TEXT(tcamFormat.formatEntryRequest(key, rule, description, constShadow, hits),
                  format("    0x%08x %12lu hits - ", static_cast<unsigned>(entry.id), hits) +
                      description + "\n");
  auto const used = static_cast<std::uint32_t>(hits);
  FUZZ_CHECK_TEXT(
      tcamFormat.formatGroupHeader(number, entry.counterStatus, static_cast<U8>(entry.id), used,
                                   number),
      format("TCAM group %d%s uses %d %s and can use up to %d more.\n",
             static_cast<int>(number & 0xFFFF),
             entry.counterStatus > 1
                 ? format(" in PIPE %d", static_cast<int>(entry.id & 255)).c_str()
                 : "",
             static_cast<int>(used), used == 1 ? "entry" : "entries", static_cast<int>(number)));
  FUZZ_CHECK_TEXT(tcamFormat.formatRequestHeader(description, used),
                  "  " + description + format(" uses %d entries.\n", static_cast<int>(used)));

  for (int const type : {116, 118}) {
    if (entry.programmed(type) == nullptr) continue;
    bool isIcmp = false;
    U16 const carried =
        getQualifierL4PortIfIcmp(constShadow, static_cast<QualifierType>(type), isIcmp);
    int const expected = icmp(entry, type);
    FUZZ_CHECK(isIcmp == (expected >= 0) && carried == (isIcmp ? expected : 0));
  }
  // The formatters hold no reference after they return.
  FUZZ_CHECK(shadow->useCount() == 2);
}
