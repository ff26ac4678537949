// Plays a filter run on a plug-in's entry, as the host of an open document does.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "plugin/script_descriptor.h"

namespace orbel {

// A plug-in's entry, as PluginMain of host/filter_entry.h.
using PluginEntry = void (*)(std::int16_t selector, void* record, std::intptr_t* data, std::int16_t* result);

// An RGB document. Samples are unsigned bytes (white 255), unsigned 16-bit integers (white 32768) or floats (white 1),
// in rows without padding.
struct Document {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t depth = 0;                          // 8, 16 or 32
  std::vector<std::vector<unsigned char>> planes;  // three, or one that stands for all three

  std::size_t rowBytes() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(depth / 8); }
};

// The plug-in's refusal; what() tells what its code means.
struct PluginRefusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Runs the plug-in over the whole document with these script values, and puts the result in the document's place.
// Throws PluginRefusal when the plug-in reports a code; the document is then as it was. One run at a time in a process.
void runPlugin(PluginEntry entry, const std::vector<ScriptValue>& script, Document& document);

}  // namespace orbel
