// load_and_unload MODULE: a host without threads, OpenMP or the library loads the module, runs it and unloads it, time
// and again. Fails when a thread outlives a run, when the module stays loaded, or when a run fails or changes its mind.
#include <dlfcn.h>
#include <link.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "host/test_host.h"

// There is no linked entry here: every host is given the loaded one.
PluginMainProc linkedEntry() { return nullptr; }

namespace {

bool failed = false;

void demand(bool holds, const char* what, int round) {
  if (holds) return;
  std::fprintf(stderr, "load_and_unload: round %d: %s\n", round, what);
  failed = true;
}

bool isLoaded(const char* part) {
  struct Search {
    const char* part;
    bool found;
  } search = {part, false};
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* data) {
        auto* const wanted = static_cast<Search*>(data);
        if (std::string(info->dlpi_name).find(wanted->part) != std::string::npos) wanted->found = true;
        return 0;
      },
      &search);
  return search.found;
}

// One, once threads that have ended are no longer listed.
bool isAlone() {
  const auto threads = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
  for (int i = 0; i < 200 && threads() != 1; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return threads() == 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: load_and_unload MODULE\n");
    return 2;
  }
  demand(!isLoaded("libgomp") && !isLoaded("libomp"), "OpenMP is here before the module", 0);
  std::vector<std::vector<unsigned char>> first;
  for (int round = 1; round <= 10 && !failed; ++round) {
    void* const module = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
      std::fprintf(stderr, "load_and_unload: %s\n", dlerror());
      return 1;
    }
    demand(isAlone(), "loading started a thread", round);
    const auto entry = reinterpret_cast<PluginMainProc>(dlsym(module, "PluginMain"));
    for (int run = 0; run < 2; ++run) {
      TestHost host(96, 64, 3, 16, entry);
      host.fillWithPattern(1);
      const auto before = host.planes;
      demand(host.run() == 0, "the run failed", round);
      demand(isAlone(), "a thread outlived the run", round);
      host.checkFences();
      demand(host.violations.empty(), "the run broke the interface", round);
      demand(host.planes != before, "the run changed nothing", round);
      if (first.empty()) first = host.planes;
      demand(host.planes == first, "another picture than before", round);
    }
    dlclose(module);
    demand(!isLoaded(arguments[1]), "the module is still loaded", round);
    demand(isAlone(), "a thread outlived the module", round);
  }
  return failed ? 1 : 0;
}
