// The tables' headers and the library's free functions.
#pragma once

#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesEnums.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/Types.h"

namespace VelmorTcam {

/// Fills the process-wide table of headers. A second call does nothing. If memory runs out, it
/// throws std::bad_alloc and the table stays empty.
///
/// Threads: call it from one thread, before the first getCliHeader and before other threads read
/// headers. The table has no lock.
///
///     initializeCliHeaders();
///     dprintf(fd, "%s", getCliHeader(cliHeaderTypeIp).c_str());
VELMOR_TCAM_API void initializeCliHeaders();

/// The header text of a table: one to three lines, each ending in a line feed. The tables are
/// cliHeaderTypeIp (186 characters), cliHeaderTypeIp6 (303) and cliHeaderTypeMac (118).
///
/// Any other type stops the process, and before initializeCliHeaders() every type does: assertion
/// "cliHeaderMap.find( cliHeaderType ) != cliHeaderMap.end()". Throws std::bad_alloc when memory
/// runs out.
///
/// Threads: safe from any thread once the table is filled.
VELMOR_TCAM_API Halvo::String getCliHeader(CliHeaderType cliHeaderType);

/// The ICMP type or code that an L4 port qualifier carries. For `portType` qualifierL4SrcPort it is
/// the type, in the value's high byte (bits 8 to 15); for qualifierL4DstPort the code, in the low
/// byte (bits 0 to 7).
///
/// Sets `isIcmp` to true when there is a type or code. Otherwise returns 0 and leaves `isIcmp`
/// unchanged. There is one if all of this holds:
/// - qualifierIpProtocol is programmed, and its value is 1 (ICMP) or 58 (ICMPv6);
/// - qualifierL4SrcPort is programmed, whatever `portType` is;
/// - the mask of that byte is not 0.
///
/// `portType` must be programmed in the shadow too. The process stops if its record, or the
/// protocol's, is missing, or is not set (assertion "!!qualData->qual()").
///
/// Threads: any thread that may read the shadow.
VELMOR_TCAM_API U16
getQualifierL4PortIfIcmp(const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                         QualifierType portType, bool& isIcmp);

}  // namespace VelmorTcam
