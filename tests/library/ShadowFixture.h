// What the library's tests share: shadows to format, and formatters that supply the action cell.
#pragma once

#include <sys/wait.h>

#include <string>

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

/// A shadow to be filled in one expression:
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
  /// A status of 7 with the nodes in place, but a record that was never given.
  ShadowOf& unset(VelmorTcam::QualifierType type) {
    shadow_->qualifierIs(type)->hwQualDataIs(type);
    return statusOnly(type);
  }
  /// A status of 7 and nothing behind it.
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

/// A formatter of the library with an action cell.
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

/// The row of an entry whose key and description do not matter.
template <class Format>
std::string rowOf(const Format& format, const Ptr<const Shadow>& shadow, U32 sequence = 10,
                  U64 hits = 42) {
  return format
      .formatEntryRequest(VelmorTcam::RequestKey("acl"), VelmorTcam::RuleId(sequence), "text",
                          shadow, hits)
      .str();
}

// A status of 7 with nothing behind it breaks the shadow's contract: the process stops on the spot.
// Sanitizers report the fault and exit in their own way; without them it is a plain signal, and
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
