// The IPv4 row as a first version with the standard library would make it: a yardstick for
// IpRowBench.
#pragma once

#include <arpa/inet.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>

#include "RowFixtures.h"

namespace velmorbench::straightforward {

struct Data {
  std::uint32_t value;
  std::uint32_t mask;
};
struct Status {
  std::unordered_map<int, std::shared_ptr<Data>> hwQualData;
  std::unordered_map<int, int> hwQualStatus;
};
struct Range {
  int low;
  int high;
  int status;
};
struct Shadow {
  std::uint64_t id = 0;
  int counterStatus = 0;
  std::unordered_map<int, std::shared_ptr<Status>> qualifier;
  std::unordered_map<int, Range> rangeChecker;

  int status(int type) const {
    auto const found = qualifier.find(type);
    if (found == qualifier.end()) return 0;
    auto const status = found->second->hwQualStatus.find(type);
    return status == found->second->hwQualStatus.end() ? 0 : status->second;
  }
  void add(int type, std::uint32_t value, std::uint32_t mask) {
    auto made = std::make_shared<Status>();
    made->hwQualData[type] = std::make_shared<Data>(Data{value, mask});
    made->hwQualStatus[type] = 7;
    qualifier[type] = made;
  }
};

inline std::shared_ptr<Shadow> shadowOf(const PlainEntry& e) {
  auto shadow = std::make_shared<Shadow>();
  shadow->id = e.id;
  shadow->counterStatus = 7;
  shadow->add(101, e.protocol, 0xFF);
  shadow->add(153, e.srcIp, e.srcIpMask);
  shadow->add(15, e.dstIp, e.dstIpMask);
  shadow->add(118, e.srcPort, e.srcPortMask);
  shadow->add(116, e.dstPort, e.dstPortMask);
  shadow->add(132, e.vlan, e.vlanMask);
  shadow->add(8, e.dscp, e.dscpMask);
  shadow->add(97, e.fragment, 3);
  shadow->add(182, e.tcpControl, e.tcpControlMask);
  shadow->add(36, e.etherType, e.etherTypeMask);
  shadow->rangeChecker[3] = Range{e.lengthLow, e.lengthHigh, 7};
  return shadow;
}

template <class... Args>
std::string format(const char* text, Args... args) {
  char buffer[256];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  int const size = std::snprintf(buffer, sizeof buffer, text, args...);
#pragma GCC diagnostic pop
  return std::string(buffer, static_cast<std::size_t>(size));
}

inline std::string quad(std::uint32_t word) {
  char text[INET_ADDRSTRLEN];
  std::uint32_t const network = htonl(word);
  return inet_ntop(AF_INET, &network, text, sizeof text);
}

class Formatter {
 public:
  virtual ~Formatter() = default;

  virtual std::string row(const std::shared_ptr<const Shadow>& s, std::uint32_t sequence,
                          std::uint64_t hits) const {
    std::ostringstream out;
    out << format("%-10lu|", s->id) << this->sequence(sequence) << protocol(s) << address(s, 153)
        << port(s, 118, 1) << vlan(s);
    if (s->counterStatus == 7) out << format("%11lu", hits);
    out << "\n"
        << dscp(s) << fragment(s) << flags(s) << address(s, 15) << port(s, 116, 2)
        << length(s, "%11s|") << action(s) << "\n";
    return out.str();
  }
  virtual std::string sequence(std::uint32_t number) const {
    return number == 0xFFFFFFFF ? format("%-7s|", "Drop") : format("%-7u|", number);
  }
  virtual std::string protocol(const std::shared_ptr<const Shadow>& s) const {
    std::string text = "*";
    if (s->status(101) == 7) {
      switch (std::uint32_t const number = data(s, 101)->value & 0xFF) {
        case 0:
          break;
        case 6:
          text = "TCP";
          break;
        case 17:
          text = "UDP";
          break;
        case 1:
          text = "ICMP";
          break;
        case 58:
          text = "ICMPv6";
          break;
        default:
          text = format("0x%02x", number);
      }
    }
    return format(" %-6s|", text.c_str());
  }
  virtual std::string address(const std::shared_ptr<const Shadow>& s, int type) const {
    std::string text = "*";
    std::string mask = "*";
    if (s->status(type) == 7) {
      auto const d = data(s, type);
      if (d->mask != 0) text = quad(d->value);
      if (d->mask != 0 && d->mask != 0xFFFFFFFF) mask = quad(d->mask);
    }
    return format("%15s|%15s|", text.c_str(), mask.c_str());
  }
  virtual std::string port(const std::shared_ptr<const Shadow>& s, int type, int checker) const {
    std::string const range = this->range(s, checker);
    if (!range.empty()) return range;
    std::string text = "*";
    if (s->status(type) == 7) {
      auto const d = data(s, type);
      std::uint32_t const low = d->value & 0xFFFF;
      std::uint32_t const high = (d->value | ~d->mask) & 0xFFFF;
      std::uint32_t const protocol =
          s->status(101) == 7 && s->status(118) == 7 ? data(s, 101)->value & 0xFF : 0;
      if (protocol == 1 || protocol == 58) {
        text = format("%d", static_cast<int>(type == 118 ? low >> 8 : low & 0xFF));
      } else if (low == high) {
        text = format("%d", static_cast<int>(low));
      } else if (low != 0 || high != 0xFFFF) {
        text = format("%d-%d", static_cast<int>(low), static_cast<int>(high));
      }
    }
    return format("%11s|", text.c_str());
  }
  virtual std::string vlan(const std::shared_ptr<const Shadow>& s) const {
    std::string id = "*";
    std::string mask = "*";
    if (s->status(132) == 7) {
      auto const d = data(s, 132);
      id = format("%u", d->value);
      mask = format("%u", d->mask);
    }
    return format("%11s|%11s|", id.c_str(), mask.c_str());
  }
  virtual std::string dscp(const std::shared_ptr<const Shadow>& s) const {
    std::string text;
    if (s->status(8) == 7) {
      auto const d = data(s, 8);
      text = format("%d/0x%02X", static_cast<int>(d->value), d->mask);
    }
    return format("%10s|", text.c_str());
  }
  virtual std::string fragment(const std::shared_ptr<const Shadow>& s) const {
    std::string text = "*";
    if (s->status(97) == 7) {
      auto const value = data(s, 97)->value;
      text = value == 1 || value == 2 ? "N" : value == 3 ? "Y" : "*";
    }
    return format(" %3s   |", text.c_str());
  }
  virtual std::string flags(const std::shared_ptr<const Shadow>& s) const {
    std::string text;
    if (s->status(182) == 7) {
      auto const value = data(s, 182)->value;
      for (int bit = 0; bit < 6; ++bit) text += (value >> bit & 1) != 0 ? "FSRPAU"[bit] : ' ';
    }
    return format(" %-6s|", text.c_str());
  }
  virtual std::string length(const std::shared_ptr<const Shadow>& s, const char* text) const {
    std::string range = this->range(s, 3);
    if (range.empty()) range = "*";
    return format(text, range.c_str());
  }
  virtual std::string range(const std::shared_ptr<const Shadow>& s, int checker) const {
    auto const found = s->rangeChecker.find(checker);
    if (found == s->rangeChecker.end() || found->second.status != 7) return "";
    return format("%11s|", format("%d-%d", found->second.low, found->second.high).c_str());
  }
  virtual std::string action(const std::shared_ptr<const Shadow>&) const { return "permit"; }

 private:
  static std::shared_ptr<Data> data(const std::shared_ptr<const Shadow>& s, int type) {
    std::shared_ptr<Status> const status = s->qualifier.find(type)->second;
    return status->hwQualData.find(type)->second;
  }
};

}  // namespace velmorbench::straightforward
