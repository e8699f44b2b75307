// The export mark of libVelmorTcamCliHelper.so. The library hides everything without it.
//
// Threads: does not apply to a mark.
#pragma once

#define VELMOR_TCAM_API __attribute__((visibility("default")))
