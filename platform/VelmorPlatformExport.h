// The export mark of libVelmorPlatform.so. Everything else in it is hidden.
//
// Threads: nothing here but a mark.
#pragma once

#define VELMOR_PLATFORM_API __attribute__((visibility("default")))
