// The two roads of a decoded picture through the equalizer: the engine's front door, and a module as a host plays it.
#pragma once

#include <string>
#include <vector>

#include "api/orbel.h"
#include "plugin/plugin_host.h"

namespace orbel {

// source into target, which may be the same; mask has a weight for each pixel, or is empty. Both throw Failure about
// the file, and std::bad_alloc.
void equalizeByEngine(const std::string& file, const orbel_settings& run, int threads, const orbel_picture& source,
                      const orbel_picture& target, std::vector<float>& mask);
void equalizeByPlugin(const std::string& file, PluginEntry plugin, const orbel_settings& run, int depth,
                      const orbel_picture& source, const orbel_picture& target, const std::vector<float>& mask);

// The message of an engine's call that failed, as a Failure about the file; std::bad_alloc for ORBEL_NO_MEMORY.
void requireGood(const std::string& file, orbel_status status, const std::string& message);

}  // namespace orbel
