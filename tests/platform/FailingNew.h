// The test program's own allocation functions, which fail on demand.
#pragma once

/// While set, every `operator new` of the program fails.
extern bool memoryIsOut;
