// Three descriptors that no code refers to. Each build must keep them. LogSectionCheck.cmake builds
// this file.
#include "Zel/Trace/Log.h"

ZEL_LOG_DESCRIPTORS(messages, {"FIRST", "first %s", "The first.", "\x01", 3},
                    {"SECOND", "second %s", "The second.", "\x02", 6});
ZEL_LOG_DESCRIPTORS(moreMessages, {"THIRD", "third %s", "The third.", "\x03", 7});

// A function that may be dropped, and one that may not.
[[gnu::visibility("default")]] int dropped() { return 1; }
int main() { return 0; }
