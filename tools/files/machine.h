// What the machine has to offer.
#pragma once

namespace orbel {

// Bytes of memory that a new program can have without others losing theirs: of the machine, or of the group of
// processes that this one is held in. 0 where the system doesn't tell.
double availableMemory();

// Lets the parallel loops of this process's plug-in run on so many threads. Their runtime reads its environment when
// the program starts, so this starts the program again, once, with the same arguments; it returns when nothing is to be
// changed, or nothing can be.
void useThreads(unsigned threads);

}  // namespace orbel
