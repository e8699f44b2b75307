// Every class, enumeration and value type of the module: what a CLI includes.
//
// Threads: each part says for itself.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamCliTypesDisplayStrings.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesEnums.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFeature.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesReflect.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesSummary.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesUsage.h"
