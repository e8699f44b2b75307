// The tables' headers and the library's free functions.
#pragma once

#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesEnums.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/Types.h"

namespace VelmorTcam {

/// Fills the process-wide table of headers if it is empty; a second call does nothing. Throws
/// std::bad_alloc when memory runs out, and the table is then still empty.
///
/// Threads: one; call it before the first getCliHeader and before other threads read headers: the
/// table has no lock.
///
///     initializeCliHeaders();
///     dprintf(fd, "%s", getCliHeader(cliHeaderTypeIp).c_str());
VELMOR_TCAM_API void initializeCliHeaders();

/// The text that stands above the rows of a table: one to three lines, each ending in a line break.
/// The tables are cliHeaderTypeIp (186 characters), cliHeaderTypeIp6 (303) and cliHeaderTypeMac
/// (118).
///
/// Stops the process for any other type, and for every type before initializeCliHeaders():
/// assertion "cliHeaderMap.find( cliHeaderType ) != cliHeaderMap.end()". Throws std::bad_alloc when
/// memory runs out.
///
/// Threads: safe from any thread once the table is filled.
VELMOR_TCAM_API Halvo::String getCliHeader(CliHeaderType cliHeaderType);

/// The ICMP type or code that an L4 port qualifier carries: `portType` qualifierL4SrcPort gives the
/// type, from the qualifier's high byte, and qualifierL4DstPort the code, from its low byte.
///
/// Sets `isIcmp` to true when there is one; otherwise returns 0 and leaves it as it was. There is
/// none unless both qualifierIpProtocol and qualifierL4SrcPort (whatever `portType` is) are
/// programmed, the protocol is 1 (ICMP) or 58 (ICMPv6) and the mask of that byte is not 0.
///
/// `portType` must be programmed in the shadow too; the process stops where its record, or the
/// protocol's, is missing or not set (assertion "!!qualData->qual()").
///
/// Threads: those that may read the shadow.
VELMOR_TCAM_API U16
getQualifierL4PortIfIcmp(const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                         QualifierType portType, bool& isIcmp);

}  // namespace VelmorTcam
