// Relocatable memory blocks as a plug-in asks its host for them.
#pragma once

#include "host/host_interface.h"

namespace orbel {

// The procedure table to hand to the plug-in. One thread at a time.
HandleProcs& handleProcedures();

// Releases every block that is still alive, so that nothing that a plug-in forgot outlives its run.
void disposeAllHandles();

}  // namespace orbel
