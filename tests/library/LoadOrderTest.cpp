// The calls that the library makes when it is loaded and unloaded. This program is not linked to
// the library but opens it. It replaces the three operations of the runtime that the library may
// call at load, and so sees each call and their order.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Zel/Trace/Log.h"
#include "Zel/Types/ModuleInspectData.h"
#include "Zel/Types/TypeModule.h"

namespace {

// Never destroyed: some modules are unloaded after the end of the program.
std::vector<std::string>& events() {
  static auto* const list = new std::vector<std::string>;
  return *list;
}

// Skips the platform's own module.
void record(const char* what, const Zel::TypeModule& module) {
  if (std::string_view(module.name) == "VelmorTcamEntryShadow") return;
  events().push_back(std::string(what) + " " + module.name);
}

}  // namespace

// A symbol defined in the executable is found before any library's.
#define STAND_IN __attribute__((visibility("default")))

STAND_IN void Halvo::ModuleInspectData::loaded() noexcept { record("loaded", module_); }

STAND_IN Halvo::ModuleInspectData::~ModuleInspectData() { record("unloaded", module_); }

STAND_IN Zel::LogHandle::LogHandle(const LogDescriptor& descriptor, Halvo::Duration interval,
                                   double growth, int burst, int limit) noexcept
    : descriptor_(descriptor), limiter_(interval, growth, burst, limit) {
  events().push_back("handle " + std::string(descriptor.key) + " " +
                     std::to_string(interval.nanoseconds()) + " " + std::to_string(growth) + " " +
                     std::to_string(burst) + " " + std::to_string(limit));
}

STAND_IN Zel::LogHandle::~LogHandle() {
  events().push_back("gone " + std::string(descriptor_.key));
}

namespace {

TEST(Load, RecordsTheModuleThenMakesTheTwoLogHandles) {
  events().clear();
  void* const library = ::dlopen(VELMOR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << ::dlerror();
  EXPECT_EQ(events(), (std::vector<std::string>{
                          "loaded VelmorTcamCliTypes",
                          "handle VELMOR_CONFIG_CHANGE 0 1.000000 0 0",
                          "handle VELMOR_UNEXPECTED_RESTART 0 1.000000 0 0",
                      }));
  events().clear();
  ASSERT_EQ(::dlclose(library), 0);
  EXPECT_EQ(::dlopen(VELMOR_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
  EXPECT_EQ(events(), (std::vector<std::string>{
                          "gone VELMOR_UNEXPECTED_RESTART",
                          "gone VELMOR_CONFIG_CHANGE",
                          "unloaded VelmorTcamCliTypes",
                      }));
}

}  // namespace
