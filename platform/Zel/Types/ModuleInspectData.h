// ModuleInspectData: the runtime's list of loaded type modules.
#pragma once

#include <atomic>

#include "VelmorPlatformExport.h"

namespace Zel {
struct TypeModule;
}

namespace Halvo {

/// One type module's entry in the runtime's list of loaded modules.
///
/// A library defines one with static storage, calls loaded() once as it is loaded, and is taken off
/// the list when the object is destroyed, at unload or exit; the trackers of the module's types go
/// off their list with it.
///
/// Threads: loaded(), first() and the walk are safe from any thread as long as no library is being
/// unloaded. isLoaded() is for the thread that loads.
///
///     static Halvo::ModuleInspectData inspectData{agentTypes};   // a Zel::TypeModule
///     inspectData.loaded();
class VELMOR_PLATFORM_API ModuleInspectData {
 public:
  /// `module` is kept, not copied.
  constexpr explicit ModuleInspectData(const Zel::TypeModule& module) noexcept : module_(module) {}
  ModuleInspectData(const ModuleInspectData&) = delete;
  ModuleInspectData& operator=(const ModuleInspectData&) = delete;
  ~ModuleInspectData();

  /// Enters the module. A second call changes nothing.
  void loaded() noexcept;
  bool isLoaded() const noexcept { return loaded_; }
  const Zel::TypeModule& module() const noexcept { return module_; }

  /// The loaded modules, the newest first.
  static const ModuleInspectData* first() noexcept;
  const ModuleInspectData* next() const noexcept { return next_; }

 private:
  const Zel::TypeModule& module_;
  ModuleInspectData* next_ = nullptr;
  bool loaded_ = false;
};

}  // namespace Halvo
