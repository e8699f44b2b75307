// ModuleInspectData: the runtime's list of loaded type modules.
#pragma once

#include <atomic>

#include "VelmorPlatformExport.h"

namespace Zel {
struct TypeModule;
}

namespace Halvo {

/// The entry of one type module in the list of loaded modules.
///
/// A library defines one object with static storage and calls loaded() once when it is loaded. The
/// destructor, at unload or at exit, removes the module from the list. It also removes the trackers
/// of the module from the list of trackers.
///
/// Threads: any thread may call loaded() and first() and walk the list, as long as no library is
/// being unloaded. Only the loading thread may call isLoaded().
///
///     static Halvo::ModuleInspectData inspectData{agentTypes};   // a Zel::TypeModule
///     inspectData.loaded();
class VELMOR_PLATFORM_API ModuleInspectData {
 public:
  /// Keeps a reference to `module`; does not copy it.
  constexpr explicit ModuleInspectData(const Zel::TypeModule& module) noexcept : module_(module) {}
  ModuleInspectData(const ModuleInspectData&) = delete;
  ModuleInspectData& operator=(const ModuleInspectData&) = delete;
  ~ModuleInspectData();

  /// Adds the module to the list. A second call does nothing.
  void loaded() noexcept;
  bool isLoaded() const noexcept { return loaded_; }
  const Zel::TypeModule& module() const noexcept { return module_; }

  /// The list of loaded modules, newest first.
  static const ModuleInspectData* first() noexcept;
  const ModuleInspectData* next() const noexcept { return next_; }

 private:
  const Zel::TypeModule& module_;
  ModuleInspectData* next_ = nullptr;
  bool loaded_ = false;
};

}  // namespace Halvo
