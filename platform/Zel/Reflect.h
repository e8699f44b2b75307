// Short path of Zel/Types/Reflect.h: reflection.
#pragma once

#include "Zel/Types/Reflect.h"  // IWYU pragma: export
