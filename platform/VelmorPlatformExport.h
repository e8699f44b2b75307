// Marks the classes and functions that libVelmorPlatform.so exports. Everything else in the library
// is hidden.
//
// Threads: only a macro.
#pragma once

#define VELMOR_PLATFORM_API __attribute__((visibility("default")))
