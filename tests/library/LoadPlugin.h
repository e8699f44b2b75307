// The functions of the modules that LoadCycleTest.cpp opens.
#pragma once

#include <string>

/// LoadPlugin.cpp: prints a table and a usage tree to a file.
extern "C" [[gnu::visibility("default")]] void loadPluginPrint(int fd);

/// PlatformProbe.cpp: appends the contents of the platform's lists, a line each.
extern "C" [[gnu::visibility("default")]] void platformProbe(std::string* text);
