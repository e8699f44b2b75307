// The texts and line numbers of the library's assertions. Log scrapers match on them, so they are
// data: they stay the same when code moves.
#pragma once

#include "Zel/Base/Assert.h"

namespace VelmorTcam::assertions {

inline constexpr const char* helperSource = "VelmorTcamManagerBase/VelmorTcamCliHelper";
inline constexpr const char* typesSource = "VelmorTcamManagerBase/VelmorTcamCliTypes";

inline constexpr const char* qualIsSet = "!!qualData->qual()";
inline constexpr const char* ethQualIsSet = "!!qualData->ethQual()";

inline constexpr Zel::AssertionSite getCliHeader{
    "cliHeaderMap.find( cliHeaderType ) != cliHeaderMap.end()", helperSource, 18,
    "Zel::String VelmorTcam::getCliHeader(VelmorTcam::CliHeaderType)"};

inline constexpr Zel::AssertionSite getQualifierL4PortIfIcmp{
    qualIsSet, typesSource, 27,
    "U16 VelmorTcam::getQualifierL4PortIfIcmp(const PtrConst&, VelmorTcam::QualifierType, bool&)"};
inline constexpr Zel::AssertionSite getQualifierL4PortIfIcmpProtocol{
    qualIsSet, typesSource, 0, getQualifierL4PortIfIcmp.function};

// The abstract operations.
inline constexpr Zel::AssertionSite formatActions{
    "false && \"Call to abstract interface formatActions\"", typesSource, 435,
    "virtual Zel::String VelmorTcam::EntryRequestCliFormat::formatActions(const PtrConst&) const"};
inline constexpr Zel::AssertionSite formatEntryRequest{
    "false && \" Call to abstract interface format\"", typesSource, 444,
    "virtual Zel::String VelmorTcam::CliFormat::formatEntryRequest(const VelmorTcam::RequestKey&, "
    "const VelmorTcam::RuleId&, const String&, const PtrConst&, U64) const"};
inline constexpr Zel::AssertionSite formatEntryRequestJson{
    "false && \" Call to abstract interface format\"", typesSource, 455,
    "virtual void VelmorTcam::CliFormat::formatEntryRequestJson(const VelmorTcam::RequestKey&, "
    "const VelmorTcam::RuleId&, const String&, const PtrConst&, U64, pravo::Printer*) const"};
inline constexpr Zel::AssertionSite handleInitialized{
    "false && \"Trying to instantiate abstract class CliFormat\"", typesSource, 487,
    "virtual void VelmorTcam::CliFormat::handleInitialized()"};
inline constexpr Zel::AssertionSite macFormatEntryRequest{
    "false && \" Call to abstract interface format\"", typesSource, 596,
    "virtual Zel::String VelmorTcam::MacEntryRequestCliFormat::formatEntryRequest("
    "const VelmorTcam::RequestKey&, const VelmorTcam::RuleId&, const String&, const PtrConst&, "
    "U64) const"};

inline constexpr Zel::AssertionSite formatQualifierIpLength{
    "!formatStr.empty()", typesSource, 422,
    "virtual Zel::String VelmorTcam::EntryRequestCliFormat::formatQualifierIpLength("
    "const PtrConst&, const String&) const"};

inline constexpr Zel::AssertionSite macAddrQualifier{
    "qualifierMacAddr == qualifierSrcMac() || qualifierMacAddr == qualifierDstMac()", typesSource,
    603,
    "virtual Zel::String VelmorTcam::MacEntryRequestCliFormat::formatQualifierMacAddr("
    "const PtrConst&, VelmorTcam::QualifierType) const"};
inline constexpr Zel::AssertionSite macAddrRecord{ethQualIsSet, typesSource, 610,
                                                  macAddrQualifier.function};
inline constexpr Zel::AssertionSite etherTypeRecord{
    qualIsSet, typesSource, 626,
    "virtual Zel::String VelmorTcam::MacEntryRequestCliFormat::formatQualifierEtherType("
    "const PtrConst&) const"};

// A cell's record that is not set.
#define VELMOR_CELL_RECORD(SITE, CLASS, OPERATION)                                        \
  inline constexpr Zel::AssertionSite SITE {                                              \
    qualIsSet, typesSource, 0,                                                            \
        "virtual Zel::String VelmorTcam::" CLASS "::" OPERATION "(const PtrConst&) const" \
  }
VELMOR_CELL_RECORD(ipProtocolRecord, "EntryRequestCliFormat", "formatQualifierIpProtocol");
VELMOR_CELL_RECORD(outerVlanIdRecord, "EntryRequestCliFormat", "formatQualifierOuterVlanId");
VELMOR_CELL_RECORD(l4SrcPortRecord, "EntryRequestCliFormat", "formatQualifierL4SrcPort");
VELMOR_CELL_RECORD(l4DstPortRecord, "EntryRequestCliFormat", "formatQualifierL4DstPort");
VELMOR_CELL_RECORD(tcpControlRecord, "EntryRequestCliFormat", "formatQualifierTcpControl");
VELMOR_CELL_RECORD(srcIpRecord, "IpEntryRequestCliFormat", "formatQualifierSrcIp");
VELMOR_CELL_RECORD(dstIpRecord, "IpEntryRequestCliFormat", "formatQualifierDstIp");
VELMOR_CELL_RECORD(dscpRecord, "IpEntryRequestCliFormat", "formatQualifierDSCP");
VELMOR_CELL_RECORD(ip6DscpRecord, "Ip6EntryRequestCliFormat", "formatQualifierDSCP");
VELMOR_CELL_RECORD(ipFragRecord, "IpEntryRequestCliFormat", "formatQualifierIpFrag");
VELMOR_CELL_RECORD(ip6TrafficClassRecord, "Ip6EntryRequestCliFormat",
                   "formatQualifierIp6TrafficClass");
VELMOR_CELL_RECORD(ip6HopLimitRecord, "Ip6EntryRequestCliFormat", "formatQualifierIp6HopLimit");
#undef VELMOR_CELL_RECORD

}  // namespace VelmorTcam::assertions
