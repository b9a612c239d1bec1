// How long the process that outlives the scan waits for it.
#pragma once

#include <cstdint>

namespace quenlor {

// A classic scan has no limit as a whole, only its parts have. It is given up once nothing was done
// for 900 s, or for a minute more than the longest of the parts may take where that is longer.
void announceClassicDeadline();

// A scan that ends itself after this time is given up five seconds later, but for the time that a
// reader of standard output takes. Milliseconds.
void announceScanDeadline(int64_t scanLimit);

}  // namespace quenlor
