// Script descriptors: the keys and values that a host plays into a plug-in and records from it.
#pragma once

#include <vector>

#include "host/host_interface.h"

namespace orbel {

struct ScriptValue {
  DescriptorKeyID key;
  DescriptorTypeID type;  // typeFloat, typeBoolean or typeInteger
  double number;          // holds every value of the three types
};

// A descriptor in a handle of handleProcedures(); null when there is no memory.
PIDescriptorHandle makeDescriptor(const std::vector<ScriptValue>& values);

// The values of a descriptor, in its order; none for a null one.
std::vector<ScriptValue> valuesOf(PIDescriptorHandle descriptor);

// The procedure tables to hand to the plug-in. They know the three types above; every other call reports paramErr.
ReadDescriptorProcs& readProcedures();
WriteDescriptorProcs& writeProcedures();

}  // namespace orbel
