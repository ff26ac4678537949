// module_runs MODULE: 200 runs of random documents and settings, then one of a large document at each depth. Writes a
// line about each run, with a digest of every sample and of the recorded script, so that the output of two builds can
// be compared. Fails when a run does not respect the host's interface.
#include <cstdio>
#include <exception>
#include <string>

#include "host/any_host.h"
#include "programs/hashes.h"
#include "support/loaded_module.h"

// There is no linked entry here: every host is given the loaded one.
PluginMainProc linkedEntry() { return nullptr; }

namespace {

bool failed = false;

void run(TestHost& host) {
  const std::int16_t code = host.run();
  for (const std::string& violation : host.allViolations()) {
    std::fprintf(stderr, "module_runs: %s\n", violation.c_str());
    failed = true;
  }
  Digest samples;
  for (const auto& plane : host.planes) {
    if (host.depth == 32) {
      samples.addFloats(plane.data(), plane.size());
    } else {
      samples.add(plane.data(), plane.size());
    }
  }
  Digest script;
  for (const ScriptValue& value : host.recorded()) {
    script.add(&value.key, sizeof value.key);
    script.add(&value.number, sizeof value.number);
  }
  std::printf("%d x %d, %d bits: result %d, samples %016llX, script %016llX\n", host.width, host.height, host.depth,
              code, samples.value(), script.value());
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 2) {
    std::fprintf(stderr, "usage: module_runs MODULE\n");
    return 2;
  }
  const LoadedModule module(arguments[1]);
  const auto entry = module.procedure<PluginMainProc>("PluginMain");
  RandomChoices choices(20261123);
  for (unsigned i = 0; i < 200; ++i) {
    AnyHost host(choices, {160, 500}, entry);
    host.fillWithPattern(i);
    host.play(host.anyScript());
    if (choices.rarely(4)) host.selectPart();
    run(host);
  }
  for (const int depth : {8, 16, 32}) {
    TestHost host(901, 640, 3, depth, entry);
    host.fillWithPattern(1);
    host.play({{fourCharacters("CON2"), typeFloat, 140}, {fourCharacters("THR2"), typeFloat, 100}});
    run(host);
  }
  return failed ? 1 : 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "module_runs: %s\n", error.what());
  return 1;
}
