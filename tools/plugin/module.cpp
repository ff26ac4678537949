#include "plugin/module.h"

#include <dlfcn.h>

#include <filesystem>

#include "files/program_folder.h"
#include "plugin/elf_file.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

// The loader's reason, without the path that it begins with.
std::string reasonFor(const fs::path& path) {
  const char* const error = dlerror();
  std::string reason = error == nullptr ? "for no given reason" : error;
  const std::string prefix = path.string() + ": ";
  if (reason.rfind(prefix, 0) == 0) reason.erase(0, prefix.size());
  return reason;
}

}  // namespace

std::string ownModule() { return programData(ORBEL_MODULE_NAME, ORBEL_MODULE_FOLDER "/" ORBEL_MODULE_NAME); }

PluginEntry loadEntry(const std::string& file) {
  if (file.empty()) throw NoPlugin("--plugin", "the name is empty");
  // Absolute: the loader looks for a bare name in the system's folders.
  const fs::path path = fs::absolute(file);
  if (const std::string reason = reasonNotToLoad(path.string()); !reason.empty()) {
    throw NoPlugin(file, "can't load this plug-in: " + reason);
  }
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw NoPlugin(file, "can't load this plug-in: " + reasonFor(path));
  void* const entry = dlsym(module, "PluginMain");
  if (entry == nullptr) throw NoPlugin(file, "this is no plug-in, it has no PluginMain");
  return reinterpret_cast<PluginEntry>(entry);
}

}  // namespace orbel
