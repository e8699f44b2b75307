// The entries of a source in a form that tests compare, and random packets for their matches.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <random>
#include <string>

#include "match/Match.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// The table and the match of an entry: `ip IpProtocol=6/255 L4DstPort:1-9 {in_port=1}`. A
/// qualifier is NAME=VALUE/MASK, a range checker NAME:LOW-HIGH, otherMatch in braces.
inline std::string matchText(const Entry& entry) {
  std::string text(tableName(entry.table));
  auto const appendPair = [&text](const auto& value, const auto& mask, auto append) {
    append(text, value);
    text += '/';
    append(text, mask);
  };
  for (const Qualifier& qualifier : entry.qualifiers) {
    ((text += ' ') += qualifierByType(qualifier.type)->name.substr(9)) += '=';
    switch (qualifier.kind) {
      case QualifierKind::word:
        appendPair(qualifier.value, qualifier.mask,
                   [](std::string& out, std::uint32_t word) { out += std::to_string(word); });
        break;
      case QualifierKind::ip:
        appendPair(qualifier.value, qualifier.mask, appendIp);
        break;
      case QualifierKind::ip6:
        appendPair(qualifier.ip6.value, qualifier.ip6.mask, appendIp6);
        break;
      case QualifierKind::mac:
        appendPair(qualifier.mac.value, qualifier.mac.mask, appendMac);
        break;
    }
  }
  for (const RangeChecker& range : entry.rangeCheckers) {
    ((text += ' ') += rangeCheckerByType(range.type)->name.substr(12)) += ':';
    text += std::to_string(range.low) + "-" + std::to_string(range.high);
  }
  if (!entry.otherMatch.empty()) ((text += " {") += entry.otherMatch) += '}';
  return text;
}

/// Calls `use` for each entry.
inline void eachEntry(Source& source, const std::function<void(const Entry&)>& use) {
  for (Source::Item item; (item = source.next()) != Source::Item::end;) {
    if (item == Source::Item::entry) use(source.entry());
  }
}

/// A packet: a value for each field.
using TestPacket = std::array<Word, fieldCount>;

inline bool isIn(const Match& match, const TestPacket& packet) {
  for (std::size_t i = 0; i != fieldCount; ++i) {
    if (match.isEmpty() || !match.has(static_cast<Field>(i), packet[i])) return false;
  }
  return true;
}

/// A packet of the match, the bits that are free drawn from `draw`.
inline TestPacket packetIn(const Match& match, const std::function<Word()>& draw) {
  TestPacket packet{};
  for (std::size_t i = 0; i != fieldCount; ++i) {
    packet[i] =
        match[static_cast<Field>(i)].picked(draw() & lowOnes(bitsOf(static_cast<Field>(i))));
  }
  return packet;
}

// --- the texts of fields

inline std::string ipText(Word address) {
  std::string text;
  appendIp(text, static_cast<std::uint32_t>(address));
  return text;
}
template <std::size_t size>
std::array<std::uint8_t, size> octetsOf(Word word) {
  std::array<std::uint8_t, size> result;
  for (std::size_t i = size; i-- > 0; word >>= 8) result[i] = static_cast<std::uint8_t>(word);
  return result;
}
inline std::string ip6Text(Word address) {
  std::string text;
  appendIp6(text, octetsOf<16>(address));
  return text;
}
inline std::string macText(Word address) {
  std::string text;
  appendMac(text, octetsOf<6>(address));
  return text;
}
inline std::string hexadecimal(Word value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
  return text;
}
inline std::string decimal(Word value) { return std::to_string(static_cast<std::uint64_t>(value)); }

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  /// From 0 to bound - 1.
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_() % bound); }
  bool chance(std::uint32_t percent) { return below(100) < percent; }
  Word word(unsigned bits) { return (Word{engine_()} << 64 | engine_()) & lowOnes(bits); }
  /// A mask of `bits` bits: a prefix, all ones, or any.
  Word mask(unsigned bits) {
    switch (below(3)) {
      case 0:
        return lowOnes(bits);
      case 1:
        return lowOnes(bits) & ~lowOnes(below(bits + 1));
      default:
        return word(bits);
    }
  }
  template <class Choice>
  const Choice& of(std::initializer_list<Choice> choices) {
    return choices.begin()[below(static_cast<std::uint32_t>(choices.size()))];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace tcamshow
