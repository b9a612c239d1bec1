// The process that scans, seen from itself.
#pragma once

#include <sys/types.h>

namespace quenlor {

// To be called first in the new process: it dies with its parent, or at once when the parent has
// gone already.
void dieWithParent(pid_t parent);

// The end of a scan whose workers were given up: a thread stuck in the kernel keeps its process,
// and with it whatever that has open, for as long as it likes. So the document must be written by
// now; all descriptors are given up, first those that a caller may wait for the end of, and the
// parent is told the status through `word`, the writing end of its pipe.
[[noreturn]] void leaveWorkersBehind(int status, int word);

}  // namespace quenlor
