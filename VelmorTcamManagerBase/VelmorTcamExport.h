// The export mark of libVelmorTcamCliHelper.so. Everything else in it is hidden.
//
// Threads: nothing here but a mark.
#pragma once

#define VELMOR_TCAM_API __attribute__((visibility("default")))
