// The formatters as objects: construction, attributes, dispatch, and the operations that a subclass
// must supply.
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"

#include <cstdio>

#include "VelmorTcamManagerBase/VelmorTcamCliTypesAssertions.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesTrace.h"

namespace VelmorTcam {

CliFormat::CliFormat() noexcept : CliFormat(cliHeaderTypeInvalid) {}
EntryRequestCliFormat::EntryRequestCliFormat() noexcept
    : EntryRequestCliFormat(cliHeaderTypeInvalid) {}
IpEntryRequestCliFormat::IpEntryRequestCliFormat() noexcept
    : EntryRequestCliFormat(cliHeaderTypeIp) {}
Ip6EntryRequestCliFormat::Ip6EntryRequestCliFormat() noexcept
    : EntryRequestCliFormat(cliHeaderTypeIp6) {}
MacEntryRequestCliFormat::MacEntryRequestCliFormat() noexcept
    : EntryRequestCliFormat(cliHeaderTypeMac) {}
VelmorTcamCliFormat::VelmorTcamCliFormat() noexcept : CliFormat(cliHeaderTypeInvalid) {}

CliFormat::~CliFormat() { flagClear(flagNotify); }
EntryRequestCliFormat::~EntryRequestCliFormat() { flagClear(flagNotify); }
IpEntryRequestCliFormat::~IpEntryRequestCliFormat() { flagClear(flagNotify); }
Ip6EntryRequestCliFormat::~Ip6EntryRequestCliFormat() { flagClear(flagNotify); }
MacEntryRequestCliFormat::~MacEntryRequestCliFormat() { flagClear(flagNotify); }
VelmorTcamCliFormat::~VelmorTcamCliFormat() { flagClear(flagNotify); }

void CliFormat::initializedIs(bool initialized) {
  if (initialized == initialized_) return;
  initialized_ = initialized;
  handleInitialized();
}

void CliFormat::displayHeader(U32) const {}

void CliFormat::displayFeatureHeader(U32) const {}

void CliFormat::displayEntryRequest(U32 fd, const RequestKey& requestKey, const RuleId& ruleId,
                                    const Halvo::String& description,
                                    const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                                    U64 hits, pravo::Printer* printer) const {
  if (printer != nullptr) {
    formatEntryRequestJson(requestKey, ruleId, description, entryShadow, hits, printer);
    return;
  }
  Halvo::String const text = formatEntryRequest(requestKey, ruleId, description, entryShadow, hits);
  ::dprintf(static_cast<int>(fd), "%s", text.c_str());
}

Halvo::String CliFormat::formatEntryRequest(const RequestKey&, const RuleId&, const Halvo::String&,
                                            const Halvo::Ptr<const VelmorTcamEntryShadow>&,
                                            U64) const {
  Zel::assertionFailed(assertions::formatEntryRequest);
}

void CliFormat::formatEntryRequestJson(const RequestKey&, const RuleId&, const Halvo::String&,
                                       const Halvo::Ptr<const VelmorTcamEntryShadow>&, U64,
                                       pravo::Printer*) const {
  Zel::assertionFailed(assertions::formatEntryRequestJson);
}

void CliFormat::handleInitialized() { Zel::assertionFailed(assertions::handleInitialized); }

Halvo::String EntryRequestCliFormat::formatActions(const PtrConst&) const {
  Zel::assertionFailed(assertions::formatActions);
}

Halvo::String MacEntryRequestCliFormat::formatEntryRequest(const RequestKey&, const RuleId&,
                                                           const Halvo::String&, const PtrConst&,
                                                           U64) const {
  Zel::assertionFailed(assertions::macFormatEntryRequest);
}

void IpEntryRequestCliFormat::handleInitialized() {
  VELMOR_TCAM_TRACE(524, "handleInitialized",
                    "IpEntryRequestCliFormat::"
                        << "handleInitialized");
}

void Ip6EntryRequestCliFormat::handleInitialized() {
  VELMOR_TCAM_TRACE(529, "handleInitialized",
                    "Ip6EntryRequestCliFormat::"
                        << "handleInitialized");
}

void MacEntryRequestCliFormat::handleInitialized() {
  VELMOR_TCAM_TRACE(534, "handleInitialized",
                    "MacEntryRequestCliFormat::"
                        << "handleInitialized");
}

void VelmorTcamCliFormat::handleInitialized() {
  VELMOR_TCAM_TRACE(638, "handleInitialized",
                    "VelmorTcamCliFormat::"
                        << "handleInitialized");
}

}  // namespace VelmorTcam
