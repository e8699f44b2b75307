// Includes every class, enumeration and value type of the module. A CLI includes this file.
//
// Threads: see each included file.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamCliTypesDisplayStrings.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesEnums.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFeature.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesReflect.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesSummary.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesUsage.h"
