// What a program that an agent starts must put right before it does anything else.
#pragma once

namespace quenlor {

// Opens those of descriptors 0 to 2 that the caller left closed, so that no document or device ever
// lands on a standard stream: 0 reads /dev/null, writing to 1 fails, what is written to 2 is thrown
// away. Sets SIGCHLD and SIGPIPE to their default actions, ignores SIGXFSZ and unblocks SIGSEGV.
// Gives threads started from now on stacks of 2 MiB, whatever the caller's limit for stacks, and
// one heap for all. Umask, locale and environment stay the caller's. Call it first in main(),
// before any thread exists.
void prepareProcess();

}  // namespace quenlor
