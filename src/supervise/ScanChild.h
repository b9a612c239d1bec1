// The process that scans, seen from itself.
#pragma once

#include <sys/types.h>

#include "host/ScanState.h"

namespace quenlor {

// Closes this descriptor and all above it.
void closeFrom(int first);

// To be called first in the new process: it dies with its parent, or at once when the parent has
// gone already.
void dieWithParent(pid_t parent);

// Starts a thread that waits until the state says that the scan is to die, and then gives up
// descriptors 0 to 2 for `word`. The scan itself may be stuck in the kernel by then, and would keep
// them however often it is killed. Without a thread there is no caretaker.
void startCaretaker(ScanState& state, int word);

// Tells the caretaker that the time has come. From another process that shares the state.
void callCaretaker(ScanState& state);

// The end of a scan whose workers were given up: a thread stuck in the kernel keeps its process,
// and with it whatever that has open, for as long as it likes. So the document must be written by
// now; all descriptors are given up, first those that a caller may wait for the end of, and the
// parent is told the status through `word`, the writing end of its pipe.
[[noreturn]] void leaveWorkersBehind(int status, int word);

}  // namespace quenlor
