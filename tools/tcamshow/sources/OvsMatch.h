// The match of one OpenFlow flow: its text in fields, and the qualifiers made from them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "io/LineReader.h"
#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The parts of a flow's text in front of its actions. The groups matter to the order of the
/// enumerators.
enum class OvsField : std::uint8_t {
  // No match.
  ignored,
  table,
  packets,
  bytes,
  priority,
  // Words that name a protocol.
  protocol,
  // Fields that become qualifiers.
  etherType,
  vlan,
  vlanTci,
  sourceMac,
  destinationMac,
  sourceIp,
  destinationIp,
  sourceIp6,
  destinationIp6,
  ipProtocol,
  tos,
  dscp,
  ttl,
  fragment,
  tcpFlags,
  sourcePort,
  destinationPort,
  icmpType,
  icmpCode,
  // Every other field.
  other,
};
constexpr bool isMatch(OvsField field) noexcept { return field >= OvsField::protocol; }

/// One part of a flow's text: `tcp`, or `tp_dst=443`.
struct OvsPart {
  std::string_view text;
  std::string_view value;  ///< what stands behind the sign of equality
  OvsField field = OvsField::other;
  std::uint8_t index = 0;  ///< of the name in the list of known names
};

/// Finds out what field a part is. Its name is the first `nameSize` bytes of `text`.
OvsPart ovsPart(std::string_view text, std::size_t nameSize) noexcept;

/// Makes the match of an entry from the parts of one flow.
class OvsMatch {
 public:
  /// `lines` is for the place in messages. It must outlive this object.
  explicit OvsMatch(const LineReader& lines) : lines_(lines) {}

  void clear() noexcept;
  /// Adds a part whose field isMatch(). Its texts must stay valid until fill().
  void add(const OvsPart& part);
  /// The parts that were added.
  const std::vector<OvsPart>& parts() const noexcept { return parts_; }
  /// Sets the table, the qualifiers and `otherMatch` of an entry that has its defaults. Throws the
  /// line's InputError if a value cannot be read. `otherMatch` is valid until the next call of
  /// clear().
  void fill(Entry& entry);
  /// Appends text to what fill() will put into `otherMatch`, behind the parts of the match.
  void addOther(std::string_view text) { moreOther_ = text; }

 private:
  struct Masked {
    std::uint32_t value = 0;
    std::uint32_t mask = 0;
  };

  [[noreturn]] void fail(const OvsPart& part, std::string_view message) const;
  void setEtherType(const OvsPart& part, std::uint32_t type);
  void setProtocol(const OvsPart& part, std::uint32_t protocol);
  Masked masked(const OvsPart& part, std::uint32_t largest) const;
  Masked flags(const OvsPart& part) const;

  /// Adds the qualifier of a part. False if no qualifier can hold it.
  bool addQualifier(const OvsPart& part, Entry& entry) const;
  bool addIp(const OvsPart& part, std::uint8_t type, Entry& entry) const;
  bool addIp6(const OvsPart& part, std::uint8_t type, Entry& entry) const;
  void addMac(const OvsPart& part, std::uint8_t type, Entry& entry) const;
  bool addVlanTci(const OvsPart& part, Entry& entry) const;
  bool addFragment(const OvsPart& part, Entry& entry) const;
  bool addFlags(const OvsPart& part, Entry& entry) const;
  bool addPort(const OvsPart& part, std::uint8_t type, Entry& entry) const;
  bool addIcmpField(const OvsPart& part, Entry& entry) const;

  bool isIp() const noexcept;
  bool isIp6() const noexcept;
  bool hasProtocol(std::uint32_t protocol) const noexcept;

  static constexpr std::uint32_t none = 0xFFFFFFFF;

  const LineReader& lines_;
  std::vector<OvsPart> parts_;
  std::uint64_t seen_ = 0;
  std::uint32_t etherType_ = none;
  std::uint32_t protocol_ = none;
  std::string other_;
  std::string_view moreOther_;
};

}  // namespace tcamshow
