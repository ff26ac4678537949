#include "batch/equalize.h"

#include <array>
#include <new>

#include "files/failure.h"
#include "plugin/plugin_run.h"

namespace orbel {

void requireGood(const std::string& file, orbel_status status, const std::string& message) {
  if (status == ORBEL_OK) return;
  if (status == ORBEL_NO_MEMORY) throw std::bad_alloc();
  throw Failure(file, message,
                status == ORBEL_BAD_SETTING || status == ORBEL_TOO_LARGE ? Cause::Settings : Cause::Other);
}

void equalizeByEngine(const std::string& file, const orbel_settings& run, int threads, const orbel_picture& source,
                      const orbel_picture& target, std::vector<float>& mask) {
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.threads = threads;
  orbel_picture weights;
  if (!mask.empty()) {
    orbel_picture_interleaved(&weights, sizeof weights, ORBEL_FLOAT32, source.width, source.height, 1, mask.data(),
                              static_cast<std::ptrdiff_t>(sizeof(float)) * source.width);
    options.mask = &weights;
  }
  std::array<char, 256> message{};
  options.message = message.data();
  options.message_capacity = message.size();
  requireGood(file, orbel_equalize(&run, &source, &target, &options), message.data());
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
