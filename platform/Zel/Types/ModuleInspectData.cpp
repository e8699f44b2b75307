#include "Zel/Types/ModuleInspectData.h"

#include <mutex>

#include "Zel/Types/TypeModule.h"

namespace Halvo {

namespace {

constinit std::mutex listLock;
constinit ModuleInspectData* head = nullptr;

}  // namespace

const ModuleInspectData* ModuleInspectData::first() noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  return head;
}

void ModuleInspectData::loaded() noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  if (loaded_) return;
  next_ = head;
  head = this;
  loaded_ = true;
}

ModuleInspectData::~ModuleInspectData() {
  std::lock_guard<std::mutex> const guard(listLock);
  if (!loaded_) return;
  ModuleInspectData** link = &head;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  for (const Zel::TypeDescriptor* type : module_.types) {
    if (type->tracker != nullptr) type->tracker->unlist();
  }
  for (Zel::AllocationTracker* tracker : module_.trackers) tracker->unlist();
}

}  // namespace Halvo
