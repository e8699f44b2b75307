#include "sources/SonicMatch.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "snapshot/AddressText.h"
#include "sources/NumberText.h"
#include "sources/PortQualifiers.h"

namespace tcamshow {
namespace {

constexpr std::uint32_t largestByte = 0xFF;
constexpr std::uint32_t largestWord = 0xFFFF;
constexpr std::uint32_t vlanMask = 0xFFF;
constexpr std::uint32_t dscpMask = 0x3F;
constexpr std::uint32_t sixFlags = 0x3F;
constexpr std::uint32_t typeArp = 0x0806;
constexpr std::uint32_t fragmentMask = 3;
constexpr std::uint32_t notAFragment = 1;
constexpr std::uint32_t aFragment = 3;

std::string assignment(std::string_view name, std::string_view text) {
  std::string result(name);
  result += '=';
  return result += text;
}

/// Reads a value of at most `largest` and its mask, which is cut to the field: a field has no bits
/// beyond. `whole` is the mask where none is given.
bool readMasked(const SonicValue& from, std::uint32_t largest, std::uint32_t whole,
                std::uint32_t& value, std::uint32_t& mask) noexcept {
  std::uint64_t read = 0;
  std::uint64_t readMask = whole;
  if (!numberFromText(from.value, largest, read)) return false;
  if (from.hasMask && !numberFromText(from.mask, UINT64_MAX, readMask)) return false;
  value = static_cast<std::uint32_t>(read);
  mask = static_cast<std::uint32_t>(readMask & largest);
  return true;
}

/// The last part of the name of a value that is one of a list, if its mask is all ones, or absent.
std::string_view choice(const SonicValue& from, std::string_view start) noexcept {
  std::uint64_t mask = 0;
  if (from.hasMask && (!numberFromText(from.mask, UINT64_MAX, mask) ||
                       (mask != 0xFFFFFFFF && mask != UINT64_MAX))) {
    return {};
  }
  std::string_view name = from.value;
  if (name.starts_with(start)) name.remove_prefix(start.size());
  return name;
}

bool isSame(const Qualifier& a, const Qualifier& b) noexcept {
  return a.kind == QualifierKind::word && b.kind == QualifierKind::word && a.mask == b.mask &&
         (a.value & a.mask) == (b.value & b.mask);
}

}  // namespace

void SonicMatch::clear() noexcept {
  qualifiers_.clear();
  ranges_.clear();
  others_.clear();
  othersSize_ = 0;
  icmp_.clear();
  nextHeader_.clear();
  ipType_.clear();
  isIpType_ = namesIp_ = namesIp6_ = false;
  otherMatch_.clear();
}

bool SonicMatch::add(SonicField field, const SonicValue& value) {
  switch (field) {
    case SonicField::sourceIp:
      return addIp(VelmorTcam::qualifierSrcIp, value);
    case SonicField::destinationIp:
      return addIp(VelmorTcam::qualifierDstIp, value);
    case SonicField::sourceIp6:
      return addIp6(VelmorTcam::qualifierSrcIp6, value);
    case SonicField::destinationIp6:
      return addIp6(VelmorTcam::qualifierDstIp6, value);
    case SonicField::sourceMac:
      return addMac(VelmorTcam::qualifierSrcMac, value);
    case SonicField::destinationMac:
      return addMac(VelmorTcam::qualifierDstMac, value);
    case SonicField::etherType:
      return addWord(VelmorTcam::qualifierEtherType, value, largestWord);
    case SonicField::vlan:
      return addWord(VelmorTcam::qualifierOuterVlanId, value, vlanMask);
    case SonicField::protocol:
      return addWord(VelmorTcam::qualifierIpProtocol, value, largestByte);
    case SonicField::nextHeader:
      if (!addWord(VelmorTcam::qualifierIpProtocol, value, largestByte)) return false;
      nextHeader_ = assignment(value.name, value.text);
      namesIp6_ = true;
      return true;
    case SonicField::sourcePort:
      return addWord(VelmorTcam::qualifierL4SrcPort, value, largestPort);
    case SonicField::destinationPort:
      return addWord(VelmorTcam::qualifierL4DstPort, value, largestPort);
    case SonicField::tcpFlags: {
      std::uint32_t flags = 0;
      std::uint32_t mask = 0;
      if (!readMasked(value, largestWord, sixFlags, flags, mask)) return false;
      if (mask > sixFlags) {
        addOther(value.name, value.text);
      } else {
        addQualifier(wordQualifier(VelmorTcam::qualifierTcpControl, flags & sixFlags, mask), value);
      }
      return true;
    }
    case SonicField::dscp:
      return addWord(VelmorTcam::qualifierDSCP, value, dscpMask);
    case SonicField::tos:
      return addWord(VelmorTcam::qualifierIp6TrafficClass, value, largestByte);
    case SonicField::icmpType:
    case SonicField::icmpCode:
      return addIcmp(field == SonicField::icmpType, false, value);
    case SonicField::icmp6Type:
    case SonicField::icmp6Code:
      return addIcmp(field == SonicField::icmp6Type, true, value);
    case SonicField::ipType:
      return addIpType(value);
    case SonicField::fragment:
      return addFragment(value);
    case SonicField::none:
      break;
  }
  addOther(value.name, value.text);
  return true;
}

void SonicMatch::addOther(std::string_view name, std::string_view text) {
  othersSize_ += name.size() + text.size() + 2;
  if (!isTooLong()) others_.push_back(assignment(name, text));
}

void SonicMatch::addRange(SonicRange range, std::uint32_t low, std::uint32_t high,
                          std::string_view name) {
  if (range == SonicRange::other) {
    return addOther(name, std::to_string(low) + "-" + std::to_string(high));
  }
  // No field has larger values, and a range checker cannot hold them.
  constexpr std::uint32_t most = INT32_MAX;
  RangeChecker checker;
  checker.type = range == SonicRange::sourcePort        ? VelmorTcam::rangeCheckerL4SrcPort
                 : range == SonicRange::destinationPort ? VelmorTcam::rangeCheckerL4DstPort
                                                        : VelmorTcam::rangeCheckerIpLength;
  checker.low = static_cast<std::int32_t>(std::min(low, most));
  checker.high = static_cast<std::int32_t>(std::min(high, most));
  for (RangeChecker& each : ranges_) {
    if (each.type != checker.type) continue;
    each.low = std::max(each.low, checker.low);
    each.high = std::min(each.high, checker.high);
    return;
  }
  ranges_.push_back(checker);
}

bool SonicMatch::addWord(std::uint8_t type, const SonicValue& value, std::uint32_t largest) {
  Qualifier qualifier = wordQualifier(type, 0, 0);
  if (!readMasked(value, largest, largest, qualifier.value, qualifier.mask)) return false;
  addQualifier(qualifier, value);
  return true;
}

bool SonicMatch::addIp(std::uint8_t type, const SonicValue& value) {
  Qualifier qualifier = wordQualifier(type, 0, 0xFFFFFFFF, QualifierKind::ip);
  if (!ipFromText(value.value, qualifier.value)) return false;
  if (value.hasMask) {
    std::uint64_t length = 0;
    if (numberFromText(value.mask, 32, length)) {
      qualifier.mask = ipMask(static_cast<unsigned>(length));
    } else if (!ipFromText(value.mask, qualifier.mask)) {
      return false;
    }
  }
  namesIp_ = true;
  addQualifier(qualifier, value);
  return true;
}

bool SonicMatch::addIp6(std::uint8_t type, const SonicValue& value) {
  Ip6Octets address{};
  Ip6Octets mask = ip6Mask(128);
  if (!ip6FromText(value.value, address)) return false;
  if (value.hasMask) {
    std::uint64_t length = 0;
    if (numberFromText(value.mask, 128, length)) {
      mask = ip6Mask(static_cast<unsigned>(length));
    } else if (!ip6FromText(value.mask, mask)) {
      return false;
    }
  }
  namesIp6_ = true;
  addQualifier(ip6Qualifier(type, address, mask), value);
  return true;
}

bool SonicMatch::addMac(std::uint8_t type, const SonicValue& value) {
  MacOctets address{};
  MacOctets mask;
  mask.fill(0xFF);
  if (!macFromText(value.value, address)) return false;
  if (value.hasMask && !macFromText(value.mask, mask)) return false;
  addQualifier(macQualifier(type, address, mask), value);
  return true;
}

bool SonicMatch::addIcmp(bool isType, bool isIp6, const SonicValue& value) {
  Icmp field{isType, isIp6, 0, 0, assignment(value.name, value.text)};
  if (!readMasked(value, largestByte, largestByte, field.value, field.mask)) return false;
  (isIp6 ? namesIp6_ : namesIp_) = true;
  othersSize_ += field.text.size() + 1;
  if (!isTooLong()) icmp_.push_back(std::move(field));
  return true;
}

bool SonicMatch::addIpType(const SonicValue& value) {
  std::string_view const type = choice(value, "SAI_ACL_IP_TYPE_");
  bool const saysFamily = type == "IPV4ANY" || type == "IPV6ANY" || type == "ARP";
  if (type == "ANY" || value.value == "SAI_ACL_IP_TYPE_ANY") return true;
  if (!saysFamily || !ipType_.empty()) {
    addOther(value.name, value.text);
    return true;
  }
  if (type == "ARP") {
    addQualifier(wordQualifier(VelmorTcam::qualifierEtherType, typeArp, largestWord), value);
    return true;
  }
  ipType_ = assignment(value.name, value.text);
  isIpType_ = type == "IPV4ANY";
  return true;
}

bool SonicMatch::addFragment(const SonicValue& value) {
  std::string_view const fragment = choice(value, "SAI_ACL_IP_FRAG_");
  if (fragment != "ANY" && fragment != "NON_FRAG") {
    addOther(value.name, value.text);
    return true;
  }
  addQualifier(wordQualifier(VelmorTcam::qualifierIpFrag,
                             fragment == "ANY" ? aFragment : notAFragment, fragmentMask),
               value);
  return true;
}

void SonicMatch::addQualifier(const Qualifier& qualifier, const SonicValue& value) {
  const Qualifier* const first = find(qualifier.type);
  if (first == nullptr) {
    qualifiers_.push_back(qualifier);
  } else if (!isSame(*first, qualifier)) {
    addOther(value.name, value.text);
  }
}

const Qualifier* SonicMatch::find(std::uint8_t type) const noexcept {
  auto const found = std::find_if(qualifiers_.begin(), qualifiers_.end(),
                                  [type](const Qualifier& each) { return each.type == type; });
  return found == qualifiers_.end() ? nullptr : &*found;
}

bool SonicMatch::hasProtocol(std::uint32_t protocol) const noexcept {
  const Qualifier* const found = find(VelmorTcam::qualifierIpProtocol);
  return found != nullptr && found->mask == largestByte && found->value == protocol;
}

void SonicMatch::placeIcmp(bool isContradiction) {
  for (Icmp& field : icmp_) {
    std::uint8_t const type =
        field.isType ? VelmorTcam::qualifierL4SrcPort : VelmorTcam::qualifierL4DstPort;
    if (isContradiction || find(type) != nullptr ||
        !hasProtocol(field.isIp6 ? protocolIcmp6 : protocolIcmp)) {
      others_.push_back(std::move(field.text));
      continue;
    }
    unsigned const shift = field.isType ? 8 : 0;
    qualifiers_.push_back(wordQualifier(type, field.value << shift, field.mask << shift));
  }
}

void SonicMatch::fill(Entry& entry) {
  bool isIp = namesIp_;
  bool isIp6 = namesIp6_;
  if (!ipType_.empty()) (isIpType_ ? isIp : isIp6) = true;
  // No packet is of both families. In the MAC table their addresses exclude each other; all else
  // that names a family is kept as text.
  bool const isContradiction = isIp && isIp6;
  entry.table = isContradiction ? Table::mac : isIp ? Table::ip : isIp6 ? Table::ip6 : Table::mac;
  for (const std::string* const text : {&ipType_, &nextHeader_}) {
    if (!isContradiction || text->empty()) continue;
    othersSize_ += text->size() + 1;
    others_.push_back(*text);
  }
  placeIcmp(isContradiction);
  // The fields of a row come in any order, but an entry is the same in all of them.
  std::sort(qualifiers_.begin(), qualifiers_.end(),
            [](const Qualifier& a, const Qualifier& b) { return a.type < b.type; });
  std::sort(ranges_.begin(), ranges_.end(),
            [](const RangeChecker& a, const RangeChecker& b) { return a.type < b.type; });
  std::sort(others_.begin(), others_.end());
  entry.qualifiers = qualifiers_;
  entry.rangeCheckers = ranges_;
  for (const std::string& other : others_) {
    if (!otherMatch_.empty()) otherMatch_ += ' ';
    otherMatch_ += other;
  }
  entry.otherMatch = otherMatch_;
}

}  // namespace tcamshow
