// Short path of Zel/Format/Format.h: Zel::_fmt.
#pragma once

#include "Zel/Format/Format.h"  // IWYU pragma: export
