// How every cell reads a shadow: the status, two lookups, a copy.
#pragma once

#include "VelmorTcamEntryShadow.h"
#include "Zel/Base/Assert.h"

namespace VelmorTcam {

inline bool isProgrammed(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type) {
  return entryShadow->getHwQualStatus(type, type) == hwQualStatusProgrammed;
}

/// Reads the record of a programmed qualifier with `accessor`. The two lookups are not checked: the
/// shadow guarantees the data once the status says programmed. If a shadow breaks that guarantee,
/// the process stops on the spot.
template <auto accessor>
[[gnu::always_inline]] inline auto hwRecord(const VelmorTcamEntryShadow::PtrConst& entryShadow,
                                            QualifierType type) {
  Halvo::Ptr<QualifierStatus> const status = entryShadow->qualifier(type);
  Halvo::Ptr<QualifierData> const qualData = status->hwQualData(type);
  return ((*qualData).*accessor)();
}

/// The value and mask of a qualifier that matches on a number.
struct ValueAndMask {
  U32 value;
  U32 mask;
};

/// Reads the value and mask of a programmed qualifier. Stops the process with `unset` if the record
/// is not set.
inline ValueAndMask hwQual(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type,
                           const Zel::AssertionSite& unset) {
  Qualifier const record = hwRecord<&QualifierData::qual>(entryShadow, type);
  Zel::assertThat(static_cast<bool>(record), unset);
  return {record.value(), record.mask()};
}

}  // namespace VelmorTcam
