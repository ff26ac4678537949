#include "files/machine.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>

namespace orbel {

namespace {

double numberIn(const std::string& file) {
  double number = 0;
  std::ifstream(file) >> number;
  return number;
}

}  // namespace

double availableMemory() {
  double bytes = 0;
  std::ifstream table("/proc/meminfo");
  for (std::string word; table >> word;) {
    if (word == "MemAvailable:" && table >> bytes) break;
  }
  bytes *= 1024;
  const std::string group = "/sys/fs/cgroup/memory.";
  if (const double most = numberIn(group + "max"); most > 0) {
    bytes = std::min(bytes, std::max(0.0, most - numberIn(group + "current")));
  }
  return bytes;
}

unsigned processorCount() { return std::max(1U, std::thread::hardware_concurrency()); }

}  // namespace orbel
