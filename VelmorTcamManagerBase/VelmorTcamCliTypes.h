// Every class, enumeration and value type of the module: what a CLI includes.
#pragma once

#include "VelmorTcamManagerBase/VelmorTcamCliTypesEnums.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesFormat.h"
