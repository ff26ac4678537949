// The module's entry, linked and loaded; apart from the test host, which programs without the library use too.
#include <dlfcn.h>

#include <stdexcept>

#include "host/filter_entry.h"
#include "host/test_host.h"

PluginMainProc linkedEntry() { return &PluginMain; }

PluginMainProc loadedEntry() {
  static void* const module = dlopen(ORBEL_MODULE, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<PluginMainProc>(dlsym(module, "PluginMain"));
}
