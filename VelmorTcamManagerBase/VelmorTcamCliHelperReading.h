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
/// process on the spot. `unset`, unless null, is the assertion that the record is set.
template <class Record>
Record hwRecord(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type,
                Record (QualifierData::*accessor)() const noexcept,
                const Zel::AssertionSite* unset) {
  Halvo::Ptr<QualifierStatus> const status = entryShadow->qualifier(type);
  Halvo::Ptr<QualifierData> const qualData = status->hwQualData(type);
  Record const record = ((*qualData).*accessor)();
  if (unset != nullptr) Zel::assertThat(static_cast<bool>(record), *unset);
  return record;
}

inline Qualifier hwQual(const VelmorTcamEntryShadow::PtrConst& entryShadow, QualifierType type,
                        const Zel::AssertionSite& unset) {
  return hwRecord(entryShadow, type, &QualifierData::qual, &unset);
}

}  // namespace VelmorTcam
