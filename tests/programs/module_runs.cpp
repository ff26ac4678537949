// module_runs MODULE [PICTURE.ppm]: 200 runs of random documents and settings, then the picture at three depths. Writes
// a line about each run, with a digest of every sample and of the recorded script, so that the output of two builds can
// be compared. Fails when a run does not respect the host's interface.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include "host/script_keys.h"
#include "host/test_host.h"
#include "support/loaded_module.h"

// There is no linked entry here: every host is given the loaded one.
PluginMainProc linkedEntry() { return nullptr; }

namespace {

bool failed = false;

// FNV-1a, 64 bits.
class Digest {
 public:
  void add(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) value_ = (value_ ^ bytes[i]) * 0x100000001B3;
  }
  unsigned long long value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325;
};

// Only what the generator's definition fixes: distributions differ between libraries.
class Random {
 public:
  int below(int count) { return static_cast<int>(generator_() % static_cast<unsigned>(count)); }
  double between(double low, double high) { return low + (high - low) * below(1 << 20) / (1 << 20); }

 private:
  std::mt19937 generator_{20261123};
};

double settingOf(const ScriptKey& key, Random& random) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  const std::string name = key.name;
  if (key.kind == ScriptKind::Flag) return random.below(2);
  if (key.kind == ScriptKind::Integer) return random.below(12) - 1;
  if (random.below(30) == 0) {
    const double odd[] = {0, -1, 1e-40, 1e300, inf, -inf, std::numeric_limits<double>::quiet_NaN()};
    return odd[random.below(7)];
  }
  if (name.rfind("radius", 0) == 0) return random.between(0.2, 3);
  if (name.rfind("threshold", 0) == 0) return random.between(0.5, 120);
  return random.between(-50, 300);
}

void run(TestHost& host, const std::string& title) {
  const std::int16_t code = host.run();
  host.checkFences();
  for (const std::string& violation : host.violations) {
    std::fprintf(stderr, "module_runs: %s: %s\n", title.c_str(), violation.c_str());
    failed = true;
  }
  Digest samples;
  for (const auto& plane : host.planes) samples.add(plane.data(), plane.size());
  Digest script;
  for (const ScriptValue& value : host.recorded()) {
    script.add(&value.key, sizeof value.key);
    script.add(&value.number, sizeof value.number);
  }
  std::printf("%s: result %d, samples %016llX, script %016llX\n", title.c_str(), code, samples.value(), script.value());
}

void randomRuns(PluginMainProc entry) {
  Random random;
  for (int i = 0; i < 200; ++i) {
    const int depths[] = {8, 16, 32};
    const int width = 1 + random.below(160);
    const int height = 1 + random.below(120);
    const int planes = 3 + random.below(3);
    TestHost host(width, height, planes, depths[random.below(3)], entry);
    host.fillWithPattern(static_cast<unsigned>(i));
    host.rowPadding = random.below(3) * 4;
    host.addressOffset = random.below(2) * 4;
    if (random.below(4) == 0) {
      const auto part = [&](int length) { return static_cast<std::int16_t>(random.below(length + 1)); };
      const std::int16_t top = part(height / 2);
      const std::int16_t left = part(width / 2);
      host.record.filterRect = {top, left, static_cast<std::int16_t>(height - part(height / 2)),
                                static_cast<std::int16_t>(width - part(width / 2))};
    }
    Script script;
    for (const ScriptKey& key : scriptKeys) {
      const double value = settingOf(key, random);
      if (random.below(4) != 0) script.push_back({key.code, descriptorType(key.kind), value});
    }
    host.play(script);
    run(host, "run " + std::to_string(i) + ", " + std::to_string(width) + " x " + std::to_string(height) + ", " +
                  std::to_string(host.depth) + " bits");
  }
}

void picture(PluginMainProc entry, const char* name) {
  std::ifstream file(name, std::ios::binary);
  std::string kind;
  int width = 0;
  int height = 0;
  int white = 0;
  file >> kind >> std::ws;
  while (file.peek() == '#') {
    std::string comment;
    std::getline(file, comment);
  }
  file >> width >> height >> white;
  file.get();
  if (!file || kind != "P6" || white != 255) throw std::runtime_error(std::string(name) + ": no such picture");
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  std::string samples(count * 3, '\0');
  if (!file.read(samples.data(), static_cast<std::streamsize>(samples.size()))) {
    throw std::runtime_error(std::string(name) + ": too short");
  }
  for (const int depth : {8, 16, 32}) {
    TestHost host(width, height, 3, depth, entry);
    const double scale = depth == 8 ? 1 : (depth == 16 ? 32768.0 : 1.0) / 255;
    for (std::size_t i = 0; i < count * 3; ++i) {
      const auto pixel = static_cast<int>(i / 3);
      host.setSample(static_cast<int>(i % 3), pixel % width, pixel / width,
                     static_cast<unsigned char>(samples[i]) * scale);
    }
    Script script;
    for (int band = 0; band < 5; ++band) script.push_back({scriptKeys[band].code, typeFloat, 130.0 + 10 * band});
    host.play(script);
    run(host, "picture, " + std::to_string(depth) + " bits");
  }
}

}  // namespace

int main(int count, char** arguments) try {
  if (count < 2 || count > 3) {
    std::fprintf(stderr, "usage: module_runs MODULE [PICTURE.ppm]\n");
    return 2;
  }
  const LoadedModule module(arguments[1]);
  const auto entry = module.procedure<PluginMainProc>("PluginMain");
  randomRuns(entry);
  if (count == 3) picture(entry, arguments[2]);
  return failed ? 1 : 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "module_runs: %s\n", error.what());
  return 1;
}
