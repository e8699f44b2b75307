// The one path by which every cell reads a shadow: status, two lookups, copy.
#pragma once

#include "VelmorTcamEntryShadow.h"
#include "Zel/Base/Assert.h"

namespace VelmorTcam {

inline bool isProgrammed(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type) {
  return entryShadow->getHwQualStatus(type, type) == hwQualStatusProgrammed;
}

/// The record that `accessor` reads of a programmed qualifier. The lookups are not tested: the
/// shadow guarantees them once the status says programmed, and a broken guarantee is to stop the
/// process on the spot.
template <auto accessor>
[[gnu::always_inline]] inline auto hwRecord(const VelmorTcamEntryShadow::PtrConst& entryShadow,
                                            QualifierType type) {
  Halvo::Ptr<QualifierStatus> const status = entryShadow->qualifier(type);
  Halvo::Ptr<QualifierData> const qualData = status->hwQualData(type);
  return ((*qualData).*accessor)();
}

/// What a qualifier that takes numbers matches on.
struct ValueAndMask {
  U32 value;
  U32 mask;
};

/// The words of a programmed qualifier; `unset` is the assertion that its record is set.
inline ValueAndMask hwQual(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type,
                           const Zel::AssertionSite& unset) {
  Qualifier const record = hwRecord<&QualifierData::qual>(entryShadow, type);
  Zel::assertThat(static_cast<bool>(record), unset);
  return {record.value(), record.mask()};
}

}  // namespace VelmorTcam
