#include "batch/equalize.h"

#include <new>
#include <utility>

#include "files/failure.h"
#include "plugin/plugin_run.h"

namespace orbel {

EngineOptions::EngineOptions(std::string file, int threads) : file_(std::move(file)) {
  orbel_options_init(&options_, sizeof options_);
  options_.threads = threads;
  options_.message = message_.data();
  options_.message_capacity = message_.size();
}

void EngineOptions::require(orbel_status status) const {
  if (status == ORBEL_OK) return;
  if (status == ORBEL_NO_MEMORY) throw std::bad_alloc();
  throw Failure(file_, message_.data(),
                status == ORBEL_BAD_SETTING || status == ORBEL_TOO_LARGE ? Cause::Settings : Cause::Other);
}

void equalizeByEngine(const std::string& file, const orbel_settings& run, int threads, const orbel_picture& source,
                      const orbel_picture& target, const orbel_picture* mask) {
  EngineOptions options(file, threads);
  options.get()->mask = mask;
  options.require(orbel_equalize(&run, &source, &target, options.get()));
}

void equalizeByPlugin(const std::string& file, PluginEntry plugin, const orbel_settings& run, int depth,
                      const orbel_picture& source, const orbel_picture& target, const std::vector<float>& mask) {
  try {
    runThroughPlugin(plugin, run, depth, source, target, mask);
  } catch (const PluginRefusal& refusal) {
    throw Failure(file, refusal.what(), Cause::PluginRefused);
  }
}

}  // namespace orbel
