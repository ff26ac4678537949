// Plug-in modules as files.
#pragma once

#include <string>

#include "files/failure.h"
#include "plugin/plugin_host.h"

namespace orbel {

// A plug-in that can't be loaded; what() names the file and the reason.
struct NoPlugin : Failure {
  using Failure::Failure;
};

// The plug-in that comes with this program: its file stands beside the program, or where it was installed to.
std::string ownModule();

// The entry of the module in a file, which stays loaded until the program ends. Throws NoPlugin
// when there is no such file, when it is no module, and when it has no PluginMain.
PluginEntry loadEntry(const std::string& file);

}  // namespace orbel
