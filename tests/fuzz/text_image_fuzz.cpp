// libFuzzer target: the fuzzer's bytes as a text image file. It is read or refused as the constructor says; what was
// read is written and has to come back.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "image/kiv_image.h"

namespace {

void demand(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "text_image_fuzz: %s\n", what);
  std::abort();
}

// One in memory, and its name.
struct MemoryFile {
  MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor(memfd_create("text_image_fuzz", MFD_CLOEXEC)) {
    demand(write(descriptor, data, size) == static_cast<ssize_t>(size), "no file in memory");
    name = "/proc/self/fd/" + std::to_string(descriptor);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor); }

  int descriptor;
  std::string name;
};

bool comesBack(float written, float read) {
  if (std::isnan(written)) return std::isnan(read);
  if (std::abs(written) < 2e-23F) return std::abs(double{written} - double{read}) <= 1e-30;
  return std::memcmp(&written, &read, sizeof written) == 0;
}

void writeAndReadAgain(const KivImage& image) {
  static const std::string name = "text_image_fuzz-" + std::to_string(getpid()) + ".txt";
  image.Write(name.c_str());
  const KivImage again(name.c_str());
  std::remove(name.c_str());
  demand(again.size.width == image.size.width && again.size.height == image.size.height, "another size came back");
  for (int y = 0; y < image.size.height; ++y) {
    for (int x = 0; x < image.size.width; ++x) {
      demand(comesBack(*image.At(0, x, y), *again.At(0, x, y)), "another sample came back");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(data, size);
  try {
    const KivImage image(file.name.c_str());
    demand(image.channels == 1 && image.size.width > 0 && image.size.height > 0, "an empty image was read");
    demand(static_cast<std::size_t>(image.size.width) * static_cast<std::size_t>(image.size.height) <= size / 2,
           "more samples than the file holds");
    writeAndReadAgain(image);
  } catch (const KivFileError& error) {
    // NO_MEMORY_ERROR isn't caught: no file of this size may ask for that much.
    demand(std::strstr(error.what(), (file.name + ", line ").c_str()) != nullptr, "a refusal without file and line");
  }
  return 0;
}
