// A picture through a plug-in module, as a host would have it done: the other road to the equalizer.
#pragma once

#include <vector>

#include "api/orbel.h"
#include "plugin/plugin_host.h"

namespace orbel {

// The picture as a document of this depth (8, 16 or 32) through the module, and back into target, which is like source
// but for the type of its samples and may be the same picture. Alpha is carried over.
//
// 16-bit files reach to 65535 and 16-bit documents to 32768, so two levels of a file share one of such a document:
// samples that the module leaves alone come back at most 1 of 65535 away. By way of 32 bits they come back as they
// were.
//
// The settings have no reference edge. Their mix and the mask's weights, 0 to 1 a pixel in rows (none: everywhere 1),
// blend the result with the original, for which documents are of 32 bits. Throws PluginRefusal, and std::bad_alloc.
void runThroughPlugin(PluginEntry entry, const orbel_settings& settings, int depth, const orbel_picture& source,
                      const orbel_picture& target, const std::vector<float>& mask);

}  // namespace orbel
