// Loads the library while the program runs, finds a formatter by its name, and prints an entry. The
// program is linked to the runtimes alone.
#include <dlfcn.h>

#include <cstdio>

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Reflect.h"

int main() {
  void* const library = ::dlopen("libVelmorTcamCliHelper.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    return 1;
  }
  {
    // The library registered its types when it was loaded.
    const Zel::TypeDescriptor* const type = Zel::findType("VelmorTcam::VelmorTcamCliFormat");
    if (type == nullptr) return 1;
    auto const node = Zel::createNode(*type, {});
    // Calls of virtual operations need no symbol of the library.
    auto const& format = static_cast<const VelmorTcam::CliFormat&>(*node);

    auto const shadow = Halvo::makePtr<VelmorTcam::VelmorTcamEntryShadow>(17);
    format.displayEntryRequest(static_cast<Halvo::U32>(fileno(stdout)),
                               VelmorTcam::RequestKey("office"), VelmorTcam::RuleId(10),
                               "tcp from 10/8", shadow, 1234, nullptr);
  }
  // The formatter is gone here: no object of the library may be left when it is unloaded.
  ::dlclose(library);
}
