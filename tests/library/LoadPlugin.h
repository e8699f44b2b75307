// What the modules that LoadCycleTest.cpp opens offer to it.
#pragma once

#include <string>

/// LoadPlugin.cpp: prints a table and a usage tree to a file.
extern "C" [[gnu::visibility("default")]] void loadPluginPrint(int fd);

/// PlatformProbe.cpp: what the platform's lists hold, a line each.
extern "C" [[gnu::visibility("default")]] void platformProbe(std::string* text);
