// Shows the platform's lists to LoadCycleTest.cpp. This module is linked to the platform alone, and
// stays loaded while the library comes and goes.
#include <string_view>

#include "Halvo/MemoryTracker.h"
#include "LoadPlugin.h"
#include "Sobrel.h"
#include "Zel/Trace/Log.h"
#include "Zel/Trace/Trace.h"
#include "Zel/Types/ModuleInspectData.h"
#include "Zel/Types/Reflect.h"

extern "C" void platformProbe(std::string* text) {
  for (auto* module = Halvo::ModuleInspectData::first(); module; module = module->next()) {
    *text += std::string("module ") + module->module().name + "\n";
    for (const Zel::TypeDescriptor* type : module->module().types) {
      if (Zel::findType(type->name) != type)
        *text += std::string("not found: ") + type->name + "\n";
    }
  }
  for (auto* tracker = Halvo::MemoryTracker::first(); tracker; tracker = tracker->next()) {
    *text += std::string("tracker ") + tracker->typeName() + " with " +
             std::to_string(tracker->liveObjects()) + "\n";
  }
  for (auto* handle = Zel::LogHandle::first(); handle; handle = handle->next()) {
    *text += std::string("log handle ") + handle->descriptor().key + "\n";
  }
  Zel::TraceControl::forEachHandle(
      [](const char* name, Zel::U32, void* out) {
        *static_cast<std::string*>(out) += std::string("trace handle ") + name + "\n";
      },
      text);
  *text += std::to_string(Sobrel::slabUsage().liveBytes) + " bytes live\n";
}
