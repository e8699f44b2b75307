// The short name of Zel/Types/Reflect.h: reflection.
#pragma once

#include "Zel/Types/Reflect.h"  // IWYU pragma: export
