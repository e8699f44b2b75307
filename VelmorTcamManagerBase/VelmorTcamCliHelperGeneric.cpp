// The generic form: an entry, a group, a request, each in one line.
#include "VelmorTcamManagerBase/VelmorTcamCliTypesDisplayStrings.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesTrace.h"
#include "Zel/Format/Format.h"

namespace VelmorTcam {

Halvo::String VelmorTcamCliFormat::formatEntryRequest(const RequestKey&, const RuleId&,
                                                      const Halvo::String& description,
                                                      const PtrConst& entryShadow, U64 hits) const {
  VELMOR_TCAM_TRACE(675, "formatEntryRequest", "formatEntryRequest");
  // This line shows the low 32 bits of the id; the rows of access lists show all 64.
  U32 const id = static_cast<U32>(entryShadow->shadowId());
  return Zel::_fmt(displayStrings::entryInfoFmt, id, Zel::_fmt("%12lu", hits), description);
}

Halvo::String VelmorTcamCliFormat::formatGroupHeader(TcamGroupId groupId, U8 numPipes, U8 pipeId,
                                                     U32 usedEntries, U32 availableEntries) const {
  Halvo::String pipe;
  if (numPipes > 1) pipe = Zel::_fmt(displayStrings::pipeHeaderFmt, pipeId);
  const char* const noun = usedEntries == 1 ? "entry" : "entries";
  return Zel::_fmt(displayStrings::groupInfoFmt, groupId.number(), pipe, usedEntries, noun,
                   availableEntries);
}

Halvo::String VelmorTcamCliFormat::formatRequestHeader(const Halvo::String& requestName,
                                                       U32 usedEntries) const {
  return Zel::_fmt(displayStrings::requestHeaderFmt, requestName, usedEntries);
}

}  // namespace VelmorTcam
