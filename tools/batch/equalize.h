// The two roads of a decoded picture through the equalizer: the engine's front door, and a module as a host plays it.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "api/orbel.h"
#include "plugin/plugin_host.h"

namespace orbel {

// source into target, which may be the same. The mask is a picture of their size, or null; for a module a weight of 0
// to 1 for each pixel, or empty. Both throw Failure about the file, and std::bad_alloc.
void equalizeByEngine(const std::string& file, const orbel_settings& run, int threads, const orbel_picture& source,
                      const orbel_picture& target, const orbel_picture* mask);
void equalizeByPlugin(const std::string& file, PluginEntry plugin, const orbel_settings& run, int depth,
                      const orbel_picture& source, const orbel_picture& target, const std::vector<float>& mask);

// Options of the engine's calls about one file, with room for what a call has to say.
class EngineOptions {
 public:
  // threads: 0 for all processors.
  explicit EngineOptions(std::string file, int threads = 0);
  EngineOptions(const EngineOptions&) = delete;
  EngineOptions& operator=(const EngineOptions&) = delete;

  orbel_options* get() { return &options_; }

  // What a call with these options came to: throws its message as a Failure about the file, and std::bad_alloc for
  // ORBEL_NO_MEMORY.
  void require(orbel_status status) const;

  // What the last call had to say.
  std::string message() const { return message_.data(); }

 private:
  std::string file_;
  std::array<char, 256> message_{};
  orbel_options options_{};
};

struct FreeStack {
  void operator()(orbel_stack* stack) const { orbel_stack_free(stack); }
};
struct FreeLook {
  void operator()(orbel_look* look) const { orbel_look_free(look); }
};
using Stack = std::unique_ptr<orbel_stack, FreeStack>;
using Look = std::unique_ptr<orbel_look, FreeLook>;

}  // namespace orbel
