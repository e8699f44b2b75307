#include "VelmorTcamEntryShadow.h"

namespace VelmorTcam {

namespace {

constexpr U16 statusKey(QualifierType qualifier, QualifierType hwQualifier) {
  return static_cast<U16>(qualifier << 8 | hwQualifier);
}

// Makes the child before its place in the map, so that a failed allocation leaves no key without a
// child.
template <class Child, class Map, class Key>
Halvo::Ptr<Child> getOrMake(Map& map, Key key) {
  if (Halvo::Ptr<Child> const* const held = map.find(key)) return *held;
  Halvo::Ptr<Child> child = Halvo::makePtr<Child>();
  map.insert(key, child);
  return child;
}

}  // namespace

QualifierData::~QualifierData() = default;

QualifierStatus::~QualifierStatus() = default;

Halvo::Ptr<QualifierData> QualifierStatus::hwQualDataIs(QualifierType type) {
  return getOrMake<QualifierData>(hwQualData_, type);
}

Halvo::Ptr<QualifierData> QualifierStatus::hwQualDataDel(QualifierType type) {
  return hwQualData_.take(type);
}

VelmorTcamEntryShadow::~VelmorTcamEntryShadow() = default;

HwQualStatus VelmorTcamEntryShadow::otherHwQualStatus(QualifierType qualifier,
                                                      QualifierType hwQualifier) const noexcept {
  HwQualStatus const* const held = otherHwQualStatus_.find(statusKey(qualifier, hwQualifier));
  return held != nullptr ? *held : hwQualStatusInvalid;
}

void VelmorTcamEntryShadow::hwQualStatusIs(QualifierType qualifier, QualifierType hwQualifier,
                                           HwQualStatus status) {
  if (qualifier == hwQualifier) {
    ownHwQualStatus_.getOrCreate(qualifier) = status;
  } else {
    otherHwQualStatus_.getOrCreate(statusKey(qualifier, hwQualifier)) = status;
  }
}

Halvo::Ptr<QualifierStatus> VelmorTcamEntryShadow::qualifierIs(QualifierType type) {
  return getOrMake<QualifierStatus>(qualifier_, type);
}

Halvo::Ptr<QualifierStatus> VelmorTcamEntryShadow::qualifierDel(QualifierType type) {
  ownHwQualStatus_.del(type);
  if (!otherHwQualStatus_.empty()) {
    for (unsigned hwType = 0; hwType < 256; ++hwType) {
      otherHwQualStatus_.del(statusKey(type, static_cast<QualifierType>(hwType)));
    }
  }
  return qualifier_.take(type);
}

void VelmorTcamEntryShadow::qualifierDelAll() {
  ownHwQualStatus_.clear();
  otherHwQualStatus_.clear();
  qualifier_.clear();
}

void VelmorTcamEntryShadow::rangeCheckerIs(RangeCheckerType type,
                                           const RangeCheckerStatus& status) {
  rangeChecker_.getOrCreate(type) = status;
}

void VelmorTcamEntryShadow::hwQualIs(QualifierType type, const Qualifier& record,
                                     HwQualStatus status) {
  qualifierIs(type)->hwQualDataIs(type)->qualIs(record);
  hwQualStatusIs(type, type, status);
}

void VelmorTcamEntryShadow::hwQualIs(QualifierType type, const EthAddrQualifier& record,
                                     HwQualStatus status) {
  qualifierIs(type)->hwQualDataIs(type)->ethQualIs(record);
  hwQualStatusIs(type, type, status);
}

void VelmorTcamEntryShadow::hwQualIs(QualifierType type, const Ip6AddrQualifier& record,
                                     HwQualStatus status) {
  qualifierIs(type)->hwQualDataIs(type)->ip6QualIs(record);
  hwQualStatusIs(type, type, status);
}

std::size_t VelmorTcamEntryShadow::tableBytes() const noexcept {
  std::size_t bytes = ownHwQualStatus_.memoryBytes() + otherHwQualStatus_.memoryBytes() +
                      qualifier_.memoryBytes() + rangeChecker_.memoryBytes();
  for (auto const& member : qualifier_) bytes += member.value->hwQualData().memoryBytes();
  return bytes;
}

}  // namespace VelmorTcam
