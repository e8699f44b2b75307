// The type module: its registration when the library is loaded, and the agent's log messages.
#include <iostream>  // constructs the streams before the handles

#include "VelmorTcamManagerBase/VelmorTcamCliTypesDescriptors.h"
#include "Zel/Trace/Log.h"
#include "Zel/Types/ModuleInspectData.h"

namespace VelmorTcam {

namespace {

// The agent's log messages. The platform's log tooling finds them in the library's file, and the
// agent logs them through their handles. This library logs neither. The argument of each format is
// the agent's name.
ZEL_LOG_DESCRIPTORS(
    logDescriptors,
    {"VELMOR_UNEXPECTED_RESTART", "Unexpected restart of Velmor agent %s occurred",
     "Unexpected restart of the Velmor agent occurred.", "\x02", 3},
    {"VELMOR_CONFIG_CHANGE", "Configuration change requires the Velmor agent %s to restart",
     "Configuration change requires the switch ASIC to be reconfigured, requiring the Velmor agent "
     "to restart.",
     "\x01", 6});
constexpr const Zel::LogDescriptor& unexpectedRestart = logDescriptors[0];
constexpr const Zel::LogDescriptor& configChange = logDescriptors[1];

// These run at load, in this order: the module becomes known, then the two log handles are made.
Halvo::ModuleInspectData inspectData{cliTypesModule};
[[maybe_unused]] bool const isLoaded = (inspectData.loaded(), true);
Zel::LogHandle configChangeLog(configChange, Halvo::Duration(0), 1.0, 0, 0);
Zel::LogHandle unexpectedRestartLog(unexpectedRestart, Halvo::Duration(0), 1.0, 0, 0);

}  // namespace

}  // namespace VelmorTcam
