#include "files/machine.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

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

void useThreads(unsigned threads) {
  const std::string wanted = std::to_string(threads);
  const char* const limit = std::getenv("OMP_THREAD_LIMIT");
  if (limit != nullptr && wanted == limit) return;
  setenv("OMP_THREAD_LIMIT", wanted.c_str(), 1);
  setenv("OMP_NUM_THREADS", wanted.c_str(), 1);
  setenv("VIPS_CONCURRENCY", wanted.c_str(), 1);

  std::ifstream file("/proc/self/cmdline", std::ios::binary);
  const std::string line{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> words;
  for (std::size_t at = 0; at < line.size(); at += words.back().size() + 1) words.emplace_back(line.c_str() + at);
  std::vector<char*> raw;
  raw.reserve(words.size() + 1);
  for (std::string& word : words) raw.push_back(word.data());
  raw.push_back(nullptr);
  execv("/proc/self/exe", raw.data());
}

}  // namespace orbel
