// Script descriptors: the keys and values that a host plays into a plug-in and records from it.
#pragma once

#include <vector>

#include "api/orbel.h"
#include "host/host_interface.h"

namespace orbel {

struct ScriptValue {
  DescriptorKeyID key;
  DescriptorTypeID type;  // typeFloat, typeBoolean or typeInteger
  double number;          // holds every value of the three types
};

// All 24 keys of settings, in the order of the plug-in's record. The host interface knows radii in pixels alone, and no
// mix: a reference edge has to be in the radii already.
std::vector<ScriptValue> scriptOf(const orbel_settings& settings);

// A descriptor in a handle of handleProcedures(); null when there is no memory.
PIDescriptorHandle makeDescriptor(const std::vector<ScriptValue>& values);

// The procedure tables to hand to the plug-in. They know the three types above; every other call reports paramErr.
ReadDescriptorProcs& readProcedures();
WriteDescriptorProcs& writeProcedures();

}  // namespace orbel
