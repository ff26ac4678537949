// What the machine has to offer.
#pragma once

namespace orbel {

// Bytes of memory that a new program can have without others losing theirs: of the machine, or of the group of
// processes that this one is held in. 0 where the system doesn't tell.
double availableMemory();

// At least 1.
unsigned processorCount();

}  // namespace orbel
