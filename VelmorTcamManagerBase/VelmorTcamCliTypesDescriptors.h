// Internal: the type module.
#pragma once

#include "Zel/TypeModule.h"

namespace VelmorTcam {

/// The enumerations, CliHeaderType and CliOutputType, then the classes and value types.
extern const Zel::TypeModule cliTypesModule;

}  // namespace VelmorTcam
