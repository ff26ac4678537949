// What processes of ours that begin others have in common.
#pragma once

#include <sys/types.h>

namespace orbel {

// In a new process: the end of the parent, whose number this is, ends it from now on (SIGTERM); with this code at once
// where the parent has ended already.
void endWith(pid_t parent, int code);

// What the child ended with, as of waitpid. Waits for that.
int endOf(pid_t child);

}  // namespace orbel
