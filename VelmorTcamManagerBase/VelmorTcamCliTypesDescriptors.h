// Internal: the type module.
#pragma once

#include "Zel/Types/TypeModule.h"

namespace VelmorTcam {

/// The types, in this order: the enumerations CliHeaderType and CliOutputType, then the classes and
/// value types.
extern const Zel::TypeModule cliTypesModule;

}  // namespace VelmorTcam
