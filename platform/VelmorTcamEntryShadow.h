// The entry-shadow library: the software copy of what a TCAM entry matches on in hardware.
#pragma once

#include <cstddef>
#include <optional>
#include <variant>

#include "EntryShadow/Enums.h"
#include "EntryShadow/Identifiers.h"
#include "EntryShadow/Records.h"
#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/HashMap2018.h"
#include "Zel/Types/NodeType.h"
#include "Zel/Types/TypeModule.h"

namespace VelmorTcam {

/// The value that hardware holds for one qualifier: one record, of the kind that the qualifier
/// takes.
///
/// Reading a record of another kind than the one given gives that kind's default record, which is
/// not set.
///
/// Threads: as the shadow that it belongs to.
class VELMOR_PLATFORM_API QualifierData : public Halvo::Node {
  ZEL_NODE_TYPE;

  QualifierData() = default;
  ~QualifierData() override;

  Qualifier qual() const noexcept { return record<Qualifier>(); }
  EthAddrQualifier ethQual() const noexcept { return record<EthAddrQualifier>(); }
  Ip6AddrQualifier ip6Qual() const noexcept { return record<Ip6AddrQualifier>(); }
  // NOLINTBEGIN(bugprone-exception-escape): to copy a record cannot throw
  void qualIs(const Qualifier& qual) noexcept { record_ = qual; }
  void ethQualIs(const EthAddrQualifier& qual) noexcept { record_ = qual; }
  void ip6QualIs(const Ip6AddrQualifier& qual) noexcept { record_ = qual; }
  // NOLINTEND(bugprone-exception-escape)

 private:
  template <class Record>
  Record record() const noexcept {
    auto const* const held = std::get_if<Record>(&record_);
    return held != nullptr ? *held : Record();
  }

  std::variant<std::monostate, Qualifier, EthAddrQualifier, Ip6AddrQualifier> record_;
};

/// What is known of one qualifier of an entry: the data that hardware holds for it, by the
/// qualifier that hardware implements it with.
///
/// Threads: as the shadow that it belongs to.
class VELMOR_PLATFORM_API QualifierStatus : public Halvo::Node {
  ZEL_NODE_TYPE;
  using HwQualData = Zel::HashMap2018<QualifierType, Halvo::Ptr<QualifierData>>;

  QualifierStatus() = default;
  ~QualifierStatus() override;

  /// The data under `type`, or null.
  Halvo::Ptr<QualifierData> hwQualData(QualifierType type) const noexcept {
    auto const* const held = hwQualData_.find(type);
    return held != nullptr ? *held : nullptr;
  }
  /// The data under `type`, made if there is none.
  Halvo::Ptr<QualifierData> hwQualDataIs(QualifierType type);
  /// Removes and returns the data under `type`; null when there is none. Say first, in the shadow,
  /// that `type` is not programmed: see its contract.
  Halvo::Ptr<QualifierData> hwQualDataDel(QualifierType type);
  /// As hwQualDataDel, for all: say first, in the shadow, that none is programmed.
  void hwQualDataDelAll() { hwQualData_.clear(); }
  const HwQualData& hwQualData() const noexcept { return hwQualData_; }

 private:
  HwQualData hwQualData_;
};

/// The shadow of one TCAM entry.
///
/// Contract with whoever reads it: where getHwQualStatus(t, t) is hwQualStatusProgrammed,
/// `qualifier` holds t and that status's `hwQualData` holds t. Readers do not test for it; to break
/// it is a fault that stops the process on the spot. hwQualIs() fills all three places together,
/// the data first.
///
/// What is not made when memory runs out (std::bad_alloc) leaves no trace: no key without a child.
///
/// Threads: a shadow is written by one, and not while others read it. Any number may read one
/// together while Halvo::ThreadControl's switch is on: reading moves reference counts.
///
///     auto shadow = Halvo::makePtr<VelmorTcamEntryShadow>(17);
///     shadow->hwQualIs(qualifierSrcIp, Qualifier(0x0A000001, 0xFFFFFFFF));   // 10.0.0.1
///     shadow->rangeCheckerIs(rangeCheckerL4DstPort, RangeCheckerStatus(1024, 2000));
///     shadow->counterStatusIs(hwQualStatusProgrammed);
class VELMOR_PLATFORM_API VelmorTcamEntryShadow : public Halvo::Node {
  ZEL_NODE_TYPE;
  using PtrConst = Halvo::Ptr<const VelmorTcamEntryShadow>;
  using QualifierMap = Zel::HashMap2018<QualifierType, Halvo::Ptr<QualifierStatus>>;
  using RangeCheckerMap = Zel::HashMap2018<RangeCheckerType, RangeCheckerStatus>;

  explicit VelmorTcamEntryShadow(U64 shadowId = 0) noexcept : shadowId_(shadowId) {}
  ~VelmorTcamEntryShadow() override;

  U64 shadowId() const noexcept { return shadowId_; }
  void shadowIdIs(U64 shadowId) noexcept { shadowId_ = shadowId; }

  const CounterSet& counters() const noexcept { return counters_; }
  void countersIs(const CounterSet& counters) noexcept { counters_ = counters; }
  /// Numbered like HwQualStatus: 7 when the counters are programmed.
  U8 counterStatus() const noexcept { return counterStatus_; }
  void counterStatusIs(U8 status) noexcept { counterStatus_ = status; }

  /// How far hardware has got with `qualifier`, implemented by `hwQualifier`;
  /// hwQualStatusInvalid where nothing was ever said.
  HwQualStatus getHwQualStatus(QualifierType qualifier, QualifierType hwQualifier) const noexcept {
    if (qualifier != hwQualifier) [[unlikely]] {
      return otherHwQualStatus(qualifier, hwQualifier);
    }
    HwQualStatus const* const held = ownHwQualStatus_.find(qualifier);
    return held != nullptr ? *held : hwQualStatusInvalid;
  }
  /// Sets that, and nothing else: hwQualStatusProgrammed only once the data is there.
  void hwQualStatusIs(QualifierType qualifier, QualifierType hwQualifier, HwQualStatus status);

  /// The status under `type`, or null.
  Halvo::Ptr<QualifierStatus> qualifier(QualifierType type) const noexcept {
    auto const* const held = qualifier_.find(type);
    return held != nullptr ? *held : nullptr;
  }
  /// The status under `type`, made if there is none.
  Halvo::Ptr<QualifierStatus> qualifierIs(QualifierType type);
  /// Removes and returns the status under `type`; null when there is none. What
  /// getHwQualStatus(type, ...) said is forgotten first.
  Halvo::Ptr<QualifierStatus> qualifierDel(QualifierType type);
  /// As qualifierDel, for all.
  void qualifierDelAll();
  const QualifierMap& qualifier() const noexcept { return qualifier_; }

  std::optional<RangeCheckerStatus> rangeChecker(RangeCheckerType type) const noexcept {
    RangeCheckerStatus const* const held = rangeChecker_.find(type);
    return held != nullptr ? std::optional(*held) : std::nullopt;
  }
  void rangeCheckerIs(RangeCheckerType type, const RangeCheckerStatus& status);
  /// False when there was none.
  bool rangeCheckerDel(RangeCheckerType type) { return rangeChecker_.del(type); }
  void rangeCheckerDelAll() { rangeChecker_.clear(); }
  const RangeCheckerMap& rangeChecker() const noexcept { return rangeChecker_; }

  /// Gives `type`, implemented by itself, a record and a status: all that a program needs to call
  /// to fill a shadow.
  void hwQualIs(QualifierType type, const Qualifier& record,
                HwQualStatus status = hwQualStatusProgrammed);
  void hwQualIs(QualifierType type, const EthAddrQualifier& record,
                HwQualStatus status = hwQualStatusProgrammed);
  void hwQualIs(QualifierType type, const Ip6AddrQualifier& record,
                HwQualStatus status = hwQualStatusProgrammed);

  /// The bytes that this shadow's collections hold beside its nodes.
  std::size_t tableBytes() const noexcept;

 private:
  HwQualStatus otherHwQualStatus(QualifierType qualifier, QualifierType hwQualifier) const noexcept;

  U64 shadowId_;
  CounterSet counters_;
  U8 counterStatus_ = hwQualStatusInvalid;
  // What a qualifier is implemented with is nearly always itself: that has a table of byte keys.
  Zel::HashMap2018<QualifierType, HwQualStatus> ownHwQualStatus_;
  // The others. Key: the qualifier in the high byte, what implements it in the low one.
  Zel::HashMap2018<U16, HwQualStatus> otherHwQualStatus_;
  QualifierMap qualifier_;
  RangeCheckerMap rangeChecker_;
};

ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, QualifierData);
ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, QualifierStatus);
ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, VelmorTcamEntryShadow);

}  // namespace VelmorTcam
