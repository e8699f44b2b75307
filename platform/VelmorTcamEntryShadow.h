// The entry-shadow library. The shadow of a TCAM entry is the software copy of the fields that the
// entry matches on in hardware.
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
/// Reading a record of another kind returns the default record of that kind, which is not set.
///
/// Threads: as the shadow that it belongs to.
class VELMOR_PLATFORM_API QualifierData : public Halvo::Node {
  ZEL_NODE_TYPE;

  QualifierData() = default;
  ~QualifierData() override;

  Qualifier qual() const noexcept { return record<Qualifier>(); }
  EthAddrQualifier ethQual() const noexcept { return record<EthAddrQualifier>(); }
  Ip6AddrQualifier ip6Qual() const noexcept { return record<Ip6AddrQualifier>(); }
  // NOLINTBEGIN(bugprone-exception-escape): copying a record does not throw
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

/// The data that hardware holds for one qualifier of an entry. Hardware may implement a qualifier
/// by another type: each piece of data is kept under the type that hardware uses.
///
/// Threads: as the shadow that it belongs to.
class VELMOR_PLATFORM_API QualifierStatus : public Halvo::Node {
  ZEL_NODE_TYPE;
  using HwQualData = Zel::HashMap2018<QualifierType, Halvo::Ptr<QualifierData>>;

  QualifierStatus() = default;
  ~QualifierStatus() override;

  /// The data under `type`; null when there is none.
  Halvo::Ptr<QualifierData> hwQualData(QualifierType type) const noexcept {
    auto const* const held = hwQualData_.find(type);
    return held != nullptr ? *held : nullptr;
  }
  /// The data under `type`. Makes it if there is none.
  Halvo::Ptr<QualifierData> hwQualDataIs(QualifierType type);
  /// Removes the data under `type` and returns it; null when there is none. Before the call, set
  /// the status in the shadow to one other than hwQualStatusProgrammed: readers do not check for
  /// missing data.
  Halvo::Ptr<QualifierData> hwQualDataDel(QualifierType type);
  /// As hwQualDataDel, for all data: before the call, set the statuses of all.
  void hwQualDataDelAll() { hwQualData_.clear(); }
  const HwQualData& hwQualData() const noexcept { return hwQualData_; }

 private:
  HwQualData hwQualData_;
};

/// The shadow of one TCAM entry.
///
/// Contract with readers: if getHwQualStatus(t, t) is hwQualStatusProgrammed, `qualifier` holds a
/// QualifierStatus under t, and its `hwQualData` holds data under t. Readers do not check this: if
/// it does not hold, reading stops the process on the spot. hwQualIs() fills all three places, the
/// data first.
///
/// If an allocation fails (std::bad_alloc), no key is left without a child.
///
/// Threads: one thread may change a shadow, while no other thread reads it. Several threads may
/// read one shadow at the same time while Halvo::ThreadControl's switch is on: reading changes
/// reference counts.
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

  /// How far hardware has programmed `qualifier` by means of `hwQualifier`; hwQualStatusInvalid
  /// when no status was set.
  HwQualStatus getHwQualStatus(QualifierType qualifier, QualifierType hwQualifier) const noexcept {
    if (qualifier != hwQualifier) [[unlikely]] {
      return otherHwQualStatus(qualifier, hwQualifier);
    }
    HwQualStatus const* const held = ownHwQualStatus_.find(qualifier);
    return held != nullptr ? *held : hwQualStatusInvalid;
  }
  /// Sets this status, and nothing else. Set hwQualStatusProgrammed only after the data is there.
  void hwQualStatusIs(QualifierType qualifier, QualifierType hwQualifier, HwQualStatus status);

  /// The QualifierStatus under `type`; null when there is none.
  Halvo::Ptr<QualifierStatus> qualifier(QualifierType type) const noexcept {
    auto const* const held = qualifier_.find(type);
    return held != nullptr ? *held : nullptr;
  }
  /// The QualifierStatus under `type`. Makes it if there is none.
  Halvo::Ptr<QualifierStatus> qualifierIs(QualifierType type);
  /// Removes the QualifierStatus under `type` and returns it; null when there is none. Before that,
  /// it resets the statuses of `type`: getHwQualStatus(type, ...) is then hwQualStatusInvalid.
  Halvo::Ptr<QualifierStatus> qualifierDel(QualifierType type);
  /// As qualifierDel, for all qualifiers.
  void qualifierDelAll();
  const QualifierMap& qualifier() const noexcept { return qualifier_; }

  std::optional<RangeCheckerStatus> rangeChecker(RangeCheckerType type) const noexcept {
    RangeCheckerStatus const* const held = rangeChecker_.find(type);
    return held != nullptr ? std::optional(*held) : std::nullopt;
  }
  void rangeCheckerIs(RangeCheckerType type, const RangeCheckerStatus& status);
  /// Returns false when there was none.
  bool rangeCheckerDel(RangeCheckerType type) { return rangeChecker_.del(type); }
  void rangeCheckerDelAll() { rangeChecker_.clear(); }
  const RangeCheckerMap& rangeChecker() const noexcept { return rangeChecker_; }

  /// Sets the record and the status of `type`, which hardware implements by `type` itself. A
  /// program needs no other call to fill the qualifiers of a shadow.
  void hwQualIs(QualifierType type, const Qualifier& record,
                HwQualStatus status = hwQualStatusProgrammed);
  void hwQualIs(QualifierType type, const EthAddrQualifier& record,
                HwQualStatus status = hwQualStatusProgrammed);
  void hwQualIs(QualifierType type, const Ip6AddrQualifier& record,
                HwQualStatus status = hwQualStatusProgrammed);

  /// The bytes of the collections of this shadow. Its nodes are not included.
  std::size_t tableBytes() const noexcept;

 private:
  HwQualStatus otherHwQualStatus(QualifierType qualifier, QualifierType hwQualifier) const noexcept;

  U64 shadowId_;
  CounterSet counters_;
  U8 counterStatus_ = hwQualStatusInvalid;
  // The statuses of qualifiers that are implemented by themselves, as nearly all are: a table with
  // keys of one byte.
  Zel::HashMap2018<QualifierType, HwQualStatus> ownHwQualStatus_;
  // All other statuses. Key: the qualifier in the high byte, the type that implements it in the low
  // byte.
  Zel::HashMap2018<U16, HwQualStatus> otherHwQualStatus_;
  QualifierMap qualifier_;
  RangeCheckerMap rangeChecker_;
};

ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, QualifierData);
ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, QualifierStatus);
ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, VelmorTcamEntryShadow);

}  // namespace VelmorTcam
