// The one path by which every cell reads a shadow: status, two lookups, copy.
#pragma once

#include "VelmorTcamEntryShadow.h"
#include "Zel/Assert.h"

namespace VelmorTcam {

inline bool isProgrammed(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type) {
  return entryShadow->getHwQualStatus(type, type) == hwQualStatusProgrammed;
}

/// The record that `accessor` reads of a programmed qualifier. The lookups are not tested: the
/// shadow guarantees them once the status says programmed, and a broken guarantee is to stop the
/// process on the spot.
template <auto accessor>
auto hwRecord(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type) {
  Halvo::Ptr<QualifierStatus> const status = entryShadow->qualifier(type);
  Halvo::Ptr<QualifierData> const qualData = status->hwQualData(type);
  return ((*qualData).*accessor)();
}

/// The record of a programmed qualifier that takes numbers; `unset` is the assertion that it is
/// set.
inline Qualifier hwQual(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type,
                        const Zel::AssertionSite& unset) {
  Qualifier const record = hwRecord<&QualifierData::qual>(entryShadow, type);
  Zel::assertThat(static_cast<bool>(record), unset);
  return record;
}

}  // namespace VelmorTcam
