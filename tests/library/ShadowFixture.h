// Shared by the library's tests: shadows to format, and formatters that supply the action cell.
#pragma once

#include <sys/wait.h>

#include <string>
#include <vector>

#include "Halvo/Ptr.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace velmortest {

using Halvo::makePtr;
using Halvo::Ptr;
using Halvo::String;
using VelmorTcam::U16;
using VelmorTcam::U32;
using VelmorTcam::U64;
using VelmorTcam::U8;
using Shadow = VelmorTcam::VelmorTcamEntryShadow;

/// Fills a shadow in one expression:
///
///     ShadowOf(5).qual(qualifierSrcIp, 0x0A000001, 0xFFFFFFFF).range(rangeCheckerIpLength, 64,
///     1500)
class ShadowOf {
 public:
  explicit ShadowOf(U64 id = 5) : shadow_(makePtr<Shadow>(id)) {}
  ShadowOf& qual(VelmorTcam::QualifierType type, U32 value, U32 mask = 0xFFFFFFFF,
                 U8 status = VelmorTcam::hwQualStatusProgrammed) {
    shadow_->hwQualIs(type, VelmorTcam::Qualifier(value, mask),
                      static_cast<VelmorTcam::HwQualStatus>(status));
    return *this;
  }
  ShadowOf& ip6(VelmorTcam::QualifierType type, const char* address, const char* mask,
                U8 status = VelmorTcam::hwQualStatusProgrammed) {
    shadow_->hwQualIs(
        type,
        VelmorTcam::Ip6AddrQualifier(Trelix::Ip6Addr::parse(address), Trelix::Ip6Addr::parse(mask)),
        static_cast<VelmorTcam::HwQualStatus>(status));
    return *this;
  }
  ShadowOf& mac(VelmorTcam::QualifierType type, const char* address, const char* mask,
                U8 status = VelmorTcam::hwQualStatusProgrammed) {
    shadow_->hwQualIs(
        type,
        VelmorTcam::EthAddrQualifier(Trelix::EthAddr::parse(address), Trelix::EthAddr::parse(mask)),
        static_cast<VelmorTcam::HwQualStatus>(status));
    return *this;
  }
  ShadowOf& range(VelmorTcam::RangeCheckerType type, VelmorTcam::S32 low, VelmorTcam::S32 high,
                  U8 status = VelmorTcam::hwQualStatusProgrammed) {
    shadow_->rangeCheckerIs(type, VelmorTcam::RangeCheckerStatus(
                                      low, high, static_cast<VelmorTcam::HwQualStatus>(status)));
    return *this;
  }
  ShadowOf& counters(U8 status = VelmorTcam::hwQualStatusProgrammed) {
    shadow_->counterStatusIs(status);
    return *this;
  }
  /// A status of 7 and the nodes, but a record that is not set.
  ShadowOf& unset(VelmorTcam::QualifierType type) {
    shadow_->qualifierIs(type)->hwQualDataIs(type);
    return statusOnly(type);
  }
  /// A status of 7 without any data.
  ShadowOf& statusOnly(VelmorTcam::QualifierType type) {
    shadow_->hwQualStatusIs(type, type, VelmorTcam::hwQualStatusProgrammed);
    return *this;
  }
  ShadowOf& statusAndQualifierOnly(VelmorTcam::QualifierType type) {
    shadow_->qualifierIs(type);
    return statusOnly(type);
  }
  operator Ptr<const Shadow>() const { return shadow_; }
  const Ptr<Shadow>& operator->() const { return shadow_; }

 private:
  Ptr<Shadow> shadow_;
};

/// One of the library's formatters, with an action cell.
template <class Base>
class WithAction : public Base {
 public:
  explicit WithAction(String action = "permit") : action_(std::move(action)) {}
  String formatActions(const Ptr<const Shadow>&) const override { return action_; }

 private:
  String action_;
};
using IpFormat = WithAction<VelmorTcam::IpEntryRequestCliFormat>;
using Ip6Format = WithAction<VelmorTcam::Ip6EntryRequestCliFormat>;

/// A MAC row: the sequence cell and the MAC table's own cells.
class MacCellsFormat : public VelmorTcam::MacEntryRequestCliFormat {
 public:
  String formatEntryRequest(const VelmorTcam::RequestKey&, const VelmorTcam::RuleId& rule,
                            const String&, const PtrConst& shadow, U64) const override {
    return formatSequenceNum(rule.sequenceNum()) +
           formatQualifierMacAddr(shadow, VelmorTcam::qualifierSrcMac) +
           formatQualifierMacAddr(shadow, VelmorTcam::qualifierDstMac) +
           formatQualifierEtherType(shadow);
  }
};

/// A shadow that fills each cell of every table, some with long texts.
inline Ptr<const Shadow> fullShadow() {
  using namespace VelmorTcam;
  return ShadowOf(0xFFFFFFFFFFFFFFFF)
      .qual(qualifierIpProtocol, 6, 255)
      .qual(qualifierSrcIp, 0xC0A80101, 0xFFFFFF00)
      .qual(qualifierDstIp, 0xC0A80101, 0xFFFFFF00)
      .ip6(qualifierSrcIp6, "2001:db8:1111:2222:3333:4444:5555:6666", "ffff::")
      .ip6(qualifierDstIp6Alt, "2001:db8:1111:2222:3333:4444:5555:6666", "ffff::")
      .mac(qualifierSrcMac, "00:00:5e:00:53:01", "ff:ff:ff:ff:ff:ff")
      .mac(qualifierDstMac, "00:00:5e:00:53:02", "ff:ff:ff:ff:ff:00")
      .qual(qualifierEtherType, 0x800)
      .qual(qualifierL4SrcPort, 1024, 64512)
      .qual(qualifierL4DstPort, 443, 65535)
      .qual(qualifierOuterVlanId, 4294967295, 4294967295)
      .qual(qualifierDSCP, 4294967295, 4294967295)
      .qual(qualifierIpFrag, 3)
      .qual(qualifierIp6TrafficClass, 4294967295, 4294967295)
      .qual(qualifierIp6HopLimit, 4294967295)
      .qual(qualifierTcpControl, 63, 63)
      .range(rangeCheckerL4DstPort, 1024, 2000)
      .range(rangeCheckerIpLength, 64, 1500)
      .counters();
}

/// A shadow whose port cells show an ICMP type and code.
inline Ptr<const Shadow> icmpShadow() {
  using namespace VelmorTcam;
  return ShadowOf(5)
      .qual(qualifierIpProtocol, 1, 255)
      .qual(qualifierL4SrcPort, 2048, 65280)
      .qual(qualifierL4DstPort, 3, 255);
}

/// The use counts of the shadow and of all nodes below it.
inline std::vector<U32> useCounts(const Shadow& shadow) {
  std::vector<U32> counts{shadow.useCount()};
  for (auto const& status : shadow.qualifier()) {
    counts.push_back(status.value->useCount());
    for (auto const& data : status.value->hwQualData()) counts.push_back(data.value->useCount());
  }
  return counts;
}

/// A row, for tests in which key and description do not matter.
template <class Format>
std::string rowOf(const Format& format, const Ptr<const Shadow>& shadow, U32 sequence = 10,
                  U64 hits = 42) {
  return format
      .formatEntryRequest(VelmorTcam::RequestKey("acl"), VelmorTcam::RuleId(sequence), "text",
                          shadow, hits)
      .str();
}

// A status of 7 without data breaks the shadow's contract: the process stops on the spot. A
// sanitizer reports the fault and exits in its own way. Without one it is a plain signal, and
// nothing is printed.
inline bool stoppedOnTheSpot(int status) {
#if defined(__SANITIZE_ADDRESS__)
  return !WIFEXITED(status) || WEXITSTATUS(status) != 0;
#else
  return WIFSIGNALED(status) && (WTERMSIG(status) == SIGSEGV || WTERMSIG(status) == SIGILL);
#endif
}
#if defined(__SANITIZE_ADDRESS__)
inline constexpr const char* nothingPrinted = "";
#else
inline constexpr const char* nothingPrinted = "^$";
#endif

}  // namespace velmortest
