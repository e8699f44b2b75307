// The module's enumerations: which table, and which kind of show output.
//
// Threads: constants and pure functions; safe from any thread.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/Enum8.h"

namespace VelmorTcam {

/// The table that an entry is shown in. It also selects the header (getCliHeader).
enum CliHeaderType : Halvo::U8 {
  cliHeaderTypeInvalid = 0,  ///< no table: the formatter has no header
  cliHeaderTypeIp = 1,
  cliHeaderTypeIp6 = 2,
  cliHeaderTypeMac = 3,
  cliHeaderTypeTcam = 4,  ///< the one-line form, which has no header text
};

/// The kind of show output that a command asked for. This library does not read it.
enum CliOutputType : Halvo::U8 {
  cliOutputTypeInvalid = 0,
  cliOutputTypeTcam = 1,
  cliOutputTypeTcamAcl = 2,
  cliOutputTypeTcamCopp = 3,
  cliOutputTypeTcamDetail = 4,
  cliOutputTypeTcamDirectedBroadcast = 5,
  cliOutputTypeTcamNat = 6,
  cliOutputTypeTcamPbr = 7,
  cliOutputTypeTcamPolicyQos = 8,
  cliOutputTypeTcamUrpf = 9,
};

ZEL_DECLARE_ENUM8(VELMOR_TCAM_API, CliHeaderType);
ZEL_DECLARE_ENUM8(VELMOR_TCAM_API, CliOutputType);

}  // namespace VelmorTcam
