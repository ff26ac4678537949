// The module's entry, linked and loaded; apart from the test host, which programs without the library use too.
#include "host/filter_entry.h"
#include "host/test_host.h"
#include "support/loaded_module.h"

PluginMainProc linkedEntry() { return &PluginMain; }

PluginMainProc loadedEntry() {
  static const LoadedModule module(ORBEL_MODULE);
  return module.procedure<PluginMainProc>("PluginMain");
}
